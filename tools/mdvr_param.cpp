// mdvr-param: what a parameter document becomes in the recorder's records,
// and what the conversion silently loses.
//
//   mdvr-param show [--type N | --section KEY] [--format text|json|hex] [FILE|-]
//   mdvr-param layout [TYPE | SECTION | all]
//   mdvr-param check [FILE|-]
//   mdvr-param types
//
// Everything is derived from the library's record descriptions and parsers.
// Exit status: 0 success (check: clean), 1 check found something, 2 error.
#include "CommonParaAdapter.h"
#include "ParaCheck.h"
#include "ParaTypeTable.h"

#include <json/reader.h>
#include <json/writer.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace {

// An error that ends the program with a one-line message and status 2.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Parsed {
    int result;
    std::string bytes;
    std::vector<para::FieldInfo> layout;
};

struct TypeInfo {
    int type;
    const char* key;
    const char* parser;
    const char* record;
    size_t size;
    Parsed (*parse)(int type, const Json::Value& doc);              // into a zeroed record
    std::vector<para::FieldInfo> (*layout)();
    std::vector<para::Finding> (*check)(const Json::Value& section, const std::string& root);
};

template <class R> Parsed ParseZeroed(int type, const Json::Value& doc)
{
    std::unique_ptr<R> record(new R());
    Parsed p;
    p.result = AdaptParaJson(static_cast<_PARA_TYPE_>(type), doc, record.get());
    p.bytes.assign(reinterpret_cast<const char*>(record.get()), sizeof(R));
    p.layout = para::Layout(*record);
    return p;
}

template <class R> std::vector<para::FieldInfo> LayoutOf()
{
    std::unique_ptr<R> record(new R());
    return para::Layout(*record);
}

const TypeInfo kTypes[] = {
#define PARA_TOOL_ENTRY(type, key, parser, record) \
    {type, key, #parser, #record, sizeof(record), &ParseZeroed<record>, &LayoutOf<record>, &para::CheckSection<record>},
    PARA_TYPES(PARA_TOOL_ENTRY)
#undef PARA_TOOL_ENTRY
};

const TypeInfo* FindType(const std::string& what)
{
    for (const TypeInfo& t : kTypes)
        if (what == t.key || what == std::to_string(t.type))
            return &t;
    return nullptr;
}

// ---------------------------------------------------------------------------
// Values of fields, from a record's bytes (little-endian, like the target).

bool FillsField(const char* at, size_t size) { return strnlen(at, size) == size; }

std::string Quote(const char* at, size_t size)
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
std::string HexText(const char* at, size_t size)
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

long long SignedAt(const char* at, size_t size)
{
    switch (size) {
    case 1: return static_cast<signed char>(*at);
    case 2: { short v; std::memcpy(&v, at, 2); return v; }
    case 4: { int v; std::memcpy(&v, at, 4); return v; }
    default: { long long v; std::memcpy(&v, at, 8); return v; }
    }
}

unsigned long long UnsignedAt(const char* at, size_t size)
{
    unsigned long long v = 0;
    std::memcpy(&v, at, size);
    return v;
}

float FloatAt(const char* at)
{
    float v;
    std::memcpy(&v, at, sizeof v);
    return v;
}

std::string ValueText(const std::string& bytes, const para::FieldInfo& f)
{
    const char* at = bytes.data() + f.offset;
    switch (f.kind) {
    case para::Kind::Text:
        return Quote(at, f.size) + (FillsField(at, f.size) ? "  (fills the field, no terminator)" : "");
    case para::Kind::Hex: return HexText(at, f.size);
    case para::Kind::Float: {
        char text[32];
        std::snprintf(text, sizeof text, "%g", double(FloatAt(at)));
        return text;
    }
    case para::Kind::Char: // plain char has the target's signedness
        return std::is_signed_v<char> ? std::to_string(SignedAt(at, 1)) : std::to_string(UnsignedAt(at, 1));
    case para::Kind::Signed: return std::to_string(SignedAt(at, f.size));
    case para::Kind::Unsigned: return std::to_string(UnsignedAt(at, f.size));
    case para::Kind::Reserved: break;
    }
    return "";
}

Json::Value ValueJson(const std::string& bytes, const para::FieldInfo& f)
{
    const char* at = bytes.data() + f.offset;
    switch (f.kind) {
    case para::Kind::Text: return Json::Value(std::string(at, strnlen(at, f.size)));
    case para::Kind::Hex: return Json::Value(HexText(at, f.size));
    case para::Kind::Float: return Json::Value(double(FloatAt(at)));
    case para::Kind::Char:
        return std::is_signed_v<char> ? Json::Value(Json::Int64(SignedAt(at, 1))) : Json::Value(Json::UInt64(UnsignedAt(at, 1)));
    case para::Kind::Signed: return Json::Value(Json::Int64(SignedAt(at, f.size)));
    case para::Kind::Unsigned: return Json::Value(Json::UInt64(UnsignedAt(at, f.size)));
    case para::Kind::Reserved: break;
    }
    return Json::Value();
}

// Places a value at a field path ("RCP[0].RSI[1][2].S") in a JSON tree.
void PutPath(Json::Value& root, const std::string& path, const Json::Value& value)
{
    Json::Value* at = &root;
    size_t i = 0;
    while (i < path.size()) {
        if (path[i] == '.') {
            ++i;
        } else if (path[i] == '[') {
            const size_t close = path.find(']', i);
            at = &(*at)[Json::ArrayIndex(std::stoul(path.substr(i + 1, close - i - 1)))];
            i = close + 1;
        } else {
            const size_t end = path.find_first_of(".[", i);
            const std::string name = path.substr(i, end == std::string::npos ? std::string::npos : end - i);
            at = &(*at)[name];
            i = end == std::string::npos ? path.size() : end;
        }
    }
    *at = value;
}

// ---------------------------------------------------------------------------

Json::Value ReadDocument(const std::string& name)
{
    std::string text;
    if (name == "-") {
        std::ostringstream in;
        in << std::cin.rdbuf();
        text = in.str();
    } else {
        std::ifstream file(name, std::ios::binary);
        if (!file)
            throw UsageError("cannot read " + name + ": " + std::strerror(errno));
        std::ostringstream in;
        in << file.rdbuf();
        if (file.bad())
            throw UsageError("cannot read " + name + ": " + std::strerror(errno));
        text = in.str();
    }
    Json::CharReaderBuilder builder;
    std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value doc;
    std::string errors;
    bool ok = false;
    try {
        ok = reader->parse(text.data(), text.data() + text.size(), &doc, &errors);
    } catch (const std::exception& e) {
        errors = std::string("* Line 1, Column 1\n  ") + e.what();
    }
    if (!ok) {
        int line = 0, column = 0;
        std::sscanf(errors.c_str(), "* Line %d, Column %d", &line, &column);
        std::string reason = errors.substr(errors.find('\n') + 1);
        reason = reason.substr(reason.find_first_not_of(' '));
        reason = reason.substr(0, reason.find('\n'));
        throw UsageError(name + ": JSON syntax error at line " + std::to_string(line) + ", column " +
                         std::to_string(column) + ": " + reason);
    }
    return doc;
}

// The types asked for: one by key or number, else those whose section the
// document holds (every type when `all`), in type order.
std::vector<const TypeInfo*> Selected(const Json::Value& doc, const std::string& only, bool all = false)
{
    std::vector<const TypeInfo*> types;
    if (!only.empty()) {
        const TypeInfo* t = FindType(only);
        if (!t)
            throw UsageError("unknown parameter type or section: " + only);
        types.push_back(t);
        return types;
    }
    for (const TypeInfo& t : kTypes)
        if (all || !para::Section(doc, t.key).isNull())
            types.push_back(&t);
    std::sort(types.begin(), types.end(), [](const TypeInfo* a, const TypeInfo* b) { return a->type < b->type; });
    return types;
}

std::vector<para::FieldInfo> ByOffset(std::vector<para::FieldInfo> fields)
{
    std::stable_sort(fields.begin(), fields.end(),
                     [](const para::FieldInfo& a, const para::FieldInfo& b) { return a.offset < b.offset; });
    return fields;
}

void ShowText(const TypeInfo& t, const Parsed& p)
{
    std::printf("%s  type %d  %s  %zu bytes  %s() = %d\n", t.key, t.type, t.record, t.size, t.parser, p.result);
    for (const para::FieldInfo& f : ByOffset(p.layout))
        if (f.kind != para::Kind::Reserved)
            std::printf("  %-28s %6zu  %-9s %s\n", f.path.c_str(), f.offset, para::TypeName(f).c_str(),
                        ValueText(p.bytes, f).c_str());
}

void ShowHex(const TypeInfo& t, const Parsed& p)
{
    std::printf("%s  type %d  %s  %zu bytes  %s() = %d\n", t.key, t.type, t.record, t.size, t.parser, p.result);
    for (size_t row = 0; row < p.bytes.size(); row += 16) {
        std::printf("  %06zx ", row);
        std::string ascii;
        for (size_t i = row; i < row + 16; ++i) {
            if (i < p.bytes.size()) {
                const unsigned char c = static_cast<unsigned char>(p.bytes[i]);
                std::printf(" %02x", c);
                ascii += (c >= 0x20 && c < 0x7F) ? char(c) : '.';
            } else {
                std::printf("   ");
            }
        }
        std::printf("  |%s|\n", ascii.c_str());
    }
}

int Show(const std::vector<std::string>& args)
{
    std::string only, format = "text", file = "-";
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        if ((a == "--type" || a == "--section" || a == "--format") && i + 1 < args.size())
            (a == "--format" ? format : only) = args[++i];
        else if (a.size() > 1 && a[0] == '-' && a != "-")
            throw UsageError("unknown option: " + a);
        else
            file = a;
    }
    if (format != "text" && format != "json" && format != "hex")
        throw UsageError("unknown format: " + format);
    const Json::Value doc = ReadDocument(file);
    Json::Value all(Json::objectValue);
    for (const TypeInfo* t : Selected(doc, only)) {
        const Parsed p = t->parse(t->type, doc);
        if (format == "text") {
            ShowText(*t, p);
        } else if (format == "hex") {
            ShowHex(*t, p);
        } else {
            Json::Value record(Json::objectValue);
            for (const para::FieldInfo& f : p.layout)
                if (f.kind != para::Kind::Reserved)
                    PutPath(record, f.path, ValueJson(p.bytes, f));
            all[t->key] = record;
        }
    }
    if (format == "json") {
        Json::StreamWriterBuilder writer;
        writer["indentation"] = "  ";
        std::printf("%s\n", Json::writeString(writer, all).c_str());
    }
    return 0;
}

void PrintLayout(const TypeInfo& t)
{
    std::printf("struct %s {  /* type %d, section \"%s\", %s */\n", t.record, t.type, t.key, t.parser);
    size_t end = 0;
    for (const para::FieldInfo& f : ByOffset(t.layout())) {
        if (f.kind == para::Kind::Reserved)
            std::printf("  /* XXX %zu bytes reserved at %zu (%s): not written */\n", f.size, f.offset, f.path.c_str());
        else
            std::printf("  %-9s %-28s /* %6zu %5zu */  %s\n", para::TypeName(f).c_str(), (f.path + ";").c_str(),
                        f.offset, f.size, f.keys.c_str());
        end = std::max(end, f.offset + f.size);
    }
    if (end < t.size)
        std::printf("  /* XXX %zu bytes of tail padding */\n", t.size - end);
    std::printf("  /* size: %zu */\n};\n", t.size);
}

int Layout(const std::vector<std::string>& args)
{
    const std::string what = args.empty() ? "all" : args[0];
    if (what == "all") {
        for (const TypeInfo* t : Selected(Json::Value(), "", true))
            PrintLayout(*t);
        return 0;
    }
    const TypeInfo* t = FindType(what);
    if (!t)
        throw UsageError("unknown parameter type or section: " + what);
    PrintLayout(*t);
    return 0;
}

int Check(const std::vector<std::string>& args)
{
    const Json::Value doc = ReadDocument(args.empty() ? "-" : args[0]);
    std::vector<para::Finding> findings;
    const Json::Value& mdvr = para::Member(para::Member(doc, "PARAMETER"), "MDVR");
    if (!mdvr.isObject())
        findings.push_back({"PARAMETER.MDVR", "no \"MDVR\" object: no section is read"});
    else
        for (const std::string& key : mdvr.getMemberNames())
            if (!FindType(key) || std::isdigit(static_cast<unsigned char>(key[0])))
                findings.push_back({"MDVR." + key, "section not read by any parser of this library"});
    for (const TypeInfo& t : kTypes) {
        std::vector<para::Finding> more = t.check(para::Section(doc, t.key), std::string("MDVR.") + t.key);
        findings.insert(findings.end(), more.begin(), more.end());
    }
    for (const para::Finding& f : findings)
        std::printf("%s: %s\n", f.path.c_str(), f.what.c_str());
    if (findings.empty())
        std::printf("clean: every value is stored as written\n");
    return findings.empty() ? 0 : 1;
}

int Types()
{
    std::vector<const TypeInfo*> types = Selected(Json::Value(), "", true);
    std::printf("%4s  %-8s %-34s %-32s %s\n", "type", "section", "parser", "record", "size");
    for (const TypeInfo* t : types)
        std::printf("%4d  %-8s %-34s %-32s %zu\n", t->type, t->key, t->parser, t->record, t->size);
    std::printf("types 0-51 without a line have no parser in this build; 52-60 are reserved, 61 and above invalid\n");
    return 0;
}

const char kUsage[] =
    "usage: mdvr-param show [--type N | --section KEY] [--format text|json|hex] [FILE|-]\n"
    "       mdvr-param layout [TYPE | SECTION | all]\n"
    "       mdvr-param check [FILE|-]\n"
    "       mdvr-param types\n";

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    const std::string command = argv[1];
    const std::vector<std::string> args(argv + 2, argv + argc);
    try {
        if (command == "show")
            return Show(args);
        if (command == "layout")
            return Layout(args);
        if (command == "check")
            return Check(args);
        if (command == "types")
            return Types();
        if (command == "--help" || command == "-h") {
            std::fputs(kUsage, stdout);
            return 0;
        }
        throw UsageError("unknown command: " + command);
    } catch (const UsageError& e) {
        std::fprintf(stderr, "mdvr-param: %s\n", e.what());
        return 2;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "mdvr-param: %s\n", e.what());
        return 2;
    }
}
