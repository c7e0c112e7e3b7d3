// Serial frame escaping, the millisecond clock and detached threads.
#include "CommonUtils.h"

#include <gtest/gtest.h>

#include <pthread.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <sys/time.h>
#include <time.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <cstdio>
#include <future>
#include <memory>
#include <random>
#include <string>
#include <vector>

// The library reads the clock through gettimeofday; this definition takes the
// C library's place in the test program, so a test can set the time it sees.
static std::atomic<bool> g_fakeClock{false};
static timeval g_fakeTime{};

extern "C" int gettimeofday(struct timeval* __restrict tv, void* __restrict) noexcept
{
    if (g_fakeClock) {
        *tv = g_fakeTime;
        return 0;
    }
    timespec ts{};
    clock_gettime(CLOCK_REALTIME, &ts);
    tv->tv_sec = ts.tv_sec;
    tv->tv_usec = static_cast<suseconds_t>(ts.tv_nsec / 1000);
    return 0;
}

namespace {

using Bytes = std::vector<unsigned char>;

struct Variant {
    const char* name;
    int (*encode)(char const*, char*, int);
    int (*decode)(char const*, char*, int, int*);
    int lead;           // leading bytes kept as they are
    Bytes specials;     // body bytes that are escaped
    unsigned char end;  // end flag
};
const Variant k7e7e{"7e7e", serial_transfrom_7e7e, serial_retransfrom_7e7e, 1, {0x7D, 0x7E}, 0x7E};
const Variant k7e7f{"7e7f", serial_transfrom_7e7f, serial_retransfrom_7e7f, 2, {0x7D, 0x7E, 0x7F}, 0x7F};

struct Result {
    int result, remain;
    Bytes out;  // the first `result` bytes of dst
};

// Calls a codec with both buffers on the heap at exactly their documented
// sizes (an encoder's dst the worst case, a decoder's len bytes), so that the
// sanitizer build catches any access outside them.
// Bytes `after` follow the input in its buffer: a decoder must not look at them.
Result CallCodec(const Variant& v, bool encode, const Bytes& in, const Bytes& after = {})
{
    Bytes src(in);
    src.insert(src.end(), after.begin(), after.end());
    const int len = static_cast<int>(in.size());
    Bytes dst(static_cast<size_t>(std::max(1, encode ? 2 * len - v.lead - 1 : len)));
    Result r{0, -99, {}};
    const auto s = reinterpret_cast<char const*>(src.data());
    const auto d = reinterpret_cast<char*>(dst.data());
    r.result = encode ? v.encode(s, d, len) : v.decode(s, d, len, &r.remain);
    r.out.assign(dst.begin(), dst.begin() + std::max(0, r.result));
    if (!encode) {  // a null remain is allowed on every path
        EXPECT_EQ(v.decode(s, d, len, nullptr), r.result);
    }
    return r;
}

// A code byte after the input, then end flags: what a decoder that reads past
// its input would take for the rest of a frame.
Bytes EscapeCodeThenEnds()
{
    Bytes after(40, 0x7F);
    after[0] = 0x01;
    return after;
}

TEST(FrameEscaping, EncodesAndDecodesAsTheTablesSay)
{
    const bool E = true, D = false;
    struct Case {
        const Variant& v;
        bool encode;
        Bytes in;
        int result, remain;  // an encoder's remain is not set
        Bytes out;           // checked when result > 0
        Bytes after = {};    // in the buffer after the input
    } const cases[] = {
        {k7e7e, E, {0x7E, 0x01, 0x7E, 0x02, 0x7D, 0x7E}, 8, -99, {0x7E, 0x01, 0x7D, 0x5E, 0x02, 0x7D, 0x5D, 0x7E}},
        {k7e7e, E, {0x7D, 0x7E}, 2, -99, {0x7D, 0x7E}},                          // the edges are never escaped
        {k7e7e, E, {0x7E, 0x7F, 0x01, 0x7E}, 4, -99, {0x7E, 0x7F, 0x01, 0x7E}},  // 0x7F is plain here
        {k7e7f, E, {0x7E, 0x00, 0x7F, 0x7D, 0x01, 0x7F}, 8, -99, {0x7E, 0x00, 0x7D, 0x02, 0x7D, 0x03, 0x01, 0x7F}},
        {k7e7f, E, {0x7F, 0x7E, 0x7E, 0x7D}, 5, -99, {0x7F, 0x7E, 0x7D, 0x01, 0x7D}},
        {k7e7e, D, {0x7E, 0x01, 0x7D, 0x5E, 0x02, 0x7D, 0x5D, 0x7E}, 6, 0, {0x7E, 0x01, 0x7E, 0x02, 0x7D, 0x7E}},
        {k7e7e, D, {0x7E, 0x01, 0x7E, 0x02, 0x7E}, 0, 3, {}},  // a start flag inside the body
        {k7e7e, D, {0x7E, 0x01, 0x7D, 0x5E}, 0, 4, {}},        // an escape pair took the end flag
        {k7e7e, D, {0x7E, 0x7D, 0x7D, 0x5D, 0x7E}, 4, 0, {0x7E, 0x7D, 0x7D, 0x7E}},  // unknown code: literal 0x7D
        {k7e7e, D, {0x7E, 0x41, 0x7D, 0x7D}, 4, 0, {0x7E, 0x41, 0x7D, 0x7D}},  // the last byte is not looked at
        {k7e7e, D, {0x7E, 0x7E}, 2, 0, {0x7E, 0x7E}},
        {k7e7f, D, {0x7E, 0x00, 0x41, 0x7F, 0x99, 0x98}, 4, 2, {0x7E, 0x00, 0x41, 0x7F}},
        {k7e7f, D, {0x7E, 0x00, 0x41, 0x42}, 0, 4, {}},
        {k7e7f, D, {0x7E, 0x00, 0x7D, 0x02, 0x7D, 0x03, 0x01, 0x7F}, 6, 0, {0x7E, 0x00, 0x7F, 0x7D, 0x01, 0x7F}},
        {k7e7f, D, {0x7E, 0x00, 0x41, 0x7E, 0x42, 0x7F}, 0, 3, {}},
        {k7e7f, D, {0x7E, 0x00, 0x41, 0x7D}, 0, 4, {}, EscapeCodeThenEnds()},  // the escape's code has not arrived
        {k7e7f, D, {0x7E, 0x00, 0x7D, 0x04, 0x7D, 0x7F}, 6, 0, {0x7E, 0x00, 0x7D, 0x04, 0x7D, 0x7F}},
        {k7e7f, D, {0x7F, 0x7F, 0x7F, 0x01}, 3, 1, {0x7F, 0x7F, 0x7F}},  // leading bytes are not looked at
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.v.name) + (c.encode ? " encode " : " decode ") + ::testing::PrintToString(c.in));
        const Result r = CallCodec(c.v, c.encode, c.in, c.after);
        EXPECT_EQ(r.result, c.result);
        EXPECT_EQ(r.remain, c.remain);
        if (c.result > 0) {
            EXPECT_EQ(r.out, c.out);
        }
    }
}

TEST(FrameEscaping, RefusesWhatItCannotHold)
{
    const char src[8] = {0x7E, 0x01, 0x7F, 0x7E, 0x01, 0x7F, 0x7E, 0x7F};
    for (const Variant* v : {&k7e7e, &k7e7f}) {
        char dst[8] = {};
        struct Case {
            char const* src;
            char* dst;
            int len, remain;
        } const cases[] = {{src, dst, v->lead, v->lead}, {src, dst, 0, 0}, {src, dst, -5, 0},
                           {nullptr, dst, 4, 4}, {src, nullptr, 4, 4}};
        for (const Case& c : cases) {
            int remain = -99;
            EXPECT_EQ(v->encode(c.src, c.dst, c.len), 0) << v->name << " len " << c.len;
            EXPECT_EQ(v->decode(c.src, c.dst, c.len, &remain), 0) << v->name << " len " << c.len;
            EXPECT_EQ(remain, c.remain) << v->name << " len " << c.len;
        }
        // Too long for the worst case to be counted in an int: refused before any byte is read.
        EXPECT_EQ(v->encode(src, dst, INT_MAX / 2 + 1), 0);
        EXPECT_EQ(std::string(dst, sizeof dst), std::string(sizeof dst, '\0')) << "written by a refused call";
    }
}

// A frame whose body holds all 256 byte values, and random frames with dense
// flags and escapes at lengths around the codecs' 8-, 16- and 32-byte steps.
std::vector<Bytes> TestFrames(const Variant& v)
{
    std::vector<Bytes> frames(1, Bytes(v.lead, 0x7E));
    for (int b = 0; b < 256; ++b)
        frames[0].push_back(static_cast<unsigned char>(b));
    std::mt19937 rng(6);
    for (size_t bodyLen : {0, 1, 7, 15, 16, 17, 31, 32, 33, 100, 1000}) {
        for (unsigned percent : {0u, 5u, 50u, 100u}) {
            Bytes f(v.lead, 0x7E);
            for (size_t i = 0; i < bodyLen; ++i)
                f.push_back(rng() % 100 < percent ? v.specials[rng() % v.specials.size()]
                                                  : static_cast<unsigned char>(rng()));
            frames.push_back(f);
        }
    }
    for (Bytes& f : frames)
        f.push_back(v.end);
    return frames;
}

TEST(FrameEscaping, RoundTripsEveryFlagAndEscape)
{
    for (const Variant* v : {&k7e7e, &k7e7f}) {
        for (const Bytes& frame : TestFrames(*v)) {
            SCOPED_TRACE(std::string(v->name) + " " + ::testing::PrintToString(frame));
            const long specials = std::count_if(frame.begin() + v->lead, frame.end() - 1, [&](unsigned char b) {
                return std::count(v->specials.begin(), v->specials.end(), b) != 0;
            });
            const Result enc = CallCodec(*v, true, frame);
            ASSERT_EQ(enc.result, static_cast<int>(frame.size() + specials));
            EXPECT_EQ(std::count(enc.out.begin() + v->lead, enc.out.end() - 1, 0x7E), 0);
            EXPECT_EQ(std::count(enc.out.begin() + v->lead, enc.out.end() - 1, v->end), 0);
            // 7e7f leaves the next frame's bytes to the caller.
            Bytes stream = enc.out;
            if (v == &k7e7f)
                stream.insert(stream.end(), enc.out.begin(), enc.out.end());
            const Result dec = CallCodec(*v, false, stream);
            EXPECT_EQ(dec.out, frame);
            EXPECT_EQ(dec.remain, static_cast<int>(stream.size() - enc.out.size()));
        }
    }
}

TEST(FrameEscaping, TruncatedAndCorruptedFramesYieldNoFrame)
{
    for (const Variant* v : {&k7e7e, &k7e7f}) {
        const Bytes enc = CallCodec(*v, true, TestFrames(*v)[0]).out;
        const int n = static_cast<int>(enc.size());
        // A start flag anywhere in the body: the caller keeps the bytes from it on.
        for (int pos = v->lead; pos < n; ++pos) {
            Bytes bad = enc;
            bad.insert(bad.begin() + pos, 0x7E);
            const Result r = CallCodec(*v, false, bad);
            EXPECT_EQ(r.result, 0) << v->name << " flag at " << pos;
            EXPECT_EQ(r.remain, n + 1 - pos) << v->name << " flag at " << pos;
        }
        // 7e7f finds its end by scanning, so no prefix of a frame is a frame.
        for (int cut = 0; v == &k7e7f && cut < n; ++cut) {
            const Result r = CallCodec(*v, false, Bytes(enc.begin(), enc.begin() + cut));
            EXPECT_EQ(r.result, 0) << "cut at " << cut;
            EXPECT_EQ(r.remain, cut) << "cut at " << cut;
        }
    }
}

// The time comes from gettimeofday (replaced above): any other clock fails every row.
TEST(Clock, ConvertsInSixtyFourBits)
{
    struct Case {
        long long sec, usec, ms;
    };
    std::vector<Case> cases = {{0, 0, 0}, {1, 999999, 1999}, {1, 999, 1000}, {2147483647, 999999, 2147483647999LL}};
    if (sizeof(time_t) >= 8)
        cases.push_back({4102444800LL, 500, 4102444800000LL});  // the year 2100
    for (const Case& c : cases) {
        g_fakeTime.tv_sec = static_cast<time_t>(c.sec);
        g_fakeTime.tv_usec = static_cast<suseconds_t>(c.usec);
        g_fakeClock = true;
        const long long ms = GetSystemMilliSecond();
        g_fakeClock = false;
        EXPECT_EQ(ms, c.ms) << c.sec << " s " << c.usec << " us";
    }
}

struct Seen {
    int detachState;
    unsigned long self;  // pthread_self() as the thread saw it
};

// Reports how its own thread was started through the promise it is handed
// (and owns from then on).
void* ReportSelf(void* arg)
{
    std::unique_ptr<std::promise<Seen>> done(static_cast<std::promise<Seen>*>(arg));
    Seen seen{-1, static_cast<unsigned long>(pthread_self())};
    pthread_attr_t attr;
    if (pthread_getattr_np(pthread_self(), &attr) == 0) {
        pthread_attr_getdetachstate(&attr, &seen.detachState);
        pthread_attr_destroy(&attr);
    }
    done->set_value(seen);
    return nullptr;
}

TEST(Thread, RunsDetached)
{
    for (bool wantId : {true, false}) {
        auto* done = new std::promise<Seen>;
        std::future<Seen> reported = done->get_future();
        unsigned long id = 0;
        ASSERT_EQ(CreateNormalThread(ReportSelf, done, wantId ? &id : nullptr), 0);
        ASSERT_EQ(reported.wait_for(std::chrono::seconds(30)), std::future_status::ready);
        const Seen seen = reported.get();
        EXPECT_EQ(seen.detachState, PTHREAD_CREATE_DETACHED);
        EXPECT_EQ(id, wantId ? seen.self : 0UL);
    }
    unsigned long id = 12345;
    EXPECT_EQ(CreateNormalThread(nullptr, nullptr, &id), -1);
    EXPECT_EQ(id, 12345UL);
}

void* Unreachable(void*)
{
    _exit(3);
}

void* Sleeper(void*)
{
    for (;;)
        pause();
}

// A thread that cannot be created: a child process whose address space is
// limited to what it already uses has no room for a thread's stack. The
// call must say so and leave the id alone. (Skipped where the limit is not
// enforced, as under qemu-user, or where the sanitizer needs the room itself.)
TEST(Thread, ReportsAThreadThatCannotBeCreated)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "AddressSanitizer needs address space of its own";
#endif
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        unsigned long pages = 0;
        std::FILE* statm = std::fopen("/proc/self/statm", "r");
        if (!statm || std::fscanf(statm, "%lu", &pages) != 1)
            _exit(4);
        std::fclose(statm);
        const rlim_t used = rlim_t(pages) * rlim_t(sysconf(_SC_PAGESIZE));
        const rlimit limit{used + (1u << 20), used + (1u << 20)};
        if (setrlimit(RLIMIT_AS, &limit) != 0)
            _exit(4);
        void* probe = mmap(nullptr, 8u << 20, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (probe != MAP_FAILED)
            _exit(77); // the limit is not enforced here
        // Stacks of threads that have ended are kept for new ones: take them.
        pthread_t thread;
        for (int i = 0; i < 1000 && pthread_create(&thread, nullptr, Sleeper, nullptr) == 0; ++i) {
        }
        unsigned long id = 12345;
        const int result = CreateNormalThread(Unreachable, nullptr, &id);
        _exit(result == -1 && id == 12345 ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status)) << status;
    if (WEXITSTATUS(status) == 77)
        GTEST_SKIP() << "the address-space limit is not enforced here";
    EXPECT_EQ(WEXITSTATUS(status), 0) << "1: reported success or wrote the id; 4: the limit could not be set";
}

}  // namespace
