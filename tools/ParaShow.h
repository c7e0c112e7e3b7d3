// The text listing of a parsed record, as `mdvr-param show` prints it: one
// header line, then each field's path, offset, type and value in offset order.
#ifndef PARA_SHOW_H
#define PARA_SHOW_H

#include "ParaDescribe.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

namespace para {

inline std::string QuoteText(const char* at, size_t size)
{
    const size_t length = strnlen(at, size);
    std::string out = "\"";
    for (size_t i = 0; i < length; ++i) {
        const unsigned char c = static_cast<unsigned char>(at[i]);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += char(c);
        } else if (c >= 0x20 && c < 0x7F) {
            out += char(c);
        } else {
            char esc[8];
            std::snprintf(esc, sizeof esc, "\\x%02x", c);
            out += esc;
        }
    }
    return out + "\"";
}

// Bytes as hexadecimal text, two upper-case digits a byte.
inline std::string HexText(const char* at, size_t size)
{
    static const char kDigits[] = "0123456789ABCDEF";
    std::string out;
    for (size_t i = 0; i < size; ++i) {
        const unsigned char c = static_cast<unsigned char>(at[i]);
        out += kDigits[c >> 4];
        out += kDigits[c & 0x0F];
    }
    return out;
}

inline std::string FieldText(const std::string& bytes, const FieldInfo& f)
{
    const char* at = bytes.data() + f.offset;
    long long s = 0;
    unsigned long long u = 0;
    std::memcpy(&u, at, std::min<size_t>(f.size, sizeof u));
    switch (f.kind) {
    case Kind::Text:
        return QuoteText(at, f.size) + (strnlen(at, f.size) == f.size ? "  (fills the field, no terminator)" : "");
    case Kind::Hex: return HexText(at, f.size);
    case Kind::Float: {
        float v;
        std::memcpy(&v, at, sizeof v);
        char text[32];
        std::snprintf(text, sizeof text, "%g", double(v));
        return text;
    }
    case Kind::Char: // plain char has the target's signedness
        return std::is_signed_v<char> ? std::to_string(static_cast<signed char>(*at)) : std::to_string(u & 0xFF);
    case Kind::Signed:
        s = f.size >= 8 ? static_cast<long long>(u) : static_cast<long long>(u << (64 - 8 * f.size)) >> (64 - 8 * f.size);
        return std::to_string(s);
    case Kind::Unsigned: return std::to_string(u);
    case Kind::Reserved: break;
    }
    return "";
}

// Prints a record that `parser` filled with `result`.
inline void ShowRecord(std::FILE* out, const char* key, int type, const char* record, size_t size, const char* parser,
                       int result, const std::string& bytes, std::vector<FieldInfo> layout)
{
    std::fprintf(out, "%s  type %d  %s  %zu bytes  %s() = %d\n", key, type, record, size, parser, result);
    std::stable_sort(layout.begin(), layout.end(),
                     [](const FieldInfo& a, const FieldInfo& b) { return a.offset < b.offset; });
    for (const FieldInfo& f : layout)
        if (f.kind != Kind::Reserved)
            std::fprintf(out, "  %-28s %6zu  %-9s %s\n", f.path.c_str(), f.offset, TypeName(f).c_str(),
                         FieldText(bytes, f).c_str());
}

} // namespace para

#endif
