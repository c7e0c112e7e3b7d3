// Values of a parsed record's fields, from its bytes (little-endian, like the
// target), as the tools print them: `mdvr-param show` and the example
// recorder list a record the same way.
#ifndef PARA_SHOW_H
#define PARA_SHOW_H

#include "ParaPlace.h"

#include <json/value.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

namespace para {

// One field (or array element) of a record as the tools list it.
struct FieldInfo {
    std::string path; // field path in the record, e.g. "P1[0].CS_MP"
    std::string keys; // JSON key path under the section, e.g. "P1[0].CS.MP"
    size_t offset;
    size_t size;      // bytes
    Kind kind;
    Path parts = {};  // the field path in parts
};

// Name of a field's type as the layout shows it ("u16", "char[16]", "u8[2]").
inline std::string TypeName(const FieldInfo& f)
{
    const std::string bits = std::to_string(8 * f.size);
    switch (f.kind) {
    case Kind::Unsigned: return "u" + bits;
    case Kind::Signed: return "i" + bits;
    case Kind::Char: return "char";
    case Kind::Float: return "f" + bits;
    case Kind::Text: return "char[" + std::to_string(f.size) + "]";
    case Kind::Hex:
    case Kind::Reserved: break;
    }
    return "u8[" + std::to_string(f.size) + "]";
}

// The fields of a record in description order, arrays element by element. A
// step's field is listed as the bytes it stores: a hexadecimal region as one
// run, the others as unsigned integers (element by element for an array).
inline std::vector<FieldInfo> Layout(const Record& record)
{
    struct List : PlaceVisitor {
        std::vector<FieldInfo> out;
        void Leaf(const Field& f, const Place& p)
        {
            if (f.op != Op::Step || f.step == StepId::HexRegion || !f.count[0]) {
                out.push_back({PathText(p.path), PathText(p.keys), p.offset, f.size, f.kind(), p.path});
                return;
            }
            for (unsigned i = 0; i < f.count[0]; ++i) {
                const Place e = ElementPlace(f, 0, p, i);
                out.push_back({PathText(e.path), PathText(e.keys), e.offset, f.size, f.kind(), e.path});
            }
        }
    } list;
    WalkRecord(record, list);
    return list.out;
}

// Values of fields, from a record's bytes (little-endian, like the target).

inline bool FillsField(const char* at, size_t size) { return strnlen(at, size) == size; }

inline std::string Quote(const char* at, size_t size)
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

inline long long SignedAt(const char* at, size_t size)
{
    switch (size) {
    case 1: return static_cast<signed char>(*at);
    case 2: { short v; std::memcpy(&v, at, 2); return v; }
    case 4: { int v; std::memcpy(&v, at, 4); return v; }
    default: { long long v; std::memcpy(&v, at, 8); return v; }
    }
}

inline unsigned long long UnsignedAt(const char* at, size_t size)
{
    unsigned long long v = 0;
    std::memcpy(&v, at, size);
    return v;
}

inline float FloatAt(const char* at)
{
    float v;
    std::memcpy(&v, at, sizeof v);
    return v;
}

inline std::string ValueText(const std::string& bytes, const FieldInfo& f, bool noteFull = true)
{
    const char* at = bytes.data() + f.offset;
    switch (f.kind) {
    case Kind::Text:
        return Quote(at, f.size) + (noteFull && FillsField(at, f.size) ? "  (fills the field, no terminator)" : "");
    case Kind::Hex: return HexText(at, f.size);
    case Kind::Float: {
        char text[32];
        std::snprintf(text, sizeof text, "%g", double(FloatAt(at)));
        return text;
    }
    case Kind::Char: // plain char has the target's signedness
        return std::is_signed_v<char> ? std::to_string(SignedAt(at, 1)) : std::to_string(UnsignedAt(at, 1));
    case Kind::Signed: return std::to_string(SignedAt(at, f.size));
    case Kind::Unsigned: return std::to_string(UnsignedAt(at, f.size));
    case Kind::Reserved: break;
    }
    return "";
}

inline Json::Value ValueJson(const std::string& bytes, const FieldInfo& f)
{
    const char* at = bytes.data() + f.offset;
    switch (f.kind) {
    case Kind::Text: return Json::Value(std::string(at, strnlen(at, f.size)));
    case Kind::Hex: return Json::Value(HexText(at, f.size));
    case Kind::Float: return Json::Value(double(FloatAt(at)));
    case Kind::Char:
        return std::is_signed_v<char> ? Json::Value(Json::Int64(SignedAt(at, 1))) : Json::Value(Json::UInt64(UnsignedAt(at, 1)));
    case Kind::Signed: return Json::Value(Json::Int64(SignedAt(at, f.size)));
    case Kind::Unsigned: return Json::Value(Json::UInt64(UnsignedAt(at, f.size)));
    case Kind::Reserved: break;
    }
    return Json::Value();
}

// Prints a record that `parser` filled with `result`: a header line, then
// each field's path, offset, type and value in offset order.
inline void ShowRecord(std::FILE* out, const char* key, int type, const char* record, size_t size, const char* parser,
                       int result, const std::string& bytes, std::vector<FieldInfo> layout)
{
    std::fprintf(out, "%s  type %d  %s  %zu bytes  %s() = %d\n", key, type, record, size, parser, result);
    std::stable_sort(layout.begin(), layout.end(),
                     [](const FieldInfo& a, const FieldInfo& b) { return a.offset < b.offset; });
    for (const FieldInfo& f : layout)
        if (f.kind != Kind::Reserved)
            std::fprintf(out, "  %-28s %6zu  %-9s %s\n", f.path.c_str(), f.offset, TypeName(f).c_str(),
                         ValueText(bytes, f).c_str());
}

} // namespace para

#endif
