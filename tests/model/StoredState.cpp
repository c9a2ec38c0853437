#include "tests/model/StoredState.h"

#include "tests/support/SegmentTexts.h"

#include <json/json.h>

#include <algorithm>
#include <initializer_list>
#include <memory>

namespace {

/// The document in a region, which ends with NUL bytes.
bool parse(const std::string& region, Json::Value& document)
{
    const std::size_t length = std::min(region.find('\0'), region.size());
    const bool isPadded = std::all_of(region.begin() + static_cast<std::ptrdiff_t>(length),
                                      region.end(), [](char byte) { return byte == '\0'; });
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    return isPadded && reader->parse(region.data(), region.data() + length, &document, nullptr);
}

/// Whether all of these are of the type that they are read as.
bool haveTypes(const Json::Value& record, std::initializer_list<const char*> numbers)
{
    if (!record.isObject())
        return false;
    for (const char* text : {"appID", "pin", "className", "title"}) {
        if (!record[text].isString())
            return false;
    }
    return std::all_of(numbers.begin(), numbers.end(),
                       [&](const char* number) { return record[number].isInt(); });
}

void readIdentity(const Json::Value& from, AccountsModel::Identity& identity)
{
    identity = {from["appID"].asString(), from["pin"].asString(), from["className"].asString(),
                from["title"].asString()};
}

AccountsModel::Selected readSelected(const Json::Value& from)
{
    AccountsModel::Selected record;
    readIdentity(from, record);
    record.mode = from["mode"].asInt();
    record.windowState = from["windowState"].asInt();
    static_cast<AccountsModel::Rect&>(record) = {from["x"].asInt(), from["y"].asInt(),
                                                 from["w"].asInt(), from["h"].asInt()};
    return record;
}

AccountsModel::Account readAccount(const Json::Value& from)
{
    AccountsModel::Account record;
    readIdentity(from, record);
    record.idx = from["idx"].asInt();
    record.unread = from["unread"].asInt();
    record.unreadMark = from["unreadMark"].asInt();
    record.skin = from["skin"].asInt();
    record.loginState = from["loginState"].asInt();
    return record;
}

} // namespace

std::optional<StoredState> storedState()
{
    const std::optional<SegmentTexts> texts = readSegmentTexts();
    Json::Value first;
    Json::Value list;
    if (!texts || !parse(texts->selected, first) ||
        !haveTypes(first, {"mode", "windowState", "x", "y", "w", "h"}) ||
        !parse(texts->accounts, list) || (!list.isArray() && !list.isNull()))
        return {};
    StoredState state{readSelected(first), {}};
    for (const Json::Value& each : list) {
        if (!haveTypes(each, {"idx", "unread", "unreadMark", "skin", "loginState"}))
            return {};
        state.accounts.push_back(readAccount(each));
    }
    return state;
}
