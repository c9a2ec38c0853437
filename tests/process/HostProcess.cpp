#include "tests/process/HostProcess.h"

#include "platform/HostPipe.h"

#include <map>
#include <memory>

namespace {

struct Pipes
{
    std::unique_ptr<pavo::HostPipe> in;
    std::unique_ptr<pavo::HostPipe> out;
};

std::unique_ptr<pavo::HostPipe> create(const std::string& name, pavo::HostPipe::Direction direction)
{
    auto pipe = std::make_unique<pavo::HostPipe>(QString::fromStdString(name), direction);
    return pipe->isOpen() ? std::move(pipe) : nullptr;
}

using Command = bool (*)(Pipes&, const std::string& argument);

const std::map<std::string, Command>& commands()
{
    static const std::map<std::string, Command> all = {
        {"create-in",
         [](Pipes& pipes, const std::string& name) {
             pipes.in = create(name, pavo::HostPipe::Direction::HostWrites);
             return pipes.in != nullptr;
         }},
        {"create-out",
         [](Pipes& pipes, const std::string& name) {
             pipes.out = create(name, pavo::HostPipe::Direction::HostReads);
             return pipes.out != nullptr;
         }},
        {"accept-in", [](Pipes& pipes, const std::string&) { return pipes.in->awaitClient(); }},
        {"accept-out", [](Pipes& pipes, const std::string&) { return pipes.out->awaitClient(); }},
        {"read",
         [](Pipes& pipes, const std::string& count) {
             QByteArray message;
             for (int i = 0; i < std::stoi(count); ++i) {
                 const QByteArray expected = "\"message " + QByteArray::number(i) + ' ';
                 if (!pipes.out->read(message) || !message.contains(expected))
                     return false;
             }
             return true;
         }},
        {"read-end",
         [](Pipes& pipes, const std::string&) {
             QByteArray message;
             while (pipes.out->read(message)) {
             }
             return true;
         }},
        {"close-in",
         [](Pipes& pipes, const std::string&) {
             pipes.in.reset();
             return true;
         }},
        {"close-out",
         [](Pipes& pipes, const std::string&) {
             pipes.out.reset();
             return true;
         }},
        {"write",
         [](Pipes& pipes, const std::string& hex) {
             return pipes.in->write(QByteArray::fromHex(QByteArray::fromStdString(hex)));
         }},
    };
    return all;
}

const Role kHost("host", [](const QStringList&) {
    Pipes pipes;
    for (std::string line = nextLineFromParent(); !line.empty(); line = nextLineFromParent()) {
        const auto blank = line.find(' ');
        const auto command = commands().find(line.substr(0, blank));
        const std::string argument = blank == std::string::npos ? "" : line.substr(blank + 1);
        const bool ok = command != commands().end() && command->second(pipes, argument);
        sayToParent(ok ? "ok" : "failed");
    }
    return 0;
});

} // namespace
