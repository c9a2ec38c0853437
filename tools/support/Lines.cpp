#include "tools/support/Lines.h"

QStringList takeLines(QByteArray& buffer)
{
    QStringList lines;
    int start = 0;
    for (int end = 0; (end = buffer.indexOf('\n', start)) >= 0; start = end + 1) {
        const bool carriageReturn = end > start && buffer.at(end - 1) == '\r';
        lines << QString::fromUtf8(buffer.mid(start, end - start - (carriageReturn ? 1 : 0)));
    }
    buffer.remove(0, start);
    return lines;
}

QStringList takeAllLines(QByteArray& buffer)
{
    if (!buffer.isEmpty() && !buffer.endsWith('\n'))
        buffer += '\n';
    return takeLines(buffer);
}
