#pragma once

#include <QByteArray>
#include <QStringList>

/// Takes the complete lines out of `buffer`, decoded from UTF-8 and without their ends. What
/// follows the last line end stays.
QStringList takeLines(QByteArray& buffer);

/// As above, with what follows the last line end as a line too.
QStringList takeAllLines(QByteArray& buffer);

/// With nothing that would move a terminal's cursor or end the line: `text` comes from elsewhere.
QString printable(const QString& text);
