// The parameter inspector, run end to end as a user runs it, and its
// decoding walk run over every registered record.
#include "ParaDecode.h"
#include "ParaTestSupport.h"
#include "ParaTypes.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <regex>

using paratest::DocText;
using paratest::ExampleFile;
using paratest::Slurp;

namespace {

struct Outcome {
    int status;
    std::string out;
    std::string err;
};

// Runs mdvr-param with `args`, feeding `input` on standard input.
Outcome Tool(const std::string& args, const std::string& input = "")
{
    // Test programs run in parallel: the files are this process's own.
    const std::string dir = testing::TempDir() + "mdvr_param_" + std::to_string(getpid()) + "_";
    const std::string in = dir + "in.json", out = dir + "out.txt", err = dir + "err.txt";
    std::ofstream(in, std::ios::binary) << input;
    const int raw = std::system((std::string(MDVR_PARAM_COMMAND) + " " + args + " <" + in + " >" + out + " 2>" + err).c_str());
    Outcome outcome{WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, Slurp(out), Slurp(err)};
    for (const std::string& file : {in, out, err})
        std::remove(file.c_str());
    return outcome;
}

bool Has(const std::string& text, const std::string& piece) { return text.find(piece) != std::string::npos; }

// A file of `size` zero bytes that takes no room on the disk.
std::string Sparse(unsigned long long size)
{
    const std::string name = testing::TempDir() + "mdvr_param_sparse_" + std::to_string(size);
    std::FILE* f = std::fopen(name.c_str(), "wb");
    if (!f || ftruncate(fileno(f), off_t(size)) != 0)
        ADD_FAILURE() << "cannot make " << name;
    if (f)
        std::fclose(f);
    return name;
}

// mdvr-param with `args` reading `bytes` zero bytes from a pipe; what it said
// on standard error and its status.
std::pair<std::string, int> FromPipe(const std::string& args, unsigned long long bytes)
{
    const std::string err = testing::TempDir() + "mdvr_param_pipe_" + std::to_string(getpid());
    const int raw = std::system(("head -c " + std::to_string(bytes) + " /dev/zero | " + MDVR_PARAM_COMMAND + " " + args +
                                 " >/dev/null 2>" + err).c_str());
    const std::string said = Slurp(err);
    std::remove(err.c_str());
    return {said, WIFEXITED(raw) ? WEXITSTATUS(raw) : -1};
}

const char kSmall[] = R"({"PARAMETER":{"MDVR":{
    "ATP":{"GE":1,"NS":"0123456789012345678901234567890123456789012345678901234567890123","NAI":3600},
    "TIMEP":{"TIMEZ":"GMT+08","TIMEOFFSET":-480,"DST":{"SWEEK":2,"SWIND":3}}}}})";

// 17 recording channels, one more than the record holds.
const std::string kChannels17 = paratest::List(R"({"RM":1})", 17);

// An object of n keys that no parser reads, "K0" and on.
std::string UnknownKeys(size_t n)
{
    std::string keys = "{";
    for (size_t i = 0; i < n; ++i)
        keys += (i ? ",\"K" : "\"K") + std::to_string(i) + "\":1";
    return keys + "}";
}

} // namespace

// Each command's output holds these pieces (and not those after a "!").
TEST(MdvrParam, CommandsPrintFieldsWithOffsetTypeAndValue)
{
    const struct {
        std::string args, input;
        std::vector<std::string> pieces;
    } cases[] = {
        {"show -", kSmall, {"ATP  type 0  tag_MsgAdjustTimeSetting  70 bytes  ParseAdjustTimeParamJson() = 0",
                            "  NAI                              68  u16       3600\n",
                            "(fills the field, no terminator)", // NS holds 64 characters
                            "  TIMEOFFSET                       20  u32       4294966816\n",
                            "  SWEEK_SWIND                      33  u8        35\n",
                            "  TIMEZ                             4  char[16]  \"GMT+08\"\n", "!reserved"}},
        {"show --section TIMEP -", kSmall, {"TIMEP  type 1", "!ATP  type 0"}},
        {"show --type 1 -", kSmall, {"TIMEP  type 1", "!ATP  type 0"}},
        {"show --type 0x1 -", kSmall, {"TIMEP  type 1", "!ATP  type 0"}}, // numbers as every tool reads them
        // GE = 1, NE, CE, SID = 0, then "0123..." from offset 4; NAI 3600 little-endian at 68.
        {"show --format hex --section ATP -", kSmall,
         {"  000000  01 00 00 00 30 31 32 33 34 35 36 37 38 39 30 31  |....012345678901|\n", "  000040  30 31 32 33 10 0e"}},
        {"show " + ExampleFile(), "", {"!() = -1"}},
        {"types", "", {"  25  PGDS     ParseGreenDriverParamJson          tag_MsgGreenDriverSet            432\n"}},
    };
    for (const auto& c : cases) {
        const Outcome r = Tool(c.args, c.input);
        EXPECT_EQ(r.status, 0) << c.args << ": " << r.err;
        for (const std::string& piece : c.pieces)
            EXPECT_EQ(Has(r.out, piece.substr(piece[0] == '!')), piece[0] != '!') << c.args << ": " << piece << "\nin:\n" << r.out;
    }
    EXPECT_EQ(Tool("layout 0").out, Tool("layout ATP").out); // the whole layout: the golden file

    // JSON: each section's parser result and its fields under the names the
    // text gives them, in offset order (a JSON object of JsonCpp's would sort them).
    const std::string twelve = R"({"PARAMETER":{"MDVR":{"HMIP":{"HM":[0,1,2,3,4,5,6,7,8,9,10,11]},"SAP":{}}}})";
    const std::string text = Tool("show --format json -", kSmall).out;
    const Json::Value shown = paratest::Json(text);
    EXPECT_EQ(shown["ATP"]["fields"]["NAI"].asUInt(), 3600u);
    EXPECT_EQ(shown["ATP"]["result"].asInt(), 0);
    EXPECT_EQ(shown["TIMEP"]["fields"]["TIMEOFFSET"].asUInt(), 4294966816u);
    EXPECT_EQ(shown["TIMEP"]["fields"]["TIMEZ"].asString(), "GMT+08");
    EXPECT_FALSE(shown["TIMEP"]["fields"].isMember("reserved0"));
    EXPECT_LT(text.find("\"TIMEZ\""), text.find("\"TIMEOFFSET\"")); // 4 before 20: not alphabetical
    EXPECT_LT(text.find("\"TIMEOFFSET\""), text.find("\"SWEEK_SWIND\""));
    const Json::Value hm = paratest::Json(Tool("show --format json -", twelve).out);
    EXPECT_EQ(hm["SAP"]["result"].asInt(), -1);
    for (unsigned i = 0; i < 12; ++i)
        EXPECT_EQ(hm["HMIP"]["fields"]["HM[" + std::to_string(i) + "]"].asUInt(), i) << hm;

    // The layout collapses each array to one line with its bounds and stride,
    // and lists the fields of an array of records once; --expand lists every
    // element (the golden file is that).
    const std::string rp = Tool("layout RP").out, expanded = Tool("layout --expand RP").out;
    EXPECT_EQ(std::count(rp.begin(), rp.end(), '\n'), 24) << rp;
    EXPECT_EQ(std::count(expanded.begin(), expanded.end(), '\n'), 7257);
    EXPECT_TRUE(Has(rp, "  tag_MsgRecordChannel RCP[16];                     /*      0 28864 */  RCP  (stride 1804)\n")) << rp;
    EXPECT_TRUE(Has(rp, "  u32       RCP[i].RSI[j][k].E;          /*      4     4 */  RCP[i].RSI[j][k].E\n")) << rp;
    EXPECT_TRUE(Has(Tool("layout GS").out, "  u8        SET[6];                      /*     29     6 */  SET  (stride 1)\n"));
}

TEST(MdvrParam, CheckReportsEachKindOfLoss)
{
    const struct {
        std::string doc;
        std::vector<const char*> lines; // none: clean
    } cases[] = {
        {R"({"PARAMETER":{"MDVR":{"UESR":{},"ATP":{"GE":300,"NE":-1,"CE":"1","SID":1.5,"NS":12,"XX":1},
             "TIMEP":{"TIMEZ":"0123456789abcdefXYZ","DST":[1]},"KEYS":{"MAC":"00:1A:zz"},"VPP":{"LV":12,"UV":"700"},
             "RP":{"RCP":)" + kChannels17 + R"(,"MP":{"OLD":1}}}}})",
         {"MDVR.UESR: section not read by any parser of this library\n",
          "MDVR.ATP.GE: value 300 does not fit u8: stores 44\n",
          "MDVR.ATP.NE: negative value -1 into unsigned u8: stores 255\n",
          "MDVR.ATP.CE: a string is not read into u8: stores 0\n",
          "MDVR.ATP.SID: a real number is not read into u8: stores 0\n",
          "MDVR.ATP.NS: an integer where text is read: stores 64 zero bytes\n",
          "MDVR.ATP.XX: key not read by the parser: ignored\n",
          "MDVR.TIMEP.TIMEZ: text of 19 bytes cut to its field's 16: stores the first 16 with no terminator\n",
          "MDVR.TIMEP.DST: an array where an object is read: its fields get their defaults\n",
          "MDVR.KEYS.MAC: text holds 2 of 6 hexadecimal groups: the other bytes store 0\n",
          "MDVR.VPP.LV: not text: stores 0\n",
          "MDVR.VPP.UV: 70000 hundredths of a volt do not fit 16 bits: stores 4464\n",
          "MDVR.RP.RCP: array of 17 elements: elements 16 and later are ignored (bound 16)\n",
          "MDVR.RP.MP: an object where an array is read: nothing is stored\n"}},
        {DocText("TIMEP", R"({"DST":{"SWEEK":17,"SWIND":256}})"),
         {"MDVR.TIMEP.DST.SWEEK: only the low 4 bits of 17 are packed: stores 1\n",
          "MDVR.TIMEP.DST.SWIND: only the low 4 bits of 256 are packed: stores 0\n"}},
        {DocText("PGDS", R"({"PLDS":{"CD":40000,"CA":-32768}})"),
         {"MDVR.PGDS.PLDS.CD: value 40000 does not fit i16: stores -25536\n"}},
        {DocText("1", R"({"DATEM":1})"), {"MDVR.1: section not read by any parser of this library\n"}},
        {R"({"PARAMETER":{"MDVR":{"ATP":{"GE":1,"NS":"pool.ntp.org"},"TIMEP":{"DST":{"SWEEK":1}}}}})", {}},
        {Slurp(ExampleFile()), {}},
    };
    for (const auto& c : cases) {
        const Outcome r = Tool("check -", c.doc);
        EXPECT_EQ(r.status, c.lines.empty() ? 0 : 1) << r.out << r.err;
        EXPECT_EQ(std::count(r.out.begin(), r.out.end(), '\n'), long(std::max<size_t>(c.lines.size(), 1))) << r.out;
        for (const char* line : c.lines)
            EXPECT_TRUE(Has(r.out, line)) << line << "\nin:\n" << r.out;
    }
    // Findings are capped: the first 1000, then a count of the rest.
    const Outcome r = Tool("check -", DocText("ATP", UnknownKeys(1003)));
    EXPECT_EQ(std::count(r.out.begin(), r.out.end(), '\n'), 1001);
    EXPECT_TRUE(Has(r.out, "MDVR.ATP.K0: key not read by the parser: ignored\n")) << r.out;
    EXPECT_TRUE(Has(r.out, "\n... and 3 more findings (the first 1000 are listed)\n")) << r.out;
}

TEST(MdvrParam, ErrorsAreOneLineWithStatusTwo)
{
    struct {
        std::string args;
        std::string input;
        std::string message;
    } cases[] = {
        {"show /nonexistent/doc.json", "", "mdvr-param: cannot read /nonexistent/doc.json: No such file or directory\n"},
        {"check -", "{\n  \"a\": ,\n}", "mdvr-param: -: JSON syntax error at line 2, column 8: "},
        {"show --type 99 -", "{}", "mdvr-param: unknown parameter type or section: 99\n"},
        {"show --type 0x1z -", "{}", "mdvr-param: unknown parameter type or section: 0x1z\n"},
        {"show --type 01z -", "{}", "mdvr-param: unknown parameter type or section: 01z\n"},
        {"layout NOPE", "", "mdvr-param: unknown parameter type or section: NOPE\n"},
        {"frobnicate", "", "mdvr-param: unknown command: frobnicate\n"},
        {"decode --section TIMEP -", std::string(51, '\0'), "mdvr-param: -: 51 bytes, but a tag_MsgTimeSetting record has 52\n"},
        {"decode --section TIMEP -", std::string(53, '\0'), "mdvr-param: -: 53 bytes, but a tag_MsgTimeSetting record has 52\n"},
        {"encode --section SAP -", DocText("TIMEP", "{}"),
         "mdvr-param: section \"SAP\" is empty or absent: ParseSpeedAlarmParamJson() = -1\n"},
        {"encode -", kSmall, "mdvr-param: Exactly 1 option from [--type,--section] is required\n"},
        {"decode --type 1 --section TIMEP -", "", "mdvr-param: --type excludes --section\n"},
        {"encode --type 77 -", kSmall, "mdvr-param: unknown parameter type or section: 77\n"},
        {"diff -", "", "mdvr-param: B is required\n"},
        {"show --bogus -", kSmall, "mdvr-param: The following argument was not expected: --bogus\n"},
        // Documents that are not one object.
        {"show -", "[1,2,3]", "mdvr-param: -: the document is an array, not an object"},
        {"show -", "42", "mdvr-param: -: the document is an integer, not an object"},
        {"show -", "null", "mdvr-param: -: the document is null, not an object"},
        {"check -", "\"x\"", "mdvr-param: -: the document is a string, not an object"},
        {"show -", kSmall + std::string("\n{}"), "mdvr-param: -: JSON syntax error at line 4, column 1: text after the document\n"},
        {"check -", "{} x", "mdvr-param: -: JSON syntax error at line 1, column 4: text after the document\n"},
        // The nesting limit where it is passed: the 1001st bracket of the second line.
        {"show -", "{\"a\":\n " + std::string(1000, '[') + std::string(1000, ']') + "}",
         "mdvr-param: -: nesting deeper than 1000 arrays and objects at line 2, column 1001\n"},
        {"show " + testing::TempDir(), "", "mdvr-param: cannot read " + testing::TempDir() + ": Is a directory\n"},
        {"decode --type 1 " + testing::TempDir(), "", "mdvr-param: cannot read " + testing::TempDir() + ": Is a directory\n"},
        // An empty name selects nothing (encode and decode indexed the empty selection).
        {"show --type '' -", kSmall, "mdvr-param: --type: an empty name: give a type number or a section key\n"},
        {"encode --section '' -", kSmall, "mdvr-param: --section: an empty name: give a type number or a section key\n"},
        {"decode --type '' -", "", "mdvr-param: --type: an empty name: give a type number or a section key\n"},
        {"schema ''", "", "mdvr-param: an empty name: give a type number, a section key or all\n"},
        {"diff - -", kSmall, "mdvr-param: standard input is read only once: name at most one file -\n"},
        // A document with no section to show.
        {"show -", "{}", "mdvr-param: -: no \"MDVR\" object: no section is read\n"},
        {"show -", R"({"PARAMETER":"x"})", "mdvr-param: -: no \"MDVR\" object: no section is read\n"},
        {"show -", R"({"PARAMETER":{"MDVR":[]}})", "mdvr-param: -: no \"MDVR\" object: no section is read\n"},
        {"show -", R"({"PARAMETER":{"MDVR":{"XX":{}}}})", "mdvr-param: -: no section that a parser of this library reads\n"},
        // Names that were meant to be others, options that are none.
        {"layout timep", "", "mdvr-param: unknown parameter type or section: timep (did you mean TIMEP?)\n"},
        {"show --section TIMEPP -", kSmall, "mdvr-param: unknown parameter type or section: TIMEPP (did you mean TIMEP?)\n"},
        {"--frob", "", "mdvr-param: The following argument was not expected: --frob\n"},
        {"", "", "mdvr-param: a command is required: show, layout, check, types, schema, encode, decode, diff\n"},
        {"show --format= -", kSmall, "mdvr-param: option --format= has an empty value\n"},
        {"show --format xml -", kSmall, "mdvr-param: unknown format: xml (text, json or hex)\n"},
        // Inputs past their limit, refused by their size before they are read.
        {"check " + Sparse(3ULL << 30), "",
         "mdvr-param: " + Sparse(3ULL << 30) + ": 3221225472 bytes, more than the 8388607 bytes of the largest bus message body\n"},
        {"decode --section TIMEP " + Sparse(3ULL << 30), "",
         "mdvr-param: " + Sparse(3ULL << 30) + ": 3221225472 bytes, but a tag_MsgTimeSetting record has 52\n"},
    };
    for (const auto& c : cases) {
        Outcome r = Tool(c.args, c.input);
        EXPECT_EQ(r.status, 2) << c.args;
        EXPECT_EQ(r.err.rfind(c.message, 0), 0u) << c.args << " said: " << r.err;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
        EXPECT_TRUE(r.out.empty()) << r.out;
    }
}

// A document of exactly the limit is read; one byte more, from a file or a
// pipe, is not (reading a pipe stops past the limit).
TEST(MdvrParam, InputsAreReadUpToTheirLimitAndNoFurther)
{
    std::string doc = kSmall;
    doc.resize(8388607, ' ');
    const Outcome atLimit = Tool("show --section TIMEP -", doc);
    EXPECT_EQ(atLimit.status, 0) << atLimit.err;
    EXPECT_EQ(Tool("show --section TIMEP -", doc + " ").err,
              "mdvr-param: -: 8388608 bytes, more than the 8388607 bytes of the largest bus message body\n");

    const std::pair<std::string, int> document = FromPipe("check -", 8388608 + 65536);
    EXPECT_EQ(document, std::make_pair(std::string("mdvr-param: -: more than 8388607 bytes, more than the 8388607 "
                                                   "bytes of the largest bus message body\n"),
                                       2));
    const std::pair<std::string, int> record = FromPipe("decode --section TIMEP -", 1 << 20);
    EXPECT_EQ(record, std::make_pair(std::string("mdvr-param: -: more than 52 bytes, but a tag_MsgTimeSetting record "
                                                 "has 52\n"),
                                     2));
}

// Output that cannot be written is a failure of the run (1), not bad input.
TEST(MdvrParam, OutputThatCannotBeWrittenIsStatusOne)
{
    const Outcome r = Tool("encode --section ATP -o /dev/full -", kSmall);
    EXPECT_EQ(r.status, 1) << r.err;
    EXPECT_EQ(r.err, "mdvr-param: cannot write /dev/full: No space left on device\n");
    for (const char* args : {"layout all", "schema", "types"}) {
        const std::string err = testing::TempDir() + "mdvr_param_full_" + std::to_string(getpid());
        const int raw = std::system((std::string(MDVR_PARAM_COMMAND) + " " + args + " >/dev/full 2>" + err).c_str());
        EXPECT_EQ(WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, 1) << args;
        EXPECT_EQ(Slurp(err), "mdvr-param: cannot write standard output: No space left on device\n") << args;
        std::remove(err.c_str());
    }
}

// What the library's reader accepts and other readers refuse, each named
// where it first stands; check --json gives the same findings.
TEST(MdvrParam, CheckNamesWhatOtherJsonReadersRefuse)
{
    const struct {
        std::string doc;
        std::string line; // exactly, or "" for clean
    } cases[] = {
        {"{\"PARAMETER\":{\"MDVR\":{\n  // the clock\n  \"ATP\":{\"GE\":1}}}}",
         "line 2, column 3: a comment: the library skips it, editors and other JSON readers refuse it\n"},
        {"{\"PARAMETER\":{\"MDVR\":{\"ATP\":{\"GE\":1,}}}}",
         "line 1, column 37: a comma before a closing bracket: the library accepts it, editors and other JSON readers "
         "refuse it\n"},
        {"{\"PARAMETER\":{\"MDVR\":{\"ATP\":{\"GE\":1,\n\"GE\":2}}}}",
         "line 2, column 1: a key given twice in one object: the library keeps the last value, other readers may keep "
         "the first or refuse it\n"},
        {"{\"PARAMETER\":{\"MDVR\":{\"ATP\":{\"GE\":1,\"NE\":[1,2]}}}}", ""},
    };
    for (const auto& c : cases) {
        const Outcome r = Tool("check -", c.doc);
        EXPECT_EQ(r.status, 1) << c.doc; // NE holds an array in the last, a finding of its own
        EXPECT_EQ(Has(r.out, "line "), !c.line.empty()) << r.out;
        if (!c.line.empty()) {
            EXPECT_EQ(r.out.substr(0, c.line.size()), c.line) << r.out;
        }
        const Outcome json = Tool("check --json -", c.doc);
        const Json::Value out = paratest::Json(json.out);
        EXPECT_EQ(json.status, r.status);
        EXPECT_FALSE(out["clean"].asBool());
        EXPECT_EQ(out["findings"].size(), Json::ArrayIndex(std::count(r.out.begin(), r.out.end(), '\n'))) << json.out;
        EXPECT_EQ(out["findings"][0]["path"].asString() + ": " + out["findings"][0]["message"].asString() + "\n",
                  r.out.substr(0, r.out.find('\n') + 1));
    }
    const Json::Value clean = paratest::Json(Tool("check --json " + ExampleFile()).out);
    EXPECT_TRUE(clean["clean"].asBool());
    EXPECT_EQ(clean["findings"].size(), 0u);
    const Json::Value capped = paratest::Json(Tool("check --json -", DocText("ATP", UnknownKeys(1003))).out);
    EXPECT_EQ(capped["findings"].size(), 1000u);
    EXPECT_EQ(capped["unlisted"].asUInt(), 3u);
}

// ---------------------------------------------------------------------------
// Records back to documents: decode is the inverse of the parsers.

namespace {

// Fills every field that a parser writes: random bytes (texts included: any
// bytes decode to a string that stores them again), finite floats; reserved
// runs keep their bytes. Round 0 sets every field zero, round 1 every bit.
void Fill(unsigned char* bytes, const std::vector<para::FieldInfo>& layout, int round, std::mt19937& rng)
{
    for (const para::FieldInfo& f : layout) {
        if (f.kind == para::Kind::Reserved)
            continue;
        if (round == 0) {
            std::memset(bytes + f.offset, 0, f.size);
            continue;
        }
        if (f.kind == para::Kind::Float) {
            float v = round == 1 ? std::numeric_limits<float>::max() : std::numeric_limits<float>::quiet_NaN();
            while (!std::isfinite(v)) {
                const uint32_t bits = uint32_t(rng());
                std::memcpy(&v, &bits, sizeof v);
            }
            std::memcpy(bytes + f.offset, &v, sizeof v);
            continue;
        }
        for (size_t i = 0; i < f.size; ++i)
            bytes[f.offset + i] = round == 1 ? 0xFF : static_cast<unsigned char>(rng());
    }
}

// Random record -> decoded document as printed -> parser -> the same bytes,
// over a record of the sentinel: every field is read from its key, and no
// reserved byte is written.
void RoundTrip(const para::Type& t)
{
    std::mt19937 rng(unsigned(t.type) * 7919u + 1u);
    const para::Record& record = *t.parser.record;
    const std::vector<para::FieldInfo> layout = para::Layout(record);
    for (int round = 0; round < 24; ++round) {
        std::vector<unsigned char> original(record.size, paratest::kSentinel), back(original);
        Fill(original.data(), layout, round, rng);
        Json::Value doc;
        doc["PARAMETER"]["MDVR"][t.key] =
            para::DecodeRecord(record, std::string(original.begin(), original.end()));
        const std::string text = para::DocumentText(doc);
        ASSERT_EQ(AdaptParaJson(static_cast<_PARA_TYPE_>(t.type), paratest::Json(text), back.data()), 0)
            << t.key << " round " << round;
        const auto differs = std::mismatch(original.begin(), original.end(), back.begin());
        EXPECT_TRUE(differs.first == original.end())
            << t.key << " round " << round << ": byte " << differs.first - original.begin() << " differs";
    }
}

} // namespace

TEST(MdvrParamDecode, EveryRecordComesBackFromItsDecodedDocument)
{
    for (const para::Type& t : para::kTypes)
        RoundTrip(t);
}

// Through the tool's files and pipes; the decoding itself is checked above.
TEST(MdvrParamDecode, EncodeDecodeEncodeGivesTheSameBytesAndNamesWhatNoDocumentGives)
{
    // -o writes the same bytes as standard output; --type names the same type.
    const std::string file = testing::TempDir() + "mdvr_param_record_" + std::to_string(getpid());
    ASSERT_EQ(Tool("encode --type 1 -o " + file + " -", kSmall).status, 0);
    std::string record = Tool("encode --section TIMEP -", kSmall).out;
    EXPECT_TRUE(Slurp(file) == record);
    std::remove(file.c_str());
    const Outcome decoded = Tool("decode --section TIMEP -", record);
    EXPECT_EQ(decoded.status, 0) << decoded.err;
    EXPECT_TRUE(Tool("encode --section TIMEP -", decoded.out).out == record);

    // TIMEP: 52 bytes, 2 reserved bytes at 2. A reserved byte with data: the
    // document is still printed, the loss is named, status 1.
    ASSERT_EQ(record.size(), 52u);
    record[2] = 1;
    Outcome r = Tool("decode --section TIMEP -", record);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "mdvr-param: reserved0: reserved bytes at 2 hold data that no document writes\n");
    EXPECT_TRUE(Has(r.out, "\"TIMEZ\" : \"GMT+08\"")) << r.out;
}

// Random bytes in the largest record: what no document gives back is listed
// up to check's cap, then counted.
TEST(MdvrParamDecode, WhatNoDocumentGivesIsCappedLikeCheck)
{
    std::mt19937 rng(16);
    std::string record(28908, '\0');
    for (char& c : record)
        c = char(rng());
    const Outcome r = Tool("decode --section RP -", record);
    EXPECT_EQ(r.status, 1);
    EXPECT_LE(std::count(r.err.begin(), r.err.end(), '\n'), 1002) << r.err.size();
    EXPECT_TRUE(std::regex_search(r.err, std::regex("\nmdvr-param: \\.\\.\\. and [0-9]+ more fields differ \\(the first 1000 are listed\\)\n")))
        << r.err.substr(r.err.size() - std::min<size_t>(r.err.size(), 300));
}

// ---------------------------------------------------------------------------
// diff

TEST(MdvrParamDiff, ListsEveryStoredFieldThatDiffers)
{
    const std::string b = testing::TempDir() + "mdvr_param_diff_" + std::to_string(getpid()) + ".json";
    struct {
        const char* name;
        std::string a, b;
        std::string out; // exactly
        int status;
    } cases[] = {
        {"same document", kSmall, kSmall, "", 0},
        {"same stored values written differently", R"({"PARAMETER":{"MDVR":{"ATP":{"GE":1,"NE":0}}}})",
         R"({"PARAMETER":{"MDVR":{"ATP":{"GE":257,"XX":5}}}})", "", 0},
        {"values, a text, a packed byte",
         R"({"PARAMETER":{"MDVR":{"TIMEP":{"TIMEZ":"GMT+08","TIMEOFFSET":480,"DST":{"SWEEK":2}}}}})",
         R"({"PARAMETER":{"MDVR":{"TIMEP":{"TIMEZ":"GMT+09","TIMEOFFSET":-540,"DST":{"SWEEK":3,"SWIND":1}}}}})",
         "TIMEP.TIMEZ: \"GMT+08\" -> \"GMT+09\"\n"
         "TIMEP.TIMEOFFSET: 480 -> 4294966756\n"
         "TIMEP.SWEEK_SWIND: 32 -> 49\n",
         1},
        {"array entries and a section only in one",
         R"({"PARAMETER":{"MDVR":{"HMIP":{"HM":[1,2,3]}}}})",
         R"({"PARAMETER":{"MDVR":{"HMIP":{"HM":[1,5]},"ATP":{"GE":1}}}})",
         "ATP: ParseAdjustTimeParamJson() = -1 -> 0\nHMIP.HM[1]: 2 -> 5\nHMIP.HM[2]: 3 -> 0\n", 1},
        {"fields in offset order", DocText("SAP", R"({"APR":{"L":1,"SU":2}})"), DocText("SAP", R"({"APR":{"L":3,"SU":4}})"),
         "SAP.APR.SU: 2 -> 4\nSAP.APR.L: 1 -> 3\n", 1},
    };
    for (const auto& c : cases) {
        std::ofstream(b) << c.b;
        const Outcome r = Tool("diff - " + b, c.a);
        EXPECT_EQ(r.status, c.status) << c.name << ": " << r.err;
        EXPECT_EQ(r.out, c.out) << c.name;
    }
    std::remove(b.c_str());
}

// ---------------------------------------------------------------------------
// schema: checked with a real validator, against check.

namespace {

// Each document's verdict from tests/validate_schema.py: "valid", or its
// errors as "<keyword> <path>".
std::vector<std::string> Validate(const std::string& schema, const std::vector<std::string>& docs)
{
    const std::string dir = testing::TempDir() + "mdvr_param_schema_" + std::to_string(getpid()) + "_";
    std::ofstream(dir + "schema.json") << schema;
    std::string all = "[";
    for (const std::string& doc : docs)
        all += (all.size() > 1 ? "," : "") + doc;
    std::ofstream(dir + "docs.json") << all << "]";
    const int raw = std::system((std::string(PYTHON3) + " " TESTS_DIR "/validate_schema.py " + dir + "schema.json " +
                                 dir + "docs.json >" + dir + "out.txt 2>&1").c_str());
    std::vector<std::string> lines;
    std::istringstream out(Slurp(dir + "out.txt"));
    for (std::string line; std::getline(out, line);)
        lines.push_back(line);
    EXPECT_TRUE(WIFEXITED(raw) && WEXITSTATUS(raw) == 0) << Slurp(dir + "out.txt");
    for (const char* file : {"schema.json", "docs.json", "out.txt"})
        std::remove((dir + file).c_str());
    return lines;
}

} // namespace

TEST(MdvrParamSchema, ExampleIsValidAndPlantedFaultsAreRejectedWhereCheckReportsThem)
{
    const Outcome schema = Tool("schema");
    ASSERT_EQ(schema.status, 0) << schema.err;
    struct {
        std::string doc;
        std::string schemaSays; // "valid", or the validator's keyword and the path
        std::string checkSays;  // a line of check's output, "" when clean
    } cases[] = {
        {Slurp(ExampleFile()), "valid", ""},
        {kSmall, "maxLength MDVR.ATP.NS | minimum MDVR.TIMEP.TIMEOFFSET", "MDVR.ATP.NS: text fills its 64-byte field"},
        {DocText("ATP", R"({"GE":300})"), "maximum MDVR.ATP.GE", "MDVR.ATP.GE: value 300 does not fit u8"},
        {DocText("ATP", R"({"GE":-1})"), "minimum MDVR.ATP.GE", "MDVR.ATP.GE: negative value -1"},
        {DocText("ATP", R"({"GE":"1"})"), "type MDVR.ATP.GE", "MDVR.ATP.GE: a string is not read into u8"},
        {DocText("TIMEP", R"({"TIMEZ":"0123456789abcdefXYZ"})"), "maxLength MDVR.TIMEP.TIMEZ",
         "MDVR.TIMEP.TIMEZ: text of 19 bytes cut"},
        {DocText("TIMEP", R"({"DST":{"SWEEK":17}})"), "maximum MDVR.TIMEP.DST.SWEEK", "MDVR.TIMEP.DST.SWEEK: only the low 4 bits"},
        {DocText("TIMEP", R"({"TIMEOFFSET":2147483648})"), "valid", ""},
        {DocText("TIMEP", R"({"DST":{"SWEK":1}})"), "additionalProperties MDVR.TIMEP.DST.SWEK",
         "MDVR.TIMEP.DST.SWEK: key not read by the parser"},
        {DocText("ATPP", R"({"GE":1})"), "additionalProperties MDVR.ATPP", "MDVR.ATPP: section not read by any parser"},
        {DocText("RP", R"({"MP":{"OLD":1}})"), "type MDVR.RP.MP", "MDVR.RP.MP: an object where an array is read"},
        {DocText("RP", R"({"RCP":)" + kChannels17 + "}"), "maxItems MDVR.RP.RCP", "MDVR.RP.RCP: array of 17 elements"},
        {DocText("RP", R"({"RCP":[{"RM":1,"RSI":[[{"S":-1}]]}]})"), "minimum MDVR.RP.RCP[0].RSI[0][0].S",
         "MDVR.RP.RCP[0].RSI[0][0].S: negative value -1"},
        {DocText("VPP", R"({"LV":12})"), "type MDVR.VPP.LV", "MDVR.VPP.LV: not text"},
        {DocText("PGDS", R"({"PLDS":{"CD":-32768,"CA":32767}})"), "valid", ""},
        {DocText("PGDS", R"({"PLDS":{"CD":-32769}})"), "minimum MDVR.PGDS.PLDS.CD",
         "MDVR.PGDS.PLDS.CD: value -32769 does not fit i16"},
        {DocText("PGDS", R"({"PLDS":{"CA":32768}})"), "maximum MDVR.PGDS.PLDS.CA",
         "MDVR.PGDS.PLDS.CA: value 32768 does not fit i16"},
    };
    std::vector<std::string> docs;
    for (const auto& c : cases)
        docs.push_back(c.doc);
    const std::vector<std::string> verdicts = Validate(schema.out, docs);
    ASSERT_EQ(verdicts.size(), docs.size());
    for (size_t i = 0; i < docs.size(); ++i) {
        EXPECT_EQ(verdicts[i], cases[i].schemaSays) << cases[i].doc.substr(0, 200);
        const Outcome check = Tool("check -", cases[i].doc);
        if (cases[i].checkSays.empty()) {
            EXPECT_EQ(check.status, 0) << check.out;
        } else {
            EXPECT_EQ(check.status, 1) << cases[i].doc;
            EXPECT_TRUE(Has(check.out, cases[i].checkSays)) << cases[i].checkSays << "\nin:\n" << check.out;
        }
    }
}

// A section's schema alone; array entries described with their strides.
// (Bounds and types: the validator above.)
TEST(MdvrParamSchema, OneSectionAndTheOffsetsOfEntries)
{
    const Outcome r = Tool("schema RP");
    const Json::Value mdvr = paratest::Json(r.out)["properties"]["PARAMETER"]["properties"]["MDVR"];
    EXPECT_EQ(Tool("schema 16").out, r.out);
    EXPECT_EQ(mdvr["properties"].getMemberNames(), std::vector<std::string>{"RP"});
    EXPECT_FALSE(mdvr.isMember("additionalProperties")); // other sections are not this schema's business
    const Json::Value& rsi = mdvr["properties"]["RP"]["properties"]["RCP"]["items"]["properties"]["RSI"];
    EXPECT_EQ(rsi["maxItems"].asUInt(), 7u);
    EXPECT_EQ(rsi["items"]["items"]["properties"]["S"]["description"].asString(),
              "field RCP[i].RSI[j][k].S, u32 at offset 0 + 1804*i + 256*j + 16*k");
}
