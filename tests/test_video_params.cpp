// The main-stream encoding and recording sections.
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

TEST(VideoSections, EmptySectionWritesNothingAndLogsNothing)
{
    for (const char* empty : {"{}", "[]", "null"}) {
        auto main = Sentinel<tag_MsgVideoEncodeSetting>();
        auto rec = Sentinel<tag_MsgRecordSetting>();
        LogCapture log;
        EXPECT_EQ(AdaptParaJson(PARA_MAIN_STREAM, Doc("MAIN", empty), main.get()), -1) << empty;
        EXPECT_EQ(AdaptParaJson(PARA_RECORD, Doc("RP", empty), rec.get()), -1) << empty;
        // Each section is found under its own key only.
        EXPECT_EQ(AdaptParaJson(PARA_MAIN_STREAM, Doc("RP", R"({"PRS":1})"), main.get()), -1);
        EXPECT_EQ(AdaptParaJson(PARA_RECORD, Doc("MAIN", "[{}]"), rec.get()), -1);
        EXPECT_TRUE(Untouched(main.get(), 0, sizeof *main)) << empty;
        EXPECT_TRUE(Untouched(rec.get(), 0, sizeof *rec)) << empty;
        EXPECT_TRUE(log.lines().empty()) << empty;
    }
}
