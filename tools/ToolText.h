// Text that the tools print about bytes and JSON values.
#ifndef TOOL_TEXT_H
#define TOOL_TEXT_H

#include <json/value.h>
#include <json/writer.h>

#include <cstdio>
#include <string>

// Bytes as hexadecimal text, two digits a byte, upper case unless `lower`.
inline std::string HexText(const void* data, size_t size, bool lower = false)
{
    const char* digits = lower ? "0123456789abcdef" : "0123456789ABCDEF";
    const unsigned char* at = static_cast<const unsigned char*>(data);
    std::string out;
    for (size_t i = 0; i < size; ++i) {
        out += digits[at[i] >> 4];
        out += digits[at[i] & 0x0F];
    }
    return out;
}

// Sixteen bytes a row: offset, the bytes in hexadecimal, then as characters
// ('.' for those that do not print); each row starts with `indent`.
inline std::string HexDump(const std::string& bytes, const char* indent = "")
{
    std::string out;
    char cell[32];
    for (size_t row = 0; row < bytes.size(); row += 16) {
        std::snprintf(cell, sizeof cell, "%s%06zx ", indent, row);
        out += cell;
        std::string shown;
        for (size_t i = row; i < row + 16; ++i) {
            if (i < bytes.size()) {
                const unsigned char c = static_cast<unsigned char>(bytes[i]);
                out += " " + HexText(&c, 1, true);
                shown += (c >= 0x20 && c < 0x7F) ? static_cast<char>(c) : '.';
            } else {
                out += "   ";
            }
        }
        out += "  |" + shown + "|\n";
    }
    return out;
}

// "an integer", "a string", ...: the JSON type of a value, as the tools say it.
inline const char* JsonTypeName(const Json::Value& v)
{
    switch (v.type()) {
    case Json::nullValue: return "null";
    case Json::intValue:
    case Json::uintValue: return "an integer";
    case Json::realValue: return "a real number";
    case Json::stringValue: return "a string";
    case Json::booleanValue: return "a boolean";
    case Json::arrayValue: return "an array";
    case Json::objectValue: return "an object";
    }
    return "a value";
}

// A JSON value as text, on one line unless `indentation` is given; with
// `utf8`, text keeps its bytes (not escaped as \u sequences).
inline std::string JsonText(const Json::Value& value, const char* indentation = "", bool utf8 = false)
{
    Json::StreamWriterBuilder writer;
    writer["indentation"] = indentation;
    writer["emitUTF8"] = utf8;
    return Json::writeString(writer, value);
}

#endif
