// The mobile network (with its dial-up profiles), Ethernet, remote device
// node, peripheral Ethernet, serial and CAN sections.
#include "ParaTestSupport.h"

using namespace paratest;

// Every other byte (reserved runs, absent entries, the guard past the record)
// still the sentinel, and the profile parser's report for each missing profile.
TEST(NetworkSections, QuirksOfEachSectionByteExact)
{
    const std::string k21(21, 'p'), k64(64, 'a'), k70(70, 'b');
    const SectionCase cases[] = {
        {"texts at, above and below their size; narrowing; M4G absent", 17, "M3G", 734,
         R"({"AT":300,"TN1":"0123456789ABCDEF","TN2":"0123456789ABCDEFGH","TN3":"short","AST":70000,"ASE":-1,
             "MP":{"EN":1,"APN":"apn","PW":")" + k70 + R"(","AN":")" + k64 + R"("}})",
         {{0, 16, 0, "0123456789ABCDEF"}, {16, 16, 0, "0123456789ABCDEF"}, {32, 16, 0, "short"}, {48, 32, 0},
          {80, 1, 44}, {192, 64, 0, "apn"}, {256, 64, 0}, {320, 64, 0, k70}, {384, 64, 0, k64},
          {448, 4, 0}, {452, 1, 1}, {728, 2, 0}, {730, 2, 4464}, {732, 1, 0xFF}},
         {kNoProfile}},
        {"an empty profile is reported and kept; a text profile is no object but not empty: defaults", 17, "M3G",
         734, R"({"MP":[],"M4G":"x"})", {Zeros(0, 81), Zeros(460, 721), Zeros(728, 733)}, {kNoProfile}},
        {"", 17, "M3G", 734, R"({"TSN":"1"})", {Zeros(0, 64), {64, 16, 0, "1"}, {80, 1, 0}, Zeros(728, 733)},
         {kNoProfile, kNoProfile}},
        {"no DNS group; PIP holds the addresses", 22, "ETHERNET", 104,
         R"({"IPMODE":1,"DNSMODE":2,"GM":3,"PIP":{"IPADDR":"10.0.0.2","SUBMASK":"255.255.255.0","GATEWAY":"10.0.0.1"}})",
         {{0, 3, 0x030201}, {8, 16, 0, "10.0.0.2"}, {24, 16, 0, "255.255.255.0"}, {40, 16, 0, "10.0.0.1"},
          Zeros(72, 104)}},
        {"a group of the wrong kind reads as absent", 22, "ETHERNET", 104,
         R"({"PIP":["10.0.0.2"],"DNS":{"PDNS":"255.255.255.255","ADNS":"1234567890123456789"}})",
         {Zeros(0, 3), Zeros(8, 56), {72, 16, 0, "255.255.255.255"}, {88, 16, 0, "1234567890123456"}}},
        {"entry 0 at 8; USER is not the key UESR; a 21-character password", 23, "REDEV", 3208,
         R"([{"EN":1,"LOCK":-1,"SW":9,"REPORT":70000,"CMDPORT":8000,"USER":"admin","PWD":")" + k21 +
             R"(","REIP":"192.168.1.64","ID":"IPC-01","URL":"rtsp://192.168.1.64/s1"}])",
         {{8, 2, 0xFF01}, Zeros(11, 17), {17, 1, 9}, {18, 2, 4464}, {20, 32, 0, "192.168.1.64"}, {52, 32, 0, "IPC-01"},
          Zeros(84, 124), {124, 20, 0, k21}, {144, 32, 0, "rtsp://192.168.1.64/s1"}, {176, 2, 8000}}},
        {"17 nodes: the 17th would start right past the record", 23, "REDEV", 3208, List(R"({"EN":%,"RECHL":%})", 17),
         Entries({{0, 2, 0}, Zeros(3, 170)}, 8, 200, 16, 1)},
        {"nodes as an object", 23, "REDEV", 3208, R"({"0":{"EN":1}})", {}},
        {"peripheral ports read FT, PORT, ST, IOB, IP; five elements fill four", 49, "PEN", 208,
         R"({"PENA":)" + List(R"({"FT":%,"ST":7,"IOB":8,"IP":"192.168.2.1%","PORT":5000})", 5) + "}",
         Entries({{0, 1, 0}}, 0, 52, 4, 1) + Entries({{1, 2, 0x0807}, {20, 2, 5000}}, 0, 52, 4) +
             Fields{{4, 16, 0, "192.168.2.10"}, {56, 16, 0, "192.168.2.11"}, {108, 16, 0, "192.168.2.12"},
                    {160, 16, 0, "192.168.2.13"}}},
        {"PENA as an object", 49, "PEN", 208, R"({"PENA":{"FT":1}})", {}},
        {"one port, one sub-channel; PFMM absent is 0", 47, "PSS", 865, R"({"SP":[{"FT":1,"SES":[{"BR":5}]}]})",
         {{0, 3, 1}, {8, 3, 0x0500}, {864, 1, 0}}},
        {"13 ports of 9 sub-channels: port 12 would land on PFMM", 47, "PSS", 865,
         R"({"PFMM":7,"SP":)" + List(R"({"FT":%,"BR":2,"SES":)" + List(R"({"ST":3})", 9) + "}", 13) + "}",
         Entries({{0, 3, 0x0200}}, 0, 72, 12, 1) + Entries(Entries({{8, 3, 0x030000}}, 0, 8, 8), 0, 72, 12) +
             Fields{{864, 1, 7}}},
        {"CAN: ST before BR; a non-integer CD element gets 0, absent ones stay", 48, "CAN", 112,
         R"({"CA":[{"FT":1,"ST":2,"BR":3,"CI":4294967295,"UI":70000}],"CD":[1,"x"]})",
         {{0, 3, 0x030201}, {4, 4, 0xFFFFFFFF}, {8, 2, 4464}, {80, 8, 1}, {88, 8, 0}}},
        {"a fifth channel would reach UI into CD[1]", 48, "CAN", 112,
         R"({"CA":)" + List(R"({"FT":%})", 5) + R"(,"CD":[18446744073709551615]})",
         Entries({{0, 3, 0}}, 0, 20, 4, 1) + Entries({Zeros(4, 10)}, 0, 20, 4) + Fields{{80, 8, ~0ull}}},
        {"", 48, "CAN", 112, R"({"CD":[1,2,3,4,5]})", Entries({{80, 8, 1}}, 0, 8, 4, 1)},
    };
    for (const SectionCase& c : cases)
        ExpectSection(c);
}

// Called directly with the profile object, of whatever JSON kind.
TEST(DialUpProfile, EveryJsonKindGivenDirectly)
{
    for (const char* json : {"5", R"("APN")", "[1]", "true"})
        ExpectParsed<paramBoHaoParam_t>(ParseBoHaoParamJson, json, 0, {Zeros(0, 261)});
    ExpectParsed<paramBoHaoParam_t>(ParseBoHaoParamJson, R"({"EN":1})", 0, {Zeros(0, 260), {260, 1, 1}});
    ExpectParsed<paramBoHaoParam_t>(
        ParseBoHaoParamJson, R"({"APN":"internet","UN":"u","PW":"p","AN":"*99#","PM":1,"AM":2,"NM":3,"WLS":4,"EN":257})",
        0, {{0, 64, 0, "internet"}, {64, 64, 0, "u"}, {128, 64, 0, "p"}, {192, 64, 0, "*99#"}, {256, 5, 0x0104030201ull}});
}
