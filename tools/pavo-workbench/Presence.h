#pragma once

#include <QColor>
#include <QString>

/// How an account's login state is shown.
namespace Presence {

QString name(int loginState);
QColor colour(int loginState);

} // namespace Presence
