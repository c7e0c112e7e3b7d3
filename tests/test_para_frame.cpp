// The adapter frame: the JSON readers, the dispatcher, message bodies, and
// properties of the walk that every registered record description must have.
#include "ParaShow.h"
#include "AllocationCounter.h"
#include "ParaTestSupport.h"

#include <climits>
#include <map>
#include <cstdlib>
#include <new>
#include <regex>
#include <set>

using namespace paratest;
using ToolkitHost::LogCapture;
using ST = para::ScalarType;

namespace {

// One edge case of the value readers: a JSON value (nullptr: the member is
// absent) read by the reader of a C++ type with a default; what it stores,
// what it returns, and the styled value it logs when the JSON library
// refuses the conversion (nullptr: nothing is logged).
struct ReaderCase {
    const char* json;
    ST type;
    long long def;
    const char* stored;
    int result;
    const char* logged = nullptr;
};

const ReaderCase kReaderCases[] = {
    {"7", ST::U32, 9, "7", 0},
    {"-1", ST::U32, 9, "4294967295", 0}, // the bits as they come
    {"4294967295", ST::U32, 9, "4294967295", 0},
    {"4294967296", ST::U32, 9, "9", -1}, // outside both 32-bit ranges: the default, silently
    {"-2147483649", ST::U32, 9, "9", -1},
    {"5.0", ST::U32, 9, "5", 0},
    {"1.5", ST::U32, 9, "9", -1},
    {"\"5\"", ST::U32, 9, "9", -1},
    {"true", ST::U32, 9, "9", -1},
    {"null", ST::U32, 9, "9", -1},
    {"[1]", ST::U32, 9, "9", -1},
    {"4294967295", ST::I32, -3, "-1", 0},
    {"2147483648", ST::I32, -3, "-2147483648", 0},
    {"-2147483648", ST::I32, -3, "-2147483648", 0},
    {"4294967296", ST::I32, -3, "-3", -1},
    {"1e3", ST::I32, -3, "1000", 0},
    {"300", ST::U8, 7, "44", 0}, // narrow readers keep the low bits
    {"-1", ST::U8, 7, "255", 0},
    {"1.5", ST::U8, 7, "7", -1},
    {"200", ST::I8, -7, "-56", 0},
    {"-128", ST::I8, -7, "-128", 0},
    {"321", ST::Char, 'x', "65", 0},
    {"-1", ST::Char, 'x', "-1", 0},
    {"70000", ST::U16, 11, "4464", 0},
    {"-1", ST::U16, 11, "65535", 0},
    {"4294967296", ST::U16, 11, "11", -1},
    {"40000", ST::I16, 12, "-25536", 0},
    {"18446744073709551615", ST::U64, 1, "18446744073709551615", 0},
    {"2.0", ST::U64, 42, "2", 0},
    {"1.5", ST::U64, 42, "42", -1}, // a real number is no integer
    {"-1", ST::U64, 42, "42", -1, "-1\n"},
    {"4294967296", ST::I64, 5, "4294967296", 0},
    {"-9223372036854775808", ST::I64, 5, "-9223372036854775808", 0},
    {"2.5", ST::I64, 5, "5", -1},
    {"\"1\"", ST::I64, 5, "5", -1},
    {"18446744073709551615", ST::I64, 42, "42", -1, "18446744073709551615\n"},
    {"1e19", ST::I64, 42, "42", -1, "1e+19\n"},
    {"1.5", ST::F32, 3, "1.5", 0},
    {"7", ST::F32, 3, "7", 0},
    {"\"12.25V\"", ST::F32, 3, "12.25", 0}, // text converted like atof
    {"\"abc\"", ST::F32, 3, "0", 0},
    {"true", ST::F32, 3, "3", -1},
    {nullptr, ST::F32, 3, "3", -1},
};

void PrintTo(const ReaderCase& c, std::ostream* os) { *os << (c.json ? c.json : "(absent)") << " as type " << int(c.type); }

para::Field ScalarField(ST type)
{
    static const uint16_t kSizes[] = {1, 1, 1, 2, 2, 4, 4, 8, 8, 4};
    para::Field f{};
    f.op = para::Op::Scalar;
    f.scalar = type;
    f.size = kSizes[size_t(type)];
    return f;
}

int Read(const Json::Value& v, float& dst, float def) { return GetJsonFloat(v, dst, def); }
template <class T> int Read(const Json::Value& v, T& dst, T def) { return GetJsonIntegral(v, dst, def); }

// A stored value as a number; plain char as its bits, signed.
template <class T> std::string Shown(T v)
{
    std::ostringstream out;
    if constexpr (sizeof(T) == 1)
        out << (std::is_same_v<T, unsigned char> ? int(v) : int(static_cast<signed char>(v)));
    else
        out << v;
    return out.str();
}

} // namespace

class JsonReaders : public ::testing::TestWithParam<ReaderCase> {};

// The walk reads a field of each type itself (integers directly, the rest
// through the reader with the default 0): it stores and returns what the
// reader does, and writes the field's bytes only. A non-negative integer
// holds the same as an unsigned value, as a program may build it.
TEST_P(JsonReaders, StoreReturnAndLogAsTheReaderOfTheType)
{
    const ReaderCase& c = GetParam();
    const Json::Value holder = c.json ? paratest::Json(std::string(R"({"v":)") + c.json + "}") : Json::Value(Json::objectValue);
    const bool natural = holder["v"].type() == Json::intValue && holder["v"].asInt64() >= 0;
    const para::Field field = ScalarField(c.type);
    for (const Json::Value& v : {holder["v"], natural ? Json::Value(holder["v"].asLargestUInt()) : holder["v"]})
        para::WithScalarType(field, [&](auto zero) {
            using T = decltype(zero);
            T value = zero, withZero = zero;
            LogCapture log;
            EXPECT_EQ(Read(v, value, static_cast<T>(c.def)), c.result);
            EXPECT_EQ(Shown(value), c.stored);
            const std::string function = c.type == ST::F32 ? "GetJsonFloat" : "GetJsonIntegral";
            EXPECT_EQ(Logged(log), (c.logged ? Lines{{function, std::string("Exception when parse json: ") + c.logged + "\n"}}
                                             : Lines{}));
            unsigned char walked[12];
            std::memset(walked, kSentinel, sizeof walked);
            const int result = Read(v, withZero, zero);
            EXPECT_EQ(para::ReadScalarField(field, v, walked), result);
            EXPECT_EQ(std::memcmp(walked, &withZero, sizeof withZero), 0);
            EXPECT_TRUE(Untouched(walked, sizeof withZero, sizeof walked));
        });
}
INSTANTIATE_TEST_SUITE_P(EdgeCases, JsonReaders, ::testing::ValuesIn(kReaderCases));

// What texts store, every text field of the round trips and array reads
// shows; here the results and the bytes at the field's edges.
TEST(TextReader, CopiesUpToTheFieldSizeAndZerosAnythingElse)
{
    unsigned char b[6];
    const auto read = [&](const Json::Value& v, int size) {
        std::memset(b, kSentinel, sizeof b);
        const int result = GetJsonCString(v, b, size);
        return std::make_pair(result, std::string(reinterpret_cast<char*>(b), sizeof b));
    };
    EXPECT_EQ(read(Json::Value("abcdefg"), 4), std::make_pair(0, std::string("abcd\xA5\xA5")));
    EXPECT_EQ(read(Json::Value(std::string("a\0b", 3)), 5), std::make_pair(0, std::string("a\0b\0\0\xA5", 6)));
    EXPECT_EQ(read(Json::Value(12), 5), std::make_pair(-1, std::string("\0\0\0\0\0\xA5", 6)));
    EXPECT_EQ(read(Json::Value("t"), 0), std::make_pair(-1, std::string(6, char(kSentinel))));
}

TEST(Dispatcher, BoundariesAndTheirMessages)
{
    const Json::Value doc = Doc("ATP", R"({"GE":1})");
    // The first type without a row in the registry is the first reserved one.
    const std::string firstReserved = "Unrealized parameter: " + std::to_string(para::kTypeCount) + "!!!\n";
    const struct {
        int type;
        const char* message; // nullptr: the parser ran
    } cases[] = {{0, nullptr}, {para::kTypeCount, firstReserved.c_str()}, {60, "Unrealized parameter: 60!!!\n"},
                 {61, "Error parameter type: 61!!!\n"}, {INT_MAX, "Error parameter type: 2147483647!!!\n"},
                 {-1, "Unrealized parameter: -1!!!\n"}, {INT_MIN, "Unrealized parameter: -2147483648!!!\n"}};
    for (const auto& c : cases) {
        auto record = Sentinel<tag_MsgAdjustTimeSetting>();
        LogCapture log;
        EXPECT_EQ(AdaptParaJson(static_cast<_PARA_TYPE_>(c.type), doc, record.get()), c.message ? -1 : 0) << c.type;
        EXPECT_EQ(Logged(log), (c.message ? Lines{{"AdaptParaJson", c.message}} : Lines{}));
        EXPECT_EQ(c.message ? Untouched(record.get(), 0, sizeof *record) : record->GE == 1, true) << c.type;
    }
    EXPECT_EQ(AdaptParaJson(PARA_ADJUST_TIME, doc, nullptr), -1);
}

// Each type's parser, reached through the dispatcher, answers an empty,
// absent or null section with -1, writes nothing and logs its line or nothing.
TEST(Dispatcher, EmptyOrAbsentSectionOfEveryType)
{
    const std::map<int, std::string> logs = {{0, "empty param json: ATP\n"}, {1, "empty param json: TIMEP\n"},
        {2, "empty param json : AREA!\n"}, {3, "empty param json : GS!\n"}, {4, "empty param json : GSP!\n"}};
    const Json::Value example = paratest::Json(Slurp(ExampleFile()));
    for (const para::Type& t : para::kTypes) {
        Json::Value others = example;
        others["PARAMETER"]["MDVR"].removeMember(t.key);
        const Lines logged = logs.count(t.type) ? Lines{{t.parser.name, logs.at(t.type)}} : Lines{};
        for (const Json::Value& doc : {Doc(t.key, "{}"), Doc(t.key, "[]"), Doc(t.key, "null"), others,
                                       Json::Value(Json::objectValue), Json::Value("not an object")}) {
            std::vector<unsigned char> record(t.parser.record->size + 64, kSentinel);
            LogCapture log;
            EXPECT_EQ(AdaptParaJson(static_cast<_PARA_TYPE_>(t.type), doc, record.data()), -1) << t.key;
            EXPECT_TRUE(Untouched(record.data(), 0, record.size())) << t.key;
            EXPECT_EQ(Logged(log), logged) << t.key;
        }
    }
}

TEST(ParseJsonMessage, BodyAfterTheHeaderOrNothing)
{
    const auto message = [](const std::string& body) { return std::string(16, '\x55') + body; };
    Json::Value root;
    std::string m = message(R"({"PARAMETER":{"MDVR":{"ATP":{"GE":3}}}})");
    ASSERT_EQ(ParseJsonMessage(m.data(), int(m.size()), root), 1);
    EXPECT_EQ(root["PARAMETER"]["MDVR"]["ATP"]["GE"].asInt(), 3);
    m = message("{}");
    root = Json::Value(5);
    EXPECT_EQ(ParseJsonMessage(m.data(), int(m.size()), root), 1);
    EXPECT_TRUE(root.isObject() && root.empty());

    // Failures return 0; syntax errors are not logged, too deep a nesting is.
    const Lines deep{{"ParseJsonMessage", "Failed to parse json msg!"}};
    for (const auto& [body, logged] : std::vector<std::pair<std::string, Lines>>{
             {"", {}}, {R"({"a":)", {}}, {std::string(2000, '[') + std::string(2000, ']'), deep}}) {
        LogCapture log;
        m = message(body);
        EXPECT_EQ(ParseJsonMessage(m.data(), int(m.size()), root), 0) << body.substr(0, 10);
        EXPECT_EQ(Logged(log), logged);
    }
    // Short and null buffers are refused without reading: a heap buffer of
    // exactly the given size lets the address sanitizer see any read past it.
    std::unique_ptr<char[]> shortBuffer(new char[10]());
    EXPECT_EQ(ParseJsonMessage(shortBuffer.get(), 10, root), 0);
    EXPECT_EQ(ParseJsonMessage(shortBuffer.get(), -5, root), 0);
    EXPECT_EQ(ParseJsonMessage(nullptr, 100, root), 0);
}

// Properties of every registered record description.

TEST(RecordDescriptions, FieldsTileEveryRecordExactly)
{
    for (const para::Type& t : para::kTypes) {
        size_t next = 0;
        for (const para::FieldInfo& f : para::ByOffset(para::Layout(*t.parser.record))) {
            EXPECT_EQ(f.offset, next) << t.key << ": " << f.path << (f.offset < next ? " overlaps" : " leaves a gap");
            next = f.offset + f.size;
        }
        EXPECT_LE(next, t.parser.record->size) << t.key;
        EXPECT_LT(t.parser.record->size - next, 8u) << t.key << ": bytes after the last described field";
    }
}

namespace {

// The array fields of a record with their places, found by the tools' walk
// over its table, in element 0 of every enclosing array.
typedef std::pair<const para::Field*, para::Place> ArrayField;
struct ArrayFinder : para::PlaceVisitor {
    std::vector<ArrayField> found;
    template <class Walk> void Elements(const para::Field& f, unsigned dim, const para::Place& p, Walk walk)
    {
        if (dim == 0)
            found.push_back({&f, p});
        walk(para::ElementPlace(f, dim, p, 0));
    }
};
std::vector<ArrayField> ArrayFields(const para::Record& record)
{
    ArrayFinder arrays;
    para::WalkRecord(record, arrays);
    return arrays.found;
}

// A JSON array of n[0] elements (of n[1] elements each, for two dimensions)
// of a value that the walk stores (and a sub-record parser logs); element
// `hole` missing, as in an array a program builds, or with `null` null.
Json::Value ListOf(const para::Field& f, const int (&n)[2], int hole = -1, bool null = false)
{
    Json::Value leaf = f.op == para::Op::Text ? Json::Value("x") : Json::Value(1);
    if (f.op == para::Op::Record || f.op == para::Op::Parsed)
        leaf = paratest::Json(R"({"_":1})");
    Json::Value element = leaf;
    if (f.dims() == 2) {
        element = Json::Value(Json::arrayValue);
        for (int i = 0; i < n[1]; ++i)
            element.append(leaf);
    }
    Json::Value list(Json::arrayValue);
    for (int i = 0; i < n[0]; ++i)
        if (i != hole || null)
            list[Json::ArrayIndex(i)] = i == hole ? Json::Value() : element;
    return list;
}

// What reading the field from `value` writes over a sentinel-filled record
// (with 64 guard bytes), and what it logs.
std::pair<std::vector<unsigned char>, Lines> ReadArray(const para::Type& t, const ArrayField& a, const Json::Value& value)
{
    const para::Field& f = *a.first;
    std::vector<unsigned char> record(t.parser.record->size + 64, kSentinel);
    Json::Value object;
    if (f.flags & para::Field::kSelf)
        object = value;
    else
        object[std::string(f.key, f.length)] = value;
    LogCapture log;
    para::ReadEntry(f, object, record.data() + a.second.offset - f.offset);
    return {record, Logged(log)};
}

} // namespace

// Every array of every record, scalars, texts, records, records of their own
// parser, two-dimensional and the section itself: one element more than the
// bound in either dimension (densely or sparsely) changes no byte and no log
// line of what the bound alone gives, and that stays inside the array; one
// element fewer is seen. An object where the array belongs reads nothing.
TEST(RecordDescriptions, ArraysAreReadWithinTheirBounds)
{
    std::set<std::string> shapes;
    for (const para::Type& t : para::kTypes)
        for (const ArrayField& a : ArrayFields(*t.parser.record)) {
            const para::Field& f = *a.first;
            const size_t offset = a.second.offset;
            SCOPED_TRACE(std::string(t.key) + " " + para::PathText(a.second.keys));
            shapes.insert(std::to_string(int(f.op)) + "." + std::to_string(f.dims()) +
                          ((f.flags & para::Field::kSelf) ? " self" : ""));
            const int c0 = f.count[0], c1 = f.count[1];
            const auto bound = ReadArray(t, a, ListOf(f, {c0, c1}));
            const size_t end = offset + size_t(c0) * f.stride(0);
            EXPECT_TRUE(Untouched(bound.first.data(), 0, offset) &&
                        Untouched(bound.first.data(), end, bound.first.size()));
            EXPECT_TRUE(ReadArray(t, a, ListOf(f, {c0 + 1, c1})) == bound);
            EXPECT_TRUE(ReadArray(t, a, ListOf(f, {c0 + 1, c1}, c0 - 1)) ==
                        ReadArray(t, a, ListOf(f, {c0, c1}, c0 - 1, true)));
            EXPECT_FALSE(ReadArray(t, a, ListOf(f, {c0 - 1, c1})) == bound);
            if (f.dims() == 2) {
                EXPECT_TRUE(ReadArray(t, a, ListOf(f, {c0, c1 + 1})) == bound);
                EXPECT_FALSE(ReadArray(t, a, ListOf(f, {c0, c1 - 1})) == bound);
            }
            Json::Value object(Json::objectValue);
            object["0"] = ListOf(f, {1, c1})[0];
            const auto none = ReadArray(t, a, object);
            EXPECT_TRUE(Untouched(none.first.data(), 0, none.first.size()) && none.second.empty());
        }
    const auto shape = [](para::Op op, int dims) { return std::to_string(int(op)) + "." + std::to_string(dims); };
    for (const std::string& s : {shape(para::Op::Scalar, 1), shape(para::Op::Text, 1), shape(para::Op::Record, 1),
                                 shape(para::Op::Parsed, 1), shape(para::Op::Record, 2), shape(para::Op::Record, 1) + " self"})
        EXPECT_EQ(shapes.count(s), 1u) << "no array of shape " << s;
}

// No value of any kind at any key makes a section's walk fail: a present,
// non-empty section is always read (the walk's guard would turn an exception
// into -1).
TEST(RecordDescriptions, AnyKindOfValueAtAnyKeyIsRead)
{
    const char* kinds[] = {"null", "true", "0", "-1", "1.5", "\"t\"", "[]", "[1]", "[[1]]", "{}", "{\"X\":1}", "[{}]"};
    const std::regex laterIndex(R"(\[([2-9]|\d\d))"); // indices are folded to [0] and [1]
    for (const para::Type& t : para::kTypes) {
        std::set<std::string> prefixes; // every key path ("RCP[0].RSI[1]") and its prefixes
        for (const para::FieldInfo& f : para::Layout(*t.parser.record))
            for (size_t n = 0; f.kind != para::Kind::Reserved && n <= f.keys.size(); ++n)
                if ((n == f.keys.size() || f.keys[n] == '.' || f.keys[n] == '[') &&
                    !std::regex_search(f.keys.substr(0, n), laterIndex))
                    prefixes.insert(f.keys.substr(0, n));
        for (const char* kind : kinds) {
            const Json::Value leaf = paratest::Json(std::string("[") + kind + "]")[0];
            for (const std::string& prefix : prefixes) {
                Json::Value doc;
                Json::Value& section = doc["PARAMETER"]["MDVR"][t.key];
                (prefix.empty() ? section : Json::Path(prefix).make(section)) = leaf;
                LogCapture quiet;
                std::vector<unsigned char> r(t.parser.record->size, kSentinel);
                const int result = AdaptParaJson(static_cast<_PARA_TYPE_>(t.type), doc, r.data());
                EXPECT_TRUE(result >= 0 || prefix.empty()) << t.key << " " << prefix << " with " << kind;
            }
        }
    }
}

// ---------------------------------------------------------------------------
// Reading a parsed document allocates nothing: texts are copied straight from
// the JSON library's storage and lookups never build temporary values.

using bench::Allocations;

TEST(RecordDescriptions, ParsingTheExampleAllocatesNothing)
{
    const Json::Value doc = paratest::Json(Slurp(ExampleFile()));
    std::vector<unsigned char> record(64 * 1024);
    int parsed = 0;
    for (const para::Type& t : para::kTypes) {
        if (para::Section(doc, t.key).isNull() || !++parsed)
            continue;
        int result = -1;
        EXPECT_EQ(Allocations([&] { result = AdaptParaJson(static_cast<_PARA_TYPE_>(t.type), doc, record.data()); }), 0)
            << t.key;
        EXPECT_EQ(result, 0) << t.key;
    }
    EXPECT_GE(parsed, 2);

    // Texts longer than any small-string buffer.
    const Json::Value longTexts = Doc("TIMEP", R"({"TIMEZ":"a time zone name far longer than its sixteen-byte field"})");
    tag_MsgTimeSetting time{};
    EXPECT_EQ(Allocations([&] { ParseTimeSettingParamJson(longTexts, time); }), 0);
}
