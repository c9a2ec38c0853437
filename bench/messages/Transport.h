#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>
#include <string>

/// The host's end of one way to carry messages, in the process that measures. Its calls block; it
/// needs no event loop.
class HostEnd
{
public:
    virtual ~HostEnd() = default;
    /// What the workbench's end has to be told.
    [[nodiscard]] virtual QString address() const = 0;
    virtual void awaitWorkbench() = 0;
    /// Has the workbench show the link.
    virtual void request(const std::string& link) = 0;
    /// The same so many times, as fast as it can.
    virtual void flood(const std::string& link, int count)
    {
        for (int i = 0; i < count; ++i)
            request(link);
    }
    /// The next link that the workbench wants to be opened.
    virtual std::string nextLink() = 0;
};

/// The workbench's end, in a process of its own, on its main thread.
class WorkbenchEnd
{
public:
    virtual ~WorkbenchEnd() = default;
    virtual void openUrl(const std::string& link) = 0;
    std::function<void(const std::string& link)> onRequest;
};

struct Transport
{
    const char* name;
    std::unique_ptr<HostEnd> (*host)();
    std::unique_ptr<WorkbenchEnd> (*workbench)(const QString& address);
};

// The floor talks to the same host. The gathering one has a flood in writes of many messages each.
std::unique_ptr<HostEnd> makePipeHost();
std::unique_ptr<HostEnd> makeGatheringHost();
std::unique_ptr<WorkbenchEnd> makeLibraryEnd(const QString& address);
std::unique_ptr<WorkbenchEnd> makeFloorEnd(const QString& address);

std::unique_ptr<HostEnd> makeLocalSocketHost();
std::unique_ptr<WorkbenchEnd> makeLocalSocketEnd(const QString& address);

std::unique_ptr<HostEnd> makeZeroMqHost();
std::unique_ptr<WorkbenchEnd> makeZeroMqEnd(const QString& address);

std::unique_ptr<HostEnd> makeDBusHost();
std::unique_ptr<WorkbenchEnd> makeDBusEnd(const QString& address);

/// The host's text that asks for a link, and the link in a workbench's text; empty if there is
/// none.
std::string requestText(const std::string& link);
std::string linkIn(const char* text, int length);

/// A text behind its length, as it goes over a pipe or a stream.
QByteArray framed(const std::string& text);

/// A link that holds a moment, 40 bytes long, and the moment in it.
std::string linkOf(std::int64_t ns);
std::int64_t momentIn(const std::string& link);
