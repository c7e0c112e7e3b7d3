// ParseMDRegion with arbitrary text, text lengths and output sizes. The text
// lies in a buffer of exactly textLength bytes (or none, for a length of 0 or
// less) and the output in one of exactly outLength bytes, both between guard
// zones. Each output byte packs the low nibbles of two characters; no byte past
// min(textLength / 2, outLength) is written.
//
// Input: 2 bytes of text length selector, 2 of output length selector, then
// the text. A selector's top bit makes the length negative.
#include "CommonParaAdapter.h"
#include "FuzzSupport.h"

#include <algorithm>

namespace {

int Length(unsigned short selector, size_t limit)
{
    if (selector & 0x8000)
        return selector == 0x8000 ? -2147483647 - 1 : -static_cast<int>(selector & 0x7FFF);
    return static_cast<int>(std::min<size_t>(selector, limit));
}

unsigned char Nibble(char c)
{
    const unsigned char code = static_cast<unsigned char>(c);
    return static_cast<unsigned char>((code > 0x40 ? code - 0x37 : code - 0x30) & 0x0F);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::Input in(data, size);
    const unsigned short textSelector = in.Take<unsigned short>();
    const unsigned short outSelector = in.Take<unsigned short>();
    const int textLength = Length(textSelector, in.size());
    const int outLength = Length(outSelector, 4096);

    fuzz::Guarded text(in.data(), static_cast<size_t>(std::max(textLength, 0)));
    fuzz::Guarded out(static_cast<size_t>(std::max(outLength, 0)));
    FUZZ_CHECK(ParseMDRegion(text.chars(), textLength, out.chars(), outLength) == 1);

    const int written = std::max(0, std::min(textLength / 2, outLength));
    for (int i = 0; i < written; ++i) {
        const unsigned char expected =
            static_cast<unsigned char>(Nibble(text.chars()[2 * i]) << 4 | Nibble(text.chars()[2 * i + 1]));
        FUZZ_CHECK(out.data()[i] == expected, i, out.data()[i]);
    }
    FUZZ_CHECK(out.Untouched(static_cast<size_t>(written)), written);
    FUZZ_CHECK(std::memcmp(text.data(), in.data(), text.size()) == 0); // the text is only read
    return 0;
}
