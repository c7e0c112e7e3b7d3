// The exported parsers: each runs its registry row or its sub-record rules
// through the interpreter (ParaReader.cpp); and the motion-detection region
// conversion.
#include "ParaTypes.h"

// Section parsers, one per registry row.
#define PARA_SECTION_PARSER(type, key, parser, record, ...) \
    int parser(Json::Value const& doc, record& r) { return para::ParseSection(para::kTypes[type], doc, &r); }
PARA_TYPES(PARA_SECTION_PARSER)

// Sub-record parsers: each takes the object itself.
#define PARA_SUB_PARSER(parser, record) \
    int parser(Json::Value const& object, record& r) { return para::Parse(para::k##parser, object, &r); }
PARA_SUB_PARSERS(PARA_SUB_PARSER)

// A snapshot set: entry i of the array, when there is one, by the snapshot
// parser. Always 0.
template <int N> int ParseNCommonSnapPara(Json::Value const& list, CommonSnapPara_t (&paras)[N])
{
    static constexpr para::Field kSet =
        para::ParsedOf<CommonSnapPara_t[N]>("", "", 0, para::kParseCommonSnapPara, para::Field::kSelf);
    para::ReadEntry(kSet, list, paras);
    return 0;
}

template int ParseNCommonSnapPara<16>(Json::Value const& list, CommonSnapPara_t (&paras)[16]);

namespace {

// The value of a hexadecimal digit in the low 4 bits; any other character
// gives the low bits of the same subtraction. The code counts as unsigned, as
// plain char is on the recorder, so every host packs the same bytes.
unsigned char Nibble(char c)
{
    const unsigned char code = static_cast<unsigned char>(c);
    return static_cast<unsigned char>(code > 0x40 ? code - 0x37 : code - 0x30);
}

} // namespace

int ParseMDRegion(char const* text, int textLength, char* out, int outLength)
{
    if (!text || !out)
        return 1;
    // In 64 bits: textLength - 1 and 2 i overflow no int.
    const long long lastPair = static_cast<long long>(textLength) - 1;
    unsigned char* bytes = reinterpret_cast<unsigned char*>(out);
    for (long long i = 0; 2 * i < lastPair && i < outLength; ++i)
        bytes[i] = static_cast<unsigned char>(Nibble(text[2 * i]) << 4 | (Nibble(text[2 * i + 1]) & 0x0F));
    return 1;
}
