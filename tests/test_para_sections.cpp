// What the descriptions do not say: values of the wrong kind, sub-record parser rules and logs, snapshot
// sets, the region and the steps at their edges. Where keys land: tests/golden/layout-all.txt.
#include "ParaTestSupport.h"

#include <climits>

using namespace paratest;
using ToolkitHost::LogCapture;

namespace {

// An ATP section of "CE" among 200 other members and keys that are a prefix
// of a key, have a key as their prefix, equal one up to an embedded NUL, or
// sort after every key as unsigned bytes.
std::string AmongOthers()
{
    std::string section = R"({"G":7,"GEX":8,"NE\u0000x":9,"CE":300,"\u00e9":1)";
    for (int i = 0; i < 200; ++i)
        section += ",\"X" + std::to_string(i) + "\":" + std::to_string(i);
    return section + "}";
}

// Through the dispatcher: the fields written (with `whole` every other byte
// still the sentinel) and the log lines.
const SectionCase kSections[] = {
    {"members are matched to keys by their exact names", 0, "ATP", 70, AmongOthers(), {Zeros(0, 70), {2, 1, 44}}},
    {"an element that is no object is an entry of zeros; beyond the array entries stay", 10, "MAIN", 392,
     R"([{"BR":300000,"KFI":70000},5,{}])",
     {Zeros(8, 28), {8, 4, 300000}, {20, 2, 4464}, Zeros(32, 52), Zeros(56, 76)}},
    {"a group of the wrong kind reads as absent", 22, "ETHERNET", 104,
     R"({"PIP":["10.0.0.2"],"DNS":{"ADNS":"1234567890123456789"}})",
     {Zeros(0, 3), Zeros(8, 56), Zeros(72, 88), {88, 16, 0, "1234567890123456"}}},
    {"an empty profile is reported and kept; a text profile is no object but not empty: defaults", 17, "M3G", 734,
     R"({"MP":[],"M4G":"x"})", {Zeros(0, 81), Zeros(460, 721), Zeros(728, 733)}, {kNoProfile}},
    {"no threshold objects", 25, "PGDS", 432, R"({"SUI":1})", {{216, 2, 1}}, {kNoThresh1, kNoThresh2}, false},
    {"a linkage without its records logs each; the schedule without days", 6, "SAP", 1960,
     R"({"APR":{"SU":9},"AP":{"I":[]}})", {{56 + 28, 4, 9}, Kept(56, 56 + 28), Kept(124, 1916)},
     kLinkWithoutRecords + Lines{kNoPlan}, false},
    {"inputs: each entry's sub-records are reported absent", 14, "IOP", 30920, R"([{"EN":1},{"EN":2}])",
     {{8, 1, 1}, {8 + 1932, 1, 2}, Kept(8 + 52, 8 + 1928), Kept(8 + 1932 + 52, 8 + 1932 + 1928)},
     {kNoLink, kNoPlan, kNoLink, kNoPlan}, false},
};

class Sections : public ::testing::TestWithParam<SectionCase> {};
TEST_P(Sections, WriteTheirFieldsAndLogTheirLines) { ExpectSection(GetParam()); }
INSTANTIATE_TEST_SUITE_P(Quirks, Sections, ::testing::ValuesIn(kSections));

} // namespace

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

TEST(SubRecordParsers, ResultsAndWhatAnyOtherKindOfValueGives)
{
    // The linkage: 1 unless one of its three records was read; "CH" and the
    // reserved run are never written when absent.
    const Fields link = {Kept(32, 48), Kept(56, 68), {48, 8, 0}};
    ExpectParsed<alarmLinkProcess_t>(ParseAlarmLinkProcess, R"({"L":5})", 1, link + Fields{Kept(0, 28), {28, 4, 0x500}},
                                     kLinkWithoutRecords, false);
    ExpectParsed<alarmLinkProcess_t>(ParseAlarmLinkProcess, R"({"AR":{},"SS":null,"PS":[]})", 1,
                                     link + Fields{Kept(0, 28), {28, 4, 0}}, kLinkWithoutRecords, false);
    ExpectParsed<alarmLinkProcess_t>(ParseAlarmLinkProcess, R"({"PS":{"T":3}})", 0,
                                     link + Fields{Kept(0, 20), {20, 1, 0}, {24, 2, 3}, {28, 4, 0}},
                                     {kNoLinkRecord, kNoLinkSnap}, false);
    // A schedule needs its days.
    for (const char* json : {R"({"X":1})", R"({"I":[]})", R"({"I":{}})"})
        ExpectParsed<alarmPlan_t>(ParseAlarmPlan, json, -1, {}, {kNoPlan});
    // Any other non-empty value is read as an object without keys.
    for (const char* json : {"5", R"("t")", "true", "[1]", R"({"X":1})"}) {
        ExpectParsed<paramAlarmThresh1_t>(ParseGDSAlarmThresh1, json, 0, {Zeros(0, 52)});
        ExpectParsed<paramAlarmThresh2_t>(ParseGDSAlarmThresh2, json, 0, {Zeros(0, 149)});
        ExpectParsed<paramBoHaoParam_t>(ParseBoHaoParamJson, json, 0, {Zeros(0, 261)});
    }
}

TEST(CommonSnapPara, SixteenElementsAtTheirStride)
{
    struct Guarded {
        CommonSnapPara_t paras[16];
        unsigned char after[24];
    };
    const std::string e = R"({"E":1,"R":2,"Q":3,"N":1000,"I":100000,"U":7})";
    const struct {
        std::string list;
        size_t empty, filled; // [empty, filled) read, [0, empty) logged and kept
    } cases[] = {{List(e, 20), 0, 16}, {List(e, 3), 0, 3}, {"{\"0\":" + e + "}", 0, 0}, {"[null,{}," + e + "]", 2, 3}};
    for (const auto& c : cases) {
        auto g = Sentinel<Guarded>();
        LogCapture log;
        EXPECT_EQ(ParseNCommonSnapPara<16>(paratest::Json(c.list), g->paras), 0);
        EXPECT_EQ(Logged(log), Lines(c.empty, kNoSnapPara)) << c.list;
        Fields entries;
        for (size_t at = 24 * c.empty; at < 24 * c.filled; at += 24)
            entries = entries + Fields{{at, 3, 0x030201}, {at + 6, 2, 1000}, {at + 8, 8, 100000ull | 7ull << 32}};
        ExpectFields(g.get(), sizeof(Guarded), entries, c.list);
    }
}

// Lengths and characters are the region fuzz target's (its corpus is replayed
// in this suite); here the null pointers and the extreme lengths.
TEST(MDRegion, NullPointersAndExtremeLengths)
{
    const struct {
        bool nullText, nullOut;
        int textLength, outLength;
        std::string written; // into 4 bytes of 0xA5
    } cases[] = {{true, false, 4, 4, ""},          {false, true, 4, 4, ""},
                 {false, false, INT_MIN, 4, ""},   {false, false, 4, INT_MIN, ""},
                 {false, false, 4, INT_MAX, "\xAB\xCD"}, {false, false, INT_MAX - 1, 1, "\xAB"}};
    for (const auto& c : cases) {
        char text[] = "abCd", out[4];
        std::memset(out, kSentinel, sizeof out);
        EXPECT_EQ(ParseMDRegion(c.nullText ? nullptr : text, c.textLength, c.nullOut ? nullptr : out, c.outLength), 1);
        EXPECT_EQ(std::string(out, 4), c.written + std::string(4 - c.written.size(), char(kSentinel)));
    }
}

// The conversion steps.

namespace {

const para::Record& kTime = para::Describe<tag_MsgTimeSetting>::record;
const para::Record& kKeys = para::Describe<tag_MsgKeySetting>::record;
const para::Record& kVolts = para::Describe<tag_MsgVoltageProtectSetting>::record;
const para::Record& kAccel = para::Describe<tag_msgAccelAlarmSetting>::record;
const para::Record& kRegion = para::Describe<MDAlarmEntry_t>::record;

// A step at the edges of what it converts: the object it reads, the bytes
// it stores (hexadecimal, then zero bytes to the field's size) and what the
// inspector's check reports, "KEY: what".
struct StepCase {
    const para::Record* record;
    const char* keys;
    std::string object;
    std::string stored;
    std::vector<std::string> reports;
};

const std::string kDigits100 = "00112233445566778899AABBCCDDEEFF0123456789abcdefFEDCBA9876543210"
                               "0F1E2D3C4B5A69788796A5B4C3D2E1F0FF00";

const StepCase kSteps[] = {
    {&kTime, "SWEEK,SWIND", R"({"SWEEK":15,"SWIND":15})", "FF", {}},
    {&kTime, "SWEEK,SWIND", R"({"SWEEK":1,"SWIND":37})", "15",
     {"SWIND: only the low 4 bits of 37 are packed: stores 5"}},
    {&kTime, "SWEEK,SWIND", R"({"SWEEK":16,"SWIND":256})", "00",
     {"SWEEK: only the low 4 bits of 16 are packed: stores 0", "SWIND: only the low 4 bits of 256 are packed: stores 0"}},
    {&kKeys, "MAC", R"({"MAC":"aa:bb:cc:dd:ee:ff"})", "AABBCCDDEEFF", {}},
    {&kKeys, "MAC", R"({"MAC":"11:22:zz:44:55:66"})", "1122",
     {"MAC: text holds 2 of 6 hexadecimal groups: the other bytes store 0"}},
    {&kKeys, "MAC", R"({"MAC":""})", "", {"MAC: text holds 0 of 6 hexadecimal groups: the other bytes store 0"}},
    {&kKeys, "MAC", R"({"MAC":"  1:  2:  3:  4:  5:6F"})", "0102030405", // the sixth group starts at character 20
     {"MAC: text holds 5 of 6 hexadecimal groups: the other bytes store 0"}},
    {&kKeys, "MAC", R"({"MAC":1122334455})", "", {"MAC: not text: stores six zero bytes"}},
    {&kKeys, "MAC", "{}", "", {}},
    {&kVolts, "LV", R"({"LV":"655.35"})", "FFFF", {}},
    {&kVolts, "LV", R"({"LV":"655.36"})", "0000",
     {"LV: 65536 hundredths of a volt do not fit 16 bits: stores 0"}},
    {&kVolts, "LV", R"({"LV":"12.345"})", "D204", {}}, // truncated, not rounded
    {&kVolts, "LV", R"({"LV":"inf"})", "FFFF",
     {"LV: 4294967295 hundredths of a volt do not fit 16 bits: stores 65535"}},
    {&kVolts, "LV", R"({"LV":"00000000000000123"})", "B004", {}}, // only the first 16 characters count
    {&kVolts, "LV", R"({"LV":12})", "0000", {"LV: not text: stores 0"}},
    {&kAccel, "TX", R"({"TX":"6553.5"})", "FFFF", {}},
    {&kAccel, "TX", R"({"TX":"6553.6"})", "0000", {"TX: 65536 tenths do not fit 16 bits: stores 0"}},
    {&kAccel, "TX", R"({"TX":2.5})", "0000", {"TX: not text: stores 0"}},
    {&kAccel, "TX", R"({"TX":"1.27"})", "0C00", {"TX: finer than tenths: truncated, stores 12"}},
    {&kAccel, "TX", R"({"TX":"-3"})", "0000", {"TX: below zero or not a number: stores 0"}},
    {&kAccel, "TX", R"({"TX":"abc"})", "0000", {"TX: no decimal number in the text: stores 0"}},
    {&kAccel, "TX", R"({"TX":"1.5V"})", "0F00", {"TX: \"V\" after the number is ignored"}},
    {&kAccel, "TX", R"({"TX":"0000000000000012.5"})", "7800",
     {"TX: text of 18 characters: only the first 16 are converted"}},
    {&kRegion, "R", R"({"R":"FF00"})", "FF00", {}},
    {&kRegion, "R", "{}", "", {}},
    {&kRegion, "R", R"({"R":"ABC"})", "ABC0",
     {"R: odd number of digits (3): the last one is the high nibble of byte 1, which stores 0xC0"}},
    {&kRegion, "R", R"({"R":"0G"})", "00", {"R: character 'G' at 1 is not a hexadecimal digit: byte 0 stores 0x00"}},
    {&kRegion, "R", R"({"R":"zz00"})", "3300",
     {"R: 2 characters are not hexadecimal digits, the first 'z' at 0: byte 0 stores 0x33"}},
    {&kRegion, "R", R"({"R":12})", "", {"R: not text: stores 50 zero bytes"}},
    {&kRegion, "R", R"({"R":")" + kDigits100 + R"("})", kDigits100, {}},
    {&kRegion, "R", R"({"R":")" + kDigits100 + R"(1"})", kDigits100,
     {"R: text of 101 characters: only the first 100 digits are packed into the 50-byte region"}},
};

class Steps : public ::testing::TestWithParam<StepCase> {};

TEST_P(Steps, StoreAndReportAtTheirEdges)
{
    const StepCase& c = GetParam();
    const para::Field& f = StepField(*c.record, c.keys);
    const Json::Value object = paratest::Json(c.object);
    const size_t size = f.size * (f.count[0] ? f.count[0] : 1);
    std::vector<unsigned char> stored(size + 8, kSentinel), expected(size, 0);
    for (size_t i = 0; 2 * i < c.stored.size(); ++i)
        expected[i] = static_cast<unsigned char>(std::stoul(c.stored.substr(2 * i, 2), nullptr, 16));
    std::vector<std::string> reports;
    para::WithStep(f, [&](auto step) {
        step.Read(object, f, stored.data());
        step.Check(object, f, [&](const std::string& key, const std::string& what) { reports.push_back(key + ": " + what); });
    });
    EXPECT_EQ(std::vector<unsigned char>(stored.begin(), stored.begin() + size), expected);
    EXPECT_TRUE(Untouched(stored.data(), size, size + 8));
    EXPECT_EQ(reports, c.reports);
}
INSTANTIATE_TEST_SUITE_P(Edges, Steps, ::testing::ValuesIn(kSteps));

} // namespace

// What a decimal-text step writes for a field's bytes, its Read stores again,
// for every 16-bit value. (The other steps write back random bytes in the
// decoding round trip of every record.)
TEST(StepsInverse, WriteGivesBackWhatReadStores)
{
    const para::Field& volts = StepField(kVolts, "UV");
    const para::Field& tenths = StepField(kAccel, "TX");
    const std::map<unsigned, std::string> texts = {{1150, "11.50"}, {29, "0.295"}, {65535, "655.35"}, {7, "0.07"}};
    for (unsigned v = 0; v <= 0xFFFF; ++v) {
        const unsigned char field[2] = {static_cast<unsigned char>(v), static_cast<unsigned char>(v >> 8)};
        unsigned char back[2] = {};
        Json::Value object;
        para::VoltageText::Write(field, volts, object);
        para::VoltageText::Read(object, volts, back);
        ASSERT_TRUE(std::memcmp(back, field, 2) == 0 && (!texts.count(v) || texts.at(v) == object["UV"].asString()))
            << object["UV"].asString();
        para::TenthsText::Write(field, tenths, object);
        para::TenthsText::Read(object, tenths, back);
        ASSERT_EQ(std::memcmp(back, field, 2), 0) << object["TX"].asString();
    }
}
