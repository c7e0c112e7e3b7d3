// The FTP, maintenance FTP, registration, centre-server and platform sections.
#include "ParaTestSupport.h"

using namespace paratest;
using ToolkitHost::LogCapture;

namespace {

typedef std::pair<size_t, size_t> Range; // bytes [first, second)
typedef std::vector<Range> Ranges;

// A present section writes every field it describes (0 or zero bytes when the
// key is missing), so the whole record is known: the listed fields, the
// sentinel in `kept`, zero everywhere else. A few bytes past the record must
// keep the sentinel too.
void ExpectImage(const std::vector<unsigned char>& record, size_t size, const std::vector<FieldValue>& fields,
                 const Ranges& kept, const std::string& what)
{
    std::string image(size, '\0');
    for (const auto& [from, to] : kept)
        std::fill(image.begin() + from, image.begin() + to, char(kSentinel));
    for (const FieldValue& f : fields)
        image.replace(f.offset, f.size, ExpectedBytes(f));
    for (size_t i = 0; i < record.size(); ++i) {
        const unsigned char want = i < size ? static_cast<unsigned char>(image[i]) : kSentinel;
        if (record[i] != want) {
            ADD_FAILURE() << what << ": byte " << i << " is " << int(record[i]) << ", expected " << int(want);
            return;
        }
    }
}

std::vector<unsigned char> Parse(int type, const char* key, size_t size, const std::string& section, int result = 0)
{
    std::vector<unsigned char> record(size + 16, kSentinel);
    LogCapture log;
    EXPECT_EQ(AdaptParaJson(static_cast<_PARA_TYPE_>(type), Doc(key, section), record.data()), result) << section;
    EXPECT_TRUE(log.lines().empty()) << section;
    return record;
}

const Ranges kFtpKept = {{3, 8}}, kMaintKept = {{401, 404}}, kRegisterKept = {{207, 208}};

// Centre servers: the reserved tail of entries 0 to n-1, entries n to 5 whole.
Ranges CmsKept(size_t n)
{
    Ranges kept;
    for (size_t i = 0; i < n; ++i)
        kept.push_back({4 + 124 * i + 108, 4 + 124 * (i + 1)});
    kept.push_back({4 + 124 * n, 748});
    return kept;
}

// Platforms: the header's reserved runs, those of entries 0 to n-1, entries n to 5 whole.
Ranges PlatformKept(size_t n)
{
    Ranges kept = {{0, 8}, {29, 52}};
    for (size_t i = 0; i < n; ++i)
        for (const auto& [from, to] : Ranges{{545, 552}, {594, 596}, {616, 624}, {652, 684}, {689, 692}, {820, 852}})
            kept.push_back({52 + 852 * i + from, 52 + 852 * i + to});
    kept.push_back({52 + 852 * n, 5164});
    return kept;
}

// n distinct characters.
std::string Letters(size_t n)
{
    std::string s;
    for (size_t i = 0; i < n; ++i)
        s += char('a' + i % 26);
    return s;
}

const std::string kLong = Letters(130);
const size_t kP1 = 52 + 852; // entry 1 of "P1"

} // namespace

TEST(ServerSections, EachRecordByteExact)
{
    const struct {
        int type;
        const char* key;
        size_t size;
        std::string section;
        std::vector<FieldValue> fields;
        Ranges kept;
    } cases[] = {
        {8, "FTPS", 200, R"({"EN":1,"PORT":65536,"SERVERIP":"ftp.depot.example","LOGINUSER":"mdvr","SUBFOLDER":"up"})",
         {{0, 2, 0}, {2, 1, 1}, {8, 64, 0, "ftp.depot.example"}, {72, 64, 0, "mdvr"}, {168, 32, 0, "up"}}, kFtpKept},
        {9, "FTPEX", 200, R"({"EN":257,"PORT":70000,"LOGINPWD":")" + kLong + R"("})",
         {{0, 2, 4464}, {2, 1, 1}, {136, 32, 0, kLong.c_str()}}, kFtpKept},
        {28, "MNTFTP", 404,
         R"({"FPT":")" + kLong + R"(","FRV":"/rev","WLST":4294967295,"WLET":-1,"RDST":1.5,"RDET":"7","DELV":300})",
         {{0, 128, 0, kLong.c_str()}, {256, 128, 0, "/rev"}, {384, 4, 0xFFFFFFFF}, {388, 4, 0xFFFFFFFF}, {400, 1, 44}},
         kMaintKept},
        {13, "RIP", 208,
         R"({"DEVID":"D1","PN":"0123456789ABCDEFG","DEVT":-1,"RT":300,"SST":7,"COC":"ABC","RWC":"WXYZ",)"
         R"("SCH":70000,"DEVP":9})",
         {{0, 32, 0, "D1"}, {176, 1, 0xFF}, {177, 16, 0, "0123456789ABCDEF"}, {193, 1, 44}, {196, 1, 7},
          {197, 3, 0, "ABC"}, {200, 4, 0, "WXYZ"}, {204, 2, 4464}, {206, 1, 9}},
         kRegisterKept},
        // Two servers: the other four keep the caller's bytes.
        {18, "MCMS", 748,
         R"({"M":3,"SP":[{"EN":1,"CS":"cms.example","CPORT":70000,"MUPORT":6608,"LGK":2},{"MS":"10.0.0.2"}]})",
         {{0, 4, 3}, {4, 1, 1}, {7, 1, 2}, {8, 48, 0, "cms.example"}, {104, 2, 4464}, {110, 2, 6608},
          {4 + 124 + 52, 48, 0, "10.0.0.2"}},
         CmsKept(2)},
        {18, "MCMS", 748, R"({"M":1,"SP":{"0":{"EN":1}}})", {{0, 4, 1}}, CmsKept(0)},
        // A number is an entry of zeros; the seventh element has no entry.
        {18, "MCMS", 748, R"({"SP":[{"EN":1},5,{"EN":3},{"EN":4},{"EN":5},{"EN":6},{"EN":7}]})",
         {{4, 1, 1}, {4 + 124 * 2, 1, 3}, {4 + 124 * 3, 1, 4}, {4 + 124 * 4, 1, 5}, {4 + 124 * 5, 1, 6}}, CmsKept(6)},
        {21, "PSI", 5164, R"({"CG":{"ECL":1,"UEM":2,"AT":70000,"UNT":3,"TUI":5,"NPT":6}})",
         {{8, 4, 1}, {17, 1, 2}, {20, 2, 4464}, {23, 1, 3}, {24, 4, 5}, {28, 1, 6}}, PlatformKept(0)},
        {21, "PSI", 5164, R"({"CG":5,"P1":[{"E":1}]})", {{52, 4, 1}}, PlatformKept(1)},
        {21, "PSI", 5164, R"({"P1":{"E":1}})", {}, PlatformKept(0)},
        // Entry 0 from an empty object; entry 1 with every group.
        {21, "PSI", 5164,
         R"({"P1":[{},{"E":1,"CC":2,"CS":{"STE":3,"RSP2":")" + kLong + R"(","PP":"pp","MP":"mp"},)"
         R"("GPS":{"DADI":9,"UT":4,"EN":5,"EIT":6,"EIV":7,"AIT":8,"ATS":70000,"VAM":10},"NCS":{"H":11,"SST":12},)"
         R"("ICS":{"TPORT":13,"UPORT":14,"LM":15,"MSA":"msa.example","BSA":"bsa.example"}}]})",
         {{kP1, 4, 1}, {kP1 + 4, 4, 2}, {kP1 + 296, 32, 0, "mp"}, {kP1 + 488, 32, 0, "pp"}, {kP1 + 520, 24, 0, kLong.c_str()},
          {kP1 + 544, 1, 3}, {kP1 + 588, 4, 9}, {kP1 + 592, 1, 4}, {kP1 + 593, 1, 5}, {kP1 + 600, 4, 6}, {kP1 + 604, 4, 7},
          {kP1 + 608, 2, 8}, {kP1 + 610, 2, 4464}, {kP1 + 612, 4, 10}, {kP1 + 624, 4, 11}, {kP1 + 648, 4, 12},
          {kP1 + 684, 2, 13}, {kP1 + 686, 2, 14}, {kP1 + 688, 1, 15}, {kP1 + 692, 64, 0, "msa.example"},
          {kP1 + 756, 64, 0, "bsa.example"}},
         PlatformKept(2)},
        // Groups of the wrong kinds are read as absent.
        {21, "PSI", 5164, R"({"P1":[{"E":1,"CS":[1],"GPS":"x","NCS":7,"ICS":null}]})", {{52, 4, 1}}, PlatformKept(1)},
        {21, "PSI", 5164, R"({"P1":[{"E":1},{"E":2},{"E":3},{"E":4},{"E":5},{"E":6},{"E":7}]})",
         {{52, 4, 1}, {52 + 852, 4, 2}, {52 + 852 * 2, 4, 3}, {52 + 852 * 3, 4, 4}, {52 + 852 * 4, 4, 5},
          {52 + 852 * 5, 4, 6}},
         PlatformKept(6)},
    };
    for (const auto& c : cases)
        ExpectImage(Parse(c.type, c.key, c.size, c.section), c.size, c.fields, c.kept, c.section);
}

TEST(ServerSections, TextsBelowAtAndAboveTheirSize)
{
    const struct {
        int type;
        const char* key;
        size_t size;
        const char* before; // the section up to the text's value
        const char* after;
        size_t offset, width;
        Ranges kept;
    } cases[] = {
        {8, "FTPS", 200, R"({"LOGINPWD":)", "}", 136, 32, kFtpKept},
        {9, "FTPEX", 200, R"({"SERVERIP":)", "}", 8, 64, kFtpKept},
        {28, "MNTFTP", 404, R"({"FBD":)", "}", 128, 128, kMaintKept},
        {13, "RIP", 208, R"({"PN":)", "}", 177, 16, kRegisterKept},
        {13, "RIP", 208, R"({"COC":)", "}", 197, 3, kRegisterKept},
        {18, "MCMS", 748, R"({"SP":[{"CS":)", "}]}", 8, 48, CmsKept(1)},
        {21, "PSI", 5164, R"({"P1":[{"AC":)", "}]}", 52 + 40, 128, PlatformKept(1)},
        {21, "PSI", 5164, R"({"P1":[{"CS":{"RSP2":)", "}}]}", 52 + 520, 24, PlatformKept(1)},
        {21, "PSI", 5164, R"({"P1":[{"ICS":{"BSA":)", "}}]}", 52 + 756, 64, PlatformKept(1)},
    };
    for (const auto& c : cases)
        for (size_t length : {c.width - 1, c.width, c.width + 1}) {
            const std::string text = Letters(length);
            const std::string section = c.before + ("\"" + text + "\"") + c.after;
            ExpectImage(Parse(c.type, c.key, c.size, section), c.size, {{c.offset, c.width, 0, text.c_str()}}, c.kept,
                        section);
        }
}

TEST(ServerSections, EmptySectionWritesNothingAndLogsNothing)
{
    // Each with the key of another section that it must not read.
    const struct {
        int type;
        const char* key;
        const char* other;
        size_t size;
    } sections[] = {
        {8, "FTPS", "FTPEX", 200}, {9, "FTPEX", "FTPS", 200},  {28, "MNTFTP", "FTPS", 404},
        {13, "RIP", "MCMS", 208},  {18, "MCMS", "RIP", 748}, {21, "PSI", "MCMS", 5164},
    };
    for (const auto& s : sections) {
        const Json::Value docs[] = {Doc(s.key, "{}"), Doc(s.key, "[]"), Doc(s.key, "null"),
                                    Doc(s.other, R"({"EN":1,"M":1,"DEVT":1,"CG":{"ECL":1}})"),
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
