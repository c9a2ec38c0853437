#pragma once

#include <json/value.h>

#include <string>

// jsoncpp as one uses it by hand, configured once a thread.

bool parseByHand(const char* begin, const char* end, Json::Value& out);
std::string writeByHand(const Json::Value& value);

/// The link that a host's text asks for.
std::string requestedLink(const char* begin, const char* end);
/// The workbench's text that asks for a link to be opened.
std::string openUrlText(const std::string& link);
