// The main-stream encoding, assist recording, network transfer, encoding and
// view OSD, recording and snapshot sections.
#include "ParaTestSupport.h"

using namespace paratest;

namespace {

// The bytes [base, base + size) that a parser writes: zero, with `values`
// (offsets relative to base) over them.
Fields Written(size_t base, size_t size, const Fields& values)
{
    return Fields{Zeros(base, base + size)} + Entries(values, base);
}

// A snapshot setting at `base`: E, R, Q and N, I, U are written, the
// reserved bytes 3-5 and 16-23 are not.
Fields Snap(size_t base, const Fields& values)
{
    return Fields{Zeros(base, base + 3), Zeros(base + 6, base + 16)} + Entries(values, base);
}

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

// The fields that Day(d, n) fills in channel ch of the recording section.
Fields DayFields(size_t ch, size_t d, size_t n)
{
    const unsigned long long s = 100 * d + 1;
    return Entries({{0, 4, s}, {4, 4, s + 50}, {8, 1, 1}}, 1804 * ch + 256 * d, 16, n, 1);
}

// RM and RP of a recording channel.
Fields Channel(size_t ch, unsigned rm, unsigned rp) { return {{1804 * ch + 1792, 1, rm}, {1804 * ch + 1794, 2, rp}}; }

// The four section-wide recording values, written as 0 when absent.
const Fields kRecordTop = {{28896, 4, 0}, {28900, 1, 0}, {28902, 2, 0}, {28904, 2, 0}};

} // namespace

// Every byte written is listed; all others keep the sentinel. Array bounds are
// probed with one element too many: it would land on a later field, or past
// the record on the guard.
TEST(VideoSections, WrittenBytesOfEachSectionExactly)
{
    const std::string forty(40, 'x'), thirtyTwo(32, 'y'), sixteen(16, 'z');
    const Fields encoder = {{0, 4, 300000}, {6, 1, 44}, {12, 2, 4464}, {19, 1, 9}}; // BR, FR, KFI, ECT of an entry
    Fields names = {{7, 16, 0, forty}, {23, 16, 0, sixteen}, {39, 16, 0, "Rear"}, {55, 16, 0}};
    for (size_t j = 4; j < 32; ++j)
        names.push_back({7 + 16 * j, 16, 0, "cam" + std::to_string(j)});
    const Fields snapTop = Written(0, 2, {{0, 1, 1}}) + Written(3616, 3, {});

    const SectionCase cases[] = {
        // Main stream: channel entries of 24 bytes at 8, 20 of them written.
        {"an object, a number (every field 0) and an empty object", 10, "MAIN", 392,
         R"([{"BR":300000,"FR":300,"KFI":70000,"ECT":9},5,{}])",
         Written(8, 20, encoder) + Written(32, 20, {}) + Written(56, 20, {})},
        {"elements 16 and later are beyond the 16 channels", 10, "MAIN", 392, List(R"({"BR":%})", 18, 1),
         Entries({Zeros(0, 20)}, 8, 24, 16) + Entries({{0, 4, 1}}, 8, 24, 16, 1)},
        {"an object reads no entry", 10, "MAIN", 392, R"({"BR":1})", {}},

        // Assist recording: scalars at 0-11 and 396-408, "VEC" entries of 24 bytes at 12.
        {"narrowing, a short VEC, an entry that is no object", 11, "AR", 412,
         R"({"EN":1,"MC":4294967295,"ALH":300,"VEC":[{"BR":300000,"FR":300,"KFI":70000,"ECT":9},{"LCN":7},[1]]})",
         Written(0, 12, {{0, 1, 1}, {4, 4, 0xFFFFFFFFull}}) + Written(396, 13, {{12, 1, 44}}) + Written(12, 20, encoder) +
             Written(36, 20, {{14, 1, 7}}) + Written(60, 20, {})},
        {"VEC of 17, the 17th would land on SSC", 11, "AR", 412, R"({"VEC":)" + List(R"({"BR":%})", 17, 1) + "}",
         Written(0, 12, {}) + Written(396, 13, {}) + Entries({Zeros(0, 20)}, 12, 24, 16) +
             Entries({{0, 4, 1}}, 12, 24, 16, 1)},
        {"VEC as an object reads no entry", 11, "AR", 412, R"({"HID":2,"VEC":{"BR":1}})",
         Written(0, 12, {{1, 1, 2}}) + Written(396, 13, {})},

        // Network transfer: its own 20-byte entry, written over 14 bytes.
        {"every entry key at its own offset", 12, "SUBSTRNET", 336,
         R"({"TOTALBW":4294967295,"SM":300,"NEC":[)"
         R"({"BR":1,"VEN":2,"FT":3,"FR":4,"QLT":5,"RST":6,"AEN":7,"BRM":8,"ECT":9,"KFI":70000},5]})",
         Written(0, 7, {{0, 4, 0xFFFFFFFFull}, {4, 1, 44}}) +
             Written(16, 14, {{0, 4, 1}, {4, 1, 2}, {5, 1, 3}, {6, 1, 4}, {7, 1, 5}, {8, 1, 6}, {9, 1, 7}, {10, 1, 8},
                              {11, 1, 9}, {12, 2, 4464}}) +
             Written(36, 14, {})},
        {"NEC of 17", 12, "SUBSTRNET", 336, R"({"RLE":3,"NEC":)" + List(R"({"KFI":%})", 17, 1) + "}",
         Written(0, 7, {{6, 1, 3}}) + Entries({Zeros(0, 14)}, 16, 20, 16) + Entries({{12, 2, 1}}, 16, 20, 16, 1)},

        // Encoding OSD: channels of 232 bytes at 8, fixed fields at 0-19 and
        // 212-223, overlays of 48 bytes at 20 (41 of them written).
        {"overlay texts and bounds, a channel without COSD", 15, "EOSD", 3720,
         R"([{"TE":1,"SE":4,"GE":2,"VE":3,"TX":70000,"VY":5,"NE":6,"DE":7,"NX":8,"DY":9,"DTE":10,"WME":11,)"
         R"("COSD":[{"EN":1,"ID":2,"X":3,"Y":4,"F":5,"L":6,"T":")" + forty + R"(","TP":7},)"
         R"({"T":")" + thirtyTwo + R"("},{"T":"short"},{},{"EN":9},{"EN":9}]},{"TE":1}])",
         Written(8, 20, {{0, 1, 1}, {1, 1, 4}, {2, 1, 2}, {3, 1, 3}, {4, 2, 4464}, {18, 2, 5}}) +
             Written(8 + 212, 12, {{0, 1, 6}, {1, 1, 7}, {2, 2, 8}, {8, 2, 9}, {10, 1, 10}, {11, 1, 11}}) +
             Written(28, 41, {{0, 1, 1}, {1, 1, 2}, {2, 2, 3}, {4, 2, 4}, {6, 1, 5}, {7, 1, 6}, {8, 32, 0, forty}, {40, 1, 7}}) +
             Written(28 + 48, 41, {{8, 32, 0, thirtyTwo}}) + Written(28 + 96, 41, {{8, 32, 0, "short"}}) +
             Written(28 + 144, 41, {}) + Written(8 + 232, 20, {{0, 1, 1}}) + Written(8 + 232 + 212, 12, {})},
        {"an object reads no channel", 15, "EOSD", 3720, R"({"TE":1})", {}},

        // View OSD: flags at 0-6 and 519-523, names of 16 bytes at 7, positions at 524.
        {"only TE, the twelve flags written", 50, "DOSD", 572, R"({"TE":1})",
         Written(0, 7, {{0, 1, 1}}) + Written(519, 5, {})},
        {"names cut to 16, 40 names, 3 positions", 50, "DOSD", 572,
         R"({"VE":2,"GE":3,"COE1":4,"REN":5,"OP":[{"X":70000,"Y":2},{"Y":3},4],"CHN":[")" + forty + R"(",")" + sixteen +
             R"(","Rear",7,)" + List(R"("cam%")", 36, 4).substr(1) + "}",
         Written(0, 7, {{2, 1, 2}, {3, 1, 3}}) + Written(519, 5, {{2, 1, 4}, {4, 1, 5}}) + names +
             Fields{{524, 2, 4464}, {526, 2, 2}, {528, 2, 0}, {530, 2, 3}, {532, 4, 0}}},
        {"13 positions", 50, "DOSD", 572, R"({"OP":)" + List(R"({"X":%})", 13, 1) + "}",
         Written(0, 7, {}) + Written(519, 5, {}) + Entries({{524, 2, 1}}, 0, 4, 12, 1) + Entries({{526, 2, 0}}, 0, 4, 12)},

        // Recording: channels of 1804 bytes, days of 256, periods of 16;
        // periods "MP" of 8 bytes at 28864; section-wide values at 28896.
        {"top level only", 16, "RP", 28908, R"({"PRS":70000,"PRE":300})",
         {{28896, 4, 70000}, {28900, 1, 44}, {28902, 2, 0}, {28904, 2, 0}}},
        {"channels: object, number, object without RSI", 16, "RP", 28908,
         R"({"RCP":[{"RM":1,"RP":2},7,{"RM":3,"RP":70000}]})",
         kRecordTop + Channel(0, 1, 2) + Channel(1, 0, 0) + Channel(2, 3, 4464)},
        {"days: arrays only, at most 7; day 7 would land on RM and RP", 16, "RP", 28908,
         "{\"RCP\":[{\"RSI\":[" + Day(0, 1) + ",5,{},[]," + Day(4, 1) + "," + Day(5, 1) + "," + Day(6, 1) + "," +
             Day(7, 16) + "]}]}",
         kRecordTop + Channel(0, 0, 0) + DayFields(0, 0, 1) + DayFields(0, 4, 1) + DayFields(0, 5, 1) +
             DayFields(0, 6, 1)},
        {"periods: at most 16 (the 17th would land on day 1), a shorter day fills its first ones", 16, "RP", 28908,
         "{\"RCP\":[{\"RSI\":[" + Day(0, 17) + "]},{\"RSI\":[[]," + Day(1, 5) + "]}]}",
         kRecordTop + Channel(0, 0, 0) + Channel(1, 0, 0) + DayFields(0, 0, 16) + DayFields(1, 1, 5)},
        {"a period that is no object gets zeros", 16, "RP", 28908, R"({"RCP":[{"RSI":[[7,{"S":9}]]}]})",
         kRecordTop + Channel(0, 0, 0) + Fields{Zeros(0, 9), {16, 4, 9}, Zeros(20, 25)}},
        {"MP: at most 4, entry 4 would land on PRS", 16, "RP", 28908,
         R"({"MP":[{"OLD":1,"OT":2,"OVD":3},{"OLD":4},5,{"OLD":6},{"OLD":7},{"OLD":8}]})",
         kRecordTop + Entries({Zeros(28864, 28867)}, 0, 8, 4) +
             Fields{{28864, 1, 1}, {28865, 1, 2}, {28866, 1, 3}, {28872, 1, 4}, {28888, 1, 6}}},

        // Snapshots: NE, ITN at 0; MSP set at 32; timed periods of 400 bytes at
        // 416 with their set at 16; ASP at 3616 with its set at 3620.
        {"only NE; groups of other kinds read nothing", 34, "PSNAP", 4004,
         R"({"NE":1,"ASP":5,"MSP":[{"CSP":[{"E":1}]}],"TSP":{"SH":1}})", snapTop},
        {"the three kinds of snapshot set", 34, "PSNAP", 4004,
         R"({"NE":300,"ITN":2,"MSP":{"CSP":[{"E":1,"R":2,"Q":3,"N":70000,"I":5,"U":6},{}]},)"
         R"("TSP":[{"SH":1,"SM":2,"SS":3,"EH":4,"EM":5,"ES":6,"I":70000,"CSP":[{"Q":7}]},)"
         R"({"I":8,"CSP":[null,{"E":9}]}],"ASP":{"I":70000,"ST":300,"CSP":[{"U":4294967295}]}})",
         Written(0, 2, {{0, 1, 44}, {1, 1, 2}}) +
             Snap(32, {{0, 1, 1}, {1, 1, 2}, {2, 1, 3}, {6, 2, 4464}, {8, 4, 5}, {12, 4, 6}}) +
             Written(416, 6, {{0, 1, 1}, {1, 1, 2}, {2, 1, 3}, {3, 1, 4}, {4, 1, 5}, {5, 1, 6}}) +
             Fields{{416 + 8, 2, 4464}} + Snap(416 + 16, {{2, 1, 7}}) + Written(816, 6, {}) + Fields{{816 + 8, 2, 8}} +
             Snap(816 + 16 + 24, {{0, 1, 9}}) + Fields{{3616, 2, 4464}, {3618, 1, 44}} +
             Snap(3620, {{12, 4, 0xFFFFFFFFull}}),
         {kNoSnapPara, kNoSnapPara}},
        // Period 8 would put its set's first E into the ASP set, which "ASP"
        // without "CSP" leaves alone.
        {"TSP of 10", 34, "PSNAP", 4004, R"({"NE":1,"TSP":)" + List(R"({"EH":%,"CSP":[{"E":1}]})", 10, 1) + "}",
         snapTop + Entries(Written(416, 6, {}) + Fields{{424, 2, 0}} + Snap(432, {{0, 1, 1}}), 0, 400, 8) +
             Entries({{419, 1, 1}}, 0, 400, 8, 1)},
        {"full 32 bits, CSP of 20", 35, "DSP", 420,
         R"({"SD":4294967295,"SU":300,"CSP":)" + List(R"({"N":%})", 20, 1) + "}",
         Fields{{0, 4, 0xFFFFFFFFull}, {4, 1, 44}} + Entries(Snap(36, {}), 0, 24, 16) +
             Entries({{42, 2, 1}}, 0, 24, 16, 1)},
        {"CSP as an object reads nothing", 35, "DSP", 420, R"({"SU":1,"CSP":{"E":1}})", {{0, 4, 0}, {4, 1, 1}}},
    };
    for (const SectionCase& c : cases)
        ExpectSection(c);
}
