#pragma once

#include "tests/support/RoleProcess.h"

#include <memory>
#include <stdexcept>
#include <string>

/// Ends the soak: what was to be did not come about.
struct SoakFailure : std::runtime_error
{
    using runtime_error::runtime_error;
};

/// A process of the soak, which answers every command with one line.
class SoakProcess
{
public:
    SoakProcess(std::string name, const char* role, const QStringList& arguments)
        : m_name(std::move(name))
        , m_process(role, arguments)
    {
    }

    [[nodiscard]] const std::string& name() const { return m_name; }
    void say(const std::string& command);
    /// Each fails when nothing is answered in time, and expect() also when it is not `expected`.
    std::string answer();
    std::string ask(const std::string& command);
    void expect(const std::string& command, const std::string& expected);
    void expectAnswer(const std::string& expected);
    void kill() { m_process.kill(); }
    /// Fails unless the process ends by itself with exit code 0.
    void expectEnd();

private:
    const std::string m_name;
    std::string m_command; ///< The last one.
    RoleProcess m_process;
};

/// One account: what its workbench has been made to do, which is what the others have to see.
struct Seat
{
    explicit Seat(int seatNumber)
        : number(seatNumber)
        , name("wb" + std::to_string(seatNumber))
    {
    }

    [[nodiscard]] bool isAlive() const { return process != nullptr; }
    [[nodiscard]] bool isJoined() const { return isAlive() && isListed; }

    int number;
    std::string name;
    std::unique_ptr<SoakProcess> process;
    bool isListed = false; ///< Also of a process that was killed.
    int unread = 0;
    int skin = 0;
    int loginState = 0;
    long long bursts = 0;    ///< Of messages from the host, through the present pipes.
    int starts = 0;          ///< Of the channel, by whichever processes the seat has had.
    long long switchUs = -1; ///< In this round; negative when it was not switched to.
};
