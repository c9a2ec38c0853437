#include "tools/pavo-workbench/Presence.h"

#include <QCoreApplication>

#include <iterator>

namespace {

constexpr struct
{
    const char* name;
    QRgb colour;
} kPresences[] = {{QT_TRANSLATE_NOOP("Presence", "Offline"), 0xff9aa4b2},
                  {QT_TRANSLATE_NOOP("Presence", "Online"), 0xff2fb868},
                  {QT_TRANSLATE_NOOP("Presence", "Busy"), 0xffe5484d},
                  {QT_TRANSLATE_NOOP("Presence", "Away"), 0xfff0a020}};

bool isKnown(int loginState)
{
    return loginState >= 0 && loginState < static_cast<int>(std::size(kPresences));
}

} // namespace

QString Presence::name(int loginState)
{
    return isKnown(loginState)
               ? QCoreApplication::translate("Presence", kPresences[loginState].name)
               : QCoreApplication::translate("Presence", "Presence %1").arg(loginState);
}

QColor Presence::colour(int loginState)
{
    return kPresences[isKnown(loginState) ? loginState : 0].colour;
}
