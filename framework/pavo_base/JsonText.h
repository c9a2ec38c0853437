#pragma once

#include <json/value.h>

#include <string>

/// Appends the compact text of \a value to \a out, object members in the order of their keys'
/// bytes. Bytes that are no ASCII are passed through. \return false when \a value has more than
/// \a levels levels; what was appended by then is no JSON.
bool appendJson(const Json::Value& value, int levels, std::string& out);
