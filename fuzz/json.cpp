// Any text as JSON: what is read and written with short cuts against jsoncpp alone.

#include "fuzz/support/Require.h"
#include "pavo_base/JSONUtils.h"

#include <json/writer.h>

#include <cstddef>
#include <cstdint>

namespace {

std::string writtenByJsoncpp(const Json::Value& value)
{
    static const Json::StreamWriterBuilder builder = [] {
        Json::StreamWriterBuilder compact;
        compact["indentation"] = "";
        compact["emitUTF8"] = true;
        return compact;
    }();
    return Json::writeString(builder, value);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string all(reinterpret_cast<const char*>(data), size);
    const std::string text = all.substr(0, all.find('\0'));
    Json::Value value;
    const bool isRead = JSONUtils::parseJSON(text, value);

    // There is no short cut past an escape.
    Json::Value pair;
    const bool isPair = JSONUtils::parseJSON('[' + text + R"(,"\n"])", pair) && pair.size() == 2;
    require(isRead == isPair, "both read it, or neither does");
    require(!isRead || pair[0] == value, "both read the same");

    const std::string written = JSONUtils::stringFromJSON(value);
    require(written == writtenByJsoncpp(value), "both write the same");
    return 0;
}
