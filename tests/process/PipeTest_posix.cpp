// What only the local substitutes have: files, users, descriptors, signals.

#include "platform/posix/Hearing.h"
#include "platform/posix/PipePlace.h"
#include "tests/process/PipeFixture.h"
#include "tests/support/RoleProcess.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <fcntl.h>
#include <grp.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <string>
#include <thread>
#include <vector>

using pavo::UniqueHandle;
using pavo::posix::Answer;
using pavo::posix::PipePlace;
using pavo::posix::Request;
using pavo::posix::UniqueFd;
using pavo::posix::Wish;

namespace {

constexpr uid_t kOtherUser = 65534;

/// A runtime folder of the test's own, and a folder for pipes with a path.
class PosixPipe : public PipeTest
{
protected:
    PosixPipe() { useRuntimeBase(m_folder.path()); }
    ~PosixPipe() override
    {
        if (m_previousBase.isNull())
            qunsetenv("XDG_RUNTIME_DIR");
        else
            useRuntimeBase(QString::fromLocal8Bit(m_previousBase));
    }

    static void useRuntimeBase(const QString& path)
    {
        qputenv("XDG_RUNTIME_DIR", path.toLocal8Bit());
    }

    std::string pathOf(const char* file) const
    {
        return m_folder.filePath(QString::fromLatin1(file)).toStdString();
    }
    std::string runtimeFolder() const { return pathOf("pavo"); }

    const QTemporaryDir m_folder;

private:
    const QByteArray m_previousBase = qgetenv("XDG_RUNTIME_DIR");
};

mode_t modeOf(const std::string& path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

QStringList filesIn(const std::string& folder)
{
    return QDir(QString::fromStdString(folder))
        .entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot);
}

/// A socket at the place of a pipe name, that somebody else than a host listens on.
UniqueFd listenAt(const std::string& name)
{
    PipePlace place;
    EXPECT_EQ(PipePlace::find(name.c_str(), place), ERROR_SUCCESS);
    UniqueFd listener(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    const sockaddr_un address = place.address();
    EXPECT_EQ(bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(listen(listener.get(), 1), 0);
    return listener;
}

/// A connection to a host, as a client has it before it has said anything.
UniqueFd connectTo(const std::string& name)
{
    PipePlace place;
    EXPECT_EQ(PipePlace::find(name.c_str(), place), ERROR_SUCCESS);
    UniqueFd connection(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    const timeval deadline = {kDeadlineMs / 1000, 0};
    setsockopt(connection.get(), SOL_SOCKET, SO_RCVTIMEO, &deadline, sizeof deadline);
    const sockaddr_un address = place.address();
    EXPECT_EQ(
        connect(connection.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    return connection;
}

/// Gives up being the super-user, for good. The runtime folder is one of the other user's own.
bool becomeOtherUser(const QString& runtimeBase)
{
    qputenv("XDG_RUNTIME_DIR", runtimeBase.toLocal8Bit());
    return setgroups(0, nullptr) == 0 && setgid(kOtherUser) == 0 && setuid(kOtherUser) == 0 &&
           setuid(0) != 0;
}

int openAsOtherUser(const QStringList& arguments)
{
    if (!becomeOtherUser(arguments[1]))
        return 1;
    sayToParent(std::to_string(openPipe(arguments[0].toStdString()).error));
    sayToParent(std::to_string(waitForPipe(arguments[0].toStdString(), kLongWait).error));
    return 0;
}
const Role kOpenAsOtherUserRole("open-as-other-user", openAsOtherUser);

int hostAsOtherUser(const QStringList& arguments)
{
    if (!becomeOtherUser(arguments[1]))
        return 1;
    const Opened host = createPipe(arguments[0].toStdString(), kMessageType);
    sayToParent(std::to_string(host.error));
    nextLineFromParent();
    return 0;
}
const Role kHostAsOtherUserRole("host-as-other-user", hostAsOtherUser);

/// Grants everything to everybody, which no host does.
int grantAsOtherUser(const QStringList& arguments)
{
    if (!becomeOtherUser(arguments[1]))
        return 1;
    const UniqueFd listener = listenAt(arguments[0].toStdString());
    sayToParent("listening");
    for (;;) {
        const UniqueFd client(accept(listener.get(), nullptr, nullptr));
        pavo::posix::answer(client, {ERROR_SUCCESS, kMessageType, 0});
    }
}
const Role kGrantAsOtherUserRole("grant-as-other-user", grantAsOtherUser);

/// A host of two instances that uses up its file descriptors when told to, and then frees them.
int runStarvedHost(const QStringList& arguments)
{
    const rlimit few = {64, 64};
    setrlimit(RLIMIT_NOFILE, &few);
    const std::string name = arguments[0].toStdString();
    const Opened first = createPipe(name, kMessageType, PIPE_ACCESS_DUPLEX, 2);
    const Opened second = createPipe(name, kMessageType, PIPE_ACCESS_DUPLEX, 2);
    sayToParent(std::to_string(second.error));
    nextLineFromParent();
    std::vector<UniqueFd> wasted;
    do
        wasted.emplace_back(dup(STDERR_FILENO));
    while (wasted.back());
    sayToParent("starved");
    nextLineFromParent();
    wasted.clear();
    sayToParent("recovered");
    nextLineFromParent();
    return 0;
}
const Role kStarvedHostRole("starved-host", runStarvedHost);

/// More than the system buffers.
constexpr DWORD kMuch = 4U * 1024 * 1024;

extern "C" void ignoreSignal(int /*number*/) {}

} // namespace

TEST_F(PosixPipe, livesInAFolderOfTheUsersOwn)
{
    Opened host = createPipe(R"(\\.\PIPE\Some.Name)", kMessageType);
    ASSERT_EQ(host.error, ERROR_SUCCESS);
    EXPECT_EQ(modeOf(runtimeFolder()), 0700U);
    EXPECT_EQ(filesIn(runtimeFolder()), QStringList{QStringLiteral("some.name")});
    EXPECT_EQ(modeOf(runtimeFolder() + "/some.name"), 0600U);
    host.handle.reset();
    EXPECT_EQ(filesIn(runtimeFolder()), QStringList());
}

TEST_F(PosixPipe, livesUnderTmpWithoutARuntimeFolder)
{
    qunsetenv("XDG_RUNTIME_DIR");
    const Opened host = createPipe(m_name, kMessageType);
    ASSERT_EQ(host.error, ERROR_SUCCESS);
    EXPECT_EQ(modeOf("/tmp/pavo-" + std::to_string(geteuid())), 0700U);
    EXPECT_EQ(openPipe(m_name).error, ERROR_SUCCESS);
}

TEST_F(PosixPipe, plainNameIsTheSamePipe)
{
    const Opened host = createPipe("plain", kMessageType);
    ASSERT_EQ(host.error, ERROR_SUCCESS);
    EXPECT_EQ(openPipe(R"(\\.\pipe\Plain)").error, ERROR_SUCCESS);
}

TEST_F(PosixPipe, namesDoNotLeaveTheFolder)
{
    for (const char* name : {"../outside", "..", ".", "a/../../outside"}) {
        const Opened host = createPipe(name, kMessageType);
        ASSERT_EQ(host.error, ERROR_SUCCESS) << name;
        EXPECT_EQ(filesIn(runtimeFolder()).size(), 1) << name;
        EXPECT_EQ(openPipe(name).error, ERROR_SUCCESS) << name;
    }
    EXPECT_EQ(filesIn(m_folder.path().toStdString()), QStringList{QStringLiteral("pavo")});
}

TEST_F(PosixPipe, absolutePathNamesItself)
{
    const std::string path = pathOf("Some Socket");
    Opened host = createPipe(path, kMessageType);
    ASSERT_EQ(host.error, ERROR_SUCCESS);
    EXPECT_EQ(modeOf(path), 0600U);
    EXPECT_EQ(openPipe(path).error, ERROR_SUCCESS);
    host.handle.reset();
    EXPECT_EQ(openPipe(path).error, ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(openPipe("/nowhere/at/all").error, ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(openPipe("/").error, ERROR_INVALID_NAME);
    EXPECT_EQ(createPipe(pathOf(std::string(200, 'n').c_str()), kMessageType).error,
              ERROR_INVALID_NAME);
}

TEST_F(PosixPipe, folderMayHaveALongPath)
{
    const QString base = m_folder.filePath(QString(150, QLatin1Char('d')));
    ASSERT_TRUE(QDir().mkpath(base));
    useRuntimeBase(base);
    const Opened host = createPipe(m_name, kMessageType);
    ASSERT_EQ(host.error, ERROR_SUCCESS);
    EXPECT_EQ(openPipe(m_name).error, ERROR_SUCCESS);
}

TEST_F(PosixPipe, folderThatOthersCanEnterIsRefused)
{
    ASSERT_EQ(mkdir(runtimeFolder().c_str(), 0700), 0);
    ASSERT_EQ(chmod(runtimeFolder().c_str(), 0710), 0);
    EXPECT_EQ(createPipe(m_name, kMessageType).error, ERROR_ACCESS_DENIED);
    EXPECT_EQ(openPipe(m_name).error, ERROR_ACCESS_DENIED);
    EXPECT_EQ(waitForPipe(m_name, kLongWait), Outcome{ERROR_ACCESS_DENIED});
}

TEST_F(PosixPipe, linkInPlaceOfTheFolderIsRefused)
{
    const std::string target = pathOf("target");
    ASSERT_EQ(mkdir(target.c_str(), 0700), 0);
    ASSERT_EQ(symlink(target.c_str(), runtimeFolder().c_str()), 0);
    EXPECT_EQ(createPipe(m_name, kMessageType).error, ERROR_ACCESS_DENIED);
    EXPECT_EQ(openPipe(m_name).error, ERROR_ACCESS_DENIED);
}

TEST_F(PosixPipe, folderOfAnotherUserIsRefused)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only the super-user can give a folder away";
    ASSERT_EQ(mkdir(runtimeFolder().c_str(), 0700), 0);
    ASSERT_EQ(chown(runtimeFolder().c_str(), kOtherUser, kOtherUser), 0);
    EXPECT_EQ(createPipe(m_name, kMessageType).error, ERROR_ACCESS_DENIED);
    EXPECT_EQ(openPipe(m_name).error, ERROR_ACCESS_DENIED);
}

TEST_F(PosixPipe, deadHostsSocketGivesWay)
{
    listenAt(m_name);
    EXPECT_EQ(filesIn(runtimeFolder()).size(), 1);
    EXPECT_EQ(openPipe(m_name).error, ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(waitForPipe(m_name, kLongWait), Outcome{ERROR_FILE_NOT_FOUND});
    const Opened host = createPipe(m_name, kMessageType);
    EXPECT_EQ(host.error, ERROR_SUCCESS);
    EXPECT_EQ(openPipe(m_name).error, ERROR_SUCCESS);
}

TEST_F(PosixPipe, deadHostsSocketsGoWithTheNextHost)
{
    RoleProcess living("host", {QStringLiteral("living")});
    ASSERT_EQ(living.nextLine(), "0");
    RoleProcess dead("host", {QStringLiteral("dead")});
    ASSERT_EQ(dead.nextLine(), "0");
    dead.kill();
    EXPECT_EQ(filesIn(runtimeFolder()),
              (QStringList{QStringLiteral("dead"), QStringLiteral("living")}));
    RoleProcess next("host", {QStringLiteral("next")});
    ASSERT_EQ(next.nextLine(), "0");
    EXPECT_EQ(filesIn(runtimeFolder()),
              (QStringList{QStringLiteral("living"), QStringLiteral("next")}));
    EXPECT_EQ(openPipe("living").error, ERROR_SUCCESS);
}

TEST_F(PosixPipe, livingListenersAndFilesDoNotGiveWay)
{
    const UniqueFd listener = listenAt(m_name);
    EXPECT_EQ(createPipe(m_name, kMessageType).error, ERROR_ACCESS_DENIED);

    const std::string path = pathOf("file");
    QFile file(QString::fromStdString(path));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write("kept"), 4);
    file.close();
    EXPECT_EQ(openPipe(path).error, ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(createPipe(path, kMessageType).error, ERROR_ACCESS_DENIED);
    EXPECT_EQ(QFileInfo(file).size(), 4);
}

TEST_F(PosixPipe, hostsTakeTheirNamesOneAfterTheOther)
{
    listenAt(m_name);
    UniqueFd folder;
    ASSERT_EQ(pavo::posix::openRuntimeFolder(folder), ERROR_SUCCESS);
    ASSERT_EQ(flock(folder.get(), LOCK_EX), 0);
    struct stat status = {};
    ASSERT_EQ(fstat(folder.get(), &status), 0);
    const QByteArray lockOfFolder = ':' + QByteArray::number(quint64{status.st_ino}) + ' ';

    // Meanwhile another process finds the dead host's socket and puts its own there.
    Worker late([this] { return Outcome{createPipe(m_name, kMessageType).error}; });
    ASSERT_TRUE(waitUntil([&] {
        QFile locks(QStringLiteral("/proc/locks"));
        if (!locks.open(QIODevice::ReadOnly))
            return false;
        const QList<QByteArray> lines = locks.readAll().split('\n');
        return std::any_of(lines.begin(), lines.end(), [&](const QByteArray& line) {
            return line.contains("->") && line.contains(lockOfFolder);
        });
    }));
    EXPECT_EQ(unlink((runtimeFolder() + '/' + filesIn(runtimeFolder())[0].toStdString()).c_str()),
              0);
    const UniqueFd rival = listenAt(m_name);
    folder = UniqueFd();
    EXPECT_EQ(late.outcome(), Outcome{ERROR_ACCESS_DENIED});
}

TEST_F(PosixPipe, openThatNobodyAnswersCanBeCancelled)
{
    const UniqueFd listener = listenAt(m_name);
    Worker opening([this] { return Outcome{openPipe(m_name).error}; });
    EXPECT_EQ(opening.cancelled(), Outcome{ERROR_OPERATION_ABORTED});
    EXPECT_EQ(waitForPipe(m_name, 1), Outcome{ERROR_SEM_TIMEOUT});
}

TEST_F(PosixPipe, listenerThatTalksNonsenseIsNoPipe)
{
    const UniqueFd listener = listenAt(m_name);
    Worker opening([this] { return Outcome{openPipe(m_name).error}; });
    {
        const UniqueFd connection(accept(listener.get(), nullptr, nullptr));
        EXPECT_EQ(send(connection.get(), "nonsense", 8, MSG_NOSIGNAL), 8);
        EXPECT_EQ(opening.outcome(), Outcome{ERROR_FILE_NOT_FOUND});
    }
    Worker again([this] { return Outcome{openPipe(m_name).error}; });
    close(accept(listener.get(), nullptr, nullptr));
    EXPECT_EQ(again.outcome(), Outcome{ERROR_FILE_NOT_FOUND});
}

TEST_F(PosixPipe, clientsThatTalkNonsenseDisturbNobody)
{
    const Opened host = createPipe(m_name, kMessageType);
    const UniqueFd silent = connectTo(m_name);
    const UniqueFd noisy = connectTo(m_name);
    EXPECT_EQ(send(noisy.get(), "nonsense nonsense", 17, MSG_NOSIGNAL), 17);
    const UniqueFd strange = connectTo(m_name);
    const Request unknown = {static_cast<Wish>(77), kReadWrite};
    EXPECT_EQ(send(strange.get(), &unknown, sizeof unknown, MSG_NOSIGNAL), ssize_t{sizeof unknown});
    char byte = 0;
    EXPECT_EQ(recv(noisy.get(), &byte, 1, 0), 0);
    EXPECT_EQ(recv(strange.get(), &byte, 1, 0), 0);
    EXPECT_EQ(openPipe(m_name).error, ERROR_SUCCESS);
}

TEST_F(PosixPipe, otherUserIsRefusedByTheHost)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only the super-user can become another user";
    QTemporaryDir theirs;
    ASSERT_EQ(chmod(m_folder.path().toLocal8Bit().constData(), 0755), 0);
    ASSERT_EQ(chown(theirs.path().toLocal8Bit().constData(), kOtherUser, kOtherUser), 0);
    const std::string path = pathOf("socket");
    const Opened host = createPipe(path, kMessageType);
    ASSERT_EQ(host.error, ERROR_SUCCESS);
    // Also where the file's own mode would let everybody in.
    for (const mode_t mode : {0600U, 0666U}) {
        ASSERT_EQ(chmod(path.c_str(), mode), 0);
        RoleProcess other("open-as-other-user", {QString::fromStdString(path), theirs.path()});
        EXPECT_EQ(other.nextLine(), std::to_string(ERROR_ACCESS_DENIED));
        EXPECT_EQ(other.nextLine(), std::to_string(ERROR_ACCESS_DENIED));
        EXPECT_EQ(other.waitForExit(), 0);
    }
    EXPECT_EQ(openPipe(path).error, ERROR_SUCCESS);
}

TEST_F(PosixPipe, otherUsersGrantIsRefused)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only the super-user can become another user";
    QTemporaryDir theirs;
    ASSERT_EQ(chown(theirs.path().toLocal8Bit().constData(), kOtherUser, kOtherUser), 0);
    const QString path = theirs.filePath(QStringLiteral("socket"));
    RoleProcess other("grant-as-other-user", {path, theirs.path()});
    ASSERT_EQ(other.nextLine(), "listening");
    EXPECT_EQ(openPipe(path.toStdString()).error, ERROR_ACCESS_DENIED);
    EXPECT_EQ(waitForPipe(path.toStdString(), kLongWait), Outcome{ERROR_ACCESS_DENIED});
}

TEST_F(PosixPipe, otherUsersHostIsRefusedByTheClientAndRefusesIt)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only the super-user can become another user";
    QTemporaryDir theirs;
    ASSERT_EQ(chown(theirs.path().toLocal8Bit().constData(), kOtherUser, kOtherUser), 0);
    const QString path = theirs.filePath(QStringLiteral("socket"));
    RoleProcess other("host-as-other-user", {path, theirs.path()});
    ASSERT_EQ(other.nextLine(), "0");
    EXPECT_EQ(openPipe(path.toStdString()).error, ERROR_ACCESS_DENIED);
    EXPECT_EQ(waitForPipe(path.toStdString(), kLongWait), Outcome{ERROR_ACCESS_DENIED});

    // A client that does not look for itself.
    const UniqueFd connection = connectTo(path.toStdString());
    Answer answer = {};
    EXPECT_EQ(recv(connection.get(), &answer, sizeof answer, 0), ssize_t{sizeof answer});
    EXPECT_EQ(answer.error, ERROR_ACCESS_DENIED);
}

TEST_F(PosixPipe, nothingIsInheritedByOtherPrograms)
{
    const auto openFds = [] {
        std::vector<int> fds;
        for (int fd = 0; fd < 256; ++fd)
            if (fcntl(fd, F_GETFD) >= 0)
                fds.push_back(fd);
        return fds;
    };
    const std::vector<int> before = openFds();
    const Opened host = createPipe(m_name, kMessageType);
    const Opened client = openPipe(m_name);
    Worker waiting([this] { return waitForPipe(m_name, NMPWAIT_WAIT_FOREVER); });
    int ours = 0;
    for (const int fd : openFds())
        if (std::find(before.begin(), before.end(), fd) == before.end()) {
            ++ours;
            EXPECT_NE(fcntl(fd, F_GETFD) & FD_CLOEXEC, 0) << fd;
        }
    EXPECT_GE(ours, 2);
}

TEST_F(PosixPipe, signalsDoNotEndACall)
{
    struct sigaction action = {};
    action.sa_handler = ignoreSignal;
    struct sigaction previous = {};
    ASSERT_EQ(sigaction(SIGUSR1, &action, &previous), 0);
    const Opened host = createPipe(m_name, kMessageType);
    const Opened client = openPipe(m_name);
    std::atomic<pthread_t> thread{};
    std::atomic<bool> signalled{false};
    Worker reading([&] {
        thread = pthread_self();
        const Outcome first = readPipe(client.handle);
        signalled = true;
        return first == done("first") ? writePipe(client.handle, pattern(kMuch)) : first;
    });
    while (thread == pthread_t{})
        std::this_thread::yield();
    constexpr int kSignals = 200;
    const auto disturb = [&] {
        for (int i = 0; i < kSignals; ++i) {
            pthread_kill(thread, SIGUSR1);
            std::this_thread::yield();
        }
    };
    disturb();
    EXPECT_EQ(writePipe(host.handle, "first"), kDone);
    while (!signalled)
        std::this_thread::yield();
    disturb();
    EXPECT_TRUE(readPipe(host.handle, kMuch) == done(pattern(kMuch)));
    EXPECT_EQ(reading.outcome(), kDone);
    sigaction(SIGUSR1, &previous, nullptr);
}

TEST_F(PosixPipe, hostWithoutDescriptorsTurnsClientsAwayAndRecovers)
{
    RoleProcess host("starved-host", {QString::fromStdString(m_name)});
    ASSERT_EQ(host.nextLine(), "0");
    const Opened before = openPipe(m_name);
    EXPECT_EQ(before.error, ERROR_SUCCESS);
    host.say("starve");
    ASSERT_EQ(host.nextLine(), "starved");
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(openPipe(m_name).error, ERROR_PIPE_BUSY);
    EXPECT_FALSE(waitForPipe(m_name, 100) == kDone);
    host.say("recover");
    ASSERT_EQ(host.nextLine(), "recovered");
    EXPECT_EQ(openPipe(m_name).error, ERROR_SUCCESS);
}
