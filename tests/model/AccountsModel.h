#pragma once

#include "tests/support/WorkbenchProcess.h"

#include <deque>
#include <string>
#include <vector>

/// One thing that one process does.
struct Step
{
    std::string operation; ///< of MAManager, or of WorkbenchProcess, or one that kills or starts
    int process;
    std::vector<int> arguments;
};

/// What a number of workbench processes make of their accounts, as rules: every operation says what
/// it reads, changes, posts and tells. Shares no code with the library.
class AccountsModel
{
public:
    using Identity = WorkbenchIdentity;
    struct Account : Identity
    {
        int idx = 0;
        int unread = 0;
        int unreadMark = 0;
        int skin = 0;
        int loginState = 0;
    };
    struct Rect
    {
        int x = 0;
        int y = 0;
        int w = 0;
        int h = 0;
    };
    struct Selected : Identity, Rect
    {
        int mode = 1;
        int windowState = 0;
    };
    using Accounts = std::vector<Account>;
    using Records = std::vector<std::string>;

    struct Message
    {
        int code;
        int value;
    };
    struct Process
    {
        bool isAlive = false;
        bool isListening = false; ///< knows the window message; stays so after quitting
        bool isJoined = false;
        bool hasObserver = true;
        bool isVisible = false;
        Account own;
        int windowState = 1;
        Rect rect;
        int largestWidth = -1;
        int largestHeight = -1;
        int mode = 1;
        std::deque<Message> mail;
    };

    explicit AccountsModel(int processes);

    /// Whether there is a process that could do it.
    [[nodiscard]] bool isPossible(const Step& step) const;
    /// Does it. Returns the result, then what the process receives and hears.
    Records perform(const Step& step);

    [[nodiscard]] int count() const { return static_cast<int>(m_processes.size()); }
    [[nodiscard]] Process& process(int number);
    [[nodiscard]] bool isAlive(int number) const;
    [[nodiscard]] bool isJoined(int number) const;
    [[nodiscard]] bool hasMail(int number) const;
    /// Handles the message that was posted to it first. Returns what it receives and hears.
    Records deliverOne(int number);

    /// Whether the segment exists, and both texts in it.
    [[nodiscard]] bool hasSegment() const;
    [[nodiscard]] std::string segmentText() const;
    /// The segment and all that waits in windows: as much as differs with the order of deliveries.
    [[nodiscard]] std::string stateText() const;

private:
    friend struct ModelOperations;

    [[nodiscard]] int numberOf(const Process& own) const;

    // The shared segment: nothing can be read from, or written to it without being attached.
    [[nodiscard]] Selected readSelected(const Process& own) const;
    [[nodiscard]] Accounts readAccounts(const Process& own) const;
    Account* findOwn(const Process& own);
    void detach(Process& own);

    // Telling.
    void post(const Process& own, const Identity& to, int code, int value = 0);
    void tell(Process& own, int code, Selected selected, const Accounts& accounts);
    void relay(Process& own, int code, bool withAccounts);

    // Doing.
    void handle(Process& own, const Message& message);
    void showCurrentAccount(Process& own);
    void changeMergeMode(Process& own, int mode, bool notify);
    bool switchToAccount(Process& own, const Identity& to);
    void changeOwn(Process& own, int Account::*field, int value);

    std::vector<Process> m_processes;
    Selected m_selected;
    Accounts m_accounts;
    Records m_heard;
};
