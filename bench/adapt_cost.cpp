// Instructions and heap allocations of parsing a parameter document with the
// JSON library and of adapting every section present in it.
//
//   adapt_cost FILE [--dump]
//
// Under valgrind --tool=callgrind with --dump (see bench/adapt-cost.sh), each
// phase ends with a client request that dumps the counts since the previous
// dump, labelled "parse" or "adapt KEY"; without it, one profile of the whole
// run. Run natively, it prints the number of heap allocations of each phase.
#include "CommonParaAdapter.h"
#include "ParaTypes.h"

#include <json/reader.h>
#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <new>
#include <sstream>
#include <string>
#include <vector>

namespace {
long g_allocations = 0;
} // namespace

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void* operator new(size_t size)
{
    ++g_allocations;
    if (void* p = std::malloc(size ? size : 1))
        return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, size_t) noexcept { std::free(p); }
#pragma GCC diagnostic pop

int main(int argc, char** argv)
{
    const bool dump = argc == 3 && std::string(argv[2]) == "--dump";
    if (argc != 2 && !dump) {
        std::fprintf(stderr, "usage: adapt_cost FILE [--dump]\n");
        return 2;
    }
    std::ifstream file(argv[1]);
    std::stringstream buffer;
    buffer << file.rdbuf();
    const std::string text = buffer.str();
    if (!file || text.empty()) {
        std::fprintf(stderr, "adapt_cost: cannot read %s\n", argv[1]);
        return 2;
    }
    std::vector<unsigned char> record(64 * 1024);
    Json::Value doc;

    if (dump) CALLGRIND_ZERO_STATS;
    long before = g_allocations;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    Json::Reader reader;
#pragma GCC diagnostic pop
    if (!reader.parse(text.data(), text.data() + text.size(), doc, true)) {
        std::fprintf(stderr, "adapt_cost: %s is no JSON document\n", argv[1]);
        return 2;
    }
    if (dump)
        CALLGRIND_DUMP_STATS_AT("parse");
    std::printf("parse allocations %ld\n", g_allocations - before);

    long adaptAllocations = 0;
    int sections = 0, failed = 0;
    for (const para::Type& t : para::kTypes) {
        if (para::Section(doc, t.key).isNull())
            continue;
        before = g_allocations;
        if (dump)
            CALLGRIND_ZERO_STATS;
        failed += AdaptParaJson(static_cast<_PARA_TYPE_>(t.type), doc, record.data()) != 0;
        if (dump)
            CALLGRIND_DUMP_STATS_AT((std::string("adapt ") + t.key).c_str());
        adaptAllocations += g_allocations - before;
        ++sections;
    }
    std::printf("adapt allocations %ld\nsections %d\nfailed %d\n", adaptAllocations, sections, failed);
    return failed ? 1 : 0;
}
