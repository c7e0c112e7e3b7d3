// mdvr-param: what a parameter document becomes in the recorder's records,
// and what the conversion silently loses. Its commands are the table in
// Run(); `mdvr-param --help` and `mdvr-param COMMAND --help` say the rest.
//
// Everything is derived from the library's record descriptions and parsers.
// Exit status: 0 success (check: clean; diff: no difference), 1 check found
// something, diff found a difference, decode cannot give the record back
// exactly, or the output cannot be written; 2 a usage or input error (one
// line on standard error).
#include "BusWire.h"
#include "CommonParaAdapter.h"
#include "ParaCheck.h"
#include "ParaDecode.h"
#include "ParaSchema.h"
#include "ParaShow.h"
#include "ParaTypes.h"
#include "ToolArguments.h"
#include "ToolText.h"

#include <CLI/CLI.hpp>

#include <json/reader.h>

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

// A failure of the program itself (the output cannot be written): one line
// and status 1.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The largest document: the largest body a bus message carries.
const size_t kMaxDocument = BusWire::kBodyMax;

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

// Edits (insertions, deletions, substitutions) from a to b.
size_t Distance(const std::string& a, const std::string& b)
{
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t above = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] != b[j - 1])});
            diagonal = above;
        }
    }
    return row[b.size()];
}

// The section key that an unknown name was most likely meant to be: the same
// letters in another case, else the nearest key within an edit for every four
// letters; "" for none, and for a number.
std::string Meant(const std::string& what)
{
    if (what.empty() || std::isdigit(static_cast<unsigned char>(what[0])))
        return "";
    std::string upper = what;
    for (char& c : upper)
        c = char(std::toupper(static_cast<unsigned char>(c)));
    std::string best;
    size_t nearest = what.size() / 4 + 1;
    for (const TypeInfo& t : para::kTypes) {
        const size_t d = upper == t.key ? 0 : Distance(what, t.key);
        if (d < nearest) {
            nearest = d;
            best = t.key;
        }
    }
    return best;
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

// The bytes of a file, or of standard input for "-" (which can be read once),
// at most `limit` of them. A longer input is refused before it is read (a
// regular file, by its size) or as soon as it passes the limit (a pipe), with
// "NAME: N bytes" (or "more than LIMIT bytes") and `tooLong`.
std::string ReadFile(const std::string& name, size_t limit, const std::string& tooLong)
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
    struct Closer {
        int fd;
        ~Closer()
        {
            if (fd != STDIN_FILENO)
                close(fd);
        }
    } closer{fd};
    struct stat st;
    if (fstat(fd, &st) != 0)
        throw UsageError("cannot read " + name + ": " + std::strerror(errno));
    if (S_ISDIR(st.st_mode))
        throw UsageError("cannot read " + name + ": " + std::strerror(EISDIR));
    if (S_ISREG(st.st_mode) && static_cast<unsigned long long>(st.st_size) > limit)
        throw UsageError(name + ": " + std::to_string(st.st_size) + " bytes" + tooLong);
    std::string bytes;
    char buffer[65536];
    for (;;) {
        const ssize_t n = read(fd, buffer, std::min(sizeof buffer, limit + 1 - bytes.size()));
        if (n > 0) {
            bytes.append(buffer, size_t(n));
            if (bytes.size() > limit)
                throw UsageError(name + ": more than " + std::to_string(limit) + " bytes" + tooLong);
        } else if (n == 0) {
            break;
        } else if (errno != EINTR) {
            throw UsageError("cannot read " + name + ": " + std::strerror(errno));
        }
    }
    return bytes;
}

// The deepest nesting of arrays and objects that a document may have.
const int kMaxDepth = 1000;

// Walks a JSON text as the reader does, past strings: calls at(c, line,
// column) (from 1) for each bracket and for the '/' that starts a comment,
// until it returns true; then returns that place, else {0, 0}.
template <class At> std::pair<int, int> ScanText(const std::string& text, At at)
{
    int line = 1, column = 0;
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
            if (at(c, line, column))
                return {line, column};
            const bool block = text[i + 1] == '*';
            const size_t end = block ? text.find("*/", i + 2) : text.find('\n', i);
            const size_t stop = end == std::string::npos ? text.size() : end + (block ? 2 : 0);
            for (; i < stop; ++i, ++column)
                if (text[i] == '\n')
                    ++line, column = 0;
            --i, --column;
        } else if ((c == '[' || c == '{' || c == ']' || c == '}') && at(c, line, column)) {
            return {line, column};
        }
    }
    return {0, 0};
}

// Line and column of the bracket that opens level kMaxDepth + 1.
std::pair<int, int> TooDeep(const std::string& text)
{
    int depth = 0;
    const std::pair<int, int> at = ScanText(text, [&](char c, int, int) {
        depth += c == '[' || c == '{' ? 1 : c == '/' ? 0 : -1;
        return depth > kMaxDepth;
    });
    return at.first ? at : std::make_pair(1, 1);
}

// Parses `text` as the tool reads documents (nothing but white space or
// comments after the value, at most kMaxDepth levels), with `setting` of the
// JSON reader changed where one is named. On a syntax error, the line and
// column and the reader's reason. The reader throws when the nesting is too deep.
struct SyntaxError {
    int line = 0, column = 0;
    std::string reason;
};
bool ParseText(const std::string& text, Json::Value& doc, SyntaxError& error, const char* setting = nullptr,
               bool value = false)
{
    Json::CharReaderBuilder builder;
    builder["failIfExtra"] = true;
    builder["stackLimit"] = kMaxDepth;
    if (setting)
        builder[setting] = value;
    std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    std::string errors;
    if (reader->parse(text.data(), text.data() + text.size(), &doc, &errors))
        return true;
    std::sscanf(errors.c_str(), "* Line %d, Column %d", &error.line, &error.column);
    std::string reason = errors.substr(errors.find('\n') + 1);
    reason = reason.substr(reason.find_first_not_of(' '));
    error.reason = reason.substr(0, reason.find('\n'));
    return false;
}

// The document in `text`: one JSON object, with nothing but white space (or
// comments) after it.
Json::Value ParseDocument(const std::string& text, const std::string& name)
{
    Json::Value doc;
    SyntaxError error;
    bool ok = false;
    try {
        ok = ParseText(text, doc, error);
    } catch (const std::exception& e) { // the reader throws when the nesting is too deep
        if (!std::strstr(e.what(), "stackLimit"))
            throw UsageError(name + ": " + e.what());
        const std::pair<int, int> at = TooDeep(text);
        throw UsageError(name + ": nesting deeper than " + std::to_string(kMaxDepth) + " arrays and objects at line " +
                         std::to_string(at.first) + ", column " + std::to_string(at.second));
    }
    if (!ok)
        throw UsageError(name + ": JSON syntax error at line " + std::to_string(error.line) + ", column " +
                         std::to_string(error.column) + ": " +
                         (error.reason.rfind("Extra non-whitespace", 0) == 0 ? "text after the document" : error.reason));
    if (!doc.isObject()) {
        throw UsageError(name + ": the document is " + JsonTypeName(doc) +
                         ", not an object {\"PARAMETER\":{\"MDVR\":{...}}}");
    }
    return doc;
}

std::string ReadDocumentText(const std::string& name)
{
    return ReadFile(name, kMaxDocument,
                    ", more than the " + std::to_string(kMaxDocument) + " bytes of the largest bus message body");
}

Json::Value ReadDocument(const std::string& name) { return ParseDocument(ReadDocumentText(name), name); }

// Why a document holds no section at all ("" when it may hold some).
std::string NoSections(const Json::Value& doc)
{
    return para::Member(para::Member(doc, "PARAMETER"), "MDVR").isObject() ? ""
                                                                             : "no \"MDVR\" object: no section is read";
}

// The types asked for: one by key or number, else those whose section the
// document holds (every type when `all`), in type order.
std::vector<const TypeInfo*> Selected(const Json::Value& doc, const std::string& only, bool all = false)
{
    std::vector<const TypeInfo*> types;
    if (!only.empty()) {
        const TypeInfo* t = FindType(only);
        if (!t) {
            const std::string meant = Meant(only);
            throw UsageError("unknown parameter type or section: " + only +
                             (meant.empty() ? "" : " (did you mean " + meant + "?)"));
        }
        types.push_back(t);
        return types;
    }
    for (const TypeInfo& t : para::kTypes)
        if (all || !para::Section(doc, t.key).isNull())
            types.push_back(&t);
    return types;
}

void ShowText(const TypeInfo& t, const Parsed& p)
{
    para::ShowRecord(stdout, t.key, t.type, RecordName(t), RecordSize(t), t.parser.name, p.result, p.bytes, p.layout);
}

void ShowHex(const TypeInfo& t, const Parsed& p)
{
    std::printf("%s  type %d  %s  %zu bytes  %s() = %d\n", t.key, t.type, RecordName(t), RecordSize(t), t.parser.name, p.result);
    std::fputs(HexDump(p.bytes, "  ").c_str(), stdout);
}

// A section as JSON: what the text form heads it with, then its fields by
// offset under the names the text form gives them.
void ShowJson(const TypeInfo& t, const Parsed& p, bool first)
{
    std::printf("%s  %s: {\"type\": %d, \"record\": %s, \"size\": %zu, \"parser\": %s, \"result\": %d, \"fields\": {",
                first ? "" : ",\n", JsonText(t.key).c_str(), t.type, JsonText(RecordName(t)).c_str(), RecordSize(t),
                JsonText(t.parser.name).c_str(), p.result);
    const char* separator = "\n";
    for (const para::FieldInfo& f : para::ByOffset(p.layout)) {
        if (f.kind == para::Kind::Reserved)
            continue;
        std::printf("%s    %s: %s", separator, JsonText(f.path).c_str(), JsonText(para::ValueJson(p.bytes, f), "", true).c_str());
        separator = ",\n";
    }
    std::printf("\n  }}");
}

int Show(const std::string& only, const std::string& format, const std::string& file)
{
    if (format != "text" && format != "json" && format != "hex")
        throw UsageError("unknown format: " + format + " (text, json or hex)");
    const Json::Value doc = ReadDocument(file);
    const std::vector<const TypeInfo*> types = Selected(doc, only);
    if (types.empty()) {
        const std::string why = NoSections(doc);
        throw UsageError(file + ": " + (why.empty() ? "no section that a parser of this library reads" : why));
    }
    if (format == "json")
        std::printf("{\n");
    for (const TypeInfo* t : types) {
        const Parsed p = Parse(*t, doc);
        if (format == "text")
            ShowText(*t, p);
        else if (format == "hex")
            ShowHex(*t, p);
        else
            ShowJson(*t, p, t == types[0]);
    }
    if (format == "json")
        std::printf("\n}\n");
    return 0;
}

// pahole's form: type, name, offset and size, then the JSON key; a collapsed
// array also its stride.
void PrintLayout(const TypeInfo& t, bool expand)
{
    std::printf("struct %s {  /* type %d, section \"%s\", %s */\n", RecordName(t), t.type, t.key, t.parser.name);
    size_t end = 0;
    for (const para::FieldInfo& f : para::ByOffset(para::Layout(*t.parser.record, expand))) {
        if (f.kind == para::Kind::Reserved && !f.stride)
            std::printf("  /* XXX %zu bytes reserved at %zu (%s): not written */\n", f.size, f.offset, f.path.c_str());
        else
            std::printf("  %-9s %-28s /* %6zu %5zu */  %s%s\n", para::TypeName(f).c_str(), (f.path + ";").c_str(),
                        f.offset, f.size, f.keys.c_str(),
                        f.stride ? ("  (stride " + std::to_string(f.stride) + ")").c_str() : "");
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

int Layout(const std::string& what, bool expand)
{
    for (const TypeInfo* t : TypesNamed(what))
        PrintLayout(*t, expand);
    return 0;
}

// What the library's reader accepts and editors and other JSON readers do
// not: each the first place it is found, as "line L, column C".
std::vector<para::Finding> Leniencies(const std::string& text)
{
    std::vector<para::Finding> found;
    // The JSON reader refuses comments only before the document: they are found by the scan.
    const std::pair<int, int> comment = ScanText(text, [](char c, int, int) { return c == '/'; });
    if (comment.first)
        found.push_back({"line " + std::to_string(comment.first) + ", column " + std::to_string(comment.second),
                         "a comment: the library skips it, editors and other JSON readers refuse it"});
    static const struct {
        const char* setting;
        bool value;
        const char* what;
    } kRules[] = {
        {"allowTrailingCommas", false,
         "a comma before a closing bracket: the library accepts it, editors and other JSON readers refuse it"},
        {"rejectDupKeys", true,
         "a key given twice in one object: the library keeps the last value, other readers may keep the first or "
         "refuse it"},
    };
    for (const auto& rule : kRules) {
        Json::Value ignored;
        SyntaxError error;
        if (!ParseText(text, ignored, error, rule.setting, rule.value))
            found.push_back({"line " + std::to_string(error.line) + ", column " + std::to_string(error.column), rule.what});
    }
    return found;
}

// A document of a million bad keys would give a million lines: the first
// kMaxFindings are listed, then how many more there are.
const size_t kMaxFindings = 1000;

int Check(const std::string& file, bool json)
{
    const std::string text = ReadDocumentText(file);
    const Json::Value doc = ParseDocument(text, file);
    std::vector<para::Finding> findings = Leniencies(text);
    const Json::Value& mdvr = para::Member(para::Member(doc, "PARAMETER"), "MDVR");
    if (const std::string why = NoSections(doc); !why.empty())
        findings.push_back({"PARAMETER.MDVR", why});
    else
        for (const std::string& key : mdvr.getMemberNames())
            if (!FindType(key) || std::isdigit(static_cast<unsigned char>(key[0])))
                findings.push_back({"MDVR." + key, "section not read by any parser of this library"});
    for (const TypeInfo& t : para::kTypes) {
        std::vector<para::Finding> more =
            para::CheckSection(*t.parser.record, para::Section(doc, t.key), std::string("MDVR.") + t.key);
        findings.insert(findings.end(), more.begin(), more.end());
    }
    const size_t listed = std::min(findings.size(), kMaxFindings);
    if (json) {
        Json::Value out(Json::objectValue);
        out["clean"] = findings.empty();
        out["findings"] = Json::Value(Json::arrayValue);
        for (size_t i = 0; i < listed; ++i) {
            Json::Value finding(Json::objectValue);
            finding["path"] = findings[i].path;
            finding["message"] = findings[i].what;
            out["findings"].append(finding);
        }
        out["unlisted"] = Json::UInt64(findings.size() - listed);
        std::printf("%s\n", para::DocumentText(out).c_str());
        return findings.empty() ? 0 : 1;
    }
    for (size_t i = 0; i < listed; ++i)
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
            throw Failure(std::string("cannot write the record: ") + std::strerror(errno));
        return 0;
    }
    std::FILE* record = std::fopen(out.c_str(), "wb");
    if (!record)
        throw UsageError("cannot write " + out + ": " + std::strerror(errno));
    const bool written = std::fwrite(p.bytes.data(), 1, p.bytes.size(), record) == p.bytes.size();
    const int error = errno;
    if (std::fclose(record) != 0 || !written)
        throw Failure("cannot write " + out + ": " + std::strerror(written ? errno : error));
    return 0;
}

// Prints the document whose section gives the record back, then checks it:
// the printed text parsed again must store the same bytes. What no document
// can give (reserved bytes, tail padding, floats that are not finite) is
// listed on standard error, with status 1.
int Decode(const std::string& only, const std::string& file)
{
    const TypeInfo& t = *Selected(Json::Value(), only)[0];
    const std::string size = ", but a " + std::string(RecordName(t)) + " record has " + std::to_string(RecordSize(t));
    const std::string bytes = ReadFile(file, RecordSize(t), size);
    if (bytes.size() != RecordSize(t))
        throw UsageError(file + ": " + std::to_string(bytes.size()) + " bytes" + size);
    const std::string text = para::DocumentText(Document(t.key, para::DecodeRecord(*t.parser.record, bytes)));
    std::printf("%s\n", text.c_str());
    const Parsed back = Parse(t, ParseDocument(text, "the decoded document"));
    size_t lost = 0;
    size_t end = 0;
    for (const para::FieldInfo& f : para::ByOffset(back.layout)) {
        end = std::max(end, f.offset + f.size);
        if (bytes.compare(f.offset, f.size, back.bytes, f.offset, f.size) == 0 || ++lost > kMaxFindings)
            continue;
        if (f.kind == para::Kind::Reserved)
            std::fprintf(stderr, "mdvr-param: %s: reserved bytes at %zu hold data that no document writes\n",
                         f.path.c_str(), f.offset);
        else
            std::fprintf(stderr, "mdvr-param: %s: the record holds %s, the document gives %s\n", f.path.c_str(),
                         para::ValueText(bytes, f, false).c_str(), para::ValueText(back.bytes, f, false).c_str());
    }
    if (lost > kMaxFindings)
        std::fprintf(stderr, "mdvr-param: ... and %zu more fields differ (the first %zu are listed)\n",
                     lost - kMaxFindings, kMaxFindings);
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
        for (const para::FieldInfo& f : para::ByOffset(pa.layout)) {
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

// What the commands take from the command line.
struct Options {
    std::string only, format = "text", file = "-", what = "all", out, other;
    bool json = false, expand = false;
};

// One command: its name and help, its options, and what it runs.
struct Command {
    const char* name;
    const char* help;
    void (*options)(CLI::App&, Options&);
    int (*run)(const Options&);
};

void DocumentOption(CLI::App& c, Options& o)
{
    c.add_option("FILE", o.file, "parameter document, - for standard input (at most " + std::to_string(kMaxDocument) +
                                     " bytes)")
        ->capture_default_str();
}

void WhatOption(CLI::App& c, Options& o)
{
    c.add_option("TYPE", o.what, "type number, section key or all")->capture_default_str();
}

const Command kCommands[] = {
    {"show", "parse each section present (or the one named) into a zeroed record and print it",
     [](CLI::App& c, Options& o) {
         AddTypeOptions(&c, o.only, false);
         c.add_option("--format", o.format, "text, json or hex")
             ->capture_default_str();
         DocumentOption(c, o);
     },
     [](const Options& o) { return Show(o.only, o.format, o.file); }},
    {"layout", "print a record's layout with the JSON key of every field, each array as one line",
     [](CLI::App& c, Options& o) {
         WhatOption(c, o);
         c.add_flag("--expand", o.expand, "list every element of every array");
     },
     [](const Options& o) { return Layout(o.what, o.expand); }},
    {"check", "report what the parsers would silently lose (status 1 when anything)",
     [](CLI::App& c, Options& o) {
         DocumentOption(c, o);
         c.add_flag("--json", o.json,
                    "print {\"clean\": bool, \"findings\": [{\"path\", \"message\"}...], \"unlisted\": n}");
     },
     [](const Options& o) { return Check(o.file, o.json); }},
    {"types", "list every parameter type with its section, parser, record and size", [](CLI::App&, Options&) {},
     [](const Options&) { return Types(); }},
    {"schema", "print a JSON Schema (draft 2020-12) of parameter documents", WhatOption,
     [](const Options& o) { return Schema(o.what); }},
    {"encode", "write the binary record that the library stores for a section",
     [](CLI::App& c, Options& o) {
         AddTypeOptions(&c, o.only, true);
         DocumentOption(c, o);
         c.add_option("-o,--output", o.out, "record file (default: standard output)");
     },
     [](const Options& o) { return Encode(o.only, o.file, o.out); }},
    {"decode", "print the document whose section gives back a binary record",
     [](CLI::App& c, Options& o) {
         AddTypeOptions(&c, o.only, true);
         c.add_option("RECORD", o.file, "record file, - for standard input")->required();
     },
     [](const Options& o) { return Decode(o.only, o.file); }},
    {"diff", "list every stored field that differs between two documents (status 1 when any)",
     [](CLI::App& c, Options& o) {
         c.add_option("A", o.file, "old document")->required();
         c.add_option("B", o.other, "new document")->required();
     },
     [](const Options& o) { return Diff(o.file, o.other); }},
};

int Run(int argc, char** argv)
{
    CLI::App app("mdvr-param: what a parameter document becomes in the recorder's records, and what the\n"
                 "conversion silently loses.",
                 "mdvr-param");
    app.set_version_flag("--version", std::string("mdvr-param (BSCommonLibrary) ") + BSCOMMON_VERSION,
                         "print the version and exit");
    app.require_subcommand(0, 1); // an unknown word is named as such, not taken for a missing command
    const std::string exitStatus =
        "Exit status: 0 success, 1 a finding (check), a difference (diff), a record that no\n"
        "document gives back (decode) or output that cannot be written, 2 a usage or input error.";
    app.footer(exitStatus);
    Options options;
    std::vector<std::pair<CLI::App*, const Command*>> commands;
    for (const Command& command : kCommands) {
        CLI::App* c = app.add_subcommand(command.name, command.help);
        command.options(*c, options);
        c->footer(exitStatus);
        commands.push_back({c, &command});
    }
    // An unknown first word is a command, not an argument.
    if (argc > 1 && argv[1][0] != '-' &&
        std::none_of(std::begin(kCommands), std::end(kCommands),
                     [&](const Command& command) { return argv[1] == std::string(command.name); }))
        throw UsageError(std::string("unknown command: ") + argv[1]);
    if (const int status = ParseArguments(app, argc, argv); status >= 0)
        return status;
    for (const auto& [c, command] : commands)
        if (*c)
            return command->run(options);
    throw UsageError("a command is required: " + [&] {
        std::string names;
        for (const Command& command : kCommands)
            names += (names.empty() ? "" : ", ") + std::string(command.name);
        return names;
    }());
}

} // namespace

int main(int argc, char** argv)
{
    int status;
    try {
        status = Run(argc, argv);
    } catch (const Failure& e) {
        std::fprintf(stderr, "mdvr-param: %s\n", e.what());
        return 1;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "mdvr-param: %s\n", e.what());
        return 2;
    }
    // Output that could not be written (a full disk, a closed pipe) is a failure, not success.
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
        std::fprintf(stderr, "mdvr-param: cannot write standard output: %s\n", std::strerror(errno));
        return 1;
    }
    return status;
}
