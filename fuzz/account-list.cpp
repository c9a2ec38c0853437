// The text of the account list as another process may have left it.

#include "fuzz/support/Process.h"
#include "fuzz/support/Require.h"
#include "ipc/MultiAccount/MAAccountInfo.h"

#include <cstddef>
#include <cstdint>

namespace {

using Accounts = std::list<MAAccountInfo>;

bool parse(const std::string& text, Accounts& out)
{
    return MAAccountInfo::parseJSON(text.data(), static_cast<int>(text.size()), out);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/)
{
    prepareProcess();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Accounts accounts(1);
    if (!MAAccountInfo::parseJSON(reinterpret_cast<const char*>(data), static_cast<int>(size),
                                  accounts)) {
        require(accounts.size() == 1, "what cannot be read adds nothing");
        return 0;
    }
    const std::string text = MAAccountInfo::toJSON(accounts);
    Accounts again;
    require(parse(text, again), "what was written can be read");
    require(again.size() == accounts.size(), "as many accounts are read as were written");
    require(MAAccountInfo::toJSON(again) == text, "what is read is what was written");

    // The region of the segment behind the text holds NUL bytes.
    Accounts padded;
    require(parse(text + std::string(1, '\0') + "]", padded) && padded.size() == again.size(),
            "the text ends at its first NUL byte");
    again.sort(&MAAccountInfo::compareByIndex);
    return 0;
}
