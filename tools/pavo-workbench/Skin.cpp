#include "tools/pavo-workbench/Skin.h"

#include <QCoreApplication>

#include <iterator>

namespace {

constexpr const char* kNames[] = {
    QT_TRANSLATE_NOOP("Skin", "Blue"),      QT_TRANSLATE_NOOP("Skin", "Orange"),
    QT_TRANSLATE_NOOP("Skin", "Green"),     QT_TRANSLATE_NOOP("Skin", "Red"),
    QT_TRANSLATE_NOOP("Skin", "Geek blue"), QT_TRANSLATE_NOOP("Skin", "Purple")};

} // namespace

QString Skin::name(int skin)
{
    const bool isKnown = skin >= 0 && skin < static_cast<int>(std::size(kNames));
    return QCoreApplication::translate("Skin", kNames[isKnown ? skin : 0]);
}
