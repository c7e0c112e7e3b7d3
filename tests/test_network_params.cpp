// The mobile network (with its dial-up profiles), Ethernet, remote device
// node, peripheral Ethernet, serial and CAN sections.
#include "ParaTestSupport.h"

using namespace paratest;
using ToolkitHost::LogCapture;

namespace {

const char kNoProfile[] = "empty json when parse BoHaoParam!\n";

// A JSON array of n copies of `element`, each "%" replaced by the element's index.
std::string List(const std::string& element, int n)
{
    std::string list = "[";
    for (int i = 0; i < n; ++i) {
        std::string e = element;
        for (size_t at; (at = e.find('%')) != std::string::npos;)
            e.replace(at, 1, std::to_string(i));
        list += (i ? "," : "") + e;
    }
    return list + "]";
}

// The same field in `count` entries of `stride` bytes; in entry i it holds value + step * i.
std::vector<FieldValue> Entries(size_t at, size_t stride, size_t count, size_t size, unsigned long long value,
                                unsigned long long step = 0)
{
    std::vector<FieldValue> fields;
    for (size_t i = 0; i < count; ++i)
        fields.push_back({at + stride * i, size, value + step * i});
    return fields;
}

std::vector<FieldValue> operator+(std::vector<FieldValue> a, const std::vector<FieldValue>& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

const std::string k21(21, 'p'), k64(64, 'a'), k70(70, 'b');

} // namespace

// Written fields as listed, every other byte (reserved runs, absent entries,
// 64 bytes past the record) still the sentinel, and the profile parser's
// report for each missing profile.
TEST(NetworkSections, QuirksOfEachSectionByteExact)
{
    const struct {
        int type;
        const char* key;
        size_t size;
        std::string section;
        std::vector<FieldValue> fields;
        int missingProfiles = 0;
    } cases[] = {
        // Texts at, above and below their size; narrowing; "M4G" absent.
        {17, "M3G", 734,
         R"({"AT":300,"TN1":"0123456789ABCDEF","TN2":"0123456789ABCDEFGH","TN3":"short","AST":70000,"ASE":-1,
             "MP":{"EN":1,"APN":"apn","PW":")" + k70 + R"(","AN":")" + k64 + R"("}})",
         {{0, 16, 0, "0123456789ABCDEF"}, {16, 16, 0, "0123456789ABCDEF"}, {32, 16, 0, "short"}, {48, 32, 0, ""},
          {80, 1, 44}, {192, 64, 0, "apn"}, {256, 64, 0, ""}, {320, 64, 0, k70.c_str()}, {384, 64, 0, k64.c_str()},
          {448, 4, 0}, {452, 1, 1}, {728, 2, 0}, {730, 2, 4464}, {732, 1, 0xFF}},
         1},
        // An empty profile is reported and kept; a text profile is no object
        // but not empty: its fields get their defaults.
        {17, "M3G", 734, R"({"MP":[],"M4G":"x"})",
         {{0, 81, 0, ""}, {460, 261, 0, ""}, {728, 5, 0}}, 1},
        {17, "M3G", 734, R"({"TSN":"1"})", {{0, 64, 0, ""}, {64, 16, 0, "1"}, {80, 1, 0}, {728, 5, 0}}, 2},
        // No "DNS" group; "PIP" holds the addresses.
        {22, "ETHERNET", 104,
         R"({"IPMODE":1,"DNSMODE":2,"GM":3,"PIP":{"IPADDR":"10.0.0.2","SUBMASK":"255.255.255.0","GATEWAY":"10.0.0.1"}})",
         {{0, 3, 0x030201}, {8, 16, 0, "10.0.0.2"}, {24, 16, 0, "255.255.255.0"}, {40, 16, 0, "10.0.0.1"},
          {72, 32, 0, ""}}},
        // A group of the wrong kind reads as absent.
        {22, "ETHERNET", 104, R"({"PIP":["10.0.0.2"],"DNS":{"PDNS":"255.255.255.255","ADNS":"1234567890123456789"}})",
         {{0, 3, 0}, {8, 48, 0, ""}, {72, 16, 0, "255.255.255.255"}, {88, 16, 0, "1234567890123456"}}},
        // Entry 0 at 8: "USER" is not the key "UESR"; a 21-character password.
        {23, "REDEV", 3208,
         R"([{"EN":1,"LOCK":-1,"SW":9,"REPORT":70000,"CMDPORT":8000,"USER":"admin","PWD":")" + k21 +
             R"(","REIP":"192.168.1.64","ID":"IPC-01","URL":"rtsp://192.168.1.64/s1"}])",
         {{8, 2, 0xFF01}, {11, 6, 0}, {17, 1, 9}, {18, 2, 4464}, {20, 32, 0, "192.168.1.64"}, {52, 32, 0, "IPC-01"},
          {84, 40, 0, ""}, {124, 20, 0, k21.c_str()}, {144, 32, 0, "rtsp://192.168.1.64/s1"}, {176, 2, 8000}}},
        // 17 nodes: the 17th would start right past the record.
        {23, "REDEV", 3208, List(R"({"EN":%,"RECHL":%})", 17),
         Entries(8, 200, 16, 2, 0, 1) + Entries(11, 200, 16, 167, 0, 1)},
        {23, "REDEV", 3208, R"({"0":{"EN":1}})", {}},
        // Peripheral ports read FT, PORT, ST, IOB, IP; five elements fill four.
        {49, "PEN", 208, R"({"PENA":)" + List(R"({"FT":%,"ST":7,"IOB":8,"IP":"192.168.2.1%","PORT":5000})", 5) + "}",
         Entries(0, 52, 4, 1, 0, 1) + Entries(1, 52, 4, 2, 0x0807) + Entries(20, 52, 4, 2, 5000) +
             std::vector<FieldValue>{{4, 16, 0, "192.168.2.10"}, {56, 16, 0, "192.168.2.11"},
                                     {108, 16, 0, "192.168.2.12"}, {160, 16, 0, "192.168.2.13"}}},
        {49, "PEN", 208, R"({"PENA":{"FT":1}})", {}},
        // One port, one sub-channel; PFMM absent is 0.
        {47, "PSS", 865, R"({"SP":[{"FT":1,"SES":[{"BR":5}]}]})", {{0, 3, 1}, {8, 3, 0x0500}, {864, 1, 0}}},
        // 13 ports of 9 sub-channels: port 12 would land on PFMM.
        {47, "PSS", 865, R"({"PFMM":7,"SP":)" + List(R"({"FT":%,"BR":2,"SES":)" + List(R"({"ST":3})", 9) + "}", 13) + "}",
         [] {
             std::vector<FieldValue> f = Entries(0, 72, 12, 3, 0x0200, 1);
             for (size_t j = 0; j < 8; ++j)
                 f = f + Entries(8 + 8 * j, 72, 12, 3, 0x030000);
             return f + std::vector<FieldValue>{{864, 1, 7}};
         }()},
        // CAN: ST before BR; a non-integer "CD" element gets 0, absent ones stay.
        {48, "CAN", 112, R"({"CA":[{"FT":1,"ST":2,"BR":3,"CI":4294967295,"UI":70000}],"CD":[1,"x"]})",
         {{0, 3, 0x030201}, {4, 4, 0xFFFFFFFF}, {8, 2, 4464}, {80, 8, 1}, {88, 8, 0}}},
        // A fifth channel would reach UI into CD[1].
        {48, "CAN", 112, R"({"CA":)" + List(R"({"FT":%})", 5) + R"(,"CD":[18446744073709551615]})",
         Entries(0, 20, 4, 3, 0, 1) + Entries(4, 20, 4, 6, 0) + std::vector<FieldValue>{{80, 8, ~0ull}}},
        {48, "CAN", 112, R"({"CD":[1,2,3,4,5]})", Entries(80, 8, 4, 8, 1, 1)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.key) + " " + c.section);
        std::vector<unsigned char> record(c.size + 64, kSentinel);
        LogCapture log;
        EXPECT_EQ(AdaptParaJson(static_cast<_PARA_TYPE_>(c.type), Doc(c.key, c.section), record.data()), 0);
        ExpectFields(record.data(), record.size(), c.fields, c.key, true);
        ASSERT_EQ(log.lines().size(), size_t(c.missingProfiles));
        for (const ToolkitHost::LogLine& line : log.lines()) {
            EXPECT_EQ(line.level, 0);
            EXPECT_EQ(line.file, "basicservice/basebusiness/BSCommonLibrary/src/CommonParaAdapter");
            EXPECT_EQ(line.function, "ParseBoHaoParamJson");
            EXPECT_EQ(line.message, kNoProfile);
        }
    }
}

TEST(NetworkSections, EmptySectionWritesNothingAndSaysNothing)
{
    for (auto [type, key] : std::vector<std::pair<int, const char*>>{
             {17, "M3G"}, {22, "ETHERNET"}, {23, "REDEV"}, {47, "PSS"}, {48, "CAN"}, {49, "PEN"}}) {
        const Json::Value docs[] = {Doc(key, "{}"), Doc(key, "[]"), Doc(key, "null"), Doc("OTHER", R"({"EN":1})"),
                                    Json::Value("not an object")};
        for (const Json::Value& doc : docs) {
            std::vector<unsigned char> record(4096, kSentinel);
            LogCapture log;
            EXPECT_EQ(AdaptParaJson(static_cast<_PARA_TYPE_>(type), doc, record.data()), -1) << key;
            EXPECT_TRUE(Untouched(record.data(), 0, record.size())) << key;
            EXPECT_TRUE(log.lines().empty()) << key;
        }
    }
}

// Called directly with the profile object, of whatever JSON kind.
TEST(DialUpProfile, EveryJsonKindGivenDirectly)
{
    const struct {
        const char* json;
        int result; // -1: reported, nothing written
        std::vector<FieldValue> fields;
    } cases[] = {
        {"null", -1, {}}, {"{}", -1, {}}, {"[]", -1, {}},
        {"5", 0, {{0, 261, 0, ""}}}, {R"("APN")", 0, {{0, 261, 0, ""}}}, {"[1]", 0, {{0, 261, 0, ""}}},
        {"true", 0, {{0, 261, 0, ""}}},
        {R"({"EN":1})", 0, {{0, 260, 0, ""}, {260, 1, 1}}},
        {R"({"APN":"internet","UN":"u","PW":"p","AN":"*99#","PM":1,"AM":2,"NM":3,"WLS":4,"EN":257})", 0,
         {{0, 64, 0, "internet"}, {64, 64, 0, "u"}, {128, 64, 0, "p"}, {192, 64, 0, "*99#"}, {256, 5, 0x0104030201ull}}},
    };
    for (const auto& c : cases) {
        auto profile = Sentinel<paramBoHaoParam_t>();
        LogCapture log;
        EXPECT_EQ(ParseBoHaoParamJson(paratest::Json(c.json), *profile), c.result) << c.json;
        ExpectFields(profile.get(), sizeof *profile, c.fields, c.json, true);
        ASSERT_EQ(log.lines().size(), c.result < 0 ? 1u : 0u) << c.json;
        if (c.result < 0) {
            EXPECT_EQ(log.lines()[0].function, "ParseBoHaoParamJson");
            EXPECT_EQ(log.lines()[0].message, kNoProfile);
        }
    }
}
