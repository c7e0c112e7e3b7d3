// Helpers for the parameter tests: documents from text, sentinel-filled
// records and byte-level views of them.
#ifndef PARA_TEST_SUPPORT_H
#define PARA_TEST_SUPPORT_H

#include "CommonParaAdapter.h"
#include "ToolkitHost.h"

#include <gtest/gtest.h>
#include <json/reader.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <sstream>
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

// {"PARAMETER":{"MDVR":{<key>: <section>}}} with the section given as JSON text.
inline Json::Value Doc(const std::string& key, const std::string& section)
{
    return Json(R"({"PARAMETER":{"MDVR":{")" + key + R"(":)" + section + "}}}");
}

// A record on the heap (some are tens of kilobytes) with every byte 0xA5.
template <class R> std::unique_ptr<R> Sentinel()
{
    std::unique_ptr<R> record(new R);
    std::memset(static_cast<void*>(record.get()), kSentinel, sizeof(R));
    return record;
}

inline const unsigned char* Bytes(const void* record) { return static_cast<const unsigned char*>(record); }

// The value of type T stored at byte `offset` of a record.
template <class T> T At(const void* record, size_t offset)
{
    T value;
    std::memcpy(&value, Bytes(record) + offset, sizeof value);
    return value;
}

// True when the bytes [from, to) of a record still hold the sentinel.
inline bool Untouched(const void* record, size_t from, size_t to)
{
    for (size_t i = from; i < to; ++i)
        if (Bytes(record)[i] != kSentinel)
            return false;
    return true;
}

// The text of a fixed-size field, up to its first NUL or its end.
inline std::string Text(const void* record, size_t offset, size_t size)
{
    const char* at = reinterpret_cast<const char*>(Bytes(record) + offset);
    return std::string(at, strnlen(at, size));
}

// A field expected at a byte offset: a little-endian integer of `size` bytes
// (both targets are little-endian) or, with `text`, that text cut to `size`
// bytes and padded with zero bytes.
struct FieldValue {
    size_t offset, size;
    unsigned long long value;
    const char* text = nullptr;
};

inline std::string ExpectedBytes(const FieldValue& f)
{
    std::string bytes = f.text ? std::string(f.text, strnlen(f.text, f.size)) : std::string(8, '\0');
    if (!f.text)
        std::memcpy(&bytes[0], &f.value, 8);
    bytes.resize(f.size, '\0');
    return bytes;
}

// Every listed field holds its value; with `othersUntouched`, every other
// byte of the record still holds the sentinel.
inline void ExpectFields(const void* record, size_t size, const std::vector<FieldValue>& fields, const std::string& what,
                         bool othersUntouched)
{
    std::vector<bool> listed(size, false);
    for (const FieldValue& f : fields) {
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(Bytes(record)) + f.offset, f.size), ExpectedBytes(f))
            << what << ": field at " << f.offset;
        std::fill(listed.begin() + f.offset, listed.begin() + f.offset + f.size, true);
    }
    for (size_t i = 0; othersUntouched && i < size; ++i)
        if (!listed[i] && Bytes(record)[i] != kSentinel) {
            ADD_FAILURE() << what << ": byte " << i << " changed";
            return;
        }
}

// A captured log line as (function, message).
typedef std::pair<std::string, std::string> Line;
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

} // namespace paratest

#endif
