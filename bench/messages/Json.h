#pragma once

#include <json/value.h>

#include <string>

// jsoncpp as one uses it by hand, configured once a thread.

bool parseByHand(const char* begin, const char* end, Json::Value& out);
std::string writeByHand(const Json::Value& value);

/// The link that a host's message asks for.
std::string requestedLink(const Json::Value& message);
/// The workbench's message that asks for a link to be opened.
Json::Value openUrlMessage(const std::string& link);
