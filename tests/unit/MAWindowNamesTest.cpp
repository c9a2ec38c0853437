// Windows are found by class and title, whatever these hold.

#include "tests/support/AwkwardTexts.h"
#include "tests/support/Workbenches.h"

namespace {

using Texts = std::vector<std::string>;

const std::string kZhangSan = "\xe5\xbc\xa0\xe4\xb8\x89";

class MAWindowNamesTest : public WorkbenchesFixture
{
protected:
    /// A window of this test with an ordinary or a strange name.
    static std::unique_ptr<pavo::MessageWindow> open(const std::string& className,
                                                     const std::string& title)
    {
        // The system's texts end at a NUL.
        return std::make_unique<pavo::MessageWindow>(QString::fromUtf8(className.c_str()),
                                                     QString::fromUtf8(title.c_str()));
    }

    /// Windows are seen by every process of the user: the text with something of this test's own.
    static std::string mine(const std::string& text)
    {
        return QCoreApplication::applicationName().toStdString() + ' ' + text;
    }
    static std::string ofLength(std::size_t length)
    {
        std::string text = mine("");
        text.resize(length, 'x');
        return text;
    }

    /// Posts and expects it at that window, or the complaint when it is null.
    void expectAt(HWND window, const std::string& className, const std::string& title)
    {
        SCOPED_TRACE(className.substr(0, 60) + " | " + title.substr(0, 60) + " | lengths " +
                     std::to_string(className.size()) + ' ' + std::to_string(title.size()));
        log.clear();
        m_elsewhere.clear();
        a.manager.post(className, title, kMAListChanged, 0);
        if (!window) {
            EXPECT_EQ(complaints(), Texts{"ERROR not find window, " + title});
            return;
        }
        EXPECT_EQ(complaints(), Texts{});
        EXPECT_TRUE(waitUntil([&] { return !m_elsewhere.empty(); }));
        settle();
        EXPECT_EQ(m_elsewhere, std::vector<HWND>{window});
    }

    bool nativeEventFilter(const QByteArray& type, void* message, long* result) override
    {
        if (WorkbenchesFixture::nativeEventFilter(type, message, result))
            return true;
        const auto* posted = static_cast<const MSG*>(message);
        if (posted->message != a.manager.messageId())
            return false;
        m_elsewhere.push_back(posted->hwnd);
        return true;
    }

private:
    std::vector<HWND> m_elsewhere; ///< the windows but the workbenches' that got the message
};

} // namespace

TEST_F(MAWindowNamesTest, AwkwardTextsAreNamesLikeOthers)
{
    joinAll();
    for (const std::string& text : awkwardTexts()) {
        const auto titled = open("class", mine(text));
        ASSERT_NE(titled->handle(), nullptr) << text;
        expectAt(titled->handle(), "class", mine(text));
        const auto classed = open(mine(text), mine("title"));
        EXPECT_EQ(classed->handle() != nullptr, text.size() < 100) << text;
        expectAt(classed->handle(), mine(text), mine("title"));
    }
}

TEST_F(MAWindowNamesTest, BytesThatAreNoTextFindWhatTheyAreReadAs)
{
    joinAll();
    const std::string bytes = mine("\xff\xc3\x28 \xed\xa0\x80");
    const auto window = open("class", bytes);
    expectAt(window->handle(), "class", bytes);
}

TEST_F(MAWindowNamesTest, NamesOfAnyLengthAreFoundOrReported)
{
    joinAll();
    for (const std::size_t length : {60U, 254U, 255U, 256U, 257U, 1000U, 30000U}) {
        const std::string name = ofLength(length);
        const auto titled = open("class", name);
        expectAt(titled->handle(), "class", name);
        const auto classed = open(name, mine("title"));
        EXPECT_EQ(classed->handle() != nullptr, length <= 255);
        expectAt(classed->handle(), name, mine("title"));
        expectAt(nullptr, "class", name + 'x');
        expectAt(nullptr, name + 'x', mine("title"));
    }
}

TEST_F(MAWindowNamesTest, NamesBeyondAllLengthsAreReported)
{
    joinAll();
    const std::string endless(100000, 'x');
    expectAt(nullptr, "class", endless);
    expectAt(nullptr, endless, "title");
    expectAt(nullptr, endless, endless);
    MASelectedAccount selected;
    selected.className = std::string(300, 'x');
    ASSERT_TRUE(a.manager.writeSelected(selected));
    EXPECT_FALSE(a.manager.checkWindowVisible());
}

TEST_F(MAWindowNamesTest, EmptyNamesNameNothing)
{
    joinAll();
    EXPECT_EQ(open("", mine("title"))->handle(), nullptr);
    expectAt(nullptr, "", mine("title"));
    const auto untitled = open(mine("class"), "");
    log.clear();
    a.manager.post(mine("class"), "", kMAListChanged, 0);
    EXPECT_EQ(logged(), Texts{"DEBUG post process message, , param3"});
    const auto last = open(mine("class"), mine("last"));
    expectAt(last->handle(), mine("class"), mine("last"));
}

TEST_F(MAWindowNamesTest, CaseIsForgiven)
{
    joinAll();
    const auto latin = open(mine("Class"), mine("Title"));
    expectAt(latin->handle(), mine("CLASS"), mine("tITLE"));
    const auto accented = open(mine("Caf\xc3\xa9"), mine("\xd0\xa2\xd0\xb5\xd1\x81\xd1\x82"));
    expectAt(accented->handle(), mine("CAF\xc3\x89"), mine("\xd1\x82\xd0\x95\xd0\xa1\xd0\xa2"));
}

TEST_F(MAWindowNamesTest, OwnTitleInAnotherCaseIsAnotherTitleToThePoster)
{
    joinAll();
    const MAAccountInfo& own = a.manager.own();
    a.manager.post(own.className, own.title, kMAListChanged, 0);
    EXPECT_EQ(logged(), Texts{"DEBUG post process message, " + own.title + ", param3"});
    EXPECT_EQ(received(), "a:; b:; c:");
    a.manager.post(own.className, QString::fromStdString(own.title).toUpper().toStdString(),
                   kMAListChanged, 0);
    EXPECT_EQ(received(), "a: 3/0; b:; c:");
}

TEST_F(MAWindowNamesTest, WindowThatComesAgainWithAnotherTitleIsFoundByThat)
{
    joinAll();
    auto window = open("class", mine("before"));
    expectAt(window->handle(), "class", mine("before"));
    window.reset();
    window = open("class", mine("after"));
    expectAt(nullptr, "class", mine("before"));
    expectAt(window->handle(), "class", mine("after"));
}

TEST_F(MAWindowNamesTest, WindowsThatShareOneNameGetTheirOwn)
{
    joinAll();
    const auto one = open(mine("one"), mine("title"));
    const auto two = open(mine("two"), mine("title"));
    const auto three = open(mine("two"), mine("another title"));
    for (int i = 0; i < 3; ++i) {
        expectAt(one->handle(), mine("one"), mine("title"));
        expectAt(two->handle(), mine("two"), mine("title"));
        expectAt(three->handle(), mine("two"), mine("another title"));
    }
    expectAt(nullptr, mine("one"), mine("another title"));
}

TEST_F(MAWindowNamesTest, NamesThatAreNotAsciiPassTheStore)
{
    Workbench zhang(kZhangSan + " \xf0\x9f\x91\xa9");
    joinAll();
    ASSERT_TRUE(zhang.join());
    expectAt(zhang.window.handle(), zhang.listed().className, zhang.listed().title);
    EXPECT_TRUE(zhang.manager.switchToCurrentPin());
    EXPECT_EQ(received(), "a: 2/0; b:; c:");
    EXPECT_EQ(b.manager.selected().title, zhang.manager.own().title);
    EXPECT_TRUE(zhang.manager.switchToAccount(b.listed()));
    EXPECT_EQ(received(), "a: 2/0; b: 1/0; c:");
}
