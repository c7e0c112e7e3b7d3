// Helpers of the fuzz targets: buffers of an exact size with guard zones on
// both sides, and a reader that takes typed values off the fuzzer's input.
//
// Under AddressSanitizer the guard zones are poisoned, so a stray read or write
// stops at once; without it (the replay of the corpora in the normal test
// suite, on armhf too) the guards hold a sentinel that is checked afterwards.
#ifndef FUZZ_SUPPORT_H
#define FUZZ_SUPPORT_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define FUZZ_ASAN 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define FUZZ_ASAN 1
#endif
#if defined(FUZZ_ASAN)
#include <sanitizer/asan_interface.h>
#define FUZZ_POISON(p, n) ASAN_POISON_MEMORY_REGION(p, n)
#define FUZZ_UNPOISON(p, n) ASAN_UNPOISON_MEMORY_REGION(p, n)
#else
#define FUZZ_POISON(p, n) ((void)(p), (void)(n))
#define FUZZ_UNPOISON(p, n) ((void)(p), (void)(n))
#endif

namespace fuzz {

constexpr unsigned char kSentinel = 0xA5;

// Reports a broken property and aborts, which the fuzzer records as a crash.
[[noreturn]] inline void Fail(const char* what, long long a = 0, long long b = 0)
{
    std::fprintf(stderr, "property broken: %s (%lld, %lld)\n", what, a, b);
    std::abort();
}

#define FUZZ_CHECK(condition, ...) \
    do { \
        if (!(condition)) \
            ::fuzz::Fail(#condition, ##__VA_ARGS__); \
    } while (0)

// `size` usable bytes, all set to `fill`, between two guard zones. The usable
// bytes start 64 bytes into the allocation, so they keep its alignment.
class Guarded {
public:
    static constexpr size_t kGuard = 64;

    explicit Guarded(size_t size, unsigned char fill = kSentinel)
        : size_(size), storage_(new unsigned char[size + 2 * kGuard])
    {
        std::memset(storage_, kSentinel, size + 2 * kGuard);
        std::memset(data(), fill, size);
        FUZZ_POISON(storage_, kGuard);
        FUZZ_POISON(data() + size, kGuard);
    }
    Guarded(const void* bytes, size_t size) : Guarded(size) { std::memcpy(data(), bytes, size); }
    ~Guarded()
    {
        FUZZ_UNPOISON(storage_, size_ + 2 * kGuard);
        for (size_t i = 0; i < kGuard; ++i)
            if (storage_[i] != kSentinel || data()[size_ + i] != kSentinel)
                Fail("guard zone written", static_cast<long long>(size_), static_cast<long long>(i));
        delete[] storage_;
    }
    Guarded(const Guarded&) = delete;
    Guarded& operator=(const Guarded&) = delete;

    unsigned char* data() { return storage_ + kGuard; }
    const unsigned char* data() const { return storage_ + kGuard; }
    char* chars() { return reinterpret_cast<char*>(data()); }
    size_t size() const { return size_; }
    int length() const { return static_cast<int>(size_); }
    // True when bytes [from, size) still hold `fill`.
    bool Untouched(size_t from, unsigned char fill = kSentinel) const
    {
        for (size_t i = from; i < size_; ++i)
            if (data()[i] != fill)
                return false;
        return true;
    }

private:
    size_t size_;
    unsigned char* storage_;
};

// Takes values off the front of the fuzzer's input; past its end, zeros.
class Input {
public:
    Input(const uint8_t* data, size_t size) : data_(data), size_(size) {}
    template <class T> T Take()
    {
        T value{};
        size_t n = sizeof value < size_ ? sizeof value : size_;
        if (n)
            std::memcpy(&value, data_, n);
        data_ += n;
        size_ -= n;
        return value;
    }
    const uint8_t* data() const { return data_; }
    size_t size() const { return size_; }

private:
    const uint8_t* data_;
    size_t size_;
};

} // namespace fuzz

#endif
