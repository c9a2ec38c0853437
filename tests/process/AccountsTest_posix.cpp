// Installations of several users of one machine.

#include "tests/support/AccountsFixture.h"
#include "tests/support/RoleProcess.h"

#include <QFile>

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr uid_t kOtherUser = 65534;

/// Joins the installation of that name as a user that is not its own, and says what it complains
/// of.
int joinAsOtherUser(const QStringList& arguments)
{
    qputenv("XDG_RUNTIME_DIR", arguments[1].toLocal8Bit());
    if (setgroups(0, nullptr) != 0 || setgid(kOtherUser) != 0 || setuid(kOtherUser) != 0 ||
        setuid(0) == 0)
        return 1;
    QCoreApplication::setApplicationName(arguments[0]);
    const LogRecorder log;
    MAManagerProbe manager;
    sayToParent(manager.join("other") ? "joined" : "refused");
    for (const std::string& complaint : log.complaints())
        sayToParent(complaint);
    return 0;
}
const Role kOtherUserRole("join-as-other-user", joinAsOtherUser);

class AccountsOfTwoUsersTest : public AccountsFixture
{
};

} // namespace

TEST_F(AccountsOfTwoUsersTest, SegmentOfAnotherUserIsLeftAlone)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can be somebody else";
    // The folder for temporary files is everybody's, that for the runtime a user's own.
    const QByteArray folder = qgetenv("TMPDIR");
    ASSERT_EQ(chmod(folder, 01777), 0);
    const QByteArray theirs = folder + "/theirs";
    ASSERT_EQ(mkdir(theirs, 0700), 0);
    ASSERT_EQ(chown(theirs, kOtherUser, kOtherUser), 0);
    MAManagerProbe manager;
    ASSERT_TRUE(manager.join("own"));
    const std::string before = allBytes();

    RoleProcess other("join-as-other-user",
                      {QCoreApplication::applicationName(), QFile::decodeName(theirs)});
    EXPECT_EQ(other.nextLine(), "refused");
    const std::string gate = "WARN shared memory gate failed, ";
    const std::string segment = "ERROR  create share memory failed, ";
    EXPECT_EQ(other.nextLine().substr(0, gate.size()), gate);
    EXPECT_EQ(other.nextLine().substr(0, segment.size()), segment);
    EXPECT_EQ(other.nextLine(), "ERROR other  add current account failed");
    EXPECT_EQ(other.waitForExit(), 0);
    EXPECT_TRUE(allBytes() == before);
    EXPECT_EQ(manager.loginAccountCount(), 1);
}
