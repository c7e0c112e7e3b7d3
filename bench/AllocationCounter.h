// Counts the program's heap allocations: include it in one source file of a
// program, whose operator new it replaces, and call bench::Allocations().
#ifndef ALLOCATION_COUNTER_H
#define ALLOCATION_COUNTER_H

#include <cstdlib>
#include <new>

namespace bench {

inline bool g_countAllocations = false;
inline long g_allocations = 0;

// Heap allocations that run() makes.
template <class Run> long Allocations(Run run)
{
    g_allocations = 0;
    g_countAllocations = true;
    run();
    g_countAllocations = false;
    return g_allocations;
}

} // namespace bench

// GCC pairs the inlined replacement delete with the library's new and warns.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void* operator new(size_t size)
{
    if (bench::g_countAllocations)
        ++bench::g_allocations;
    if (void* p = std::malloc(size ? size : 1))
        return p;
    throw std::bad_alloc();
}
// The form that returns null instead of throwing (std::stable_sort's buffer)
// comes from the same heap, so that the delete above frees what it made.
void* operator new(size_t size, const std::nothrow_t&) noexcept
{
    if (bench::g_countAllocations)
        ++bench::g_allocations;
    return std::malloc(size ? size : 1);
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, size_t) noexcept { std::free(p); }
#pragma GCC diagnostic pop

#endif
