#include "tools/pavo-workbench/Theme.h"

#include <iterator>

namespace {

// By the skins' indexes.
constexpr Theme kThemes[] = {{"Blue", 0xff1677ff, 0xff10305c, 0xfff3f7fd},
                             {"Orange", 0xffe8710a, 0xff5a2f0c, 0xfffdf6ef},
                             {"Green", 0xff1e9a5f, 0xff0e402a, 0xfff1f9f5},
                             {"Red", 0xffcf2f3f, 0xff571821, 0xfffdf3f4},
                             {"Geek blue", 0xff3f51d9, 0xff1c2461, 0xfff4f5fd},
                             {"Purple", 0xff8042c8, 0xff391c5c, 0xfff8f4fd}};

constexpr const char* kStyleSheet = R"(
WorkbenchWindow { background: %light; }
QWidget { font-size: 14px; color: #1f2733; }
#side { background: %dark; }
#side QLabel { color: white; }
#sideTitle { font-size: 16px; font-weight: bold; padding: 18px 16px 8px 16px; }
#count { color: rgba(255, 255, 255, 170); padding: 8px 16px 14px 16px; }
#accounts { background: transparent; border: none; outline: none; }
#title { font-size: 22px; font-weight: bold; }
#subtitle { color: #5b6675; }
#heading { font-weight: bold; color: #5b6675; }
#log { background: white; border: 1px solid #d9dfe8; border-radius: 8px; padding: 6px; }
#log::item { padding: 5px 6px; border-bottom: 1px solid #eef1f5; color: #1f2733; }
#log::item:selected { background: %light; }
#log:focus, QPushButton:focus { border: 2px solid %accent; }
QPushButton { background: white; border: 2px solid #d0d7e2; border-radius: 6px;
    padding: 7px 12px; }
QPushButton:hover { border-color: %accent; }
QPushButton:pressed { background: %light; }
QPushButton#merge { background: %accent; border-color: %accent; color: white; font-weight: bold; }
QPushButton#merge:focus { border-color: %dark; }
)";

} // namespace

const Theme& Theme::of(int skin)
{
    const bool known = skin >= 0 && skin < static_cast<int>(std::size(kThemes));
    return kThemes[known ? skin : 0];
}

QString Theme::styleSheet() const
{
    return QString::fromLatin1(kStyleSheet)
        .replace(QStringLiteral("%accent"), QColor(accent).name())
        .replace(QStringLiteral("%dark"), QColor(dark).name())
        .replace(QStringLiteral("%light"), QColor(light).name());
}
