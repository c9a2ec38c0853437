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

QString printable(const QString& text)
{
    QString result;
    for (const QChar character : text) {
        if (character.category() == QChar::Other_Control)
            result += QStringLiteral("\\x%1").arg(character.unicode(), 2, 16, QLatin1Char('0'));
        else
            result += character;
    }
    return result;
}
