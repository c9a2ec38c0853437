#pragma once

#include <QString>

#include <functional>
#include <memory>
#include <string>

/// One process of a group that shows one window at a time, as far as a contestant knows how.
class Member
{
public:
    virtual ~Member() = default;
    virtual void join() = 0;
    virtual void quit() = 0;
    /// Has the list hold so many accounts, the members' among them.
    virtual void seed(int accounts) = 0;
    virtual void switchTo(const std::string& pin) = 0;
    virtual void changeMode(int mode) = 0;
    /// What the window is told: MACode's kMAShow or kMAStepBack.
    std::function<void(int code)> onTold;
};

std::unique_ptr<Member> makeLibraryMember(const std::string& pin, const std::string& address);
std::unique_ptr<Member> makeFloorMember(const std::string& pin, const std::string& address);
std::unique_ptr<Member> makeDBusMember(const std::string& pin, const std::string& address);
std::unique_ptr<Member> makeFreeDBusMember(const std::string& pin, const std::string& address);

/// What members of a kind need beside them to meet each other.
class MeetingPlace
{
public:
    virtual ~MeetingPlace() = default;
    [[nodiscard]] virtual QString address() const = 0;
};

std::unique_ptr<MeetingPlace> makeBus();
/// With a process on it that keeps the list and the front.
std::unique_ptr<MeetingPlace> makeKeptBus();

struct MemberKind
{
    const char* name;
    std::unique_ptr<Member> (*make)(const std::string& pin, const std::string& address);
    std::unique_ptr<MeetingPlace> (*makePlace)(); ///< null where the system's own will do
};
