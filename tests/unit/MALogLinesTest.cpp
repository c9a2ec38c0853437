// All that each operation logs, in order.

#include "tests/support/MAOperations.h"

#include <ostream>
#include <stdexcept>
#include <utility>

namespace {

using Texts = std::vector<std::string>;

/// The lines of one of kMAOperations; "$a" stands for the title of account "a".
struct Logged
{
    const char* operation;
    Texts lines;
};

void PrintTo(const Logged& logged, std::ostream* out)
{
    *out << logged.operation;
}

const Logged kLogged[] = {
    {"SwitchToAccount", {"DEBUG post process message, $c, param1"}},
    {"SwitchToCurrentPin",
     {"DEBUG switch to account, $b", "DEBUG b, window state, 1",
      "DEBUG post process message, $a, param2"}},
    {"PopUpInFront", {}},
    {"PopUpFromBehind", {"DEBUG post process message, $a, param1"}},
    {"PopUpOfAHiddenWindow",
     {"DEBUG switch to account, $b", "DEBUG b, window state, 4",
      "DEBUG post process message, $a, param2"}},
    {"BringBackInFront", {}},
    {"BringBackFromBehind", {"DEBUG post process message, $a, param7"}},
    {"BringBackASeparateWindow", {"DEBUG b, window state, 4", "DEBUG b, states 4, w, 0, h, 0"}},
    {"SwitchShowState",
     {"INFO MAManager::switchShowState enter", "DEBUG post process message, $a, param8",
      "INFO MAManager::switchShowState leave"}},
    {"SwitchedHide",
     {"INFO MAManager::switchedHide enter", "DEBUG b, window state, 4",
      "DEBUG post process message, $a, param6", "INFO MAManager::switchedHide leave"}},
    {"Merge",
     {"DEBUG change merge, 1", "DEBUG post process message, $a, param2",
      "DEBUG post process message, $c, param2"}},
    {"Separate",
     {"DEBUG change merge, 0", "DEBUG post process message, $a, param1",
      "DEBUG post process message, $b, param1", "DEBUG post process message, $c, param1"}},
    {"ChangeSkin", {"DEBUG post process message, $a, param3"}},
    {"ChangeLoginState", {"DEBUG post process message, $a, param3"}},
    {"UnreadBehind", {"DEBUG post process message, $a, param4"}},
    {"UnreadInFront", {"DEBUG post process message, $a, param4"}},
    {"UnreadOfASeparateWindow", {}},
    {"UnreadMark", {"DEBUG post process message, $a, param4"}},
    {"SwitchLoginState",
     {"DEBUG post process message, $a, param5", "DEBUG post process message, $b, param5",
      "DEBUG post process message, $c, param5"}},
    {"QuitInFront", {"DEBUG post process message, $b, param1"}},
    {"QuitBehind", {"DEBUG post process message, $a, param3"}},
    {"JoinWithAnotherMode",
     {"DEBUG change merge, 0", "DEBUG init ma manager, pin app,b,class b,$b",
      "DEBUG change merge, 0", "DEBUG post process message, $a, param1",
      "DEBUG post process message, $b, param1", "DEBUG post process message, $c, param1",
      "DEBUG multi account init success, $b, mid #"}},
};

class MALogLinesTest : public MAOperationsFixture, public testing::WithParamInterface<Logged>
{
protected:
    static MAOperation operation()
    {
        for (const MAOperation& each : kMAOperations) {
            if (std::string(each.name) == GetParam().operation)
                return each;
        }
        throw std::logic_error("no such operation");
    }

    std::string filledIn(std::string line)
    {
        const std::string message = std::to_string(a.manager.messageId());
        for (const auto& [mark, text] :
             {std::pair{"$a", a.manager.own().title}, std::pair{"$b", b.manager.own().title},
              std::pair{"$c", c.manager.own().title}, std::pair{"#", message}}) {
            const std::size_t place = line.find(mark);
            if (place != std::string::npos)
                line.replace(place, std::string(mark).size(), text);
        }
        return line;
    }
};

} // namespace

TEST_P(MALogLinesTest, AreTheseInThisOrder)
{
    prepare(operation());
    run(operation(), own(operation()), c);
    Texts lines;
    for (const std::string& line : GetParam().lines)
        lines.push_back(filledIn(line));
    EXPECT_EQ(logged(), lines);
}

INSTANTIATE_TEST_SUITE_P(Operations, MALogLinesTest, testing::ValuesIn(kLogged),
                         [](const auto& test) { return std::string(test.param.operation); });
