// The general, night, vehicle, product, mileage, key, voltage, hardware and
// power-switch sections.
#include "ParaTestSupport.h"

using namespace paratest;

// Fields as listed, the rest of the record is left to the generic tests.
TEST(DeviceSections, QuirksOfEachSectionByteExact)
{
    const std::string longName(130, 'n');
    const SectionCase cases[] = {
        {"", 3, "GS", 40, R"({"SET":[1,2,3,4,5,6,7],"BCOM":9})",
         {{0, 1, 0}, {6, 2, 0}, {28, 1, 0}, {29, 6, 0x060504030201ull}, {35, 1, 0}, {37, 1, 9}, Kept(38, 40)}},
        {"", 3, "GS", 40, R"({"SET":[1,2],"DLSM":70000,"AK":4294967295})",
         {{6, 2, 4464}, {24, 4, 0xFFFFFFFFull}, {29, 2, 0x0201}, Kept(31, 35), Kept(38, 40)}},
        {"", 4, "GSP", 28, R"({"VOL":300,"RCI":70000,"FHKE":7,"MME":8})",
         {{0, 4, 0}, {7, 1, 44}, {22, 1, 0}, {23, 1, 7}, {24, 2, 4464}, {27, 1, 8}}},
        {"", 5, "NIGHT", 21, R"({"EN":1,"TEN":2,"FSH":3,"FES":4,"FEN":5})",
         {{0, 1, 1}, {7, 1, 2}, {14, 1, 3}, {19, 1, 4}, {20, 1, 5}}},
        {"", 19, "VS", 84, R"({"VT":"Coach","VIN":"ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789WXYZ","LS":4,"ESW":5})",
         {{9, 32, 0, "Coach"}, {41, 32, 0, "ABCDEFGHIJKLMNOPQRSTUVWXYZ012345"}, {73, 1, 4}, {80, 1, 5}, Kept(81, 84)}},
        {"", 20, "PS", 244, R"({"IS":1,"MID":"M1","N":")" + longName + R"(","BCN":9,"VRN":"AB-1234"})",
         {{18, 1, 1}, {19, 8, 0, "M1"}, {99, 128, 0, longName}, {227, 1, 9}, Kept(228, 231), {231, 12, 0, "AB-1234"},
          Kept(243, 244)}},
        {"entry 12 of HM would land on TM", 24, "HMIP", 32, R"({"MT":7,"HM":[1,2,3,4,5,6,7,8,9,10,11,70000,13]})",
         {{0, 4, 7}, {4, 2, 1}, {24, 2, 11}, {26, 2, 4464}, {28, 4, 0}}},
        {"", 24, "HMIP", 32, R"({"HM":[1,2]})", {{4, 4, 0x00020001}, Kept(8, 28), {28, 4, 0}}},
        {"HM as an object", 24, "HMIP", 32, R"({"HM":{"0":1}})", {{0, 4, 0}, Kept(4, 28), {28, 4, 0}}},
        {"", 27, "KEYS", 13, R"({"IOS":-2,"PHM":7,"MAC":"00:1A:2B:3C:4D:5E"})",
         {{0, 6, 0x5E4D3C2B1A00ull}, {6, 1, 0}, {7, 1, 0xFE}, {12, 1, 7}}},
        {"", 36, "VPP", 14, R"({"LV":"11.5","UV":"32","CE":3,"WLV":4,"WLE":5,"OT":600,"SDT":700})",
         {{2, 2, 1150}, {4, 2, 3200}, {6, 1, 3}, {7, 1, 4}, {8, 1, 5}, Kept(9, 10), {10, 2, 600}, {12, 2, 700}}},
        {"", 44, "HMP", 8, R"({"HIO":18446744073709551615})", {{0, 8, ~0ull}}},
        {"", 46, "SSP", 28, R"({"DS":1,"DAUE":2,"DDS":100000,"DAUT":3,"EDL":4,"SPO":300000})",
         {{6, 1, 1}, {7, 1, 2}, {8, 4, 100000}, {18, 2, 3}, {20, 1, 0}, {21, 1, 4}, Kept(22, 24), {24, 4, 300000}}},
    };
    for (const SectionCase& c : cases)
        ExpectSection({c.what, c.type, c.key, c.size, c.section, c.fields, {}, false});
}

TEST(KeySection, MacTextGivesSixBytesWithinItsTwentyCharacters)
{
    const struct {
        const char* mac; // JSON value of "MAC", nullptr: absent
        unsigned char bytes[6];
    } cases[] = {
        {R"("aa:bb:cc:dd:ee:ff")", {0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF}},
        {R"("11:22:33")", {0x11, 0x22, 0x33, 0, 0, 0}},
        {R"("11:22:zz:44:55:66")", {0x11, 0x22, 0, 0, 0, 0}},
        {R"("no groups")", {}},
        {R"("")", {}},
        {"1122334455", {}},
        {nullptr, {}},
        {R"("  1:  2:  3:  4:  5:6F")", {1, 2, 3, 4, 5, 0}}, // the sixth group starts at character 20
        {R"("01:02:03:04:05:06:07:08:09")", {1, 2, 3, 4, 5, 6}},
    };
    for (const auto& c : cases) {
        const std::string section = c.mac ? std::string(R"({"MAC":)") + c.mac + "}" : R"({"FL":1})";
        auto record = Sentinel<tag_MsgKeySetting>();
        ASSERT_EQ(ParseKeyParamJson(Doc("KEYS", section), *record), 0) << section;
        EXPECT_EQ(0, std::memcmp(record.get(), c.bytes, 6)) << section;
    }
}

TEST(VoltageSection, VoltageTextInHundredthsKeptToSixteenBits)
{
    const struct {
        const char* value; // JSON value of "LV" or "UV"
        unsigned short stored;
    } cases[] = {
        {R"("12.345")", 1234},             // truncated, not rounded
        {"12", 0},                         // a number is no text
        {R"("700")", 4464},                // 70000 kept to 16 bits
        {R"("-5")", 0},
        {R"("abc")", 0},
        {R"("nan")", 0},
        {R"("-inf")", 0},
        {R"("inf")", 65535},               // beyond 32 bits: the largest value
        {R"("1e300")", 65535},
        {R"("00000000000000123")", 1200},  // only the first 16 characters count
    };
    for (const auto& c : cases)
        for (size_t offset : {2u, 4u}) {
            const std::string section = std::string(offset == 2 ? R"({"LV":)" : R"({"UV":)") + c.value + "}";
            auto record = Sentinel<tag_MsgVoltageProtectSetting>();
            ASSERT_EQ(ParseVoltageProtectParamJson(Doc("VPP", section), *record), 0) << section;
            EXPECT_EQ(At<unsigned short>(record.get(), offset), c.stored) << section;
            EXPECT_EQ(At<unsigned short>(record.get(), 6 - offset), 0) << section;
        }
}
