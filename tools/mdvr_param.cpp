// mdvr-param: shows what the library makes of a parameter document.
//
//   mdvr-param show [FILE|-]
//
// For each parameter type whose section is present, runs the library's own
// parser on a zeroed record and lists every field with its offset, type and
// value.
#include "CommonParaAdapter.h"
#include "ParaTypeTable.h"

#include <json/reader.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>

namespace {

struct TypeInfo {
    int type;
    const char* key;
    const char* parser;
    const char* record;
    size_t size;
    // Parses `doc` into a zeroed record and returns its bytes and layout.
    int (*run)(const Json::Value& doc, std::string& bytes, std::vector<para::FieldInfo>& layout);
};

template <class R> int Run(int type, const Json::Value& doc, std::string& bytes, std::vector<para::FieldInfo>& layout)
{
    auto record = std::make_unique<R>(); // zeroed
    int result = AdaptParaJson(static_cast<_PARA_TYPE_>(type), doc, record.get());
    bytes.assign(reinterpret_cast<const char*>(record.get()), sizeof(R));
    layout = para::Layout(*record);
    return result;
}

const TypeInfo kTypes[] = {
#define PARA_TOOL_ENTRY(type, key, parser, record)                                                   \
    {type, key, #parser, #record, sizeof(record),                                                    \
     [](const Json::Value& doc, std::string& bytes, std::vector<para::FieldInfo>& layout) {          \
         return Run<record>(type, doc, bytes, layout);                                               \
     }},
    PARA_TYPES(PARA_TOOL_ENTRY)
#undef PARA_TOOL_ENTRY
};

std::string Quote(const char* data, size_t size)
{
    size_t length = strnlen(data, size);
    std::string out = "\"";
    for (size_t i = 0; i < length; ++i) {
        unsigned char c = static_cast<unsigned char>(data[i]);
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
    out += '"';
    if (length == size)
        out += " (fills the field, no terminator)";
    return out;
}

std::string Value(const std::string& bytes, const para::FieldInfo& f)
{
    const char* at = bytes.data() + f.offset;
    char text[64];
    switch (f.kind) {
    case para::Kind::Text:
        return Quote(at, f.size);
    case para::Kind::Float: {
        float v;
        std::memcpy(&v, at, sizeof v);
        std::snprintf(text, sizeof text, "%g", double(v));
        return text;
    }
    case para::Kind::Signed:
    case para::Kind::Char: {
        long long v = 0;
        if (f.size == 1) v = static_cast<signed char>(*at);
        else if (f.size == 2) { short s; std::memcpy(&s, at, 2); v = s; }
        else if (f.size == 4) { int s; std::memcpy(&s, at, 4); v = s; }
        else std::memcpy(&v, at, 8);
        return std::to_string(v);
    }
    case para::Kind::Unsigned: {
        unsigned long long v = 0;
        std::memcpy(&v, at, f.size); // little-endian, like the target
        return std::to_string(v);
    }
    case para::Kind::Reserved:
        break;
    }
    return "(reserved)";
}

bool ReadDocument(const std::string& path, Json::Value& doc)
{
    std::stringstream text;
    if (path == "-") {
        text << std::cin.rdbuf();
    } else {
        std::ifstream file(path, std::ios::binary);
        if (!file) {
            std::fprintf(stderr, "mdvr-param: cannot read %s: %s\n", path.c_str(), std::strerror(errno));
            return false;
        }
        text << file.rdbuf();
    }
    Json::CharReaderBuilder builder;
    std::string errors;
    std::istringstream in(text.str());
    if (!Json::parseFromStream(builder, in, &doc, &errors)) {
        std::string first = errors.substr(0, errors.find('\n', errors.find('\n') + 1));
        for (char& c : first)
            if (c == '\n') c = ' ';
        std::fprintf(stderr, "mdvr-param: %s: JSON syntax error: %s\n", path.c_str(), first.c_str());
        return false;
    }
    return true;
}

int Show(const Json::Value& doc)
{
    for (const TypeInfo& t : kTypes) {
        if (para::Section(doc, t.key).isNull())
            continue;
        std::string bytes;
        std::vector<para::FieldInfo> layout;
        int result = t.run(doc, bytes, layout);
        std::printf("%s (type %d, %s, %zu bytes): %s returned %d\n", t.key, t.type, t.record, t.size, t.parser,
                    result);
        for (const para::FieldInfo& f : layout) {
            if (f.kind == para::Kind::Reserved)
                continue;
            std::printf("  %6zu  %-24s %-9s %s\n", f.offset, f.path.c_str(), para::TypeName(f).c_str(),
                        Value(bytes, f).c_str());
        }
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    std::string command = argc > 1 ? argv[1] : "show";
    if (command != "show") {
        std::fprintf(stderr, "usage: mdvr-param show [FILE|-]\n");
        return 2;
    }
    Json::Value doc;
    if (!ReadDocument(argc > 2 ? argv[2] : "-", doc))
        return 2;
    return Show(doc);
}
