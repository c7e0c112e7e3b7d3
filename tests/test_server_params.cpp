// The FTP, maintenance FTP, registration, centre-server and platform sections.
#include "ParaTestSupport.h"

using namespace paratest;

namespace {

// A present section writes every field it describes (0 or zero bytes when the
// key is missing), so the whole record is known: zero, the sentinel in the
// `kept` runs, the listed fields.
SectionCase Image(int type, const char* key, size_t size, const std::string& section, const Fields& kept,
                  const Fields& fields)
{
    return {"", type, key, size, section, Fields{Zeros(0, size)} + kept + fields};
}

const Fields kFtpKept = {Kept(3, 8)}, kMaintKept = {Kept(401, 404)}, kRegisterKept = {Kept(207, 208)};

// Centre servers: the reserved tail of entries 0 to n-1, entries n to 5 whole.
Fields CmsKept(size_t n) { return Entries({Kept(108, 124)}, 4, 124, n) + Fields{Kept(4 + 124 * n, 748)}; }

// Platforms: the header's reserved runs, those of entries 0 to n-1, entries n to 5 whole.
Fields PlatformKept(size_t n)
{
    return Fields{Kept(0, 8), Kept(29, 52)} +
           Entries({Kept(545, 552), Kept(594, 596), Kept(616, 624), Kept(652, 684), Kept(689, 692), Kept(820, 852)},
                   52, 852, n) +
           Fields{Kept(52 + 852 * n, 5164)};
}

// n distinct characters.
std::string Letters(size_t n)
{
    std::string s;
    for (size_t i = 0; i < n; ++i)
        s += char('a' + i % 26);
    return s;
}

} // namespace

TEST(ServerSections, EachRecordByteExact)
{
    const std::string kLong = Letters(130);
    const size_t kP1 = 52 + 852; // entry 1 of "P1"
    const SectionCase cases[] = {
        Image(8, "FTPS", 200, R"({"EN":1,"PORT":65536,"SERVERIP":"ftp.depot.example","LOGINUSER":"mdvr","SUBFOLDER":"up"})",
              kFtpKept, {{0, 2, 0}, {2, 1, 1}, {8, 64, 0, "ftp.depot.example"}, {72, 64, 0, "mdvr"}, {168, 32, 0, "up"}}),
        Image(9, "FTPEX", 200, R"({"EN":257,"PORT":70000,"LOGINPWD":")" + kLong + R"("})", kFtpKept,
              {{0, 2, 4464}, {2, 1, 1}, {136, 32, 0, kLong}}),
        Image(28, "MNTFTP", 404,
              R"({"FPT":")" + kLong + R"(","FRV":"/rev","WLST":4294967295,"WLET":-1,"RDST":1.5,"RDET":"7","DELV":300})",
              kMaintKept, {{0, 128, 0, kLong}, {256, 128, 0, "/rev"}, {384, 4, 0xFFFFFFFF}, {388, 4, 0xFFFFFFFF}, {400, 1, 44}}),
        Image(13, "RIP", 208,
              R"({"DEVID":"D1","PN":"0123456789ABCDEFG","DEVT":-1,"RT":300,"SST":7,"COC":"ABC","RWC":"WXYZ",)"
              R"("SCH":70000,"DEVP":9})",
              kRegisterKept,
              {{0, 32, 0, "D1"}, {176, 1, 0xFF}, {177, 16, 0, "0123456789ABCDEF"}, {193, 1, 44}, {196, 1, 7},
               {197, 3, 0, "ABC"}, {200, 4, 0, "WXYZ"}, {204, 2, 4464}, {206, 1, 9}}),
        // Two servers: the other four keep the caller's bytes.
        Image(18, "MCMS", 748,
              R"({"M":3,"SP":[{"EN":1,"CS":"cms.example","CPORT":70000,"MUPORT":6608,"LGK":2},{"MS":"10.0.0.2"}]})",
              CmsKept(2),
              {{0, 4, 3}, {4, 1, 1}, {7, 1, 2}, {8, 48, 0, "cms.example"}, {104, 2, 4464}, {110, 2, 6608},
               {4 + 124 + 52, 48, 0, "10.0.0.2"}}),
        Image(18, "MCMS", 748, R"({"M":1,"SP":{"0":{"EN":1}}})", CmsKept(0), {{0, 4, 1}}),
        // A number is an entry of zeros; the seventh element has no entry.
        Image(18, "MCMS", 748, R"({"SP":[{"EN":1},5,{"EN":3},{"EN":4},{"EN":5},{"EN":6},{"EN":7}]})", CmsKept(6),
              {{4, 1, 1}, {4 + 124 * 2, 1, 3}, {4 + 124 * 3, 1, 4}, {4 + 124 * 4, 1, 5}, {4 + 124 * 5, 1, 6}}),
        Image(21, "PSI", 5164, R"({"CG":{"ECL":1,"UEM":2,"AT":70000,"UNT":3,"TUI":5,"NPT":6}})", PlatformKept(0),
              {{8, 4, 1}, {17, 1, 2}, {20, 2, 4464}, {23, 1, 3}, {24, 4, 5}, {28, 1, 6}}),
        Image(21, "PSI", 5164, R"({"CG":5,"P1":[{"E":1}]})", PlatformKept(1), {{52, 4, 1}}),
        Image(21, "PSI", 5164, R"({"P1":{"E":1}})", PlatformKept(0), {}),
        // Entry 0 from an empty object; entry 1 with every group.
        Image(21, "PSI", 5164,
              R"({"P1":[{},{"E":1,"CC":2,"CS":{"STE":3,"RSP2":")" + kLong + R"(","PP":"pp","MP":"mp"},)"
              R"("GPS":{"DADI":9,"UT":4,"EN":5,"EIT":6,"EIV":7,"AIT":8,"ATS":70000,"VAM":10},"NCS":{"H":11,"SST":12},)"
              R"("ICS":{"TPORT":13,"UPORT":14,"LM":15,"MSA":"msa.example","BSA":"bsa.example"}}]})",
              PlatformKept(2),
              Entries({{0, 4, 1}, {4, 4, 2}, {296, 32, 0, "mp"}, {488, 32, 0, "pp"}, {520, 24, 0, kLong}, {544, 1, 3},
                       {588, 4, 9}, {592, 1, 4}, {593, 1, 5}, {600, 4, 6}, {604, 4, 7}, {608, 2, 8}, {610, 2, 4464},
                       {612, 4, 10}, {624, 4, 11}, {648, 4, 12}, {684, 2, 13}, {686, 2, 14}, {688, 1, 15},
                       {692, 64, 0, "msa.example"}, {756, 64, 0, "bsa.example"}},
                      kP1)),
        // Groups of the wrong kinds are read as absent.
        Image(21, "PSI", 5164, R"({"P1":[{"E":1,"CS":[1],"GPS":"x","NCS":7,"ICS":null}]})", PlatformKept(1),
              {{52, 4, 1}}),
        Image(21, "PSI", 5164, R"({"P1":)" + List(R"({"E":%})", 7, 1) + "}",
              PlatformKept(6), Entries({{52, 4, 1}}, 0, 852, 6, 1)),
    };
    for (const SectionCase& c : cases)
        ExpectSection(c);
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
        Fields kept;
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
            ExpectSection(Image(c.type, c.key, c.size, c.before + ('"' + text + '"') + c.after, c.kept,
                                {{c.offset, c.width, 0, text}}));
        }
}
