// The adapter frame: JSON readers, the dispatcher, message bodies, the time
// sections, and properties every registered record description must have.
#include "ParaTestSupport.h"
#include "ParaShow.h"
#include "ParaTypes.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <type_traits>
#include <iterator>
#include <set>
#include <new>

using namespace paratest;
using ToolkitHost::LogCapture;

namespace {

// Reads {"v": <json>}["v"] (or the absent key "w" when json is null) with a
// reader and reports the stored value and the result.
template <class T> std::pair<T, int> ReadIntegral(const char* json, T def)
{
    Json::Value holder = json ? paratest::Json(std::string(R"({"v":)") + json + "}") : Json::Value(Json::objectValue);
    T dst{};
    int result = GetJsonIntegral(holder["v"], dst, def);
    return {dst, result};
}

struct IntCase {
    const char* json;
    long long expected; // the stored value, before conversion to the destination type
    int result;
};

template <class T> void CheckIntegral(const std::vector<IntCase>& cases, T def)
{
    for (const IntCase& c : cases) {
        auto [value, result] = ReadIntegral<T>(c.json, def);
        // Compared as the destination type: plain char is unsigned on ARM.
        EXPECT_EQ(value, static_cast<T>(c.expected)) << (c.json ? c.json : "(absent)");
        EXPECT_EQ(result, c.result) << (c.json ? c.json : "(absent)");
    }
}

// A record of a registered type, filled with the sentinel.
std::vector<unsigned char> SentinelRecord(const para::Type& t)
{
    return std::vector<unsigned char>(t.parser.record->size, kSentinel);
}

} // namespace

TEST(JsonReaders, IntegralReadersStoreTheBitsAsTheyCome)
{
    CheckIntegral<unsigned int>({{"7", 7, 0},
                                 {"-5", 4294967291LL, 0},
                                 {"-1", 4294967295LL, 0},
                                 {"4294967295", 4294967295LL, 0},
                                 {"4294967296", 9, -1},
                                 {"-2147483649", 9, -1},
                                 {"5.0", 5, 0},
                                 {"1.5", 9, -1},
                                 {"\"5\"", 9, -1},
                                 {"true", 9, -1},
                                 {"null", 9, -1},
                                 {"[]", 9, -1},
                                 {"[1]", 9, -1},
                                 {"{}", 9, -1},
                                 {nullptr, 9, -1}},
                                9u);
    CheckIntegral<int>({{"4294967295", -1, 0},
                        {"-2147483648", INT_MIN, 0},
                        {"2147483648", INT_MIN, 0},
                        {"4294967296", -3, -1},
                        {"1e3", 1000, 0},
                        {"2.5", -3, -1},
                        {nullptr, -3, -1}},
                       -3);
    // Narrow readers keep the low bits.
    CheckIntegral<unsigned char>({{"300", 44, 0}, {"256", 0, 0}, {"-1", 255, 0}, {"1.5", 7, -1}, {nullptr, 7, -1}},
                                 7);
    CheckIntegral<signed char>({{"200", -56, 0}, {"-128", -128, 0}, {"\"1\"", -7, -1}}, -7);
    CheckIntegral<char>({{"-1", -1, 0}, {"65", 65, 0}, {"321", 65, 0}, {nullptr, 'x', -1}}, 'x');
    CheckIntegral<unsigned short>({{"70000", 4464, 0}, {"-1", 65535, 0}, {"4294967296", 11, -1}}, 11);
    CheckIntegral<short>({{"40000", -25536, 0}, {"-2", -2, 0}, {"false", 12, -1}}, 12);
    // Sixty-four-bit readers take the whole range.
    CheckIntegral<long long>({{"4294967296", 4294967296LL, 0},
                              {"-9223372036854775808", LLONG_MIN, 0},
                              {"2.0", 2, 0},
                              {"2.5", 5, -1},
                              {"\"1\"", 5, -1}},
                             5);
    auto [big, result] = ReadIntegral<unsigned long long>("18446744073709551615", 1);
    EXPECT_EQ(big, ~0ULL);
    EXPECT_EQ(result, 0);

    // Values the conversion refuses: the exception is caught, logged once with
    // the value's styled text, and the default stored.
    struct {
        const char* json;
        bool isSigned;
        const char* styled;
    } refused[] = {{"18446744073709551615", true, "18446744073709551615\n"},
                   {"-1", false, "-1\n"},
                   {"1e19", true, "1e+19\n"}};
    for (const auto& c : refused) {
        LogCapture log;
        const auto [value, r] = c.isSigned ? ReadIntegral<long long>(c.json, 42) : [&] {
            const auto got = ReadIntegral<unsigned long long>(c.json, 42);
            return std::pair<long long, int>(static_cast<long long>(got.first), got.second);
        }();
        EXPECT_EQ(value, 42) << c.json;
        EXPECT_EQ(r, -1) << c.json;
        EXPECT_EQ(Logged(log), (Lines{{"GetJsonIntegral", std::string("Exception when parse json: ") + c.styled + "\n"}}));
    }
}

TEST(JsonReaders, FloatReaderConvertsNumbersAndText)
{
    struct {
        const char* json;
        float expected;
        int result;
    } cases[] = {{"1.5", 1.5f, 0},   {"7", 7.0f, 0},    {"\"5\"", 5.0f, 0}, {"\"12.25V\"", 12.25f, 0},
                 {"\"abc\"", 0.0f, 0}, {"\"\"", 0.0f, 0}, {"true", 3.5f, -1}, {"[1]", 3.5f, -1},
                 {"{}", 3.5f, -1},   {"null", 3.5f, -1}, {nullptr, 3.5f, -1}};
    for (const auto& c : cases) {
        Json::Value holder = c.json ? paratest::Json(std::string(R"({"v":)") + c.json + "}") : Json::Value();
        float dst = -1.0f;
        EXPECT_EQ(GetJsonFloat(holder["v"], dst, 3.5f), c.result) << (c.json ? c.json : "(absent)");
        EXPECT_FLOAT_EQ(dst, c.expected) << (c.json ? c.json : "(absent)");
    }
}

TEST(JsonReaders, StringReaderCopiesExactlyTheFieldSize)
{
    const std::string forty(40, 'x');
    struct {
        Json::Value value;
        std::string expected; // the field's bytes up to the first NUL
        bool terminated;      // a NUL inside the field
        int result;
    } cases[] = {{Json::Value(forty), std::string(32, 'x'), false, 0},
                 {Json::Value(std::string(32, 'y')), std::string(32, 'y'), false, 0},
                 {Json::Value(std::string(31, 'z')), std::string(31, 'z'), true, 0},
                 {Json::Value(""), "", true, 0},
                 {Json::Value(12), "", true, -1},
                 {Json::Value(true), "", true, -1},
                 {Json::Value(Json::objectValue), "", true, -1},
                 {Json::Value(), "", true, -1}};
    for (const auto& c : cases) {
        // One guard byte on each side catches a write outside the field.
        unsigned char buffer[34];
        std::memset(buffer, kSentinel, sizeof buffer);
        EXPECT_EQ(GetJsonCString(c.value, reinterpret_cast<char*>(buffer + 1), 32), c.result);
        EXPECT_EQ(buffer[0], kSentinel);
        EXPECT_EQ(buffer[33], kSentinel);
        EXPECT_EQ(Text(buffer + 1, 0, 32), c.expected);
        if (c.terminated) { // everything after the text is zero
            for (size_t i = 1 + c.expected.size(); i < 33; ++i)
                EXPECT_EQ(buffer[i], 0) << "byte " << i - 1 << " after \"" << c.expected << "\"";
        }
    }

    // The unsigned char overload behaves the same; embedded NULs are copied.
    unsigned char field[6];
    std::memset(field, kSentinel, sizeof field);
    EXPECT_EQ(GetJsonCString(Json::Value(std::string("a\0b", 3)), field, 6), 0);
    const unsigned char expected[6] = {'a', 0, 'b', 0, 0, 0};
    EXPECT_EQ(0, std::memcmp(field, expected, 6));
}

// The walk reads integers of up to 32 bits itself; it must store and answer
// exactly what the readers do, for every width and every kind of value.
TEST(JsonReaders, WalkReadsIntegersLikeTheReaders)
{
    const char* values[] = {"0", "1", "-1", "255", "256", "-129", "65535", "-32769", "2147483647", "2147483648",
                            "-2147483648", "-2147483649", "4294967295", "4294967296", "9223372036854775807",
                            "-9223372036854775808", "18446744073709551615", "3.0", "-3.0", "1.5", "4294967295.0",
                            "1e300", "\"7\"", "true", "null", "[]", "{}", "[1]"};
    const auto same = [](const Json::Value& v, auto type) {
        using T = decltype(type);
        T walked = 0x5A, read = 0x5A;
        const int walkResult = para::ReadScalar(v, walked);
        const int readResult = GetJsonIntegral(v, read, T(0));
        return walkResult == readResult && walked == read;
    };
    for (const char* text : values) {
        const Json::Value v = paratest::Json(std::string("[") + text + "]")[0];
        EXPECT_TRUE(same(v, (unsigned char)0) && same(v, (signed char)0) && same(v, char(0)) &&
                    same(v, (unsigned short)0) && same(v, short(0)) && same(v, 0u) && same(v, 0))
            << text;
    }
}

// ---------------------------------------------------------------------------

TEST(Dispatcher, BoundariesAndTheirMessages)
{
    const Json::Value doc = Doc("ATP", R"({"GE":1})");
    struct {
        int type;
        const char* message; // nullptr: the parser ran
        int result;
    } cases[] = {{0, nullptr, 0},
                 {52, "Unrealized parameter: 52!!!\n", -1},
                 {60, "Unrealized parameter: 60!!!\n", -1},
                 {61, "Error parameter type: 61!!!\n", -1},
                 {INT_MAX, "Error parameter type: 2147483647!!!\n", -1},
                 {-1, "Unrealized parameter: -1!!!\n", -1},
                 {INT_MIN, "Unrealized parameter: -2147483648!!!\n", -1}};
    for (const auto& c : cases) {
        auto record = Sentinel<tag_MsgAdjustTimeSetting>();
        LogCapture log;
        EXPECT_EQ(AdaptParaJson(static_cast<_PARA_TYPE_>(c.type), doc, record.get()), c.result) << c.type;
        EXPECT_EQ(Logged(log), (c.message ? Lines{{"AdaptParaJson", c.message}} : Lines{}));
        EXPECT_EQ(c.message ? Untouched(record.get(), 0, sizeof *record) : record->GE == 1, true) << c.type;
    }
}

namespace {

// Each section's parser, found through the dispatcher, answers an empty,
// absent or null section with -1, leaves the record alone, and logs exactly
// its line or nothing. Types 0 to 51 all have their row, in order.
struct EmptySection {
    int type;
    const char* key;
    Lines logged;
};

const EmptySection kEmptySections[] = {
    {0, "ATP", {{"ParseAdjustTimeParamJson", "empty param json: ATP\n"}}},
    {1, "TIMEP", {{"ParseTimeSettingParamJson", "empty param json: TIMEP\n"}}},
    {2, "AREA", {{"ParseAreaAlarmParamJson", "empty param json : AREA!\n"}}},
    {3, "GS", {{"ParsePBTGeneralParamJson", "empty param json : GS!\n"}}},
    {4, "GSP", {{"ParseGeneralParamJson", "empty param json : GSP!\n"}}},
    {5, "NIGHT", {}}, {6, "SAP", {}}, {7, "ARLM", {}}, {8, "FTPS", {}}, {9, "FTPEX", {}}, {10, "MAIN", {}},
    {11, "AR", {}}, {12, "SUBSTRNET", {}}, {13, "RIP", {}}, {14, "IOP", {}}, {15, "EOSD", {}}, {16, "RP", {}},
    {17, "M3G", {}}, {18, "MCMS", {}}, {19, "VS", {}}, {20, "PS", {}}, {21, "PSI", {}}, {22, "ETHERNET", {}},
    {23, "REDEV", {}}, {24, "HMIP", {}}, {25, "PGDS", {}}, {26, "VTFS", {}}, {27, "KEYS", {}}, {28, "MNTFTP", {}},
    {29, "ACC", {}}, {30, "PMDAS", {}}, {31, "PVSAS", {}}, {32, "PVLAS", {}}, {33, "UAP", {}}, {34, "PSNAP", {}},
    {35, "DSP", {}}, {36, "VPP", {}}, {37, "PCAS", {}}, {38, "PHAS", {}}, {39, "PVTSAS", {}}, {40, "TPP", {}},
    {41, "STMPA", {}}, {42, "FDAS", {}}, {43, "TPAS", {}}, {44, "HMP", {}}, {45, "FAS", {}}, {46, "SSP", {}},
    {47, "PSS", {}}, {48, "CAN", {}}, {49, "PEN", {}}, {50, "DOSD", {}}, {51, "DSM", {}},
};

Json::Value Example() { return paratest::Json(Slurp(ExampleFile())); }

} // namespace

TEST(Dispatcher, EmptyOrAbsentSectionOfEveryType)
{
    std::vector<size_t> sizes(52, 0);
    for (const para::Type& t : para::kTypes) {
        sizes.at(t.type) = t.parser.record->size;
        EXPECT_STREQ(kEmptySections[t.type].key, t.key);
    }
    // Absent: the example with every other section, none of which may be read.
    const Json::Value example = Example();
    ASSERT_EQ(std::size(kEmptySections), 52u);
    for (size_t i = 0; i < 52; ++i) {
        const EmptySection& s = kEmptySections[i];
        ASSERT_EQ(s.type, int(i));
        ASSERT_NE(sizes[i], 0u) << s.key << " has no parser";
        Json::Value others = example;
        others["PARAMETER"]["MDVR"].removeMember(s.key);
        const Json::Value docs[] = {Doc(s.key, "{}"), Doc(s.key, "[]"), Doc(s.key, "null"), others,
                                    Json::Value(Json::objectValue), Json::Value("not an object")};
        for (const Json::Value& doc : docs) {
            std::vector<unsigned char> record(sizes[i] + 64, kSentinel);
            LogCapture log;
            EXPECT_EQ(AdaptParaJson(static_cast<_PARA_TYPE_>(s.type), doc, record.data()), -1) << s.key;
            EXPECT_TRUE(Untouched(record.data(), 0, record.size())) << s.key;
            EXPECT_EQ(Logged(log), s.logged) << s.key;
        }
    }
}

// The sub-record parsers, called directly by clients, refuse an empty or null
// object with their own line and write nothing.
TEST(SubRecordParsers, EmptyObjectIsReportedAndWritesNothing)
{
    const auto check = [](auto parse, auto record, const Line& line) {
        for (const char* json : {"{}", "[]", "null"}) {
            LogCapture log;
            EXPECT_EQ(parse(paratest::Json(json), *record), -1) << line.first << " " << json;
            EXPECT_TRUE(Untouched(record.get(), 0, sizeof *record)) << line.first << " " << json;
            EXPECT_EQ(Logged(log), Lines{line}) << line.first << " " << json;
        }
    };
    check(ParseAlarmLinkRecord, Sentinel<alarmLinkRecord_t>(), kNoLinkRecord);
    check(ParseAlarmLinkSnapShot, Sentinel<alarmLinkSnapShot>(), kNoLinkSnap);
    check(ParseAlarmLinkOutput, Sentinel<alarmLinkOutput_t>(), kNoLinkOutput);
    check(ParseAlarmLinkProcess, Sentinel<alarmLinkProcess_t>(), kNoLink);
    check(ParseAlarmPlan, Sentinel<alarmPlan_t>(), kNoPlan);
    check(ParseCommonSnapPara, Sentinel<CommonSnapPara_t>(), kNoSnapPara);
    check(ParseBoHaoParamJson, Sentinel<paramBoHaoParam_t>(), kNoProfile);
    check(ParseGDSAlarmThresh1, Sentinel<paramAlarmThresh1_t>(), kNoThresh1);
    check(ParseGDSAlarmThresh2, Sentinel<paramAlarmThresh2_t>(), kNoThresh2);
}

TEST(Dispatcher, NullRecordIsRefused)
{
    EXPECT_EQ(AdaptParaJson(PARA_ADJUST_TIME, Doc("ATP", R"({"GE":1})"), nullptr), -1);
}

// ---------------------------------------------------------------------------

namespace {

std::string Message(const std::string& body)
{
    return std::string(16, '\x55') + body; // the header's bytes are not read
}

} // namespace

TEST(ParseJsonMessage, BodyAfterTheHeaderOrNothing)
{
    Json::Value root;
    std::string m = Message(R"({"PARAMETER":{"MDVR":{"ATP":{"GE":3}}}})");
    ASSERT_EQ(ParseJsonMessage(m.data(), int(m.size()), root), 1);
    tag_MsgAdjustTimeSetting record{};
    EXPECT_EQ(AdaptParaJson(PARA_ADJUST_TIME, root, &record), 0);
    EXPECT_EQ(record.GE, 3);
    m = Message("{}");
    root = Json::Value(5);
    EXPECT_EQ(ParseJsonMessage(m.data(), int(m.size()), root), 1);
    EXPECT_TRUE(root.isObject() && root.empty());

    // Failures return 0; syntax errors are not logged, too deep a nesting is.
    const Lines deep{{"ParseJsonMessage", "Failed to parse json msg!"}};
    const struct {
        std::string body;
        Lines logged;
    } failures[] = {{"", {}}, {R"({"a":)", {}}, {std::string(2000, '[') + std::string(2000, ']'), deep}};
    for (const auto& c : failures) {
        LogCapture log;
        m = Message(c.body);
        EXPECT_EQ(ParseJsonMessage(m.data(), int(m.size()), root), 0) << c.body.substr(0, 10);
        EXPECT_EQ(Logged(log), c.logged);
    }
    // Short and null buffers are refused without reading: a heap buffer of
    // exactly the given size lets the address sanitizer see any read past it.
    std::unique_ptr<char[]> shortBuffer(new char[10]());
    EXPECT_EQ(ParseJsonMessage(shortBuffer.get(), 10, root), 0);
    EXPECT_EQ(ParseJsonMessage(shortBuffer.get(), -5, root), 0);
    EXPECT_EQ(ParseJsonMessage(nullptr, 100, root), 0);
}

// ---------------------------------------------------------------------------

TEST(TimeSections, EveryByteOfTheRecord)
{
    auto r = Sentinel<tag_MsgAdjustTimeSetting>();
    EXPECT_EQ(ParseAdjustTimeParamJson(
                  Doc("ATP", R"({"GE":1,"NE":2,"CE":300,"SID":4,"NAI":65537,"NS":")" + std::string(70, 'n') + R"("})"), *r),
              0);
    ExpectFields(r.get(), sizeof *r, {{0, 1, 1}, {1, 1, 2}, {2, 1, 44}, {3, 1, 4}, {4, 64, 0, std::string(64, 'n')}, {68, 2, 1}},
                 "ATP");

    // The time setting in full, and with every key but one missing: those are written as zero.
    const Fields reserved = {Kept(2, 4), Kept(27, 32), Kept(42, 44)};
    const struct {
        std::string section;
        Fields fields;
    } cases[] = {
        {R"({"DATEM":1,"TIMEM":2,"TIMEZ":"UTC+08:00 Beijing time","TIMEOFFSET":-480,
             "DST":{"SW":1,"DSTM":2,"DSTS":3,"SMON":3,"SWEEK":17,"SWIND":20,"SH":2,"SM":3,"SS":4,
                    "EMON":10,"EWEEK":2,"EWIND":0,"EH":5,"EM":6,"ES":7,"STARTTIME":100,"ENDTIME":200}})",
         {{0, 1, 1},  {1, 1, 2},  {4, 16, 0, "UTC+08:00 Beijin"}, {20, 4, 0xFFFFFE20u}, {24, 1, 1}, {25, 1, 2},
          {26, 1, 3}, {32, 1, 3}, {33, 1, 0x14}, {34, 1, 10}, {35, 1, 0x20}, {36, 1, 2}, {37, 1, 3}, {38, 1, 4},
          {39, 1, 5}, {40, 1, 6}, {41, 1, 7},  {44, 4, 100}, {48, 4, 200}}},
        {R"({"DATEM":9})", {{0, 1, 9}, Zeros(1, 2), Zeros(4, 27), Zeros(32, 42), Zeros(44, 52)}},
    };
    for (const auto& c : cases) {
        auto t = Sentinel<tag_MsgTimeSetting>();
        EXPECT_EQ(ParseTimeSettingParamJson(Doc("TIMEP", c.section), *t), 0);
        ExpectFields(t.get(), sizeof *t, reserved + c.fields, c.section);
    }
}

// The walk finds members through an index of each object: small objects are
// scanned, larger ones hashed, very large ones searched by the JSON library.
// Each way must find exactly the member of that name.
TEST(RecordDescriptions, MembersAreFoundByExactNameInObjectsOfAnySize)
{
    for (int extra : {0, 5, 40, 200}) {
        Json::Value section(Json::objectValue);
        for (int i = 0; i < extra; ++i)
            section["X" + std::to_string(i)] = i;
        section["G"] = 7;                        // a prefix of a key
        section["GEX"] = 8;                      // a key is a prefix of it
        section[std::string("NE\0x", 4)] = 9;    // equal up to an embedded NUL
        section["CE"] = 300;
        Json::Value doc;
        doc["PARAMETER"]["MDVR"]["ATP"] = section;
        auto r = Sentinel<tag_MsgAdjustTimeSetting>();
        ASSERT_EQ(ParseAdjustTimeParamJson(doc, *r), 0) << extra;
        ExpectFields(r.get(), sizeof *r, {{0, 1, 0}, {1, 1, 0}, {2, 1, 44}, {3, 1, 0}, {4, 64, 0, ""}, {68, 2, 0}},
                     std::to_string(extra) + " other members", true);
    }
}

// An array built by a program may lack some indices below its size: those
// read as null, as an absent element does, and the rest keep their places.
TEST(RecordDescriptions, SparseArraysKeepTheirIndices)
{
    Json::Value channels(Json::arrayValue);
    channels[2]["BR"] = 30;
    channels[17]["BR"] = 40; // beyond the 16 channels
    Json::Value doc;
    doc["PARAMETER"]["MDVR"]["MAIN"] = channels;
    auto r = Sentinel<tag_MsgVideoEncodeSetting>();
    ASSERT_EQ(ParseMainStreamParamJson(doc, *r), 0);
    std::vector<FieldValue> fields;
    for (size_t ch = 0; ch < 16; ++ch)
        fields.push_back({8 + 24 * ch, 20, 0});
    fields[2] = {8 + 24 * 2, 4, 30};
    fields.push_back({8 + 24 * 2 + 4, 16, 0});
    ExpectFields(r.get(), 8 + 24 * 16, fields, "sparse channels", false);
    for (size_t ch = 0; ch < 16; ++ch)
        EXPECT_TRUE(Untouched(r.get(), 8 + 24 * ch + 20, 8 + 24 * ch + 24)) << ch;
    EXPECT_TRUE(Untouched(r.get(), 0, 8));
}

// ---------------------------------------------------------------------------
// Properties of every registered record description.

TEST(RecordDescriptions, FieldsTileEveryRecordExactly)
{
    for (const para::Type& t : para::kTypes) {
        const char* key = t.key;
        std::vector<para::FieldInfo> fields = para::Layout(*t.parser.record);
        std::sort(fields.begin(), fields.end(),
                  [](const para::FieldInfo& a, const para::FieldInfo& b) { return a.offset < b.offset; });
        size_t next = 0;
        for (const para::FieldInfo& f : fields) {
            EXPECT_EQ(f.offset, next) << key << ": " << f.path << (f.offset < next ? " overlaps" : " leaves a gap");
            next = f.offset + f.size;
        }
        // Tail padding of the record's alignment is the only thing left over.
        EXPECT_LE(next, t.parser.record->size) << key;
        EXPECT_LT(t.parser.record->size - next, 8u) << key << ": bytes after the last described field";
    }
}

TEST(RecordDescriptions, NoExceptionForAnyShapeAtAnyLevel)
{
    const char* kinds[] = {"null", "true", "0", "-1", "1.5", "\"t\"", "[]", "[1]", "[[1]]", "{}", "{\"X\":1}", "[{}]"};
    for (const para::Type& t : para::kTypes) {
        const char* key = t.key;
        // Every distinct key path of the record ("RCP[0].RSI[1]" and its
        // prefixes), indices folded to [0] and [1].
        std::set<std::string> prefixes;
        for (const para::FieldInfo& f : para::Layout(*t.parser.record))
            for (size_t n = 0; f.kind != para::Kind::Reserved && n <= f.keys.size(); ++n)
                if (n == f.keys.size() || f.keys[n] == '.' || f.keys[n] == '[') {
                    const std::string prefix = f.keys.substr(0, n);
                    bool folded = true;
                    for (size_t at = prefix.find('['); at != std::string::npos; at = prefix.find('[', at + 1))
                        folded = folded && (prefix.compare(at, 3, "[0]") == 0 || prefix.compare(at, 3, "[1]") == 0);
                    if (folded)
                        prefixes.insert(prefix);
                }
        for (const char* kind : kinds) {
            const Json::Value leaf = paratest::Json(std::string("[") + kind + "]")[0];
            for (const std::string& prefix : prefixes) {
                Json::Value doc;
                Json::Value& section = doc["PARAMETER"]["MDVR"][key];
                (prefix.empty() ? section : Json::Path(prefix).make(section)) = leaf;
                LogCapture quiet;
                std::vector<unsigned char> r = SentinelRecord(t);
                EXPECT_NO_THROW(AdaptParaJson(static_cast<_PARA_TYPE_>(t.type), doc, r.data())) << key << " " << prefix << " with " << kind;
            }
        }
    }
}

// ---------------------------------------------------------------------------
// Reading a parsed document allocates nothing: texts are copied straight from
// the JSON library's storage and lookups never build temporary values.

namespace {
bool g_countAllocations = false;
long g_allocations = 0;
// How many allocations `run` makes.
template <class Run> long Allocations(Run run)
{
    g_allocations = 0;
    g_countAllocations = true;
    run();
    g_countAllocations = false;
    return g_allocations;
}
} // namespace

// GCC pairs the inlined replacement delete with the library's new and warns.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void* operator new(size_t size)
{
    if (g_countAllocations)
        ++g_allocations;
    if (void* p = std::malloc(size ? size : 1))
        return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, size_t) noexcept { std::free(p); }
#pragma GCC diagnostic pop

TEST(RecordDescriptions, ParsingTheExampleAllocatesNothing)
{
    const Json::Value doc = Example();
    std::vector<unsigned char> record(64 * 1024);
    int parsed = 0;
    for (const para::Type& t : para::kTypes) {
        if (para::Section(doc, t.key).isNull() || !++parsed)
            continue;
        int result = -1;
        EXPECT_EQ(Allocations([&] { result = AdaptParaJson(static_cast<_PARA_TYPE_>(t.type), doc, record.data()); }), 0) << t.key;
        EXPECT_EQ(result, 0) << t.key;
    }
    EXPECT_GE(parsed, 2);

    // Texts longer than any small-string buffer.
    const Json::Value longTexts = Doc("TIMEP", R"({"TIMEZ":"a time zone name far longer than its sixteen-byte field"})");
    tag_MsgTimeSetting time{};
    EXPECT_EQ(Allocations([&] { ParseTimeSettingParamJson(longTexts, time); }), 0);
}
