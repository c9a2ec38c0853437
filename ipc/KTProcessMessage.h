#pragma once

#include <QString>

#include <json/value.h>

#include <string>

/// One message of the host channel. A plain value; texts are UTF-8.
struct KTProcessMessage
{
    std::string name;
    /// Who sent it. Everything the workbench sends carries this tag; the host's own is kept unread.
    std::string source = "lx";
    /// The host's number for the message; 0 in everything the workbench sends.
    Json::Int64 sequence = 0;
    /// Outbound always an array of positional values; inbound whatever the host sent.
    Json::Value arguments;

    /// Reads a message received from the host. No key is mandatory: a missing or mistyped one gives
    /// an empty text, 0 or null. Returns false when `text` is no JSON document; the record is then
    /// as constructed.
    bool fromJson(const QString& text);

    /// The number of positional arguments; 0 when the arguments are no array.
    Json::ArrayIndex argumentCount() const;

    /// The message as compact JSON text. Null arguments are written as an empty array.
    std::string toJson() const;

    /// Names the message, makes `values` its positional arguments and returns its JSON text.
    template<typename... Values>
    std::string build(const char* messageName, const Values&... values)
    {
        name = messageName;
        arguments = Json::Value(Json::arrayValue);
        (append(values), ...);
        return lendToJson();
    }

private:
    /// The same as toJson(), without a copy of the arguments.
    std::string lendToJson();

    template<typename Value>
    void append(const Value& value)
    {
        arguments.append(Json::Value(value));
    }
    void append(const QString& text) { arguments.append(Json::Value(text.toStdString())); }
};
