#pragma once

#include "pavo_base/Export.h"

#include <json/value.h>

#include <string>
#include <string_view>

/// Reading and writing of JSON documents that come from elsewhere and may hold anything.
///
/// Any thread may call any function; a value itself is guarded by nobody, so one thread at a time
/// may change it. Nothing throws but std::bad_alloc.
class PAVO_BASE_EXPORT JSONUtils
{
public:
    JSONUtils() = delete;

    /// Containers that hold containers can be read and written up to this many levels; a scalar is
    /// a level too.
    static constexpr int kMaxDepth = 1000;

    /// Reads one JSON document, a scalar at the root included, up to the end of \a text or its
    /// first NUL byte. Comments, trailing commas and anything but blanks after the document are
    /// refused. When a key stands twice in an object, the last one counts.
    /// \return false when \a text is no such document; \a out is then a null value.
    static bool parseJSON(const std::string& text, Json::Value& out);

    /// As above for the \a length bytes at \a data. Null \a data and a \a length below 1 are no
    /// document.
    static bool parseJSON(const char* data, int length, Json::Value& out);

    static bool isJSONArray(const Json::Value& value);
    static bool isJSONObject(const Json::Value& value);

    /// Whether \a container is an object with a member \a key, be it null.
    static bool has(std::string_view key, const Json::Value& container);

    /// \name Members of an object by key, elements of an array by position counted from 0.
    /// Each returns the default when \a container is of another kind, when there is no such member
    /// or element, and when it is of another type than asked for. Texts are UTF-8 and may hold NUL
    /// bytes. A number is an integer when its value is one (3.0 is 3); one out of the asked range
    /// reads as the default. A number is no bool and a text is no number.
    /// @{
    static std::string optString(std::string_view key, const Json::Value& container,
                                 const std::string& fallback = {});
    static std::string optString(Json::ArrayIndex index, const Json::Value& container,
                                 const std::string& fallback = {});
    static int optInt(std::string_view key, const Json::Value& container, int fallback = 0);
    static int optInt(Json::ArrayIndex index, const Json::Value& container, int fallback = 0);
    static unsigned optUInt(std::string_view key, const Json::Value& container,
                            unsigned fallback = 0);
    static unsigned optUInt(Json::ArrayIndex index, const Json::Value& container,
                            unsigned fallback = 0);
    static Json::Int64 optInt64(std::string_view key, const Json::Value& container,
                                Json::Int64 fallback = 0);
    static Json::Int64 optInt64(Json::ArrayIndex index, const Json::Value& container,
                                Json::Int64 fallback = 0);
    static bool optBool(std::string_view key, const Json::Value& container, bool fallback = false);
    static bool optBool(Json::ArrayIndex index, const Json::Value& container,
                        bool fallback = false);
    /// @}

    /// The member or element as it is, whatever its type, or a null value where there is none.
    /// It belongs to \a container and lives as long as it stays there unchanged.
    static const Json::Value& optObject(std::string_view key, const Json::Value& container);
    static const Json::Value& optObject(Json::ArrayIndex index, const Json::Value& container);

    /// Sets the member \a key of \a object to a text (UTF-8, not a null pointer), number, bool or
    /// value. An \a object that is none yet becomes one, and what it held is gone.
    static void put(std::string_view key, Json::Value value, Json::Value& object);

    /// The compact text of \a value, without a newline and with every character outside ASCII as
    /// it is; object members come in the order of their keys' bytes. Bytes that are no UTF-8 are
    /// passed through. \return empty text when \a value is deeper than kMaxDepth.
    static std::string stringFromJSON(const Json::Value& value);
};
