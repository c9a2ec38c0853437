#include "pavo_base/JSONUtils.h"

#include "pavo_base/JsonScanner.h"
#include "pavo_base/JsonText.h"

#include <json/reader.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace {

/// Of what is written: most messages and the record of an account need no more room.
constexpr std::size_t kUsualLength = 256;

std::unique_ptr<Json::CharReader> makeReader()
{
    Json::CharReaderBuilder builder;
    builder["failIfExtra"] = true;
    builder["stackLimit"] = JSONUtils::kMaxDepth;
    return std::unique_ptr<Json::CharReader>(builder.newCharReader());
}

struct IdleReaders
{
    std::mutex mutex;
    std::vector<std::unique_ptr<Json::CharReader>> readers;
};

// A reader takes longer to configure than to do its work and keeps state while it does it, so each
// is kept for the next text and lent to one thread at a time. It is nobody's in particular: what
// belongs to a thread is not always destroyed with it where MinGW keeps it. Nobody ever waits here,
// as the process may be ending and the thread that holds the lock be gone.
bool parseWithReader(const char* begin, const char* end, Json::Value& value)
{
    static auto* const idle = new IdleReaders; // Also for exit handlers and static destructors.
    std::unique_ptr<Json::CharReader> reader;
    if (const std::unique_lock lock(idle->mutex, std::try_to_lock);
        lock && !idle->readers.empty()) {
        reader = std::move(idle->readers.back());
        idle->readers.pop_back();
    }
    if (!reader)
        reader = makeReader();
    const bool isParsed = reader->parse(begin, end, &value, nullptr);
    if (const std::unique_lock lock(idle->mutex, std::try_to_lock); lock)
        idle->readers.push_back(std::move(reader));
    return isParsed;
}

// jsoncpp's own settings against these leave gaps: it skips comments between the items of a
// container all the same, and allows a comma after the last member of an object when that member's
// key is empty.
bool hasCommentOrTrailingComma(const char* position, const char* end)
{
    char previous = '\0';
    for (; position != end; ++position) {
        switch (*position) {
        case '/':
            return true;
        case '}':
        case ']':
            if (previous == ',')
                return true;
            break;
        case '"':
            for (++position; position != end && *position != '"'; ++position) {
                if (*position == '\\' && position + 1 != end)
                    ++position;
            }
            if (position == end)
                return false;
            break;
        case ' ':
        case '\t':
        case '\n':
        case '\r':
            continue;
        default:
            break;
        }
        previous = *position;
    }
    return false;
}

bool parse(const char* begin, const char* end, Json::Value& value)
{
    if (JsonScanner(begin, end).read(value))
        return true;
    try {
        return !hasCommentOrTrailingComma(begin, end) && parseWithReader(begin, end, value);
    } catch (const Json::Exception&) {
        return false; // nested too deeply
    }
}

std::string asText(const Json::Value& value, const std::string& fallback)
{
    return value.isString() ? value.asString() : fallback;
}

int asInt(const Json::Value& value, int fallback)
{
    return value.isInt() ? value.asInt() : fallback;
}

unsigned asUInt(const Json::Value& value, unsigned fallback)
{
    return value.isUInt() ? value.asUInt() : fallback;
}

Json::Int64 asInt64(const Json::Value& value, Json::Int64 fallback)
{
    return value.isInt64() ? value.asInt64() : fallback;
}

bool asBool(const Json::Value& value, bool fallback)
{
    return value.isBool() ? value.asBool() : fallback;
}

const Json::Value* find(std::string_view key, const Json::Value& container)
{
    if (!container.isObject())
        return nullptr;
    const std::string name(key); // jsoncpp takes no null pointer, which an empty view may hold
    return container.find(name.data(), name.data() + name.size());
}

} // namespace

bool JSONUtils::parseJSON(const std::string& text, Json::Value& out)
{
    Json::Value value;
    const char* const begin = text.c_str();
    const bool parsed = parse(begin, begin + std::strlen(begin), value);
    out = parsed ? std::move(value) : Json::Value();
    return parsed;
}

bool JSONUtils::parseJSON(const char* data, int length, Json::Value& out)
{
    Json::Value value;
    const bool parsed =
        data && length > 0 && parse(data, std::find(data, data + length, '\0'), value);
    out = parsed ? std::move(value) : Json::Value();
    return parsed;
}

bool JSONUtils::isJSONArray(const Json::Value& value)
{
    return value.isArray();
}

bool JSONUtils::isJSONObject(const Json::Value& value)
{
    return value.isObject();
}

bool JSONUtils::has(std::string_view key, const Json::Value& container)
{
    return find(key, container) != nullptr;
}

std::string JSONUtils::optString(std::string_view key, const Json::Value& container,
                                 const std::string& fallback)
{
    return asText(optObject(key, container), fallback);
}

std::string JSONUtils::optString(Json::ArrayIndex index, const Json::Value& container,
                                 const std::string& fallback)
{
    return asText(optObject(index, container), fallback);
}

int JSONUtils::optInt(std::string_view key, const Json::Value& container, int fallback)
{
    return asInt(optObject(key, container), fallback);
}

int JSONUtils::optInt(Json::ArrayIndex index, const Json::Value& container, int fallback)
{
    return asInt(optObject(index, container), fallback);
}

unsigned JSONUtils::optUInt(std::string_view key, const Json::Value& container, unsigned fallback)
{
    return asUInt(optObject(key, container), fallback);
}

unsigned JSONUtils::optUInt(Json::ArrayIndex index, const Json::Value& container, unsigned fallback)
{
    return asUInt(optObject(index, container), fallback);
}

Json::Int64 JSONUtils::optInt64(std::string_view key, const Json::Value& container,
                                Json::Int64 fallback)
{
    return asInt64(optObject(key, container), fallback);
}

Json::Int64 JSONUtils::optInt64(Json::ArrayIndex index, const Json::Value& container,
                                Json::Int64 fallback)
{
    return asInt64(optObject(index, container), fallback);
}

bool JSONUtils::optBool(std::string_view key, const Json::Value& container, bool fallback)
{
    return asBool(optObject(key, container), fallback);
}

bool JSONUtils::optBool(Json::ArrayIndex index, const Json::Value& container, bool fallback)
{
    return asBool(optObject(index, container), fallback);
}

const Json::Value& JSONUtils::optObject(std::string_view key, const Json::Value& container)
{
    const Json::Value* const member = find(key, container);
    return member ? *member : Json::Value::nullSingleton();
}

const Json::Value& JSONUtils::optObject(Json::ArrayIndex index, const Json::Value& container)
{
    return container.isArray() ? container[index] : Json::Value::nullSingleton();
}

void JSONUtils::put(std::string_view key, Json::Value value, Json::Value& object)
{
    if (!object.isObject())
        object = Json::Value(Json::objectValue);
    object[std::string(key)] = std::move(value);
}

std::string JSONUtils::stringFromJSON(const Json::Value& value)
{
    std::string text;
    text.reserve(kUsualLength);
    if (!appendJson(value, kMaxDepth, text))
        text.clear();
    return text;
}
