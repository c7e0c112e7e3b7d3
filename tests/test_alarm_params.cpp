// Alarm sub-records (linkage, schedule, snapshot settings) and the area,
// speed, area-limit, IO and urgent alarm sections.
#include "ParaTestSupport.h"

#include <json/writer.h>

using namespace paratest;
using ToolkitHost::LogCapture;

namespace {

typedef std::pair<std::string, std::string> Line; // function, message
typedef std::vector<Line> Lines;

// The captured lines, each of which must be an error of the adapter's source.
Lines Logged(const LogCapture& log)
{
    Lines out;
    for (const ToolkitHost::LogLine& l : log.lines()) {
        EXPECT_EQ(l.level, 0) << l.message;
        EXPECT_EQ(l.file, "basicservice/basebusiness/BSCommonLibrary/src/CommonParaAdapter");
        out.emplace_back(l.function, l.message);
    }
    return out;
}

const Line kNoRecord{"ParseAlarmLinkRecord", "empty json when parse alarm link record!\n"};
const Line kNoSnap{"ParseAlarmLinkSnapShot", "empty json when parse alarm link snap shot!\n"};
const Line kNoOutput{"ParseAlarmLinkOutput", "empty json when parse alarm link output!\n"};
const Line kNoLink{"ParseAlarmLinkProcess", "empty json when parse alarm link process!\n"};
const Line kNoPlan{"ParseAlarmPlan", "empty json when parse alarm plan!\n"};
const Line kNoSnapPara{"ParseCommonSnapPara", "empty json when parse comman snap para!\n"};

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
    struct Block { const std::vector<Field>* fields; const char* prefix; size_t base; }; // key path prefix, offset base
    struct Case { const char* key; int type; size_t size; std::vector<Block> blocks; };
    // The linkage and the schedule sit at 56 and 124 in the speed and urgent
    // records, at 52 and 120 of an IO entry.
    const std::vector<Case> cases = {
        {"AREA", 2, 16, {{&area, "", 0}}},
        {"SAP", 6, 1960, {{&speed, "", 0}, {&kLink, "APR.", 56}, {&kPlan, "AP.", 124}}},
        {"ARLM", 7, 26, {{&limit, "", 0}}},
        {"IOP", 14, 30920, {{&input, "", 0}, {&kLink, "0.APR.", 8 + 52}, {&kPlan, "0.AP.", 8 + 120}}},
        {"UAP", 33, 1936, {{&urgent, "", 0}, {&kLink, "APR.", 56}, {&kPlan, "AP.", 124}}},
    };
    for (const Case& c : cases) {
        Json::Value doc;
        for (const Block& b : c.blocks)
            for (const Field& f : *b.fields)
                if (f.path)
                    Put(doc["PARAMETER"]["MDVR"][c.key], b.prefix + std::string(f.path), ValueFor(b.base + f.offset, f.size));
        std::vector<unsigned char> record(c.size + 64, kSentinel);
        LogCapture log;
        ASSERT_EQ(AdaptParaJson(static_cast<_PARA_TYPE_>(c.type), doc, record.data()), 0) << c.key;
        EXPECT_TRUE(log.lines().empty()) << c.key;
        EXPECT_TRUE(Untouched(record.data(), c.size, record.size())) << c.key << ": past the record";
        for (const Block& b : c.blocks)
            for (const Field& f : *b.fields) {
                const size_t at = b.base + f.offset;
                SCOPED_TRACE(std::string(c.key) + " " + b.prefix + (f.path ? f.path : "reserved") + " at " + std::to_string(at));
                const Json::Value v = ValueFor(at, f.size);
                if (!f.path)
                    EXPECT_TRUE(Untouched(record.data(), at, at + f.size));
                else if (f.size > 4) // the text, then zero bytes to the end of the field
                    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&record[at]), f.size),
                              v.asString().append(f.size - v.asString().size(), '\0'));
                else
                    EXPECT_EQ(At<unsigned>(record.data(), at) & (f.size == 4 ? ~0u : (1u << 8 * f.size) - 1), v.asUInt());
            }
    }
}

TEST(AlarmSections, EmptySectionWritesNothingAndOnlyAreaSaysSo)
{
    for (auto [key, type] : std::vector<std::pair<std::string, int>>{{"AREA", 2}, {"SAP", 6}, {"ARLM", 7}, {"IOP", 14}, {"UAP", 33}})
        for (const char* section : {static_cast<const char*>(nullptr), "{}", "[]", "null"}) {
            std::vector<unsigned char> record(32 * 1024, kSentinel);
            LogCapture log;
            EXPECT_EQ(AdaptParaJson(static_cast<_PARA_TYPE_>(type), section ? Doc(key, section) : Doc("TIMEP", "{}"),
                                    record.data()), -1) << key;
            EXPECT_TRUE(Untouched(record.data(), 0, record.size())) << key;
            const Lines expected = key == "AREA" ? Lines{{"ParseAreaAlarmParamJson", "empty param json : AREA!\n"}} : Lines{};
            EXPECT_EQ(Logged(log), expected) << key;
        }
}

TEST(AlarmLinkProcess, ResultSaysWhetherAnyEmbeddedRecordWasThere)
{
    struct Case {
        const char* json;
        int result;
        Lines logged;
        size_t kept;     // bytes [0, kept) keep the sentinel (the embedded records come first)
        unsigned word28; // SU, L, DA, SM once written
    };
    const std::vector<Case> cases = {
        {R"({"L":5})", 1, {kNoRecord, kNoSnap, kNoOutput}, 28, 0x500},
        {R"({"AR":{},"SS":null,"PS":[]})", 1, {kNoRecord, kNoSnap, kNoOutput}, 28, 0},
        {R"({"PS":{"T":3}})", 0, {kNoRecord, kNoSnap}, 20, 0},
        {R"({"AR":{"CH":1},"SS":{"EN":1},"PS":{"ID":1}})", 0, {}, 0, 0},
        {"{}", -1, {kNoLink}, 68, 0},
        {"null", -1, {kNoLink}, 68, 0},
    };
    for (const Case& c : cases) {
        auto rec = Sentinel<alarmLinkProcess_t>();
        LogCapture log;
        EXPECT_EQ(ParseAlarmLinkProcess(paratest::Json(c.json), *rec), c.result) << c.json;
        EXPECT_EQ(Logged(log), c.logged) << c.json;
        EXPECT_TRUE(Untouched(rec.get(), 0, c.kept)) << c.json;
        EXPECT_TRUE(Untouched(rec.get(), 32, 48) && Untouched(rec.get(), 56, 68)) << c.json; // no "CH", reserved
        if (c.result >= 0) { // the direct scalars are written whatever the embedded records hold
            EXPECT_EQ(At<unsigned>(rec.get(), 28), c.word28) << c.json;
            EXPECT_EQ(At<unsigned long long>(rec.get(), 48), 0u) << c.json;
        }
    }
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
    for (const char* json : {"null", "{}", R"({"X":1})", R"({"I":[]})", R"({"I":{}})"}) {
        auto plan = Sentinel<alarmPlan_t>();
        LogCapture log;
        EXPECT_EQ(ParseAlarmPlan(paratest::Json(json), *plan), -1) << json;
        EXPECT_EQ(Logged(log), Lines{kNoPlan}) << json;
        EXPECT_TRUE(Untouched(plan.get(), 0, sizeof *plan)) << json;
    }
}

// `n` copies of `element` in an array.
Json::Value Repeat(const std::string& element, int n)
{
    Json::Value list(Json::arrayValue);
    for (int i = 0; i < n; ++i)
        list.append(paratest::Json(element));
    return list;
}

TEST(CommonSnapPara, SixteenElementsAtTheirStride)
{
    struct Guarded { CommonSnapPara_t paras[16]; unsigned char after[24]; };
    const std::string e = R"({"E":1,"R":2,"Q":3,"N":1000,"I":100000,"U":7})";
    struct Case { Json::Value list; size_t empty, filled; }; // [empty, filled) read, [0, empty) logged and kept
    const std::vector<Case> cases = {{Repeat(e, 20), 0, 16}, {Repeat(e, 3), 0, 3},
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
             {Repeat(R"({"EN":1})", 1), 1}, {paratest::Json(R"({"EN":1})"), 0}, {Repeat(R"({"EN":1})", 20), 16}}) {
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
