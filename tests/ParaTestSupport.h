// Helpers for the parameter tests: documents from text, sentinel-filled
// records and byte-level views of them.
#ifndef PARA_TEST_SUPPORT_H
#define PARA_TEST_SUPPORT_H

#include "CommonParaAdapter.h"
#include "ParaTypes.h"
#include "ParaWalk.h"
#include "ToolkitHost.h"

#include <gtest/gtest.h>
#include <json/reader.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace paratest {

constexpr unsigned char kSentinel = 0xA5;

// Parses JSON text; a syntax error fails the test.
inline Json::Value Json(const std::string& text)
{
    Json::CharReaderBuilder builder;
    Json::Value value;
    std::string errors;
    std::istringstream in(text);
    EXPECT_TRUE(Json::parseFromStream(builder, in, &value, &errors)) << errors << " in " << text;
    return value;
}

// A whole file's bytes ("" when it cannot be read).
inline std::string Slurp(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// {"PARAMETER":{"MDVR":{<key>: <section>}}} with the section given as JSON text.
inline std::string DocText(const std::string& key, const std::string& section)
{
    return R"({"PARAMETER":{"MDVR":{")" + key + R"(":)" + section + "}}}";
}
inline Json::Value Doc(const std::string& key, const std::string& section) { return Json(DocText(key, section)); }

// The bundled example document.
inline std::string ExampleFile() { return std::string(EXAMPLES_DIR) + "/mdvr_parameters.json"; }

// A record on the heap (some are tens of kilobytes) with every byte 0xA5.
template <class R> std::unique_ptr<R> Sentinel()
{
    std::unique_ptr<R> record(new R);
    std::memset(static_cast<void*>(record.get()), kSentinel, sizeof(R));
    return record;
}

inline const unsigned char* Bytes(const void* record) { return static_cast<const unsigned char*>(record); }

// True when the bytes [from, to) of a record still hold the sentinel.
inline bool Untouched(const void* record, size_t from, size_t to)
{
    for (size_t i = from; i < to; ++i)
        if (Bytes(record)[i] != kSentinel)
            return false;
    return true;
}

// A field expected at a byte offset: a little-endian integer of `size` bytes
// (both targets are little-endian), or with `text` that text cut to `size`
// bytes and padded with zero bytes, or with `kept` bytes that still hold the
// sentinel.
struct FieldValue {
    size_t offset, size;
    unsigned long long value;
    std::string text = {};
    bool kept = false;
};
typedef std::vector<FieldValue> Fields;

inline FieldValue Zeros(size_t from, size_t to) { return {from, to - from, 0}; }
inline FieldValue Kept(size_t from, size_t to) { return {from, to - from, 0, {}, true}; }

template <class T> std::vector<T> operator+(std::vector<T> a, const std::vector<T>& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// The record's bytes as expected: the sentinel with `fields` laid over it in
// order, a later field overriding an earlier one.
inline std::string Image(size_t size, const Fields& fields)
{
    std::string image(size, char(kSentinel));
    for (const FieldValue& f : fields) {
        std::string bytes(8, '\0');
        std::memcpy(&bytes[0], &f.value, 8);
        if (f.kept)
            bytes.assign(f.size, char(kSentinel));
        else if (!f.text.empty())
            bytes = f.text.substr(0, std::min(f.size, f.text.find('\0')));
        bytes.resize(f.size, '\0');
        image.replace(f.offset, f.size, bytes);
    }
    return image;
}

// Compares a record with Image(size, fields): with `whole` every byte, else
// only the bytes of the listed fields. Reports the first byte that differs.
inline void ExpectFields(const void* record, size_t size, const Fields& fields, const std::string& what,
                         bool whole = true)
{
    const std::string want = Image(size, fields);
    std::vector<bool> listed(size, whole);
    for (const FieldValue& f : fields)
        std::fill(listed.begin() + f.offset, listed.begin() + f.offset + f.size, true);
    for (size_t i = 0; i < size; ++i)
        if (listed[i] && Bytes(record)[i] != static_cast<unsigned char>(want[i])) {
            ADD_FAILURE() << what << ": byte " << i << " is " << int(Bytes(record)[i]) << ", expected "
                          << int(static_cast<unsigned char>(want[i]));
            return;
        }
}

// A JSON array of n copies of `element`.
inline std::string List(const std::string& element, size_t n)
{
    std::string list = "[" + element;
    for (size_t i = 1; i < n; ++i)
        list += "," + element;
    return list + "]";
}

typedef std::pair<std::string, std::string> Line; // a captured log line: function, message
typedef std::vector<Line> Lines;

// The captured lines, each of which must be an error of the adapter's source.
inline Lines Logged(const ToolkitHost::LogCapture& log)
{
    Lines out;
    for (const ToolkitHost::LogLine& l : log.lines()) {
        EXPECT_EQ(l.level, 0) << l.message;
        EXPECT_EQ(l.file, "basicservice/basebusiness/BSCommonLibrary/src/CommonParaAdapter");
        out.emplace_back(l.function, l.message);
    }
    return out;
}

// What the sub-record parsers log for an empty or absent object.
const Line kNoLinkRecord{"ParseAlarmLinkRecord", "empty json when parse alarm link record!\n"};
const Line kNoLinkSnap{"ParseAlarmLinkSnapShot", "empty json when parse alarm link snap shot!\n"};
const Line kNoLinkOutput{"ParseAlarmLinkOutput", "empty json when parse alarm link output!\n"};
const Line kNoLink{"ParseAlarmLinkProcess", "empty json when parse alarm link process!\n"};
const Line kNoPlan{"ParseAlarmPlan", "empty json when parse alarm plan!\n"};
const Line kNoSnapPara{"ParseCommonSnapPara", "empty json when parse comman snap para!\n"};
const Line kNoProfile{"ParseBoHaoParamJson", "empty json when parse BoHaoParam!\n"};
const Line kNoThresh1{"ParseGDSAlarmThresh1", "empty json when parse paramAlarmThresh1_t!\n"};
const Line kNoThresh2{"ParseGDSAlarmThresh2", "empty json when parse paramAlarmThresh2_t!\n"};
// A linkage whose three embedded records are absent.
const Lines kLinkWithoutRecords = {kNoLinkRecord, kNoLinkSnap, kNoLinkOutput};

// A present section parsed through the dispatcher, so that the type number
// must reach its own section, into a record followed by 64 guard bytes.
struct SectionCase {
    const char* what;
    int type;
    const char* key;
    size_t size;
    std::string section;
    Fields fields;       // laid over the sentinel
    Lines logged = {};
    bool whole = true;   // every byte of the record as Image(); else the listed fields only
};

inline void ExpectSection(const SectionCase& c)
{
    SCOPED_TRACE(std::string(c.key) + ": " + c.what);
    std::vector<unsigned char> record(c.size + 64, kSentinel);
    ToolkitHost::LogCapture log;
    EXPECT_EQ(AdaptParaJson(static_cast<_PARA_TYPE_>(c.type), Doc(c.key, c.section), record.data()), 0);
    ExpectFields(record.data(), c.size, c.fields, c.section, c.whole);
    EXPECT_TRUE(Untouched(record.data(), c.size, record.size())) << "past the record";
    EXPECT_EQ(Logged(log), c.logged);
}

// A sub-record parser called directly on `json` (of any kind).
template <class R, class Parse>
void ExpectParsed(Parse parse, const std::string& json, int result, const Fields& fields, const Lines& logged = {},
                  bool whole = true)
{
    auto record = Sentinel<R>();
    ToolkitHost::LogCapture log;
    EXPECT_EQ(parse(Json(json), *record), result) << json;
    ExpectFields(record.get(), sizeof(R), fields, json, whole);
    EXPECT_EQ(Logged(log), logged) << json;
}

// The conversion step of a record's table that reads `keys`.
inline const para::Field& StepField(const para::Record& record, const char* keys)
{
    for (const para::Field* f = record.fields; f != para::LevelEnd(record.fields); ++f)
        if (f->op == para::Op::Step && std::string(f->key, f->length) == keys)
            return *f;
    throw std::logic_error(std::string("no step reads ") + keys);
}

} // namespace paratest

#endif
