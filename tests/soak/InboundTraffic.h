#pragma once

#include <QByteArray>

#include <random>

/// What the host sends.
namespace InboundTraffic {

/// A message's text, and how many callbacks of the main window it leads to.
struct Message
{
    QByteArray text;
    int callbacks;
};

/// What the host sends first; the login comes last. Meant for a main window that does not exist
/// yet.
const Message* begin();
const Message* end();

/// Any of the inbound messages, whole or broken.
const Message& any(std::mt19937& random);

/// The request that carries a number and the time, which the main window gets as "NUMBER TIME".
Message numbered(long long number);

/// A frame that no reader takes: it announces more than a frame may hold.
QByteArray garbage();

} // namespace InboundTraffic
