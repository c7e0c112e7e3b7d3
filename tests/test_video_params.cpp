// The main-stream encoding, assist recording, network transfer, encoding and
// view OSD, recording and snapshot sections.
#include "ParaTestSupport.h"

#include <algorithm>

using namespace paratest;
using ToolkitHost::LogCapture;

TEST(MainStreamSection, ChannelEntriesFromTheArrayOnly)
{
    auto r = Sentinel<tag_MsgVideoEncodeSetting>();
    // An object, a number (no object: every field 0) and an empty object.
    ASSERT_EQ(AdaptParaJson(PARA_MAIN_STREAM, Doc("MAIN", R"([{"BR":300000,"FR":300,"KFI":70000,"ECT":9},5,{}])"),
                            r.get()),
              0);
    EXPECT_EQ(At<unsigned int>(r.get(), 8), 300000u);
    EXPECT_EQ(At<unsigned char>(r.get(), 8 + 6), 44);
    EXPECT_EQ(At<unsigned short>(r.get(), 8 + 12), 4464);
    EXPECT_EQ(At<unsigned char>(r.get(), 8 + 19), 9);
    const unsigned char zeros[20] = {};
    for (size_t at : {32u, 56u})
        EXPECT_EQ(0, std::memcmp(Bytes(r.get()) + at, zeros, 20)) << at;
    for (size_t at : {8u, 32u, 56u})
        EXPECT_TRUE(Untouched(r.get(), at + 20, at + 24)) << at;
    EXPECT_TRUE(Untouched(r.get(), 0, 8));
    EXPECT_TRUE(Untouched(r.get(), 8 + 24 * 3, sizeof *r));

    // Elements 16 and later are beyond the 16 channels; an object reads no entry.
    std::string list = "[";
    for (int i = 0; i < 18; ++i)
        list += (i ? "," : "") + std::string(R"({"BR":)") + std::to_string(i + 1) + "}";
    r = Sentinel<tag_MsgVideoEncodeSetting>();
    ASSERT_EQ(ParseMainStreamParamJson(Doc("MAIN", list + "]"), *r), 0);
    EXPECT_EQ(At<unsigned int>(r.get(), 8 + 24 * 15), 16u);
    EXPECT_TRUE(Untouched(r.get(), 0, 8));
    r = Sentinel<tag_MsgVideoEncodeSetting>();
    ASSERT_EQ(ParseMainStreamParamJson(Doc("MAIN", R"({"BR":1})"), *r), 0);
    EXPECT_TRUE(Untouched(r.get(), 0, sizeof *r));
}

namespace {

// A JSON day of n periods; period p of day d has S = 100 d + p + 1, E = S + 50, T = p + 1.
std::string Day(int d, int n)
{
    std::string list = "[";
    for (int p = 0; p < n; ++p) {
        const int s = 100 * d + p + 1;
        list += (p ? "," : "") + std::string(R"({"S":)") + std::to_string(s) + R"(,"E":)" + std::to_string(s + 50) +
                R"(,"T":)" + std::to_string(p + 1) + "}";
    }
    return list + "]";
}

// The fields that Day(d, n) fills in channel ch, plus RM and RP of that channel.
void AddDay(std::vector<FieldValue>& f, size_t ch, size_t d, size_t n)
{
    for (size_t p = 0; p < n; ++p) {
        const size_t at = 1804 * ch + 256 * d + 16 * p;
        const unsigned long long s = 100 * d + p + 1;
        f.insert(f.end(), {{at, 4, s}, {at + 4, 4, s + 50}, {at + 8, 1, p + 1}});
    }
}

} // namespace

TEST(RecordSection, EachNestingLevelIsBoundedOnItsOwn)
{
    // The four section-wide values, absent unless given, so written as 0.
    const std::vector<FieldValue> top = {{28896, 4, 0}, {28900, 1, 0}, {28902, 2, 0}, {28904, 2, 0}};
    const auto channel = [](size_t ch, unsigned rm, unsigned rp) {
        return std::vector<FieldValue>{{1804 * ch + 1792, 1, rm}, {1804 * ch + 1794, 2, rp}};
    };
    struct Case {
        const char* what;
        std::string section;
        std::vector<FieldValue> fields;
    } cases[] = {
        {"top level only", R"({"PRS":70000,"PRE":300})", {{28896, 4, 70000}, {28900, 1, 44}, {28902, 2, 0}, {28904, 2, 0}}},
        {"channels: object, number, object without RSI", R"({"RCP":[{"RM":1,"RP":2},7,{"RM":3,"RP":70000}]})", top},
        // Day 7 would land on RM and RP.
        {"days: arrays only, at most 7",
         "{\"RCP\":[{\"RSI\":[" + Day(0, 1) + ",5,{},[]," + Day(4, 1) + "," + Day(5, 1) + "," + Day(6, 1) + "," +
             Day(7, 16) + "]}]}",
         top},
        // Period 16 of day 0 would land on period 0 of day 1.
        {"periods: at most 16, a shorter day fills its first ones",
         "{\"RCP\":[{\"RSI\":[" + Day(0, 17) + "]},{\"RSI\":[[]," + Day(1, 5) + "]}]}", top},
        {"a period that is no object gets zeros", R"({"RCP":[{"RSI":[[7,{"S":9}]]}]})", top},
        // Entry 4 would land on PRS.
        {"MP: at most 4", R"({"MP":[{"OLD":1,"OT":2,"OVD":3},{"OLD":4},5,{"OLD":6},{"OLD":7},{"OLD":8}]})", top},
    };
    auto add = [](Case& c, std::vector<FieldValue> more) { c.fields.insert(c.fields.end(), more.begin(), more.end()); };
    add(cases[1], channel(0, 1, 2));
    add(cases[1], channel(1, 0, 0));
    add(cases[1], channel(2, 3, 4464));
    add(cases[2], channel(0, 0, 0));
    for (size_t d : {0, 4, 5, 6})
        AddDay(cases[2].fields, 0, d, 1);
    add(cases[3], channel(0, 0, 0));
    add(cases[3], channel(1, 0, 0));
    AddDay(cases[3].fields, 0, 0, 16);
    AddDay(cases[3].fields, 1, 1, 5);
    add(cases[4], channel(0, 0, 0));
    add(cases[4], {{0, 4, 0}, {4, 4, 0}, {8, 1, 0}, {16, 4, 9}, {20, 4, 0}, {24, 1, 0}});
    for (size_t k = 0; k < 4; ++k) {
        const unsigned long long old[] = {1, 4, 0, 6};
        add(cases[5], {{28864 + 8 * k, 1, old[k]}, {28865 + 8 * k, 1, k ? 0u : 2u}, {28866 + 8 * k, 1, k ? 0u : 3u}});
    }
    for (const Case& c : cases) {
        auto record = Sentinel<tag_MsgRecordSetting>();
        LogCapture log;
        EXPECT_EQ(AdaptParaJson(PARA_RECORD, Doc("RP", c.section), record.get()), 0) << c.what;
        ExpectFields(record.get(), sizeof *record, c.fields, c.what, true);
        EXPECT_TRUE(log.lines().empty()) << c.what;
    }
}

namespace {

std::vector<FieldValue>& operator+=(std::vector<FieldValue>& to, const std::vector<FieldValue>& more)
{
    to.insert(to.end(), more.begin(), more.end());
    return to;
}

std::vector<FieldValue> operator+(std::vector<FieldValue> a, const std::vector<FieldValue>& b) { return a += b; }

// The bytes [base, base + size) that a parser writes: the given values
// (offsets relative to base), zero everywhere else in the range.
std::vector<FieldValue> Written(size_t base, size_t size, std::vector<FieldValue> values)
{
    std::vector<bool> given(size, false);
    for (FieldValue& v : values) {
        std::fill(given.begin() + v.offset, given.begin() + v.offset + v.size, true);
        v.offset += base;
    }
    for (size_t i = 0; i < size;) {
        size_t end = i;
        while (end < size && !given[end])
            ++end;
        if (end > i)
            values.push_back({base + i, end - i, 0});
        i = end + 1;
    }
    return values;
}

// A snapshot setting at `base`: E, R, Q and N, I, U are written, the
// reserved bytes 3-5 and 16-23 are not.
std::vector<FieldValue> Snap(size_t base, const std::vector<FieldValue>& values)
{
    std::vector<FieldValue> low, high;
    for (const FieldValue& v : values)
        (v.offset < 3 ? low : high).push_back(v.offset < 3 ? v : FieldValue{v.offset - 6, v.size, v.value});
    return Written(base, 3, low) + Written(base + 6, 10, high);
}

// A JSON array of n elements, element i given by `element(i)`.
template <class F> std::string List(size_t n, F element)
{
    std::string list = "[";
    for (size_t i = 0; i < n; ++i)
        list += (i ? "," : "") + element(i);
    return list + "]";
}

std::string Number(size_t i) { return std::to_string(i); }

const std::string kSnapLog = "empty json when parse comman snap para!\n";

struct SectionCase {
    const char* what;
    int type;
    const char* key;
    size_t size;
    std::string section;
    std::vector<FieldValue> fields; // every byte written; all others keep the sentinel
    std::vector<std::string> logs = {};  // messages of ParseCommonSnapPara
};

} // namespace

// Through the dispatcher, so that each type number reaches its own section.
// Array bounds are probed with one element too many: it would land on a
// later field, or past the record where the sanitizer sees it.
TEST(VideoSections, WrittenBytesOfEachSectionExactly)
{
    const std::string forty(40, 'x'), thirtyTwo(32, 'y'), sixteen(16, 'z');
    std::vector<SectionCase> cases;

    // Assist recording: scalars at 0-11 and 396-408, "VEC" entries of 24 bytes at 12.
    {
        SectionCase c{"AR: narrowing, a short VEC, an entry that is no object", 11, "AR", 412,
                      R"({"EN":1,"MC":4294967295,"ALH":300,)"
                      R"("VEC":[{"BR":300000,"FR":300,"KFI":70000,"ECT":9},{"LCN":7},[1]]})",
                      Written(0, 12, {{0, 1, 1}, {4, 4, 0xFFFFFFFFull}})};
        c.fields += Written(396, 13, {{12, 1, 44}});
        c.fields += Written(12, 20, {{0, 4, 300000}, {6, 1, 44}, {12, 2, 4464}, {19, 1, 9}});
        c.fields += Written(36, 20, {{14, 1, 7}});
        c.fields += Written(60, 20, {});
        cases.push_back(c);
    }
    {
        SectionCase c{"AR: VEC of 17, the 17th would land on SSC", 11, "AR", 412,
                      R"({"VEC":)" + List(17, [](size_t i) { return R"({"BR":)" + Number(i + 1) + "}"; }) + "}",
                      Written(0, 12, {}) + Written(396, 13, {})};
        for (size_t i = 0; i < 16; ++i)
            c.fields += Written(12 + 24 * i, 20, {{0, 4, i + 1}});
        cases.push_back(c);
    }
    cases.push_back({"AR: VEC as an object reads no entry", 11, "AR", 412, R"({"HID":2,"VEC":{"BR":1}})",
                     Written(0, 12, {{1, 1, 2}}) + Written(396, 13, {})});

    // Network transfer: its own 20-byte entry, written over 14 bytes.
    {
        SectionCase c{"SUBSTRNET: every entry key at its own offset", 12, "SUBSTRNET", 336,
                      R"({"TOTALBW":4294967295,"SM":300,"NEC":[)"
                      R"({"BR":1,"VEN":2,"FT":3,"FR":4,"QLT":5,"RST":6,"AEN":7,"BRM":8,"ECT":9,"KFI":70000},5]})",
                      Written(0, 7, {{0, 4, 0xFFFFFFFFull}, {4, 1, 44}})};
        c.fields += Written(16, 14, {{0, 4, 1}, {4, 1, 2}, {5, 1, 3}, {6, 1, 4}, {7, 1, 5}, {8, 1, 6}, {9, 1, 7},
                                     {10, 1, 8}, {11, 1, 9}, {12, 2, 4464}});
        c.fields += Written(36, 14, {});
        cases.push_back(c);
    }
    {
        SectionCase c{"SUBSTRNET: NEC of 17", 12, "SUBSTRNET", 336,
                      R"({"RLE":3,"NEC":)" +
                          List(17, [](size_t i) { return R"({"KFI":)" + Number(i + 1) + "}"; }) + "}",
                      Written(0, 7, {{6, 1, 3}})};
        for (size_t i = 0; i < 16; ++i)
            c.fields += Written(16 + 20 * i, 14, {{12, 2, i + 1}});
        cases.push_back(c);
    }

    // Encoding OSD: channels of 232 bytes at 8, fixed fields at 0-19 and
    // 212-223, overlays of 48 bytes at 20 (41 of them written).
    {
        SectionCase c{"EOSD: overlay texts and bounds, a channel without COSD", 15, "EOSD", 3720,
                      R"([{"TE":1,"SE":4,"GE":2,"VE":3,"TX":70000,"VY":5,)"
                      R"("NE":6,"DE":7,"NX":8,"DY":9,"DTE":10,"WME":11,)"
                      R"("COSD":[{"EN":1,"ID":2,"X":3,"Y":4,"F":5,"L":6,"T":")" + forty + R"(","TP":7},)"
                      R"({"T":")" + thirtyTwo + R"("},{"T":"short"},{},{"EN":9},{"EN":9}]},{"TE":1}])",
                      Written(8, 20, {{0, 1, 1}, {1, 1, 4}, {2, 1, 2}, {3, 1, 3}, {4, 2, 4464}, {18, 2, 5}})};
        c.fields += Written(8 + 212, 12, {{0, 1, 6}, {1, 1, 7}, {2, 2, 8}, {8, 2, 9}, {10, 1, 10}, {11, 1, 11}});
        c.fields += Written(28, 41, {{0, 1, 1}, {1, 1, 2}, {2, 2, 3}, {4, 2, 4}, {6, 1, 5}, {7, 1, 6},
                                     {8, 32, 0, forty.c_str()}, {40, 1, 7}});
        c.fields += Written(28 + 48, 41, {{8, 32, 0, thirtyTwo.c_str()}});
        c.fields += Written(28 + 96, 41, {{8, 32, 0, "short"}});
        c.fields += Written(28 + 144, 41, {});
        c.fields += Written(8 + 232, 20, {{0, 1, 1}}) + Written(8 + 232 + 212, 12, {});
        cases.push_back(c);
    }
    cases.push_back({"EOSD: an object reads no channel", 15, "EOSD", 3720, R"({"TE":1})", {}});

    // View OSD: flags at 0-6 and 519-523, names of 16 bytes at 7, positions at 524.
    cases.push_back({"DOSD: only TE, the twelve flags written", 50, "DOSD", 572, R"({"TE":1})",
                     Written(0, 7, {{0, 1, 1}}) + Written(519, 5, {})});
    {
        SectionCase c{"DOSD: names cut to 16, 40 names, 3 positions", 50, "DOSD", 572,
                      R"({"VE":2,"GE":3,"COE1":4,"REN":5,"OP":[{"X":70000,"Y":2},{"Y":3},4],"CHN":)" +
                          List(40, [&](size_t i) {
                              const std::string names[] = {'"' + forty + '"', '"' + sixteen + '"', R"("Rear")", "7"};
                              return i < 4 ? names[i] : R"("cam)" + Number(i) + '"';
                          }) + "}",
                      Written(0, 7, {{2, 1, 2}, {3, 1, 3}})};
        c.fields += Written(519, 5, {{2, 1, 4}, {4, 1, 5}});
        c.fields += {{7, 16, 0, forty.c_str()}, {23, 16, 0, sixteen.c_str()}, {39, 16, 0, "Rear"}, {55, 16, 0}};
        static std::string names[32];
        for (size_t j = 4; j < 32; ++j) {
            names[j] = "cam" + Number(j);
            c.fields.push_back({7 + 16 * j, 16, 0, names[j].c_str()});
        }
        c.fields += {{524, 2, 4464}, {526, 2, 2}, {528, 2, 0}, {530, 2, 3}, {532, 4, 0}};
        cases.push_back(c);
    }
    {
        SectionCase c{"DOSD: 13 positions", 50, "DOSD", 572,
                      R"({"OP":)" + List(13, [](size_t i) { return R"({"X":)" + Number(i + 1) + "}"; }) + "}",
                      Written(0, 7, {}) + Written(519, 5, {})};
        for (size_t m = 0; m < 12; ++m)
            c.fields += {{524 + 4 * m, 2, m + 1}, {526 + 4 * m, 2, 0}};
        cases.push_back(c);
    }

    // Snapshots: NE, ITN at 0; MSP set at 32; timed periods of 400 bytes at
    // 416 with their set at 16; ASP at 3616 with its set at 3620.
    const std::vector<FieldValue> snapTop = Written(0, 2, {{0, 1, 1}}) + Written(3616, 3, {});
    cases.push_back({"PSNAP: only NE; groups of other kinds read nothing", 34, "PSNAP", 4004,
                     R"({"NE":1,"ASP":5,"MSP":[{"CSP":[{"E":1}]}],"TSP":{"SH":1}})", snapTop});
    {
        SectionCase c{"PSNAP: the three kinds of snapshot set", 34, "PSNAP", 4004,
                      R"({"NE":300,"ITN":2,"MSP":{"CSP":[{"E":1,"R":2,"Q":3,"N":70000,"I":5,"U":6},{}]},)"
                      R"("TSP":[{"SH":1,"SM":2,"SS":3,"EH":4,"EM":5,"ES":6,"I":70000,"CSP":[{"Q":7}]},)"
                      R"({"I":8,"CSP":[null,{"E":9}]}],)"
                      R"("ASP":{"I":70000,"ST":300,"CSP":[{"U":4294967295}]}})",
                      Written(0, 2, {{0, 1, 44}, {1, 1, 2}}),
                      {kSnapLog, kSnapLog}};
        c.fields += Snap(32, {{0, 1, 1}, {1, 1, 2}, {2, 1, 3}, {6, 2, 4464}, {8, 4, 5}, {12, 4, 6}});
        c.fields += Written(416, 6, {{0, 1, 1}, {1, 1, 2}, {2, 1, 3}, {3, 1, 4}, {4, 1, 5}, {5, 1, 6}});
        c.fields += {{416 + 8, 2, 4464}};
        c.fields += Snap(416 + 16, {{2, 1, 7}});
        c.fields += Written(816, 6, {});
        c.fields += {{816 + 8, 2, 8}};
        c.fields += Snap(816 + 16 + 24, {{0, 1, 9}});
        c.fields += {{3616, 2, 4464}, {3618, 1, 44}};
        c.fields += Snap(3620, {{12, 4, 0xFFFFFFFFull}});
        cases.push_back(c);
    }
    {
        // Period 8 would put its set's first E into the ASP set, which "ASP"
        // without "CSP" leaves alone.
        SectionCase c{"PSNAP: TSP of 10", 34, "PSNAP", 4004,
                      R"({"NE":1,"TSP":)" +
                          List(10, [](size_t k) { return R"({"EH":)" + Number(k + 1) + R"(,"CSP":[{"E":1}]})"; }) + "}",
                      snapTop};
        for (size_t k = 0; k < 8; ++k) {
            c.fields += Written(416 + 400 * k, 6, {{3, 1, k + 1}});
            c.fields += {{416 + 400 * k + 8, 2, 0}};
            c.fields += Snap(416 + 400 * k + 16, {{0, 1, 1}});
        }
        cases.push_back(c);
    }
    {
        SectionCase c{"DSP: full 32 bits, CSP of 20", 35, "DSP", 420,
                      R"({"SD":4294967295,"SU":300,"CSP":)" +
                          List(20, [](size_t i) { return R"({"N":)" + Number(i + 1) + "}"; }) + "}",
                      {{0, 4, 0xFFFFFFFFull}, {4, 1, 44}}};
        for (size_t i = 0; i < 16; ++i)
            c.fields += Snap(36 + 24 * i, {{6, 2, i + 1}});
        cases.push_back(c);
    }
    cases.push_back({"DSP: CSP as an object reads nothing", 35, "DSP", 420, R"({"SU":1,"CSP":{"E":1}})",
                     {{0, 4, 0}, {4, 1, 1}}});

    for (const SectionCase& c : cases) {
        std::vector<unsigned char> record(c.size, kSentinel);
        LogCapture log;
        EXPECT_EQ(AdaptParaJson(static_cast<_PARA_TYPE_>(c.type), Doc(c.key, c.section), record.data()), 0) << c.what;
        ExpectFields(record.data(), c.size, c.fields, c.what, true);
        EXPECT_EQ(log.messages(), c.logs) << c.what;
        for (const ToolkitHost::LogLine& line : log.lines())
            EXPECT_TRUE(line.function == "ParseCommonSnapPara" && line.level == 0) << c.what << ": " << line.function;
    }
}

TEST(VideoSections, EmptySectionWritesNothingAndLogsNothing)
{
    const struct {
        int type;
        const char* key;
        size_t size;
    } sections[] = {{10, "MAIN", 392},  {11, "AR", 412},    {12, "SUBSTRNET", 336}, {15, "EOSD", 3720},
                    {16, "RP", 28908},  {34, "PSNAP", 4004}, {35, "DSP", 420},       {50, "DOSD", 572}};
    for (const auto& s : sections) {
        // Empty in every way, absent, and each section found under its own key only.
        const Json::Value docs[] = {Doc(s.key, "{}"), Doc(s.key, "[]"), Doc(s.key, "null"), Doc("OTHER", R"({"EN":1})"),
                                    Json::Value("not an object")};
        for (const Json::Value& doc : docs) {
            std::vector<unsigned char> record(s.size, kSentinel);
            LogCapture log;
            EXPECT_EQ(AdaptParaJson(static_cast<_PARA_TYPE_>(s.type), doc, record.data()), -1) << s.key;
            EXPECT_TRUE(Untouched(record.data(), 0, s.size)) << s.key;
            EXPECT_TRUE(log.lines().empty()) << s.key;
        }
    }
}
