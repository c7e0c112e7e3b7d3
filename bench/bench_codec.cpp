// Throughput of the serial frame codecs on 64 KiB frames whose bodies are
// random with about 1% flag and escape bytes (argument 10, per mille) or none
// (argument 0), beside memcpy of the same size and a byte-at-a-time encoder.
// Every figure counts the bytes of the unescaped frame.
#include "CommonUtils.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

namespace {

constexpr int kFrameSize = 64 * 1024;

struct Codec {
    int (*encode)(char const*, char*, int);
    int (*decode)(char const*, char*, int, int*);
    int lead;
    std::vector<char> specials;
    char end;
};
const Codec k7e7e{serial_transfrom_7e7e, serial_retransfrom_7e7e, 1, {0x7D, 0x7E}, 0x7E};
const Codec k7e7f{serial_transfrom_7e7f, serial_retransfrom_7e7f, 2, {0x7D, 0x7E, 0x7F}, 0x7F};

std::vector<char> Frame(const Codec& c, unsigned perMille = 10)
{
    std::mt19937 rng(2024);
    std::vector<char> frame(kFrameSize);
    for (char& b : frame) {
        b = static_cast<char>(rng());
        while (std::find(c.specials.begin(), c.specials.end(), b) != c.specials.end())
            b = static_cast<char>(rng());  // plain unless chosen below
        if (rng() % 1000 < perMille)
            b = c.specials[rng() % c.specials.size()];
    }
    std::fill(frame.begin(), frame.begin() + c.lead, 0x7E);
    frame.back() = c.end;
    return frame;
}

// Source and destination for one benchmark, placed half a page apart modulo
// 4 KiB. Two separate vectors of these sizes sit a multiple of 4 KiB (plus the
// allocator's header) apart, where this machine's memcpy of 64 KiB runs more
// than ten times slower than usual; that would flatter every ratio to it.
struct Buffers {
    std::vector<char> storage;
    char* src;
    char* dst;
    Buffers(const std::vector<char>& input, size_t dstSize)
        : storage(input.size() + dstSize + 8192)
    {
        src = storage.data() + (64 - reinterpret_cast<uintptr_t>(storage.data()) % 64);
        dst = src + (input.size() + 4095) / 4096 * 4096 + 2048;
        std::copy(input.begin(), input.end(), src);
    }
};

void Finish(benchmark::State& state)
{
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * kFrameSize);
}

void BM_Memcpy(benchmark::State& state)
{
    Buffers b(Frame(k7e7e), kFrameSize);
    for (auto _ : state) {
        std::memcpy(b.dst, b.src, kFrameSize);
        benchmark::DoNotOptimize(b.dst);
        benchmark::ClobberMemory();
    }
    Finish(state);
}

// The straightforward loop the encoders replace, for comparison.
int ByteLoop7e7e(char const* src, char* dst, int len)
{
    int n = 0;
    dst[n++] = src[0];
    for (int i = 1; i < len - 1; ++i) {
        if (src[i] == 0x7E || src[i] == 0x7D) {
            dst[n++] = 0x7D;
            dst[n++] = static_cast<char>(src[i] - 0x20);
        } else {
            dst[n++] = src[i];
        }
    }
    dst[n++] = src[len - 1];
    return n;
}

void BM_ByteLoopEncode7e7e(benchmark::State& state)
{
    Buffers b(Frame(k7e7e), 2 * kFrameSize);
    for (auto _ : state) {
        benchmark::DoNotOptimize(ByteLoop7e7e(b.src, b.dst, kFrameSize));
        benchmark::ClobberMemory();
    }
    Finish(state);
}

void BM_Encode(benchmark::State& state, const Codec* c)
{
    Buffers b(Frame(*c, static_cast<unsigned>(state.range(0))), 2 * kFrameSize);
    for (auto _ : state) {
        benchmark::DoNotOptimize(c->encode(b.src, b.dst, kFrameSize));
        benchmark::ClobberMemory();
    }
    Finish(state);
}

void BM_Decode(benchmark::State& state, const Codec* c)
{
    const std::vector<char> frame = Frame(*c, static_cast<unsigned>(state.range(0)));
    std::vector<char> encoded(2 * frame.size());
    encoded.resize(static_cast<size_t>(c->encode(frame.data(), encoded.data(), kFrameSize)));
    Buffers b(encoded, encoded.size());
    const int len = static_cast<int>(encoded.size());
    int remain = 0;
    for (auto _ : state) {
        const int n = c->decode(b.src, b.dst, len, &remain);
        if (n != kFrameSize) {
            state.SkipWithError("decoded frame differs in size");
            break;
        }
        benchmark::DoNotOptimize(n);
        benchmark::ClobberMemory();
    }
    Finish(state);
}

}  // namespace

BENCHMARK(BM_Memcpy);
BENCHMARK(BM_ByteLoopEncode7e7e);
BENCHMARK_CAPTURE(BM_Encode, 7e7e, &k7e7e)->Arg(10)->Arg(0);
BENCHMARK_CAPTURE(BM_Decode, 7e7e, &k7e7e)->Arg(10)->Arg(0);
BENCHMARK_CAPTURE(BM_Encode, 7e7f, &k7e7f)->Arg(10)->Arg(0);
BENCHMARK_CAPTURE(BM_Decode, 7e7f, &k7e7f)->Arg(10)->Arg(0);

BENCHMARK_MAIN();
