// Serial frame escaping, the millisecond clock and detached threads.
#include "CommonUtils.h"

#include <pthread.h>
#include <sys/time.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace {

using Byte = unsigned char;

constexpr Byte kEscape = 0x7D;
constexpr Byte kFlag = 0x7E;     // start flag of both variants, end flag of 7e7e
constexpr Byte kEndFlag = 0x7F;  // end flag of 7e7f

// The bytes a codec must look at form one range: [0x7D, 0x7E] for 7e7e and
// [0x7D, 0x7F] for 7e7f. Runs of other bytes are found a 16-byte block at a
// time and copied with memcpy. A block is marked with one vector comparison
// where the target has a vector unit, and as two 64-bit words otherwise (the
// default armhf target has none).
using Word = std::uint64_t;
constexpr std::size_t kBlock = 16;

#if !defined(__SSE2__) && !defined(__ARM_NEON)
constexpr Word kOnes = ~Word{0} / 0xFF;  // 0x0101...01
constexpr Word kLow7 = kOnes * 0x7F;
constexpr Word kHigh = kOnes * 0x80;

// Sets the high bit of exactly those bytes of `w` whose value lies in
// [lo, hi], for 1 <= lo <= hi <= 0x7F. The two sums work on the low seven bits
// of each byte and never carry or borrow into the next byte: the first keeps
// the high bit where the value is <= hi, the second where it is >= lo, and ~w
// where the byte's own high bit is clear.
constexpr Word BytesInRange(Word w, Byte lo, Byte hi)
{
    Word const low = w & kLow7;
    return (kOnes * (0x80 + hi) - low) & (low + kOnes * (0x80 - lo)) & ~w & kHigh;
}

static_assert(BytesInRange(0x7F7E7D7C00FF807Eull, 0x7D, 0x7E) == 0x0080800000000080ull, "range test");
static_assert(BytesInRange(0x7F7E7D7C00FF807Eull, 0x7D, 0x7F) == 0x8080800000000080ull, "range test");
#endif

// The marks of a block: a nonzero byte where the block's byte is in range,
// a zero byte elsewhere.
#if defined(__SSE2__) || defined(__ARM_NEON)
using Marks = Byte __attribute__((vector_size(kBlock)));

template <Byte lo, Byte hi>
Marks MarkBlock(Byte const* p)
{
    Marks v;
    std::memcpy(&v, p, kBlock);
    return static_cast<Marks>(static_cast<Marks>(v - lo) <= static_cast<Byte>(hi - lo));
}
#else
struct Marks {
    Word w[2];
    Marks operator|(Marks const& o) const { return {{w[0] | o.w[0], w[1] | o.w[1]}}; }
};

template <Byte lo, Byte hi>
Marks MarkBlock(Byte const* p)
{
    Marks m;
    std::memcpy(m.w, p, kBlock);
    return {{BytesInRange(m.w[0], lo, hi), BytesInRange(m.w[1], lo, hi)}};
}
#endif

// Index, in memory order, of the first nonzero byte of `marks` (not 0).
unsigned FirstMarked(Word marks)
{
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    return static_cast<unsigned>(__builtin_ctzll(marks)) / 8;
#else
    return static_cast<unsigned>(__builtin_clzll(marks)) / 8;
#endif
}

// Index of the first marked byte of a block, kBlock if none.
unsigned FirstMarked(Marks const& marks)
{
    Word w[2];
    std::memcpy(w, &marks, kBlock);
    if ((w[0] | w[1]) == 0)
        return kBlock;
    return w[0] != 0 ? FirstMarked(w[0]) : 8 + FirstMarked(w[1]);
}

// Length of the run at the start of [p, end) that holds no byte in [lo, hi].
template <Byte lo, Byte hi>
std::size_t PlainRun(Byte const* p, Byte const* end)
{
    Byte const* q = p;
    // Clean stretches are skipped two blocks per test.
    while (static_cast<std::size_t>(end - q) >= 2 * kBlock &&
           FirstMarked(MarkBlock<lo, hi>(q) | MarkBlock<lo, hi>(q + kBlock)) == kBlock)
        q += 2 * kBlock;
    while (static_cast<std::size_t>(end - q) >= kBlock) {
        unsigned const n = FirstMarked(MarkBlock<lo, hi>(q));
        q += n;
        if (n < kBlock)
            return static_cast<std::size_t>(q - p);
    }
    while (q != end && (*q < lo || *q > hi))
        ++q;
    return static_cast<std::size_t>(q - p);
}

// Copies the run of bytes outside [lo, hi] that starts at `in` and advances
// both pointers past it.
template <Byte lo, Byte hi>
void CopyRun(Byte const*& in, Byte const* end, Byte*& out)
{
    std::size_t const run = PlainRun<lo, hi>(in, end);
    std::memcpy(out, in, run);
    in += run;
    out += run;
}

struct Codec7e7e {
    static constexpr int kLead = 1;
    static constexpr Byte kLast = kFlag;
    static Byte Code(Byte b) { return b == kFlag ? 0x5E : 0x5D; }
};

struct Codec7e7f {
    static constexpr int kLead = 2;
    static constexpr Byte kLast = kEndFlag;
    static Byte Code(Byte b) { return b == kFlag ? 0x01 : b == kEndFlag ? 0x02 : 0x03; }
};

// Copies the leading bytes and the last byte, and escapes the body between them.
template <class Codec>
int Encode(char const* src, char* dst, int len)
{
    if (src == nullptr || dst == nullptr || len < Codec::kLead + 1 || len > INT_MAX / 2)
        return 0;
    Byte const* in = reinterpret_cast<Byte const*>(src);
    Byte const* const last = in + len - 1;
    Byte* const begin = reinterpret_cast<Byte*>(dst);
    Byte* out = begin;
    std::memcpy(out, in, Codec::kLead);
    in += Codec::kLead;
    out += Codec::kLead;
    while (in != last) {
        CopyRun<kEscape, Codec::kLast>(in, last, out);
        if (in != last) {
            *out++ = kEscape;
            *out++ = Codec::Code(*in++);
        }
    }
    *out++ = *last;
    return static_cast<int>(out - begin);
}

// Result of a decoder that found no complete frame.
int NoFrame(int* remain, int held)
{
    if (remain != nullptr)
        *remain = held;
    return 0;
}

// What a decoder reports for input it refuses to look at.
int Refused(int* remain, int len)
{
    return NoFrame(remain, len < 0 ? 0 : len);
}

}  // namespace

int serial_transfrom_7e7e(char const* src, char* dst, int len) noexcept
{
    return Encode<Codec7e7e>(src, dst, len);
}

int serial_transfrom_7e7f(char const* src, char* dst, int len) noexcept
{
    return Encode<Codec7e7f>(src, dst, len);
}

int serial_retransfrom_7e7e(char const* src, char* dst, int len, int* remain) noexcept
{
    if (src == nullptr || dst == nullptr || len < 2)
        return Refused(remain, len);
    Byte const* in = reinterpret_cast<Byte const*>(src);
    Byte const* const last = in + len - 1;
    Byte* const begin = reinterpret_cast<Byte*>(dst);
    Byte* out = begin;
    *out++ = *in++;
    while (in < last) {
        CopyRun<kEscape, kFlag>(in, last, out);
        if (in == last)
            break;
        if (*in == kFlag)
            return NoFrame(remain, static_cast<int>(last + 1 - in));
        // An escape byte before the last one: in[1] is still inside the buffer.
        if (in[1] == 0x5D || in[1] == 0x5E) {
            *out++ = in[1] + 0x20;
            in += 2;
        } else {
            *out++ = kEscape;
            ++in;
        }
    }
    if (in > last)  // the last escape pair took the end flag
        return NoFrame(remain, len);
    *out++ = *last;
    if (remain != nullptr)
        *remain = 0;
    return static_cast<int>(out - begin);
}

int serial_retransfrom_7e7f(char const* src, char* dst, int len, int* remain) noexcept
{
    if (src == nullptr || dst == nullptr || len < 3)
        return Refused(remain, len);
    Byte const* in = reinterpret_cast<Byte const*>(src);
    Byte const* const end = in + len;
    Byte* const begin = reinterpret_cast<Byte*>(dst);
    Byte* out = begin;
    *out++ = *in++;
    *out++ = *in++;
    while (in != end) {
        CopyRun<kEscape, kEndFlag>(in, end, out);
        if (in == end)
            break;
        if (*in == kEndFlag) {
            *out++ = kEndFlag;
            if (remain != nullptr)
                *remain = static_cast<int>(end - in - 1);
            return static_cast<int>(out - begin);
        }
        if (*in == kFlag)
            return NoFrame(remain, static_cast<int>(end - in));
        if (end - in < 2)  // an escape byte whose code has not arrived yet
            break;
        Byte const code = in[1];
        if (code >= 0x01 && code <= 0x03) {
            static constexpr Byte kDecoded[] = {kFlag, kEndFlag, kEscape};
            *out++ = kDecoded[code - 1];
            in += 2;
        } else {
            *out++ = kEscape;
            ++in;
        }
    }
    return NoFrame(remain, len);
}

long long GetSystemMilliSecond() noexcept
{
    timeval tv{};
    (void)gettimeofday(&tv, nullptr);
    return static_cast<long long>(tv.tv_sec) * 1000 + static_cast<long long>(tv.tv_usec) / 1000;
}

static_assert(std::is_integral<pthread_t>::value && sizeof(pthread_t) == sizeof(unsigned long),
              "thread identifiers are handed out as unsigned long");

int CreateNormalThread(void* (*entry)(void*), void* arg, unsigned long* id) noexcept
{
    if (entry == nullptr)
        return -1;
    pthread_attr_t attr;
    if (pthread_attr_init(&attr) != 0)
        return -1;
    (void)pthread_attr_setscope(&attr, PTHREAD_SCOPE_SYSTEM);
    (void)pthread_attr_setdetachstate(&attr, PTHREAD_CREATE_DETACHED);
    pthread_t thread;
    int const result = pthread_create(&thread, &attr, entry, arg);
    (void)pthread_attr_destroy(&attr);
    if (result != 0)
        return -1;
    if (id != nullptr)
        *id = static_cast<unsigned long>(thread);
    return 0;
}
