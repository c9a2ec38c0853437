#pragma once

#include <QByteArray>
#include <QJsonValue>
#include <QString>

/// `payload` behind its length in bytes, as a packet travels on a pipe.
QByteArray frame(const QByteArray& payload);

/// What follows the length.
QByteArray payloadOf(const QByteArray& bytes);

/// A message of the host as JSON text. Each has a number of its own.
QByteArray composeMessage(const QString& name, const QJsonValue& arguments);

/// What was written to a pipe in one go, as far as it can be understood.
struct Traffic
{
    explicit Traffic(const QByteArray& bytes);

    QString name; ///< Empty unless it is a message. Of a cut one it is found if it is there.
    QJsonValue arguments; ///< Undefined unless it is a whole message that has some.
    QString text;         ///< What to show.
};

/// The JSON text of `value`, compact.
QString jsonText(const QJsonValue& value);
