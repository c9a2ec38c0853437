#include "tools/pavo-host/Traffic.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QtEndian>

namespace {

constexpr int kLengthSize = 4;
constexpr int kShownBytes = 32;

QString hexText(const QByteArray& bytes)
{
    const QString hex = QString::fromLatin1(bytes.left(kShownBytes).toHex(' '));
    return QStringLiteral("%1%2 (%3 bytes)")
        .arg(hex, QLatin1String(bytes.size() > kShownBytes ? " ..." : ""))
        .arg(bytes.size());
}

QString nameInText(const QString& text)
{
    static const QRegularExpression pattern(QStringLiteral(R"re("name"\s*:\s*"([^"\\]*)")re"));
    return pattern.match(text).captured(1);
}

} // namespace

QByteArray frame(const QByteArray& payload)
{
    QByteArray bytes(kLengthSize, '\0');
    qToLittleEndian(static_cast<quint32>(payload.size()), bytes.data());
    return bytes + payload;
}

QByteArray payloadOf(const QByteArray& bytes)
{
    return bytes.mid(kLengthSize);
}

QByteArray composeMessage(const QString& name, const QJsonValue& arguments)
{
    static int number = 0;
    return QJsonDocument(QJsonObject{{QStringLiteral("name"), name},
                                     {QStringLiteral("source"), QStringLiteral("pavo-host")},
                                     {QStringLiteral("sequence"), ++number},
                                     {QStringLiteral("arguments"), arguments}})
        .toJson(QJsonDocument::Compact);
}

Traffic::Traffic(const QByteArray& bytes)
    : arguments(QJsonValue::Undefined)
{
    const qint64 announced =
        bytes.size() < kLengthSize ? -1 : qFromLittleEndian<quint32>(bytes.constData());
    const QByteArray payload = payloadOf(bytes);
    const QString payloadText = QString::fromUtf8(payload);
    if (announced > payload.size()) {
        // The length counts the bytes of the text, but only as many bytes as the text has UTF-16
        // units follow: every message with characters outside ASCII arrives like this.
        name = nameInText(payloadText);
        text = QStringLiteral("%1 %2 (cut: %3 of %4 bytes)")
                   .arg(name, payloadText)
                   .arg(payload.size())
                   .arg(announced);
    } else if (announced == payload.size()) {
        const QJsonDocument document = QJsonDocument::fromJson(payload);
        name = document[QStringLiteral("name")].toString();
        arguments = document[QStringLiteral("arguments")];
        text = document.isObject() ? QStringLiteral("%1 %2").arg(name, jsonText(arguments))
                                   : QStringLiteral("%1 (no message)").arg(payloadText);
    } else {
        text = hexText(bytes);
    }
}

QString jsonText(const QJsonValue& value)
{
    if (value.isUndefined())
        return QStringLiteral("(no arguments)");
    const QByteArray array = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(array.mid(1, array.size() - 2));
}
