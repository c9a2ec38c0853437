#pragma once

#include <QJsonValue>
#include <QString>

/// Something that has happened on the host's side or on a workbench's.
struct Event
{
    enum Kind { Host, Sent, Received, Output, Log, Accounts, Heading, Problem, Text };

    Kind kind;
    QString text = {};      ///< What people are shown.
    QString workbench = {}; ///< Whom it is about; empty for the first one and for nobody.
    QString name = {};      ///< Of a message.
    QJsonValue arguments = QJsonValue::Undefined; ///< Of a whole message that has some.
    /// The script's lines that do the same or wait for it; empty when there are none.
    QString script = {};
};
