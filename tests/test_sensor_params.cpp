// Driving-behaviour thresholds and the green-driving, motion, stance,
// tyre-pressure, temperature, fuel, vehicle-fault and DSM alarm sections.
#include "ParaTestSupport.h"
#include "SensorParams.h"

using namespace paratest;
using ToolkitHost::LogCapture;

namespace {

unsigned long long F32(float value)
{
    unsigned int bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

// The scalar fields of each record, written (as 0 when their key is absent)
// whenever the section or the entry is read.
const Fields kGreenScalars = {{0, 3, 0},   {32, 2, 0},  {66, 2, 0},  {100, 15, 0}, {116, 5, 0},
                            {150, 6, 0}, {180, 1, 0}, {184, 17, 0}, {212, 6, 0}, {272, 5, 0}};
const Fields kAccelScalars = {{0, 3, 0}, {8, 48, 0}, {124, 13, 0}, {148, 1, 0}};
const Fields kCollideScalars = {{0, 4, 0}, {8, 48, 0}, {124, 2, 0}}; // also the hit record's
const Fields kStanceEntry = {{0, 3, 0}, {4, 52, 0}, {124, 1, 0}};
const Fields kTyreScalars = {{288, 5, 0}, {896, 4, 0}};
const Fields kTempEntry = {{0, 56, 0}, {124, 3, 0}};
const Fields kDsmEntry = {{0, 2, 0}, {6, 1, 0}};

// An "APR" of {"SU":9} at `at`: its direct scalars are written, "CH" and the
// three embedded records keep the caller's bytes.
Fields Link(size_t at) { return {{at + 28, 4, 9}, {at + 48, 8, 0}}; }

const std::string k32(32, 'c');
const std::string k20 = "0123456789abcdefghij";

} // namespace

// Through the dispatcher: the fields written as zero, those with values over
// them, every other byte still the sentinel.
TEST(SensorSections, EveryRecordByteExact)
{
    const SectionCase cases[] = {
        {"green: arrays up to their bound, floats from numbers and text, signed and narrowed fields, no ATH2", 25,
         "PGDS", 432,
         R"({"PFS":{"FAH":[1,2,3],"FM":[1,2,3,4,5,6,7,8,9,10],"RM":7},"PGS":{"M":12.5,"F":"3.25","MC":"fast","FC":-0.5},)"
         R"("PLDS":{"CD":-2,"CA":-32768,"VW":70000,"NP":1,"SL":2,"CSS":3},"ATE":4000000000,"FUE":300,)"
         R"("ATH1":{"PLGR":-3,"SUXAL":1}})",
         kGreenScalars + Fields{{218, 52, 0}, {156, 3, 0x030201}, {164, 8, 0x0004000300020001ull},
                                {172, 8, 0x0008000700060005ull}, {180, 1, 7}, {184, 4, F32(12.5f)}, {188, 4, F32(3.25f)},
                                {196, 4, F32(-0.5f)}, {100, 2, 4464}, {104, 2, 0xFFFE}, {112, 2, 0x8000}, {114, 1, 1},
                                {116, 1, 2}, {120, 1, 3}, {212, 4, 4000000000u}, {276, 1, 44}, {218, 2, 1},
                                {268, 2, 0xFFFD}},
         {kNoThresh2}},
        {"green: arrays of another kind keep the entries, groups of another kind read as absent, ATH1 no object", 25,
         "PGDS", 432,
         R"({"PFS":{"FAH":5,"FM":{"0":1}},"PSS":[1,2],"PGS":"12.5","ATH1":"t",)"
         R"("ATH2":{"ITL4":300,"CTHT":7,"CTHR":9,"OSL5":-1,"RL8":70000,"EFT":"5"}})",
         kGreenScalars + Fields{{218, 52, 0}, {280, 149, 0}, {280 + 148, 1, 44}, {280 + 16, 2, 7}, {280 + 12, 2, 9},
                                {280 + 103, 1, 0xFF}, {280 + 118, 2, 4464}}},
        {"green: no threshold objects", 25, "PGDS", 432, R"({"SUI":1})", kGreenScalars + Fields{{216, 2, 1}},
         {kNoThresh1, kNoThresh2}},

        {"accel: calibration texts in tenths, truncated and kept to 16 bits; SDT at 148", 29, "ACC", 152,
         R"({"EN":1,"AS":2,"VT":3,"AN":"Harsh acceleration","AO":"OUT1","SDT":3,)"
         R"("ACP":{"TX":"2.5","TY":"1.27","TZ":"7000","SX":70000,"SY":2,"SZ":3,"ADJACC":1}})",
         kAccelScalars + Fields{{0, 3, 0x030201}, {8, 32, 0, "Harsh acceleration"}, {40, 16, 0, "OUT1"}, {124, 2, 25},
                                {126, 2, 12}, {128, 2, 4464}, {130, 2, 4464}, {132, 4, 0x00030002}, {136, 1, 1},
                                {148, 1, 3}},
         {kNoLink}},
        {"accel: a number is no text, negative gives 0, only 16 characters count", 29, "ACC", 152,
         R"({"ACP":{"TX":2.5,"TY":"-3","TZ":"0000000000000012.5","SX":"5"}})", kAccelScalars + Fields{{128, 2, 120}},
         {kNoLink}},
        {"accel: no ACP, linkage at 56", 29, "ACC", 152, R"({"APR":{"SU":9}})", kAccelScalars + Link(56),
         kLinkWithoutRecords},
        {"collide: texts at and above their size", 37, "PCAS", 128,
         R"({"SDT":4,"CN":")" + k32 + R"(","CO":")" + k20 + R"(","STS":1,"TTS":300})",
         kCollideScalars + Fields{{3, 1, 4}, {8, 32, 0, k32}, {40, 16, 0, k20}, {124, 1, 1}, {125, 1, 44}}, {kNoLink}},
        {"hit: HA 16 bits, empty text", 38, "PHAS", 128, R"({"HA":65535,"HN":"","HO":"Hit","SDT":2})",
         kCollideScalars + Fields{{3, 1, 2}, {40, 16, 0, "Hit"}, {124, 2, 0xFFFF}}, {kNoLink}},
        {"hit: linkage at 56", 38, "PHAS", 128, R"({"APR":{"SU":9}})", kCollideScalars + Link(56),
         kLinkWithoutRecords},

        {"stance: three elements, one no object", 39, "PVTSAS", 1544,
         R"([{"NE":1,"SDT":2,"TIO":3,"AN":"Tilt"},5,{"APR":{"SU":9}}])",
         Entries(kStanceEntry, 8, 128, 3) + Link(8 + 256 + 56) +
             Fields{{8, 1, 1}, {8 + 124, 1, 2}, {8 + 7, 1, 3}, {8 + 8, 32, 0, "Tilt"}},
         Lines(2, kNoLink) + kLinkWithoutRecords},
        {"stance: thirteen elements, twelve read", 39, "PVTSAS", 1544, List(R"({"NE":1})", 13),
         Entries(kStanceEntry + Fields{{0, 1, 1}}, 8, 128, 12), Lines(12, kNoLink)},
        {"stance: an object reads no entry", 39, "PVTSAS", 1544, R"({"NE":1})", {}},

        {"tyres: entries and RI up to their bounds, a name of 15 characters and more", 40, "TPP", 900,
         R"({"TSP":[{"LP":300,"HP":500},{"RI":[1,2,3,4],"HT":7}],"TRP":[{"RI":[9],"RP":1,"EN":2},{},{},{"EN":5}],)"
         R"("TTR":[{"N":"front-left-outer","P":1},{"P":2}],"TVC":6})",
         kTyreScalars + Entries({{3, 5, 0}}, 0, 8, 2) + Entries({{3, 2, 0}}, 296, 8, 3) +
             Entries({{0, 16, 0}}, 320, 16, 2) +
             Fields{{4, 2, 300}, {6, 2, 500}, {8, 3, 0x030201}, {11, 1, 7}, {296, 1, 9}, {299, 1, 1}, {300, 1, 2},
                    {320, 15, 0, "front-left-outer"}, {335, 1, 1}, {351, 1, 2}, {896, 1, 6}}},
        {"tyres: 37 positions, 36 read; RI and TTR of another kind", 40, "TPP", 900,
         R"({"TSP":)" + List(R"({"HT":1,"RI":{"0":1}})", 37) + R"(,"TTR":"x","TTP":{"AL":2}})",
         kTyreScalars + Entries({{3, 5, 0}, {3, 1, 1}}, 0, 8, 36) + Fields{{292, 1, 2}}},

        {"temperature: two elements, linkage at 56 of each", 41, "STMPA", 780,
         R"([{"EN":1,"UIT":4000000000,"SNM":"Cargo","SOD":"ALARM","APR":{"SU":9}},{"IWD":5}])",
         Entries(kTempEntry, 0, 156, 2) + Link(56) +
             Fields{{0, 1, 1}, {4, 4, 4000000000u}, {8, 32, 0, "Cargo"}, {40, 16, 0, "ALARM"}, {156 + 126, 1, 5}},
         kLinkWithoutRecords + Lines{kNoLink}},
        {"temperature: six elements, five read", 41, "STMPA", 780, List(R"({"HTTD":1})", 6),
         Entries(kTempEntry + Fields{{124, 1, 1}}, 0, 156, 5), Lines(5, kNoLink)},
        {"temperature: an object reads no entry", 41, "STMPA", 780, R"({"EN":1})", {}},

        {"vehicle fault: signed and narrowed 16-bit fields", 26, "VTFS", 16,
         R"({"TP":-5,"TV":70000,"VP":1,"VV":-1,"VAT":7})",
         {Zeros(0, 16), {0, 2, 0xFFFB}, {2, 2, 4464}, {8, 2, 1}, {10, 2, 0xFFFF}, {12, 4, 7}}},
        {"fuel", 45, "FAS", 68, R"({"BA":4000000000,"TS":70000,"FN":"Fuel tank","FO":")" + k20 + R"(","SDT":2,"CF":3})",
         {Zeros(0, 63), {64, 4, 4000000000u}, {2, 2, 4464}, {4, 32, 0, "Fuel tank"}, {36, 16, 0, k20}, {62, 1, 2},
          {60, 2, 3}}},
        {"DSM: SST only", 51, "DSM", 964, R"({"SST":1})", {{0, 1, 1}}},
        {"DSM: thirteen alarms, twelve read", 51, "DSM", 964, R"({"SST":2,"DSMA":)" + List(R"({"EN":1,"SDT":2})", 13) + "}",
         Entries(kDsmEntry + Fields{{0, 1, 1}, {6, 1, 2}}, 4, 80, 12) + Fields{{0, 1, 2}}, Lines(12, kNoLink)},
        {"DSM: linkage at 12 of an alarm", 51, "DSM", 964, R"({"DSMA":[{"AS":3,"APR":{"SU":9}}]})",
         Fields{{0, 1, 0}} + Entries(kDsmEntry, 4) + Link(4 + 12) + Fields{{5, 1, 3}}, kLinkWithoutRecords},
        {"DSM: DSMA no array", 51, "DSM", 964, R"({"DSMA":{"EN":1}})", {{0, 1, 0}}},
    };
    for (const SectionCase& c : cases)
        ExpectSection(c);
}

namespace {

// The keys of a threshold record with their offsets and widths, built from
// the key families; `Run` lays names out back to back from an offset.
struct Key {
    std::string name;
    size_t offset, width;
};

struct Keys : std::vector<Key> {
    Keys& Run(size_t offset, size_t width, const std::vector<std::string>& names)
    {
        for (const std::string& n : names) {
            push_back({n, offset, width});
            offset += width;
        }
        return *this;
    }
};

std::vector<std::string> Suffixed(const std::string& stem, const std::string& suffixes)
{
    std::vector<std::string> out;
    for (char s : suffixes)
        out.push_back(stem + s);
    return out;
}

std::vector<std::string> Numbered(const std::string& stem, int last)
{
    std::vector<std::string> out;
    for (int n = 1; n <= last; ++n)
        out.push_back(stem + std::to_string(n));
    return out;
}

Keys Thresh1Keys()
{
    Keys k;
    k.Run(0, 2, Suffixed("SUXA", "LMH") + Suffixed("SUVA", "LMH") + Suffixed("BXA", "LMH") + Suffixed("BVA", "LMH") +
                    Suffixed("CCF", "LMH") + Numbered("BVL", 2) + Numbered("GV", 2) + Numbered("ABV", 2) +
                    Suffixed("IT", "LMH") + Suffixed("PLG", "TR"));
    return k;
}

Keys Thresh2Keys()
{
    Keys k;
    k.Run(0, 2, Suffixed("EF", "TSR") + Suffixed("NG", "TSR") + Suffixed("CTH", "RST") + Suffixed("CTL", "RST") +
                    std::vector<std::string>{"CTDT", "CTDP1", "CTDP2", "HSSET", "RTL", "RRL", "RTM", "RRM", "RTH", "RRH"})
        .Run(44, 1, {"ST", "IT", "RCL", "TTL", "TSL", "TPL", "TTM", "TSM", "TPM", "TTH", "TSH", "TPH"})
        .Run(56, 2, std::vector<std::string>{"LGHS", "LGHSR", "RBT", "RBS", "CSR", "CST", "PCET1", "PCET2", "PCEM"} +
                        Suffixed("BWT", "LMH") + Suffixed("BWS", "LMH") + Suffixed("CWT", "LMH") + Suffixed("CWS", "LMH"))
        .Run(98, 1, std::vector<std::string>{"POCT"} + Numbered("OSL", 5))
        .Run(104, 2, Numbered("RL", 8))
        .Run(120, 1, Numbered("ST1L", 5) + Numbered("APL", 5) + Numbered("ST2L", 9) + Numbered("EPLL", 6) + Numbered("ITL", 4));
    return k;
}

// Every key of `keys` with a distinct value that fits a char: each lands at
// its offset, and the keys cover the record but for `tail` bytes at its end.
template <class R, class Parse> void ExpectKeysAtOffsets(const Keys& keys, size_t tail, Parse parse)
{
    Json::Value object;
    std::vector<FieldValue> expected;
    std::vector<bool> covered(sizeof(R), false);
    for (size_t i = 0; i < keys.size(); ++i) {
        const Key& k = keys[i];
        object[k.name] = int(i + 1);
        expected.push_back({k.offset, k.width, i + 1});
        for (size_t b = k.offset; b < k.offset + k.width; ++b) {
            EXPECT_FALSE(covered[b]) << k.name << " overlaps at " << b;
            covered[b] = true;
        }
    }
    EXPECT_EQ(std::find(covered.begin(), covered.end(), false) - covered.begin(), long(sizeof(R) - tail));
    EXPECT_EQ(std::count(covered.begin(), covered.end(), false), long(tail));
    auto record = Sentinel<R>();
    LogCapture log;
    EXPECT_EQ(parse(object, *record), 0);
    EXPECT_TRUE(log.lines().empty());
    ExpectFields(record.get(), sizeof(R), expected, "all keys", true);
}

} // namespace

TEST(GDSThresholds, KeyFamiliesLandAtTheirOffsets)
{
    EXPECT_EQ(Thresh1Keys().size(), 26u);
    EXPECT_EQ(Thresh2Keys().size(), 98u);
    ExpectKeysAtOffsets<paramAlarmThresh1_t>(Thresh1Keys(), 0, ParseGDSAlarmThresh1);
    ExpectKeysAtOffsets<paramAlarmThresh2_t>(Thresh2Keys(), 1, ParseGDSAlarmThresh2);
}

// Called directly by a client with any value that is not empty: read as an
// object, absent keys give 0.
TEST(GDSThresholds, EveryJsonKindDirectly)
{
    const struct {
        const char* json;
        Fields fields; // over zeros in the second record
    } cases[] = {
        {"5", {}}, {R"("t")", {}}, {"true", {}}, {"[1]", {}}, {R"({"X":1})", {}},
        {R"({"OSL5":5})", {{103, 1, 5}}},
        {R"({"CTHT":7,"CTHR":9})", {{16, 2, 7}, {12, 2, 9}}},
        {R"({"TTL":300,"RL1":70000,"ST":-1,"EFR":-2,"POCT":"5","APL3":1.5})",
         {{47, 1, 44}, {104, 2, 4464}, {44, 1, 0xFF}, {4, 2, 0xFFFE}}},
    };
    for (const auto& c : cases) {
        ExpectParsed<paramAlarmThresh1_t>(ParseGDSAlarmThresh1, c.json, 0, {Zeros(0, 52)});
        ExpectParsed<paramAlarmThresh2_t>(ParseGDSAlarmThresh2, c.json, 0, Fields{Zeros(0, 149)} + c.fields);
    }
}

// The calibration text of the acceleration alarm: what the inspector reports
// is what the parser loses, and writing a value back reads it back.
TEST(TenthsText, CheckReportsWhatTheReadLoses)
{
    const para::Field& tx = paratest::StepField(para::Describe<tag_msgAccelAlarmSetting>::record, "TX");
    // The field's bytes as the step reads and writes them.
    const auto read = [&](const Json::Value& acp) {
        unsigned char at[2] = {0xA5, 0xA5};
        para::TenthsText::Read(acp, tx, at);
        return static_cast<unsigned>(at[0] | at[1] << 8);
    };
    const struct {
        const char* json; // the ACP object
        unsigned short stored;
        std::vector<std::string> reports;
    } cases[] = {
        {R"({"TX":"1.5"})", 15, {}},
        {R"({})", 0, {}},
        {R"({"TX":2.5})", 0, {"not text: stores 0"}},
        {R"({"TX":"1.27"})", 12, {"finer than tenths: truncated, stores 12"}},
        {R"({"TX":"7000"})", 4464, {"70000 tenths do not fit 16 bits: stores 4464"}},
        {R"({"TX":"-3"})", 0, {"below zero or not a number: stores 0"}},
        {R"({"TX":"abc"})", 0, {"no decimal number in the text: stores 0"}},
        {R"({"TX":"1.5V"})", 15, {"\"V\" after the number is ignored"}},
        {R"({"TX":"0000000000000012.5"})", 120, {"text of 18 characters: only the first 16 are converted"}},
    };
    for (const auto& c : cases) {
        const Json::Value acp = paratest::Json(c.json);
        EXPECT_EQ(read(acp), c.stored) << c.json;
        std::vector<std::string> reports;
        para::TenthsText::Check(acp, tx, [&](const std::string& key, const std::string& what) {
            EXPECT_EQ(key, "TX");
            reports.push_back(what);
        });
        EXPECT_EQ(reports, c.reports) << c.json;
    }
    for (unsigned v = 0; v <= 0xFFFF; ++v) {
        Json::Value acp;
        const unsigned char field[2] = {static_cast<unsigned char>(v), static_cast<unsigned char>(v >> 8)};
        para::TenthsText::Write(field, tx, acp);
        ASSERT_EQ(read(acp), v) << acp["TX"].asString();
    }
}
