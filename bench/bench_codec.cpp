// Throughput of the serial frame codecs on frames whose bodies are random with
// about 1% flag and escape bytes (first argument 10, per mille) or none (0),
// of 64 KiB and of the sizes a serial link carries (16 to 1024 bytes; second
// argument), beside memcpy of the same size and a byte-at-a-time encoder.
// Every figure counts the bytes of the unescaped frame.
#include "CommonUtils.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

namespace {

constexpr int kLargeFrame = 64 * 1024;
const std::vector<int64_t> kSerialFrames = {16, 64, 256, 1024};

struct Codec {
    int (*encode)(char const*, char*, int);
    int (*decode)(char const*, char*, int, int*);
    int lead;
    std::vector<char> specials;
    char end;
};
const Codec k7e7e{serial_transfrom_7e7e, serial_retransfrom_7e7e, 1, {0x7D, 0x7E}, 0x7E};
const Codec k7e7f{serial_transfrom_7e7f, serial_retransfrom_7e7f, 2, {0x7D, 0x7E, 0x7F}, 0x7F};

std::vector<char> Frame(const Codec& c, unsigned perMille, int size)
{
    std::mt19937 rng(2024);
    std::vector<char> frame(static_cast<size_t>(size));
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

void Finish(benchmark::State& state, int size)
{
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * size);
}

void BM_Memcpy(benchmark::State& state)
{
    const int size = static_cast<int>(state.range(0));
    Buffers b(Frame(k7e7e, 10, size), static_cast<size_t>(size));
    for (auto _ : state) {
        std::memcpy(b.dst, b.src, static_cast<size_t>(size));
        benchmark::DoNotOptimize(b.dst);
        benchmark::ClobberMemory();
    }
    Finish(state, size);
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
    Buffers b(Frame(k7e7e, 10, kLargeFrame), 2 * kLargeFrame);
    for (auto _ : state) {
        benchmark::DoNotOptimize(ByteLoop7e7e(b.src, b.dst, kLargeFrame));
        benchmark::ClobberMemory();
    }
    Finish(state, kLargeFrame);
}

void BM_Encode(benchmark::State& state, const Codec* c)
{
    const int size = static_cast<int>(state.range(1));
    Buffers b(Frame(*c, static_cast<unsigned>(state.range(0)), size), 2 * static_cast<size_t>(size));
    for (auto _ : state) {
        benchmark::DoNotOptimize(c->encode(b.src, b.dst, size));
        benchmark::ClobberMemory();
    }
    Finish(state, size);
}

void BM_Decode(benchmark::State& state, const Codec* c)
{
    const int size = static_cast<int>(state.range(1));
    const std::vector<char> frame = Frame(*c, static_cast<unsigned>(state.range(0)), size);
    std::vector<char> encoded(2 * frame.size());
    encoded.resize(static_cast<size_t>(c->encode(frame.data(), encoded.data(), size)));
    Buffers b(encoded, encoded.size());
    const int len = static_cast<int>(encoded.size());
    int remain = 0;
    for (auto _ : state) {
        const int n = c->decode(b.src, b.dst, len, &remain);
        if (n != size) {
            state.SkipWithError("decoded frame differs in size");
            break;
        }
        benchmark::DoNotOptimize(n);
        benchmark::ClobberMemory();
    }
    Finish(state, size);
}

}  // namespace

// Per mille of special bytes and frame size: 64 KiB with and without special
// bytes, then the serial sizes with them.
void FrameArgs(benchmark::internal::Benchmark* b)
{
    b->Args({10, kLargeFrame})->Args({0, kLargeFrame});
    for (int64_t size : kSerialFrames)
        b->Args({10, size});
}

BENCHMARK(BM_Memcpy)->Arg(kLargeFrame)->Arg(16)->Arg(64)->Arg(256)->Arg(1024);
BENCHMARK(BM_ByteLoopEncode7e7e);
BENCHMARK_CAPTURE(BM_Encode, 7e7e, &k7e7e)->Apply(FrameArgs);
BENCHMARK_CAPTURE(BM_Decode, 7e7e, &k7e7e)->Apply(FrameArgs);
BENCHMARK_CAPTURE(BM_Encode, 7e7f, &k7e7f)->Apply(FrameArgs);
BENCHMARK_CAPTURE(BM_Decode, 7e7f, &k7e7f)->Apply(FrameArgs);

BENCHMARK_MAIN();
