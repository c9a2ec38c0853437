#include "ipc/KTProcessMessage.h"

#include "pavo_base/JSONUtils.h"

#include <utility>

namespace {

constexpr char kName[] = "name";
constexpr char kSource[] = "source";
constexpr char kSequence[] = "sequence";
constexpr char kArguments[] = "arguments";

} // namespace

bool KTProcessMessage::fromJson(const QString& text)
{
    *this = KTProcessMessage();
    Json::Value root;
    if (!JSONUtils::parseJSON(text.toStdString(), root))
        return false;
    sequence = JSONUtils::optInt64(kSequence, root);
    name = JSONUtils::optString(kName, root);
    source = JSONUtils::optString(kSource, root);
    if (JSONUtils::isJSONObject(root))
        arguments = std::move(root[kArguments]);
    return true;
}

Json::ArrayIndex KTProcessMessage::argumentCount() const
{
    return JSONUtils::isJSONArray(arguments) ? arguments.size() : 0;
}

std::string KTProcessMessage::toJson() const
{
    return KTProcessMessage(*this).lendToJson();
}

std::string KTProcessMessage::lendToJson()
{
    if (arguments.isNull())
        arguments = Json::Value(Json::arrayValue);
    Json::Value root;
    JSONUtils::put(kName, name, root);
    JSONUtils::put(kSource, source, root);
    JSONUtils::put(kSequence, sequence, root);
    Json::Value& lent = root[kArguments];
    lent.swap(arguments);
    std::string text = JSONUtils::stringFromJSON(root);
    lent.swap(arguments);
    return text;
}
