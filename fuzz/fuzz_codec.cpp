// Both 0x7E frame codecs. The first input byte picks the variant and the test:
//   decode: the rest of the input, as it is, goes through the decoder into an
//           output of exactly its own length (what a decoder may write);
//   round trip: the rest of the input is a frame (for 7e7f with its end byte
//           set to 0x7F), escaped into an output of exactly the worst-case size
//           and unescaped again into an output of exactly the escaped size;
//           the result must be the frame itself.
#include "CommonUtils.h"
#include "FuzzSupport.h"

namespace {

struct Variant {
    int (*encode)(char const*, char*, int);
    int (*decode)(char const*, char*, int, int*);
    int lead;          // leading bytes copied as they are
    int extra;         // worst case of the escaped size: 2 * len - extra
    int endByte;       // -1: any end byte
};

const Variant kVariants[2] = {
    {serial_transfrom_7e7e, serial_retransfrom_7e7e, 1, 2, -1},
    {serial_transfrom_7e7f, serial_retransfrom_7e7f, 2, 3, 0x7F},
};

void Decode(const Variant& v, const uint8_t* data, size_t size)
{
    fuzz::Guarded src(data, size);
    fuzz::Guarded dst(size);
    int remain = -1;
    const int result = v.decode(src.chars(), dst.chars(), src.length(), &remain);
    FUZZ_CHECK(result >= 0 && result <= src.length(), result, src.length());
    FUZZ_CHECK(remain >= 0 && remain <= src.length(), remain, src.length());
    if (result > 0 && v.endByte < 0)
        FUZZ_CHECK(remain == 0, remain);
    FUZZ_CHECK(std::memcmp(src.data(), data, size) == 0); // input untouched
}

void RoundTrip(const Variant& v, const uint8_t* data, size_t size)
{
    fuzz::Guarded frame(data, size);
    if (v.endByte >= 0 && size > 0)
        frame.data()[size - 1] = static_cast<unsigned char>(v.endByte);
    const int len = frame.length();
    if (len < v.lead + 1) { // too short to be a frame: refused, nothing written
        fuzz::Guarded out(4);
        FUZZ_CHECK(v.encode(frame.chars(), out.chars(), len) == 0);
        FUZZ_CHECK(out.Untouched(0));
        return;
    }
    fuzz::Guarded escaped(static_cast<size_t>(2 * len - v.extra));
    const int escapedLength = v.encode(frame.chars(), escaped.chars(), len);
    FUZZ_CHECK(escapedLength >= len && escapedLength <= escaped.length(), escapedLength, len);

    fuzz::Guarded input(escaped.data(), static_cast<size_t>(escapedLength));
    fuzz::Guarded decoded(static_cast<size_t>(escapedLength));
    int remain = -1;
    const int result = v.decode(input.chars(), decoded.chars(), escapedLength, &remain);
    FUZZ_CHECK(result == len, result, len);
    FUZZ_CHECK(remain == 0, remain);
    FUZZ_CHECK(std::memcmp(decoded.data(), frame.data(), size) == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    const Variant& v = kVariants[data[0] & 1];
    if (data[0] & 2)
        RoundTrip(v, data + 1, size - 1);
    else
        Decode(v, data + 1, size - 1);
    return 0;
}
