#include "bench/messages/Json.h"

#include <json/reader.h>
#include <json/writer.h>

#include <memory>
#include <sstream>

bool parseByHand(const char* begin, const char* end, Json::Value& out)
{
    thread_local const std::unique_ptr<Json::CharReader> reader(
        Json::CharReaderBuilder().newCharReader());
    return reader->parse(begin, end, &out, nullptr);
}

std::string writeByHand(const Json::Value& value)
{
    thread_local const std::unique_ptr<Json::StreamWriter> writer([] {
        Json::StreamWriterBuilder builder;
        builder["indentation"] = "";
        return builder.newStreamWriter();
    }());
    std::ostringstream text;
    writer->write(value, &text);
    return text.str();
}

std::string requestedLink(const Json::Value& message)
{
    if (message["name"].asString() != "Request")
        return {};
    return message["arguments"][0]["url"].asString();
}

Json::Value openUrlMessage(const std::string& link)
{
    Json::Value message;
    message["name"] = "OpenUrl";
    message["source"] = "lx";
    message["sequence"] = 0;
    Json::Value& arguments = message["arguments"];
    arguments.append(link);
    arguments.append(false);
    return message;
}
