// mdvr-param: what a parameter document becomes in the recorder's records,
// and what the conversion silently loses.
//
//   mdvr-param show [--type N | --section KEY] [--format text|json|hex] [FILE|-]
//   mdvr-param layout [TYPE | SECTION | all]
//   mdvr-param check [FILE|-]
//   mdvr-param types
//   mdvr-param schema [TYPE | SECTION | all]
//   mdvr-param encode (--type N | --section KEY) [FILE|-] [-o OUT]
//   mdvr-param decode (--type N | --section KEY) RECORD
//   mdvr-param diff A B
//
// Everything is derived from the library's record descriptions and parsers.
// Exit status: 0 success (check: clean; diff: no difference), 1 check found
// something, diff found a difference or decode cannot give the record back
// exactly, 2 a usage or input error (one line on standard error).
#include "CommonParaAdapter.h"
#include "ParaCheck.h"
#include "ParaDecode.h"
#include "ParaSchema.h"
#include "ParaShow.h"
#include "ParaTypes.h"
#include "ToolArguments.h"

#include <CLI/CLI.hpp>

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
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

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

typedef para::Type TypeInfo;

const char* RecordName(const TypeInfo& t) { return t.parser.record->name; }
size_t RecordSize(const TypeInfo& t) { return t.parser.record->size; }

// A section parsed into a zeroed record.
Parsed Parse(const TypeInfo& t, const Json::Value& doc)
{
    std::vector<unsigned char> record(RecordSize(t));
    Parsed p;
    p.result = AdaptParaJson(static_cast<_PARA_TYPE_>(t.type), doc, record.data());
    p.bytes.assign(record.begin(), record.end());
    p.layout = para::Layout(*t.parser.record);
    return p;
}

// A type by its section key, or by its number (decimal or 0x-hex, as every
// tool reads numbers).
const TypeInfo* FindType(const std::string& what)
{
    long long number = -1;
    const bool numeric = !what.empty() && std::isdigit(static_cast<unsigned char>(what[0])) &&
                         ParseNumber(what, 0, 0xFFFF, number);
    for (const TypeInfo& t : para::kTypes)
        if (what == t.key || (numeric && number == t.type))
            return &t;
    return nullptr;
}

// ---------------------------------------------------------------------------

// The bytes of a file, or of standard input for "-" (which can be read once).
std::string ReadFile(const std::string& name)
{
    static bool stdinRead = false;
    int fd = STDIN_FILENO;
    if (name == "-") {
        if (stdinRead)
            throw UsageError("standard input is read only once: name at most one file -");
        stdinRead = true;
        if (isatty(fd))
            std::fprintf(stderr, "mdvr-param: reading the document from standard input (end it with Ctrl-D)\n");
    } else {
        fd = open(name.c_str(), O_RDONLY | O_CLOEXEC);
        if (fd < 0)
            throw UsageError("cannot read " + name + ": " + std::strerror(errno));
    }
    struct stat st;
    if (fstat(fd, &st) == 0 && S_ISDIR(st.st_mode)) {
        close(fd);
        throw UsageError("cannot read " + name + ": " + std::strerror(EISDIR));
    }
    std::string bytes;
    char buffer[65536];
    for (;;) {
        const ssize_t n = read(fd, buffer, sizeof buffer);
        if (n > 0) {
            bytes.append(buffer, size_t(n));
        } else if (n == 0) {
            break;
        } else if (errno != EINTR) {
            const int error = errno;
            if (fd != STDIN_FILENO)
                close(fd);
            throw UsageError("cannot read " + name + ": " + std::strerror(error));
        }
    }
    if (fd != STDIN_FILENO)
        close(fd);
    return bytes;
}

// The deepest nesting of arrays and objects that a document may have.
const int kMaxDepth = 1000;

// Line and column (from 1) of the bracket that opens level kMaxDepth + 1,
// skipping strings and comments as the JSON reader does.
std::pair<int, int> TooDeep(const std::string& text)
{
    int depth = 0, line = 1, column = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        ++column;
        if (c == '\n') {
            ++line;
            column = 0;
        } else if (c == '"') {
            for (++i, ++column; i < text.size() && text[i] != '"'; ++i, ++column) {
                if (text[i] == '\\')
                    ++i, ++column;
                else if (text[i] == '\n')
                    ++line, column = 0;
            }
        } else if (c == '/' && i + 1 < text.size() && (text[i + 1] == '/' || text[i + 1] == '*')) {
            const bool block = text[i + 1] == '*';
            const size_t end = block ? text.find("*/", i + 2) : text.find('\n', i);
            const size_t stop = end == std::string::npos ? text.size() : end + (block ? 2 : 0);
            for (; i < stop; ++i, ++column)
                if (text[i] == '\n')
                    ++line, column = 0;
            --i, --column;
        } else if (c == '[' || c == '{') {
            if (++depth > kMaxDepth)
                return {line, column};
        } else if (c == ']' || c == '}') {
            --depth;
        }
    }
    return {1, 1};
}

// The document in `text`: one JSON object, with nothing but white space (or
// comments) after it.
Json::Value ParseDocument(const std::string& text, const std::string& name)
{
    Json::CharReaderBuilder builder;
    builder["failIfExtra"] = true;
    builder["stackLimit"] = kMaxDepth;
    std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value doc;
    std::string errors;
    bool ok = false;
    try {
        ok = reader->parse(text.data(), text.data() + text.size(), &doc, &errors);
    } catch (const std::exception& e) { // the reader throws when the nesting is too deep
        if (!std::strstr(e.what(), "stackLimit"))
            throw UsageError(name + ": " + e.what());
        const std::pair<int, int> at = TooDeep(text);
        throw UsageError(name + ": nesting deeper than " + std::to_string(kMaxDepth) + " arrays and objects at line " +
                         std::to_string(at.first) + ", column " + std::to_string(at.second));
    }
    if (!ok) {
        int line = 0, column = 0;
        std::sscanf(errors.c_str(), "* Line %d, Column %d", &line, &column);
        std::string reason = errors.substr(errors.find('\n') + 1);
        reason = reason.substr(reason.find_first_not_of(' '));
        reason = reason.substr(0, reason.find('\n'));
        if (reason.rfind("Extra non-whitespace", 0) == 0)
            reason = "text after the document";
        throw UsageError(name + ": JSON syntax error at line " + std::to_string(line) + ", column " +
                         std::to_string(column) + ": " + reason);
    }
    if (!doc.isObject()) {
        static const char* const kinds[] = {"null", "an integer", "an integer", "a number", "a string", "a boolean",
                                            "an array", "an object"};
        throw UsageError(name + ": the document is " + kinds[doc.type()] +
                         ", not an object {\"PARAMETER\":{\"MDVR\":{...}}}");
    }
    return doc;
}

Json::Value ReadDocument(const std::string& name) { return ParseDocument(ReadFile(name), name); }

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
    for (const TypeInfo& t : para::kTypes)
        if (all || !para::Section(doc, t.key).isNull())
            types.push_back(&t);
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
    para::ShowRecord(stdout, t.key, t.type, RecordName(t), RecordSize(t), t.parser.name, p.result, p.bytes, p.layout);
}

void ShowHex(const TypeInfo& t, const Parsed& p)
{
    std::printf("%s  type %d  %s  %zu bytes  %s() = %d\n", t.key, t.type, RecordName(t), RecordSize(t), t.parser.name, p.result);
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

int Show(const std::string& only, const std::string& format, const std::string& file)
{
    if (format != "text" && format != "json" && format != "hex")
        throw UsageError("unknown format: " + format);
    const Json::Value doc = ReadDocument(file);
    Json::Value all(Json::objectValue);
    for (const TypeInfo* t : Selected(doc, only)) {
        const Parsed p = Parse(*t, doc);
        if (format == "text") {
            ShowText(*t, p);
        } else if (format == "hex") {
            ShowHex(*t, p);
        } else {
            Json::Value record(Json::objectValue);
            for (const para::FieldInfo& f : p.layout)
                if (f.kind != para::Kind::Reserved)
                    para::At(record, f.parts) = para::ValueJson(p.bytes, f);
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
    std::printf("struct %s {  /* type %d, section \"%s\", %s */\n", RecordName(t), t.type, t.key, t.parser.name);
    size_t end = 0;
    for (const para::FieldInfo& f : ByOffset(para::Layout(*t.parser.record))) {
        if (f.kind == para::Kind::Reserved)
            std::printf("  /* XXX %zu bytes reserved at %zu (%s): not written */\n", f.size, f.offset, f.path.c_str());
        else
            std::printf("  %-9s %-28s /* %6zu %5zu */  %s\n", para::TypeName(f).c_str(), (f.path + ";").c_str(),
                        f.offset, f.size, f.keys.c_str());
        end = std::max(end, f.offset + f.size);
    }
    if (end < RecordSize(t))
        std::printf("  /* XXX %zu bytes of tail padding */\n", RecordSize(t) - end);
    std::printf("  /* size: %zu */\n};\n", RecordSize(t));
}

// One type by key or number, or every type for "all".
std::vector<const TypeInfo*> TypesNamed(const std::string& what)
{
    if (what.empty())
        throw UsageError("an empty name: give a type number, a section key or all");
    return what == "all" ? Selected(Json::Value(), "", true) : Selected(Json::Value(), what);
}

int Layout(const std::string& what)
{
    for (const TypeInfo* t : TypesNamed(what))
        PrintLayout(*t);
    return 0;
}

int Check(const std::string& file)
{
    const Json::Value doc = ReadDocument(file);
    std::vector<para::Finding> findings;
    const Json::Value& mdvr = para::Member(para::Member(doc, "PARAMETER"), "MDVR");
    if (!mdvr.isObject())
        findings.push_back({"PARAMETER.MDVR", "no \"MDVR\" object: no section is read"});
    else
        for (const std::string& key : mdvr.getMemberNames())
            if (!FindType(key) || std::isdigit(static_cast<unsigned char>(key[0])))
                findings.push_back({"MDVR." + key, "section not read by any parser of this library"});
    for (const TypeInfo& t : para::kTypes) {
        std::vector<para::Finding> more =
            para::CheckSection(*t.parser.record, para::Section(doc, t.key), std::string("MDVR.") + t.key);
        findings.insert(findings.end(), more.begin(), more.end());
    }
    // A document of a million bad keys would give a million lines: the first
    // kMaxFindings are listed, then how many more there are.
    const size_t kMaxFindings = 1000;
    for (size_t i = 0; i < findings.size() && i < kMaxFindings; ++i)
        std::printf("%s: %s\n", findings[i].path.c_str(), findings[i].what.c_str());
    if (findings.size() > kMaxFindings)
        std::printf("... and %zu more findings (the first %zu are listed)\n", findings.size() - kMaxFindings,
                    kMaxFindings);
    if (findings.empty())
        std::printf("clean: every value is stored as written\n");
    return findings.empty() ? 0 : 1;
}

int Types()
{
    std::vector<const TypeInfo*> types = Selected(Json::Value(), "", true);
    std::printf("%4s  %-8s %-34s %-32s %s\n", "type", "section", "parser", "record", "size");
    for (const TypeInfo* t : types)
        std::printf("%4d  %-8s %-34s %-32s %zu\n", t->type, t->key, t->parser.name, RecordName(*t), RecordSize(*t));
    std::printf("types 0-%d without a line have no parser in this build; %d-60 are reserved, 61 and above invalid\n",
                para::kTypeCount - 1, para::kTypeCount);
    return 0;
}

// ---------------------------------------------------------------------------

Json::Value Document(const std::string& key, const Json::Value& section)
{
    Json::Value doc(Json::objectValue);
    doc["PARAMETER"]["MDVR"][key] = section;
    return doc;
}

int Schema(const std::string& what)
{
    Json::Value mdvr = para::ObjectSchema("the parameter sections, one object per section key");
    const std::vector<const TypeInfo*> types = TypesNamed(what);
    for (const TypeInfo* t : types)
        mdvr["properties"][t->key] =
            para::SectionSchema(*t->parser.record, std::string("section \"") + t->key + "\": record " + RecordName(*t) +
                                                      " (" + std::to_string(RecordSize(*t)) + " bytes, parameter type " +
                                                      std::to_string(t->type) + "), read by " + t->parser.name);
    // A schema of one section leaves the document's other sections alone.
    if (what != "all")
        mdvr.removeMember("additionalProperties");
    Json::Value parameter = para::ObjectSchema("");
    parameter["properties"]["MDVR"] = mdvr;
    parameter.removeMember("additionalProperties");
    Json::Value root = para::ObjectSchema("");
    root["$schema"] = "https://json-schema.org/draft/2020-12/schema";
    root["title"] = what == "all" ? std::string("MDVR parameter document")
                                  : std::string("MDVR parameter document, section ") + types[0]->key;
    root["properties"]["PARAMETER"] = parameter;
    root.removeMember("additionalProperties");
    std::printf("%s\n", para::DocumentText(root).c_str());
    return 0;
}

int Encode(const std::string& only, const std::string& file, const std::string& out)
{
    const TypeInfo& t = *Selected(Json::Value(), only)[0];
    const Parsed p = Parse(t, ReadDocument(file));
    if (p.result == -1)
        throw UsageError(std::string("section \"") + t.key + "\" is empty or absent: " + t.parser.name + "() = -1");
    if (out.empty() || out == "-") {
        if (isatty(STDOUT_FILENO))
            throw UsageError("a binary record is not written to a terminal: use -o OUT or a redirection");
        if (std::fwrite(p.bytes.data(), 1, p.bytes.size(), stdout) != p.bytes.size() || std::fflush(stdout) != 0)
            throw UsageError(std::string("cannot write the record: ") + std::strerror(errno));
        return 0;
    }
    std::ofstream file_out(out, std::ios::binary);
    if (!file_out.write(p.bytes.data(), std::streamsize(p.bytes.size())) || !file_out.flush())
        throw UsageError("cannot write " + out + ": " + std::strerror(errno));
    return 0;
}

// Prints the document whose section gives the record back, then checks it:
// the printed text parsed again must store the same bytes. What no document
// can give (reserved bytes, tail padding, floats that are not finite) is
// listed on standard error, with status 1.
int Decode(const std::string& only, const std::string& file)
{
    const TypeInfo& t = *Selected(Json::Value(), only)[0];
    const std::string bytes = ReadFile(file);
    if (bytes.size() != RecordSize(t))
        throw UsageError(file + ": " + std::to_string(bytes.size()) + " bytes, but a " + RecordName(t) + " record has " +
                         std::to_string(RecordSize(t)));
    const std::string text = para::DocumentText(Document(t.key, para::DecodeRecord(*t.parser.record, bytes)));
    std::printf("%s\n", text.c_str());
    const Parsed back = Parse(t, ParseDocument(text, "the decoded document"));
    int lost = 0;
    size_t end = 0;
    for (const para::FieldInfo& f : ByOffset(back.layout)) {
        end = std::max(end, f.offset + f.size);
        if (bytes.compare(f.offset, f.size, back.bytes, f.offset, f.size) == 0)
            continue;
        ++lost;
        if (f.kind == para::Kind::Reserved)
            std::fprintf(stderr, "mdvr-param: %s: reserved bytes at %zu hold data that no document writes\n",
                         f.path.c_str(), f.offset);
        else
            std::fprintf(stderr, "mdvr-param: %s: the record holds %s, the document gives %s\n", f.path.c_str(),
                         para::ValueText(bytes, f, false).c_str(), para::ValueText(back.bytes, f, false).c_str());
    }
    if (bytes.compare(end, std::string::npos, back.bytes, end, std::string::npos) != 0) {
        ++lost;
        std::fprintf(stderr, "mdvr-param: tail padding at %zu holds data that no document writes\n", end);
    }
    return lost ? 1 : 0;
}

int Diff(const std::string& fileA, const std::string& fileB)
{
    const Json::Value a = ReadDocument(fileA), b = ReadDocument(fileB);
    bool differs = false;
    for (const TypeInfo* t : Selected(Json::Value(), "", true)) {
        if (para::Section(a, t->key).isNull() && para::Section(b, t->key).isNull())
            continue;
        const Parsed pa = Parse(*t, a), pb = Parse(*t, b);
        if (pa.result != pb.result) {
            differs = true;
            std::printf("%s: %s() = %d -> %d\n", t->key, t->parser.name, pa.result, pb.result);
        }
        if (pa.result == -1 || pb.result == -1)
            continue; // a section that is not read stores nothing to compare
        for (const para::FieldInfo& f : ByOffset(pa.layout)) {
            if (f.kind == para::Kind::Reserved || pa.bytes.compare(f.offset, f.size, pb.bytes, f.offset, f.size) == 0)
                continue;
            differs = true;
            std::printf("%s.%s: %s -> %s\n", t->key, f.path.c_str(), para::ValueText(pa.bytes, f, false).c_str(),
                        para::ValueText(pb.bytes, f, false).c_str());
        }
    }
    return differs ? 1 : 0;
}

// ---------------------------------------------------------------------------
// Command line.

// `--type N` and `--section KEY` name one type either way.
void AddTypeOptions(CLI::App* command, std::string& only, bool required)
{
    // An empty name would select nothing (or, unchecked, everything).
    const auto named = [](const std::string& name) {
        return name.empty() ? std::string("an empty name: give a type number or a section key") : std::string();
    };
    CLI::Option* type = command->add_option("--type", only, "parameter type number (or section key)")->check(named);
    CLI::Option* section =
        command->add_option("--section", only, "section key (or parameter type number)")->check(named);
    type->excludes(section);
    if (required) {
        CLI::Option_group* group = command->add_option_group("type");
        group->add_option(type);
        group->add_option(section);
        group->require_option(1);
    }
}

int Run(int argc, char** argv)
{
    CLI::App app("mdvr-param: what a parameter document becomes in the recorder's records, and what the\n"
                 "conversion silently loses.",
                 "mdvr-param");
    app.set_version_flag("--version", std::string("mdvr-param (BSCommonLibrary) ") + BSCOMMON_VERSION,
                         "print the version and exit");
    app.require_subcommand(1);

    std::string only, format = "text", file = "-", what = "all", out, other;

    CLI::App* show = app.add_subcommand("show", "parse each section present (or the one named) into a zeroed record and print it");
    AddTypeOptions(show, only, false);
    show->add_option("--format", format, "text, json or hex")->capture_default_str();
    show->add_option("FILE", file, "parameter document, - for standard input")->capture_default_str();

    CLI::App* layout = app.add_subcommand("layout", "print a record's layout with the JSON key of every field");
    layout->add_option("TYPE", what, "type number, section key or all")->capture_default_str();

    CLI::App* check = app.add_subcommand("check", "report what the parsers would silently lose (status 1 when anything)");
    check->add_option("FILE", file, "parameter document, - for standard input")->capture_default_str();

    CLI::App* types = app.add_subcommand("types", "list every parameter type with its section, parser, record and size");

    CLI::App* schema = app.add_subcommand("schema", "print a JSON Schema (draft 2020-12) of parameter documents");
    schema->add_option("TYPE", what, "type number, section key or all")->capture_default_str();

    CLI::App* encode = app.add_subcommand("encode", "write the binary record that the library stores for a section");
    AddTypeOptions(encode, only, true);
    encode->add_option("FILE", file, "parameter document, - for standard input")->capture_default_str();
    encode->add_option("-o,--output", out, "record file (default: standard output)");

    CLI::App* decode = app.add_subcommand("decode", "print the document whose section gives back a binary record");
    AddTypeOptions(decode, only, true);
    decode->add_option("RECORD", file, "record file, - for standard input")->required();

    CLI::App* diff = app.add_subcommand("diff", "list every stored field that differs between two documents (status 1 when any)");
    diff->add_option("A", file, "old document")->required();
    diff->add_option("B", other, "new document")->required();

    const std::string exitStatus =
        "Exit status: 0 success, 1 a finding (check), a difference (diff) or a record that no\n"
        "document gives back (decode), 2 a usage or input error.";
    app.footer(exitStatus);
    for (CLI::App* command : app.get_subcommands({}))
        command->footer(exitStatus);

    // An unknown first word is a command, not an argument.
    if (argc > 1 && argv[1][0] != '-') {
        bool known = false;
        for (const CLI::App* command : app.get_subcommands({}))
            known = known || command->get_name() == argv[1];
        if (!known)
            throw UsageError(std::string("unknown command: ") + argv[1]);
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        if (e.get_exit_code() == 0) // --help, of the tool or of a command
            return app.exit(e);
        std::string message = e.what();
        throw UsageError(message.substr(0, message.find('\n')));
    }
    if (*show)
        return Show(only, format, file);
    if (*layout)
        return Layout(what);
    if (*check)
        return Check(file);
    if (*types)
        return Types();
    if (*schema)
        return Schema(what);
    if (*encode)
        return Encode(only, file, out);
    if (*decode)
        return Decode(only, file);
    return Diff(file, other);
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return Run(argc, argv);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "mdvr-param: %s\n", e.what());
        return 2;
    }
}
