#include "tools/pavo-host/ScriptLines.h"

#include <algorithm>

namespace {

/// Whether a line ends where `text` does and has the same blanks.
bool fitsLine(const QString& text)
{
    return !text.isEmpty() && text == text.trimmed() &&
           std::none_of(text.begin(), text.end(),
                        [](QChar c) { return c.category() == QChar::Other_Control; });
}

/// As QProcess::splitCommand() takes it apart.
QString quoted(QString word)
{
    if (!word.isEmpty() && !word.contains(QLatin1Char(' ')) && !word.contains(QLatin1Char('"')))
        return word;
    return QLatin1Char('"') + word.replace(QLatin1Char('"'), QStringLiteral("\"\"\"")) +
           QLatin1Char('"');
}

} // namespace

QString ScriptLines::sent(const QByteArray& bytes)
{
    const QByteArray payload = payloadOf(bytes);
    const QString text = QString::fromUtf8(payload);
    if (frame(payload) != bytes || text.toUtf8() != payload || !fitsLine(text))
        return QStringLiteral("bytes %1").arg(QString::fromLatin1(bytes.toHex()));
    return text.startsWith(QLatin1Char('{')) ? text : QStringLiteral("text %1").arg(text);
}

QString ScriptLines::received(const Traffic& message)
{
    if (!fitsLine(message.name) || message.name.contains(QLatin1Char(' ')))
        return QStringLiteral("# The workbench has sent what no line can expect.");
    const QString arguments =
        message.arguments.isUndefined() ? QString() : jsonText(message.arguments);
    return QStringLiteral("expect %1 %2").arg(message.name, arguments).trimmed();
}

QString ScriptLines::launched(const QString& name, const QStringList& options)
{
    QStringList words{QStringLiteral("start")};
    if (!name.isEmpty())
        words << quoted(name);
    for (const QString& option : options)
        words << quoted(option);
    return words.join(QLatin1Char(' '));
}
