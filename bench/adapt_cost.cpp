// Instructions and heap allocations of parsing a parameter document with the
// JSON library and of adapting every section present in it.
//
//   adapt_cost FILE [--dump]
//
// Under valgrind --tool=callgrind with --dump (see bench/adapt-cost.sh), each
// phase ends with a client request that dumps the counts since the previous
// dump, labelled "parse" or "adapt KEY"; without it, one profile of the whole
// run. Run natively, it prints the number of heap allocations of each phase.
#include "AllocationCounter.h"
#include "BenchSupport.h"
#include "CommonParaAdapter.h"
#include "ParaTypes.h"

#include <valgrind/callgrind.h>

#include <cstdio>
#include <string>
#include <vector>

int main(int argc, char** argv)
{
    const bool dump = argc == 3 && std::string(argv[2]) == "--dump";
    if (argc != 2 && !dump) {
        std::fprintf(stderr, "usage: adapt_cost FILE [--dump]\n");
        return 2;
    }
    const std::string text = bench::ReadText(argv[1], "adapt_cost");
    std::vector<unsigned char> record(64 * 1024);
    Json::Value doc;

    if (dump) CALLGRIND_ZERO_STATS;
    bool parsed = false;
    const long parseAllocations = bench::Allocations([&] { parsed = bench::ParseDocument(text, doc); });
    if (!parsed) {
        std::fprintf(stderr, "adapt_cost: %s is no JSON document\n", argv[1]);
        return 2;
    }
    if (dump)
        CALLGRIND_DUMP_STATS_AT("parse");
    std::printf("parse allocations %ld\n", parseAllocations);

    long adaptAllocations = 0;
    int sections = 0, failed = 0;
    for (const para::Type& t : para::kTypes) {
        if (para::Section(doc, t.key).isNull())
            continue;
        const std::string label = std::string("adapt ") + t.key;
        if (dump)
            CALLGRIND_ZERO_STATS;
        adaptAllocations += bench::Allocations([&] { failed += AdaptParaJson(t.type, doc, record.data()) != 0; });
        if (dump)
            CALLGRIND_DUMP_STATS_AT(label.c_str());
        ++sections;
    }
    std::printf("adapt allocations %ld\nsections %d\nfailed %d\n", adaptAllocations, sections, failed);
    return failed ? 1 : 0;
}
