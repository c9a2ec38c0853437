#include "bench/accounts/MemberProcess.h"

#include "pavo_base/Logger.h"

const MemberKind kMemberKinds[] = {
    {kLibrary, &makeLibraryMember},
    {kFloor, &makeFloorMember},
    {kDBus, &makeDBusMember},
    {kFreeDBus, &makeFreeDBusMember},
};

namespace {

constexpr const char* kRole = "member";

/// Does what may have this member told something, and answers with the moments of both.
template<typename Act>
std::string momentsOf(Member& member, Act act)
{
    std::int64_t told = 0;
    member.onTold = [&](int) {
        told = nowNs();
        QCoreApplication::quit();
    };
    const std::int64_t before = nowNs();
    act();
    handleEventsUntil([&] { return told != 0; });
    member.onTold = [](int) {};
    return std::to_string(before) + ' ' + std::to_string(told);
}

template<typename Act>
std::string durationOf(Act act)
{
    const std::int64_t before = nowNs();
    act();
    return lineOf({static_cast<double>(nowNs() - before) / kNsPerUs});
}

int beMember(const QStringList& arguments)
{
    int argc = 0;
    QCoreApplication application(argc, nullptr);
    QCoreApplication::setApplicationName(arguments[1]);
    Logger::initialise(log4cplus::OFF_LOG_LEVEL);
    const double before = residentKb();
    const auto member = kMemberKinds[arguments[0].toInt()].make(arguments[2].toStdString(),
                                                                arguments[3].toStdString());
    member->onTold = [](int) {};
    return obey([&](const std::string& command, const std::string& argument) -> std::string {
        const int number = std::atoi(argument.c_str());
        if (command == "join")
            return durationOf([&] { member->join(); });
        if (command == "quit")
            return durationOf([&] { member->quit(); });
        if (command == "seed")
            return durationOf([&] { member->seed(number); });
        if (command == "switch")
            return momentsOf(*member, [&] { member->switchTo(argument); });
        if (command == "mode")
            return momentsOf(*member, [&] { member->changeMode(number); });
        if (command == "await")
            return momentsOf(*member, [] { sayToParent("awaiting"); });
        return lineOf({residentKb() - before});
    });
}

const Role memberRole(kRole, &beMember);

} // namespace

Child startMember(MemberIndex kind, const QString& installation, const std::string& pin,
                  const QString& bus)
{
    return startChild(kRole,
                      {QString::number(kind), installation, QString::fromStdString(pin), bus});
}
