// Values of a parsed record's fields, from its bytes (little-endian, like the
// target), as the tools print them: `mdvr-param show` and the example
// recorder list a record the same way.
#ifndef PARA_SHOW_H
#define PARA_SHOW_H

#include "ParaPlace.h"
#include "ToolText.h"

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
    // A collapsed array, listed as one line: its type and the bytes from one
    // element of its outer dimension to the next.
    std::string type = {};
    size_t stride = 0;
};

// Name of a field's type as the layout shows it ("u16", "char[16]", "u8[2]").
inline std::string TypeName(const FieldInfo& f)
{
    if (!f.type.empty())
        return f.type;
    return TypeLabel(f.kind, f.size);
}

// The fields of a record in description order, arrays element by element. A
// step's field is listed as the bytes it stores: a hexadecimal region as one
// run, the others as unsigned integers (element by element for an array).
// Collapsed (expand false), an array is one line with its bounds and stride,
// and the fields of an array of records are listed once, for element 0, with
// the indexes named i, j, k.
// The walk's visitor that lists a layout (Layout below).
struct LayoutList : PlaceVisitor {
    std::vector<FieldInfo> out;
    bool expand = true;

    FieldInfo Info(const Field& f, const Place& p, size_t size) const
    {
        const char* letters = expand ? nullptr : "ijk"; // of collapsed indexes
        return {PathText(p.path, letters), PathText(p.keys, letters), p.offset, size, f.kind(), p.path};
    }
    // The line of a collapsed array: u8 SET[3], char[16] N[4], alarmPlan_t AP[2].
    void Collapsed(const Field& f, const Place& p)
    {
        FieldInfo a = Info(f, p, f.count[0] * f.stride(0));
        a.path += "[" + std::to_string(f.count[0]) + "]" + (f.count[1] ? "[" + std::to_string(f.count[1]) + "]" : "");
        a.type = f.op == Op::Record || f.op == Op::Parsed ? f.embedded().name : TypeName(Info(f, p, f.size));
        a.stride = f.stride(0);
        out.push_back(a);
    }
    template <class Walk> void Elements(const Field& f, unsigned dim, const Place& p, Walk walk)
    {
        if (expand) {
            PlaceVisitor::Elements(f, dim, p, walk);
            return;
        }
        if (dim == 0)
            Collapsed(f, p);
        if (f.op == Op::Record || f.op == Op::Parsed)
            walk(ElementPlace(f, dim, p, 0));
    }
    void Leaf(const Field& f, const Place& p)
    {
        if (f.op != Op::Step || f.step == StepId::HexRegion || !f.count[0])
            out.push_back(Info(f, p, f.size));
        else if (!expand)
            Collapsed(f, p);
        else
            for (unsigned i = 0; i < f.count[0]; ++i)
                out.push_back(Info(f, ElementPlace(f, 0, p, i), f.size));
    }
};

inline std::vector<FieldInfo> Layout(const Record& record, bool expand = true)
{
    LayoutList list;
    list.expand = expand;
    WalkRecord(record, list);
    return list.out;
}

// Fields in offset order; fields at one offset keep their order.
inline std::vector<FieldInfo> ByOffset(std::vector<FieldInfo> fields)
{
    std::stable_sort(fields.begin(), fields.end(),
                     [](const FieldInfo& a, const FieldInfo& b) { return a.offset < b.offset; });
    return fields;
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
    for (const FieldInfo& f : ByOffset(std::move(layout)))
        if (f.kind != Kind::Reserved)
            std::fprintf(out, "  %-28s %6zu  %-9s %s\n", f.path.c_str(), f.offset, TypeName(f).c_str(),
                         ValueText(bytes, f).c_str());
}

} // namespace para

#endif
