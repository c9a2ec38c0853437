#include "tools/pavo-workbench/Theme.h"

#include <iterator>

namespace {

// Blue, orange, green and red, and in the dark geek blue and purple.
constexpr Theme kThemes[] = {{0xff1765d8, 0xff10294d, 0xfff3f7fd, 0xffffffff, 0xffd8dfea,
                              0xff131a24, 0xff566173, 0xff1765d8},
                             {0xffb8560b, 0xff46260d, 0xfffdf7f1, 0xffffffff, 0xffe6dfd6,
                              0xff131a24, 0xff566173, 0xffb8560b},
                             {0xff157f46, 0xff0e3826, 0xfff1f9f5, 0xffffffff, 0xffd5e2db,
                              0xff131a24, 0xff566173, 0xff157f46},
                             {0xffc2303f, 0xff48151d, 0xfffdf4f5, 0xffffffff, 0xffe8dadc,
                              0xff131a24, 0xff566173, 0xffc2303f},
                             {0xff4c5ede, 0xff0e1126, 0xff171b34, 0xff20264a, 0xff3b4373,
                              0xffe9ebf8, 0xffaab2d6, 0xff95a4ff},
                             {0xff8446cf, 0xff150d24, 0xff1e1533, 0xff2a1f46, 0xff4a3a6b,
                              0xffefeafa, 0xffbbabd9, 0xffc29bff}};

constexpr const char* kStyleSheet = R"(
WorkbenchWindow { background: @ground@; }
QWidget { font-size: 14px; color: @text@; }
QScrollArea, QScrollArea::corner, #contents { background: transparent; }
QToolTip { background: @card@; color: @text@; border: 1px solid @line@; padding: 4px; }
#side { background: @side@; }
#side QLabel { color: white; font-weight: bold; }
#sideTitle { font-size: 16px; }
#count { background: @sideFront@; border-radius: 10px; padding: 1px 9px; font-size: 12px; }
#side #hint { color: @sideDim@; font-size: 12px; font-weight: normal; }
#accounts { background: transparent; border: none; outline: none; }
#title { font-size: 22px; font-weight: bold; }
#subtitle { color: @dim@; }
#heading { font-weight: bold; color: @dim@; }
#activity { background: @card@; border: 2px solid @line@; border-radius: 10px; padding: 6px;
    outline: none; }
#nothing { color: @dim@; background: transparent; }
QPushButton { background: @card@; border: 2px solid @line@; border-radius: 8px;
    padding: 6px 12px; }
QPushButton:hover { border-color: @dim@; }
QPushButton:pressed { background: @ground@; }
QPushButton:disabled { color: @dim@; }
QPushButton:checked, QPushButton#merge { background: @accent@; border-color: @accent@;
    color: white; }
QPushButton#merge { font-weight: bold; }
QPushButton#merge:hover { border-color: @text@; }
QPushButton#merge:disabled { background: @card@; border-color: @line@; color: @dim@; }
#activity:focus, QPushButton:focus { border-color: @focus@; }
QPushButton:checked:focus, QPushButton#merge:focus { border-color: @text@; }
QScrollBar { background: transparent; margin: 2px; }
QScrollBar:vertical { width: 10px; }
QScrollBar:horizontal { height: 10px; }
QScrollBar::handle { background: @dim@; border-radius: 3px; }
#accounts QScrollBar::handle { background: @sideDim@; }
QScrollBar::handle:vertical { min-height: 30px; }
QScrollBar::handle:horizontal { min-width: 30px; }
QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; }
)";

QColor mixed(QRgb ground, int whitePercent)
{
    const auto channel = [whitePercent](int value) {
        return value + (255 - value) * whitePercent / 100;
    };
    return {channel(qRed(ground)), channel(qGreen(ground)), channel(qBlue(ground))};
}

} // namespace

const Theme& Theme::of(int skin)
{
    const bool known = skin >= 0 && skin < static_cast<int>(std::size(kThemes));
    return kThemes[known ? skin : 0];
}

QColor Theme::sideDim() const
{
    return mixed(side, 72);
}

QColor Theme::sideFront() const
{
    return mixed(side, 16);
}

QColor Theme::sideHover() const
{
    return mixed(side, 8);
}

QColor Theme::sideBadge() const
{
    return mixed(side, 30);
}

QString Theme::styleSheet() const
{
    const struct
    {
        const char* name;
        QColor colour;
    } colours[] = {{"@accent@", accent},    {"@side@", side},   {"@ground@", ground},
                   {"@card@", card},        {"@line@", line},   {"@text@", text},
                   {"@dim@", dim},          {"@focus@", focus}, {"@sideFront@", sideFront()},
                   {"@sideDim@", sideDim()}};
    QString sheet = QString::fromLatin1(kStyleSheet);
    for (const auto& each : colours)
        sheet.replace(QLatin1String(each.name), each.colour.name());
    return sheet;
}
