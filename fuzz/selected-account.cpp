// The text of the selected account as another process may have left it.

#include "fuzz/support/Process.h"
#include "fuzz/support/Require.h"
#include "ipc/MultiAccount/MASelectedAccount.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/)
{
    prepareProcess();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    MASelectedAccount selected;
    selected.setAccount("app", "pin", "class", "title");
    const std::string before = selected.toJSON();
    if (!selected.parseJSON(reinterpret_cast<const char*>(data), static_cast<int>(size))) {
        require(selected.toJSON() == before, "what cannot be read changes nothing");
        return 0;
    }
    const std::string text = selected.toJSON();
    MASelectedAccount again;
    require(again.parseJSON(text.data(), static_cast<int>(text.size())),
            "what was written can be read");
    require(again.toJSON() == text, "what is read is what was written");
    require(again.mergeWindow() == selected.mergeWindow(), "both are of one mode");
    return 0;
}
