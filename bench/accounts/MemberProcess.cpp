#include "bench/accounts/MemberProcess.h"

#include "bench/Peers.h"
#include "bench/Targets.h"
#include "pavo_base/Logger.h"

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
    const auto member = memberKinds()[arguments[0].toUInt()].make(arguments[2].toStdString(),
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
        return momentsOf(*member, [] { sayToParent("awaiting"); });
    });
}

const Role memberRole(kRole, &beMember);

} // namespace

const std::vector<MemberKind>& memberKinds()
{
    static const auto kinds = withPeers(std::vector<MemberKind>{
        {kLibrary, &makeLibraryMember, nullptr}, {kFloor, &makeFloorMember, nullptr}});
    return kinds;
}

Child startMember(const MemberKind& kind, const QString& installation, const std::string& pin,
                  const QString& address)
{
    return startChild(kRole, {QString::number(&kind - memberKinds().data()), installation,
                              QString::fromStdString(pin), address});
}
