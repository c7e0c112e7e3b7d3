// Alarm sub-records (linkage, schedule, snapshot settings), the motion-
// detection region and the area, speed, area-limit, IO, urgent,
// video-analysis, fatigue-driving and timeout-parking alarm sections.
#include "AlarmParams.h"
#include "ParaShow.h"
#include "ParaTestSupport.h"

#include <json/writer.h>

#include <climits>

using namespace paratest;
using ToolkitHost::LogCapture;

namespace {

// A field at a literal offset: an integer of 1, 2 or 4 bytes, a text when
// larger; without a key path, bytes that must keep the sentinel.
struct Field {
    const char* path; // '.'-separated; numbers index arrays
    size_t offset;
    size_t size;
};

// Sets the value at a key path, creating objects and arrays on the way.
void Put(Json::Value& at, const std::string& path, const Json::Value& leaf)
{
    const size_t dot = path.find('.');
    const std::string head = path.substr(0, dot);
    Json::Value& next = isdigit(static_cast<unsigned char>(head[0])) ? at[Json::ArrayIndex(std::stoul(head))] : at[head];
    if (dot == std::string::npos)
        next = leaf;
    else
        Put(next, path.substr(dot + 1), leaf);
}

// The value written to the field at `at`: distinct from its neighbours' and
// needing the field's full width.
Json::Value ValueFor(size_t at, size_t size)
{
    if (size > 4)
        return "t" + std::to_string(at);
    return unsigned(size == 1 ? at % 251 + 1 : size == 2 ? 0x1100 + at : 0x11000000 + at);
}

const std::vector<Field> kLink = {
    {"AR.CH", 0, 4}, {"AR.P", 4, 2}, {"AR.D", 6, 2}, {"AR.L", 8, 1}, {"AR.ST", 9, 1}, {nullptr, 10, 2},
    {"SS.EN", 12, 4}, {nullptr, 16, 4}, {"PS.ID", 20, 1}, {nullptr, 21, 3}, {"PS.T", 24, 2}, {nullptr, 26, 2},
    {"SU", 28, 1}, {"L", 29, 1}, {"DA", 30, 1}, {"SM", 31, 1}, {"CH.0", 32, 1}, {"CH.15", 47, 1}, {"ET", 48, 2},
    {"ST", 50, 2}, {"ENBZ", 52, 1}, {"BZTY", 53, 1}, {"BZTI", 54, 1}, {"ENSP", 55, 1}, {nullptr, 56, 12}};
// The first and the last period of the week.
const std::vector<Field> kPlan = {{"I.0.0.S", 0, 4},     {"I.0.0.E", 4, 4},     {nullptr, 8, 8},
                                  {"I.6.15.S", 1776, 4}, {"I.6.15.E", 1780, 4}, {nullptr, 1784, 8}};

} // namespace

TEST(AlarmSections, EveryKeyLandsAtItsOffsetAndReservedBytesStay)
{
    const std::vector<Field> area = {{"MASK", 0, 4}, {"R", 4, 2},     {"LSTE", 6, 1},  {"SDT", 7, 1},   {"IOP", 8, 1},
                                     {"ODT", 9, 1},  {"LDAI", 10, 2}, {"LDAC", 12, 1}, {nullptr, 13, 3}};
    const std::vector<Field> speed = {
        {"EN", 0, 1}, {"AS", 1, 1}, {"SV", 2, 1}, {"UN", 3, 1}, {"SF", 4, 1}, {"AT", 5, 1}, {"VT", 6, 1},
        {"NSV", 7, 1}, {"SPN", 8, 32}, {"OD", 40, 16}, {nullptr, 1916, 16}, {"NT", 1932, 1}, {"WP", 1933, 1},
        {"WNT", 1934, 1}, {"WDT", 1935, 1}, {nullptr, 1936, 1}, {"SDT", 1937, 1}, {"ANI", 1938, 2}, {"ANC", 1940, 1},
        {"WAT", 1941, 1}, {"WNC", 1942, 1}, {"NWNC", 1943, 1}, {"WNI", 1944, 2}, {"NWNI", 1946, 2}, {"NWT", 1948, 2},
        {"NWS", 1950, 1}, {"NEN", 1951, 1}, {"LST", 1952, 1}, {"LSD", 1953, 1}, {"SPR", 1954, 1}, {"UI", 1955, 1},
        {"LSS", 1956, 1}, {nullptr, 1957, 3}};
    const std::vector<Field> limit = {{"RGVR", 0, 16}, {"ST", 16, 1}, {"FV", 17, 1}, {"LD", 18, 1}, {"TV", 19, 1}, {"YE", 20, 1},
                                      {"MO", 21, 1},   {"DA", 22, 1}, {"HO", 23, 1}, {"MI", 24, 1}, {"SE", 25, 1}};
    // Element 0 of "IOP" (entry 0 at 8); entries 1 to 15 stay.
    const std::vector<Field> input = {{nullptr, 0, 8},  {"0.EN", 8, 1},      {"0.AS", 9, 1},    {"0.EL", 10, 1},
                                      {"0.VT", 11, 1},  {"0.N", 12, 32},     {"0.S", 44, 16},   {nullptr, 1920, 16},
                                      {"0.TM", 1936, 1}, {"0.UT", 1937, 1},  {"0.SDT", 1938, 1}, {nullptr, 1939, 30920 - 1939}};
    const std::vector<Field> urgent = {{"EN", 0, 1},    {"AS", 1, 1},    {"T", 2, 1},         {"VT", 3, 1},
                                       {nullptr, 4, 4}, {"UN", 8, 32},   {"UO", 40, 16},      {nullptr, 1916, 16},
                                       {"SDT", 1932, 1}, {nullptr, 1933, 3}};
    // Video-analysis records: the 16th entry of "PMD" / "PVS" leaves entries 1 to 14 null.
    const std::vector<Field> md = {
        {"NE", 0, 1}, {"AS", 1, 1}, {"VT", 2, 1}, {"DT", 3, 1}, {nullptr, 4, 4}, {"MN", 8, 32}, {"MO", 40, 16},
        {"CH", 56, 4}, {nullptr, 1920, 16}, {"PMD.0.S", 1936, 1}, {"PMD.0.MAN", 1937, 1}, {nullptr, 1938, 2},
        {"PMD.0.KS", 1990, 1}, {"PMD.0.SZ", 1991, 1}, {"PMD.15.S", 2776, 1}, {nullptr, 2778, 2},
        {"PMD.15.SZ", 2831, 1}, {"SDT", 2832, 1}, {nullptr, 2833, 3}};
    const std::vector<Field> vs = {
        {"NE", 0, 1}, {"AS", 1, 1}, {"VT", 2, 1}, {"DT", 3, 1}, {"AT", 4, 1}, {nullptr, 5, 3}, {"VN", 8, 32},
        {"VO", 40, 16}, {"CH", 56, 4}, {nullptr, 1920, 16}, {"PVS.0.S", 1936, 1}, {nullptr, 1937, 7},
        {"PVS.15.S", 2056, 1}, {nullptr, 2057, 7}, {"SDT", 2064, 1}, {nullptr, 2065, 3}};
    const std::vector<Field> vl = {{"NE", 0, 1},   {"AS", 1, 1},       {"VT", 2, 1},       {nullptr, 3, 5},
                                   {"VN", 8, 32},  {"LO", 40, 16},     {"CH", 56, 4},      {nullptr, 1920, 16},
                                   {"SDT", 1936, 1}, {nullptr, 1937, 3}};
    const std::vector<Field> fatigue = {
        {"EN", 0, 1},   {"M", 1, 1},    {"SDT", 2, 1},  {nullptr, 3, 1}, {"TT", 4, 4},   {"RT", 8, 4},
        {"DTT", 12, 4}, {"AT", 16, 4},  {"NTT", 20, 4}, {"NRT", 24, 4},  {"SS", 28, 1},  {"VDT", 29, 1},
        {"WRT", 30, 1}, {"ART", 31, 1}, {"WI", 32, 2},  {"AI", 34, 2}};
    const std::vector<Field> park = {{"EN", 0, 1}, {"SDT", 1, 1}, {nullptr, 2, 2}, {"AT", 4, 4}};
    struct Block { const std::vector<Field>* fields; const char* prefix; size_t base; }; // key path prefix, offset base
    // `ignored`: keys of a sibling record that this one must not read.
    struct Case { const char* key; int type; size_t size; std::vector<Block> blocks; std::vector<const char*> ignored = {}; };
    // The linkage and the schedule sit at 56 and 124 in the speed and urgent
    // records, at 52 and 120 of an IO entry.
    const std::vector<Case> cases = {
        {"AREA", 2, 16, {{&area, "", 0}}},
        {"SAP", 6, 1960, {{&speed, "", 0}, {&kLink, "APR.", 56}, {&kPlan, "AP.", 124}}},
        {"ARLM", 7, 26, {{&limit, "", 0}}},
        {"IOP", 14, 30920, {{&input, "", 0}, {&kLink, "0.APR.", 8 + 52}, {&kPlan, "0.AP.", 8 + 120}}},
        {"UAP", 33, 1936, {{&urgent, "", 0}, {&kLink, "APR.", 56}, {&kPlan, "AP.", 124}}},
        {"PMDAS", 30, 2836, {{&md, "", 0}, {&kLink, "APR.", 60}, {&kPlan, "AP.", 128}}, {"AT"}},
        {"PVSAS", 31, 2068, {{&vs, "", 0}, {&kLink, "APR.", 60}, {&kPlan, "AP.", 128}}},
        {"PVLAS", 32, 1940, {{&vl, "", 0}, {&kLink, "APR.", 60}, {&kPlan, "AP.", 128}}, {"DT", "AT"}},
        {"FDAS", 42, 36, {{&fatigue, "", 0}}},
        {"TPAS", 43, 8, {{&park, "", 0}}},
    };
    for (const Case& c : cases) {
        Json::Value section;
        Fields fields;
        for (const Block& b : c.blocks)
            for (const Field& f : *b.fields) {
                const size_t at = b.base + f.offset;
                const Json::Value v = ValueFor(at, f.size);
                if (f.path)
                    Put(section, b.prefix + std::string(f.path), v);
                fields.push_back(!f.path ? Kept(at, at + f.size)
                                 : f.size > 4 ? FieldValue{at, f.size, 0, v.asString()}
                                              : FieldValue{at, f.size, v.asUInt()});
            }
        for (const char* key : c.ignored)
            section[key] = 0x5A;
        ExpectSection({"every key", c.type, c.key, c.size, Json::writeString(Json::StreamWriterBuilder(), section),
                       fields, {}, false});
    }
}

TEST(AlarmLinkProcess, ResultSaysWhetherAnyEmbeddedRecordWasThere)
{
    // The embedded records come first, "CH" at 32 is not given, 56-67 are reserved.
    const Fields notWritten = {Kept(32, 48), Kept(56, 68)};
    const auto parse = ParseAlarmLinkProcess;
    ExpectParsed<alarmLinkProcess_t>(parse, R"({"L":5})", 1,
                                     notWritten + Fields{Kept(0, 28), {28, 4, 0x500}, {48, 8, 0}}, kLinkWithoutRecords,
                                     false);
    ExpectParsed<alarmLinkProcess_t>(parse, R"({"AR":{},"SS":null,"PS":[]})", 1,
                                     notWritten + Fields{Kept(0, 28), {28, 4, 0}, {48, 8, 0}}, kLinkWithoutRecords,
                                     false);
    ExpectParsed<alarmLinkProcess_t>(parse, R"({"PS":{"T":3}})", 0,
                                     notWritten + Fields{Kept(0, 20), {28, 4, 0}, {48, 8, 0}},
                                     {kNoLinkRecord, kNoLinkSnap}, false);
    ExpectParsed<alarmLinkProcess_t>(parse, R"({"AR":{"CH":1},"SS":{"EN":1},"PS":{"ID":1}})", 0,
                                     notWritten + Fields{{28, 4, 0}, {48, 8, 0}}, {}, false);
}

// Days ("I" elements) and periods are bounded independently.
TEST(AlarmPlan, DaysAndPeriodsAreReadWithinTheirBounds)
{
    for (auto [days, periods] : std::vector<std::pair<int, int>>{{1, 1}, {1, 17}, {8, 3}, {8, 17}}) {
        Json::Value doc;
        Json::Value& plan = doc["PARAMETER"]["MDVR"]["SAP"]["AP"];
        for (int d = 0; d < days; ++d)
            for (int p = 0; p < periods; ++p) {
                plan["I"][d][p]["S"] = 100 * d + p;
                plan["I"][d][p]["E"] = 100 * d + p + 50;
            }
        // Inside the speed record the 16 bytes behind the schedule show any overrun.
        auto rec = Sentinel<tag_MsgSpeedAlarmSetting>();
        LogCapture quiet;
        ASSERT_EQ(ParseSpeedAlarmParamJson(doc, *rec), 0);
        for (int d = 0; d < 7; ++d)
            for (int p = 0; p < 16; ++p) {
                const size_t at = 124 + 256 * d + 16 * p;
                if (d < days && p < periods) {
                    EXPECT_EQ(At<unsigned long long>(rec.get(), at), (100ull * d + p) | (100ull * d + p + 50) << 32);
                    EXPECT_TRUE(Untouched(rec.get(), at + 8, at + 16));
                } else {
                    EXPECT_TRUE(Untouched(rec.get(), at, at + 16)) << "day " << d << " period " << p;
                }
            }
        EXPECT_TRUE(Untouched(rec.get(), 1916, 1932)) << days << " days of " << periods;
    }
    // An object without days is empty too.
    for (const char* json : {R"({"X":1})", R"({"I":[]})", R"({"I":{}})"})
        ExpectParsed<alarmPlan_t>(ParseAlarmPlan, json, -1, {}, {kNoPlan});
}

TEST(CommonSnapPara, SixteenElementsAtTheirStride)
{
    struct Guarded { CommonSnapPara_t paras[16]; unsigned char after[24]; };
    const std::string e = R"({"E":1,"R":2,"Q":3,"N":1000,"I":100000,"U":7})";
    struct Case { Json::Value list; size_t empty, filled; }; // [empty, filled) read, [0, empty) logged and kept
    const std::vector<Case> cases = {{paratest::Json(List(e, 20)), 0, 16}, {paratest::Json(List(e, 3)), 0, 3},
                                     {paratest::Json("{\"0\":" + e + "}"), 0, 0}, {paratest::Json("[null,{}," + e + "]"), 2, 3}};
    for (const Case& c : cases) {
        auto g = Sentinel<Guarded>();
        LogCapture log;
        EXPECT_EQ(ParseNCommonSnapPara<16>(c.list, g->paras), 0);
        EXPECT_EQ(Logged(log), Lines(c.empty, kNoSnapPara)) << c.list;
        EXPECT_TRUE(Untouched(g.get(), 0, 24 * c.empty)) << c.list;
        for (size_t at = 24 * c.empty; at < 24 * c.filled; at += 24) {
            EXPECT_EQ(At<unsigned>(g.get(), at) & 0xFFFFFF, 0x030201u) << "at " << at;
            EXPECT_TRUE(Untouched(g.get(), at + 3, at + 6) && Untouched(g.get(), at + 16, at + 24)) << "at " << at;
            EXPECT_EQ(At<unsigned short>(g.get(), at + 6), 1000);
            EXPECT_EQ(At<unsigned long long>(g.get(), at + 8), 100000ull | 7ull << 32);
        }
        EXPECT_TRUE(Untouched(g.get(), 24 * c.filled, sizeof(Guarded))) << c.list;
    }
}

TEST(IOAlarm, EntriesFollowTheArrayAndAbsentSubRecordsStay)
{
    for (auto [iop, entries] : std::vector<std::pair<Json::Value, size_t>>{
             {paratest::Json(R"([{"EN":1}])"), 1}, {paratest::Json(R"({"EN":1})"), 0}, {paratest::Json(List(R"({"EN":1})", 20)), 16}}) {
        Json::Value doc;
        doc["PARAMETER"]["MDVR"]["IOP"] = iop;
        auto rec = Sentinel<tag_MsgIOAlarmSetting>();
        LogCapture log;
        EXPECT_EQ(ParseIOAlarmParamJson(doc, *rec), 0) << iop;
        Lines logged;
        for (size_t at = 8; at < 8 + 1932 * entries; at += 1932) {
            logged.insert(logged.end(), {kNoLink, kNoPlan});
            EXPECT_EQ(At<unsigned>(rec.get(), at), 1u) << "at " << at; // EN 1; AS, EL, VT 0
            EXPECT_EQ(At<unsigned>(rec.get(), at + 1928) & 0xFFFFFF, 0u) << "at " << at;
            EXPECT_TRUE(Untouched(rec.get(), at + 52, at + 1928) && Untouched(rec.get(), at + 1931, at + 1932));
        }
        EXPECT_EQ(Logged(log), logged) << iop;
        EXPECT_TRUE(Untouched(rec.get(), 0, 8)) << iop;
        EXPECT_TRUE(Untouched(rec.get(), 8 + 1932 * entries, sizeof *rec)) << iop;
    }
}

// Narrowing, signedness and text widths of the video-analysis and time alarms.
TEST(AlarmSections, NarrowingAndTextWidths)
{
    const std::string s40(40, 's'), s32(32, 'v'), s31(31, 'w'), s17(17, 'o');
    const Lines noLinkNoPlan = {kNoLink, kNoPlan};
    const SectionCase cases[] = {
        {"", 42, "FDAS", 36, R"({"TT":4000})", {Zeros(0, 3), {4, 4, 4000}, Zeros(8, 36)}},
        {"", 42, "FDAS", 36, R"({"WI":70000,"AI":-1,"EN":300})",
         {{0, 3, 44}, Zeros(4, 32), {32, 2, 4464}, {34, 2, 65535}}},
        {"", 43, "TPAS", 8, R"({"AT":-1,"SDT":256})", {{0, 2, 0}, {4, 4, 0xFFFFFFFFull}}},
        {"", 30, "PMDAS", 2836, R"({"MN":")" + s40 + R"(","MO":")" + s17 + R"(","CH":4294967296})",
         {{8, 32, 0, s40}, {40, 16, 0, s17}, {56, 4, 0}}, noLinkNoPlan, false},
        {"", 31, "PVSAS", 2068, R"({"VN":")" + s31 + R"(","VO":"","CH":4294967295})",
         {{8, 32, 0, s31}, {40, 16, 0}, {56, 4, 0xFFFFFFFFull}}, noLinkNoPlan, false},
        {"", 32, "PVLAS", 1940, R"({"VN":")" + s32 + R"(","LO":5,"NE":-1})", {{0, 1, 255}, {8, 32, 0, s32}, {40, 16, 0}},
         noLinkNoPlan, false},
    };
    for (const SectionCase& c : cases)
        ExpectSection(c);
}

// Entries of "PMD" and "PVS" follow the array up to 16; their reserved bytes stay.
TEST(VideoAnalysisAlarms, EntriesFollowTheArrayWithinTheirBound)
{
    const struct {
        int type;
        const char* key;
        const char* list;
        size_t stride, entrySize, reservedAt, reservedSize, sdt; // entries start at 1936; SDT after them
    } sections[] = {{30, "PMDAS", "PMD", 56, 56, 2, 2, 2832}, {31, "PVSAS", "PVS", 8, 8, 1, 7, 2064}};
    for (const auto& s : sections)
        for (auto [elements, entries] : std::vector<std::pair<int, size_t>>{{3, 3}, {17, 16}, {-1, 0}}) {
            Json::Value doc;
            Json::Value& list = doc["PARAMETER"]["MDVR"][s.key][s.list];
            for (int i = 0; i < elements; ++i)
                list[i]["S"] = i + 1;
            if (elements < 0)
                list["0"]["S"] = 1; // an object: no entry
            std::vector<unsigned char> record(s.sdt + 4, kSentinel);
            LogCapture quiet;
            ASSERT_EQ(AdaptParaJson(static_cast<_PARA_TYPE_>(s.type), doc, record.data()), 0);
            for (size_t i = 0; i < 16; ++i) {
                const size_t at = 1936 + s.stride * i;
                SCOPED_TRACE(std::string(s.key) + " of " + std::to_string(elements) + ", entry " + std::to_string(i));
                if (i < entries)
                    EXPECT_EQ(record[at], i + 1);
                else
                    EXPECT_TRUE(Untouched(record.data(), at, at + s.entrySize));
                EXPECT_TRUE(Untouched(record.data(), at + s.reservedAt, at + s.reservedAt + s.reservedSize));
            }
            EXPECT_EQ(record[s.sdt], 0) << s.key;
            EXPECT_TRUE(Untouched(record.data(), s.sdt + 1, s.sdt + 4)) << s.key;
        }
}

// The 50 bytes of a region from "R", and the entry's own fields around them.
TEST(VideoAnalysisAlarms, RegionPackedFromTheFirstHundredPositions)
{
    const std::string digits100 = "00112233445566778899AABBCCDDEEFF0123456789abcdefFEDCBA9876543210"
                                  "0F1E2D3C4B5A69788796A5B4C3D2E1F0FF00";
    std::vector<unsigned char> full;
    for (size_t i = 0; i < 100; i += 2)
        full.push_back(static_cast<unsigned char>(std::stoul(digits100.substr(i, 2), nullptr, 16)));
    const struct {
        std::string r; // JSON value of "R", empty: absent
        std::vector<unsigned char> bytes; // then zero bytes to 50
    } cases[] = {
        {"", {}},
        {R"("")", {}},
        {"7", {}},
        {R"("FF00")", {0xFF, 0x00}},
        {R"("abc")", {0xAB, 0xC0}},
        {R"("G1z!")", {0x01, 0x31}},
        {R"("\u00001F")", {0x01, 0xF0}},
        {'"' + digits100 + '"', full},
        {'"' + digits100 + "12345\"", full},
    };
    for (const auto& c : cases) {
        const std::string entry = R"({"KS":7,"SZ":8)" + (c.r.empty() ? "" : R"(,"R":)" + c.r) + "}";
        auto rec = Sentinel<tag_MsgMDAlarmSetting>();
        LogCapture quiet;
        ASSERT_EQ(ParseMDAlarmParamJson(Doc("PMDAS", R"({"PMD":[)" + entry + "]}"), *rec), 0) << c.r;
        std::vector<unsigned char> expected = c.bytes;
        expected.resize(50, 0);
        EXPECT_EQ(std::vector<unsigned char>(rec->PMD[0].R, rec->PMD[0].R + 50), expected) << c.r;
        EXPECT_EQ(At<unsigned short>(rec.get(), 1990), 0x0807) << c.r;
        EXPECT_TRUE(Untouched(rec.get(), 1938, 1940) && Untouched(rec.get(), 1992, 2836 - 4)) << c.r;
    }
}

namespace {

// A heap buffer of exactly guard + payload + guard bytes, the guards filled
// with `fill`: ASan sees any access beyond it, and a read or write of a guard
// shows in the result.
struct Guarded {
    static constexpr size_t kGuard = 8;
    std::unique_ptr<char[]> bytes;
    size_t size;
    Guarded(const std::string& payload, char fill) : bytes(new char[payload.size() + 2 * kGuard]), size(payload.size())
    {
        std::memset(bytes.get(), fill, size + 2 * kGuard);
        std::memcpy(bytes.get() + kGuard, payload.data(), size);
    }
    char* payload() { return bytes.get() + kGuard; }
    std::string all() const { return std::string(bytes.get(), size + 2 * kGuard); }
};

} // namespace

TEST(MDRegion, EveryLengthAndPointerStaysInsideBothBuffers)
{
    const struct {
        const char* what;
        std::string text;
        bool nullText;
        int textLength;
        size_t outSize;
        bool nullOut;
        int outLength;
        std::string written; // from out[0]; the rest of the output keeps its bytes
    } cases[] = {
        {"four digits into fifty", "FF00", false, 4, 50, false, 50, std::string("\xFF\x00", 2)},
        {"odd length drops the last", "FF00", false, 3, 50, false, 50, "\xFF"},
        {"lower and mixed case", "abCd", false, 4, 2, false, 2, "\xAB\xCD"},
        {"text longer than the output", "0123456789ABCDEF", false, 16, 3, false, 3, "\x01\x23\x45"},
        {"text shorter than the output", "12", false, 2, 4, false, 4, "\x12"},
        {"a length shorter than the text", "123456", false, 4, 4, false, 4, "\x12\x34"},
        {"no hexadecimal digit", "GZg!@:", false, 6, 3, false, 3, std::string("\x03\x01\x0A", 3)},
        {"NUL and codes above 0x7F", std::string("\0\0\xC8\xFF", 4), false, 4, 2, false, 2, std::string("\x00\x18", 2)},
        {"text length 1", "F", false, 1, 4, false, 4, ""},
        {"text length 0", "", false, 0, 4, false, 4, ""},
        {"negative text length", "FFFF", false, -1, 4, false, 4, ""},
        {"smallest text length", "FFFF", false, INT_MIN, 4, false, 4, ""},
        {"output length 0", "FFFF", false, 4, 0, false, 0, ""},
        {"negative output length", "FFFF", false, 4, 0, false, -1, ""},
        {"smallest output length", "FFFF", false, 4, 0, false, INT_MIN, ""},
        {"largest output length, bound by the text", "FFFF", false, 4, 2, false, INT_MAX, "\xFF\xFF"},
        {"null text", "", true, 4, 4, false, 4, ""},
        {"null output", "FFFF", false, 4, 0, true, 4, ""},
        {"both null", "", true, 4, 0, true, 4, ""},
    };
    for (const auto& c : cases) {
        Guarded text(c.text, 'E'); // a read past the text would pack 0xE
        Guarded out(std::string(c.outSize, char(kSentinel)), char(kSentinel));
        const std::string textBefore = text.all();
        EXPECT_EQ(ParseMDRegion(c.nullText ? nullptr : text.payload(), c.textLength, c.nullOut ? nullptr : out.payload(),
                                c.outLength),
                  1)
            << c.what;
        std::string expected(Guarded::kGuard, char(kSentinel));
        expected += c.written;
        expected.resize(Guarded::kGuard * 2 + c.outSize, char(kSentinel));
        EXPECT_EQ(out.all(), expected) << c.what;
        EXPECT_EQ(text.all(), textBefore) << c.what;
    }
}

// What the region step reports to the inspector, its inverse and its layout.
TEST(MDRegion, StepChecksWritesBackAndShowsAsHex)
{
    const para::Field& step = paratest::StepField(para::Describe<MDAlarmEntry_t>::record, "R");
    const struct {
        std::string object;
        std::vector<std::string> reported;
    } cases[] = {
        {R"({"R":"FF00"})", {}},
        {"{}", {}},
        {R"({"R":"ABC"})", {"odd number of digits (3): the last one is the high nibble of byte 1, which stores 0xC0"}},
        {R"({"R":"0G"})", {"character 'G' at 1 is not a hexadecimal digit: byte 0 stores 0x00"}},
        {R"({"R":"zz00"})", {"2 characters are not hexadecimal digits, the first 'z' at 0: byte 0 stores 0x33"}},
        {R"({"R":12})", {"not text: stores 50 zero bytes"}},
        {R"({"R":")" + std::string(101, '1') + R"("})",
         {"text of 101 characters: only the first 100 digits are packed into the 50-byte region"}},
    };
    for (const auto& c : cases) {
        std::vector<std::string> reported;
        para::HexRegion::Check(paratest::Json(c.object), step, [&](const std::string& key, const std::string& what) {
            EXPECT_EQ(key, "R");
            reported.push_back(what);
        });
        EXPECT_EQ(reported, c.reported) << c.object;
    }

    // Every byte value written as text and read back.
    for (unsigned first = 0; first < 256; first += 50) {
        unsigned char src[50], back[50];
        for (unsigned i = 0; i < 50; ++i)
            src[i] = static_cast<unsigned char>(first + i);
        Json::Value object;
        para::HexRegion::Write(src, step, object);
        std::memset(back, kSentinel, sizeof back);
        para::HexRegion::Read(object, step, back);
        EXPECT_EQ(std::memcmp(src, back, 50), 0) << object;
        EXPECT_EQ(object["R"].asString().size(), 100u);
    }

    const std::vector<para::FieldInfo> layout = para::Layout(para::Describe<tag_MsgMDAlarmSetting>::record);
    const auto region = std::find_if(layout.begin(), layout.end(), [](const para::FieldInfo& f) { return f.path == "PMD[3].R"; });
    ASSERT_NE(region, layout.end());
    EXPECT_EQ(region->offset, 1936u + 3 * 56 + 4);
    EXPECT_EQ(region->size, 50u);
    EXPECT_EQ(region->kind, para::Kind::Hex);
    EXPECT_EQ(region->keys, "PMD[3].R");
}
