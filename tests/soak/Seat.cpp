#include "tests/soak/Seat.h"

void SoakProcess::say(const std::string& command)
{
    m_command = command;
    m_process.say(command);
}

std::string SoakProcess::answer()
{
    std::string line = m_process.nextLine();
    if (line.empty())
        throw SoakFailure(m_name + (m_process.isRunning() ? " does not answer \"" : " ends at \"") +
                          m_command + '"');
    return line;
}

std::string SoakProcess::ask(const std::string& command)
{
    say(command);
    return answer();
}

void SoakProcess::expect(const std::string& command, const std::string& expected)
{
    say(command);
    expectAnswer(expected);
}

void SoakProcess::expectAnswer(const std::string& expected)
{
    const std::string line = answer();
    if (line != expected)
        throw SoakFailure(m_name + " answers \"" + m_command + "\": " + line);
}

void SoakProcess::expectEnd()
{
    const int code = m_process.waitForExit();
    if (code != 0)
        throw SoakFailure(m_name + " ends with " + std::to_string(code));
}
