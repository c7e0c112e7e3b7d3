// Parses a parameter document PARSES times and adapts every section of it
// ADAPTS times, then ends without running destructors, so that instruction
// counts of runs with different PARSES and ADAPTS differ by exactly the work
// (bench/armhf-footprint.sh).
//
//   adapt_count FILE PARSES ADAPTS
#include "BenchSupport.h"
#include "CommonParaAdapter.h"
#include "ParaTypes.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

int main(int argc, char** argv)
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: adapt_count FILE PARSES ADAPTS\n");
        return 2;
    }
    const std::string text = bench::ReadText(argv[1], "adapt_count");
    const int parses = std::atoi(argv[2]), adapts = std::atoi(argv[3]);
    std::vector<Json::Value> docs(parses > 0 ? parses : 1);
    for (int i = 0; i < parses; ++i) {
        if (!bench::ParseDocument(text, docs[i])) {
            std::fprintf(stderr, "adapt_count: %s is no JSON document\n", argv[1]);
            return 2;
        }
    }
    std::vector<unsigned char> record(64 * 1024);
    int failed = 0;
    for (int i = 0; i < adapts; ++i)
        for (const para::Type& t : para::kTypes)
            if (!para::Section(docs[0], t.key).isNull())
                failed += AdaptParaJson(t.type, docs[0], record.data()) != 0;
    std::fflush(stdout);
    std::_Exit(failed ? 1 : 0); // no destructors: the counts hold only the work
}
