#pragma once

#include "tests/support/RoleProcess.h"

#include <memory>
#include <string>
#include <vector>

/// Whose workbench it is. The texts of different numbers are of one length up to 9. Each two share
/// a pin and differ in their session, and 2 and 3 have one title and different classes.
struct WorkbenchIdentity
{
    std::string appID;
    std::string pin;
    std::string className;
    std::string title; ///< with the application's name in it: all of a user's processes see it
};
WorkbenchIdentity workbenchIdentity(int number);

/// A command, as the name of an operation and its numbers.
std::string commandLine(const std::string& operation, const std::vector<int>& arguments);

/// A workbench in a process of its own, of the installation that the application's name says: the
/// manager, the main window, an observer, and nothing but them. What it does it does on command, so
/// what is posted to it waits until it is told to look.
///
/// Commands are the operations of MAManager by their names, with numbers for arguments, and those
/// that the table in WorkbenchProcess.cpp has besides:
///     deliver              handles what has been posted to the window so far
///     observe 0|1          removes the observer, or sets it
///     show 0|1             shows or hides the window
///     rush COUNT SEED ALL  COUNT times, switches to one of ALL accounts, changes the unread count
///                          and looks; the result is how often this account came to the front
class WorkbenchProcess
{
public:
    explicit WorkbenchProcess(int number);

    void say(const std::string& command) { m_process.say(command); }
    /// What the last command resulted in, and then, in order, the messages that the window has
    /// received meanwhile and the observer's calls (AccountTexts.h). Empty when it has crashed or
    /// hangs.
    std::vector<std::string> reply(int deadlineMs = kDeadlineMs);
    std::vector<std::string> ask(const std::string& command);
    void kill() { m_process.kill(); }
    /// Has it end; returns its exit code.
    int end();

private:
    RoleProcess m_process;
};
