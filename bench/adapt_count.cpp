// Parses a parameter document PARSES times and adapts every section of it
// ADAPTS times, then ends without running destructors, so that instruction
// counts of runs with different PARSES and ADAPTS differ by exactly the work
// (bench/armhf-footprint.sh).
//
//   adapt_count FILE PARSES ADAPTS
#include "CommonParaAdapter.h"
#include "ParaTypes.h"

#include <json/reader.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

int main(int argc, char** argv)
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: adapt_count FILE PARSES ADAPTS\n");
        return 2;
    }
    std::ifstream file(argv[1]);
    std::stringstream buffer;
    buffer << file.rdbuf();
    const std::string text = buffer.str();
    const int parses = std::atoi(argv[2]), adapts = std::atoi(argv[3]);
    std::vector<Json::Value> docs(parses > 0 ? parses : 1);
    for (int i = 0; i < parses; ++i) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
        Json::Reader reader;
#pragma GCC diagnostic pop
        if (!reader.parse(text.data(), text.data() + text.size(), docs[i], true)) {
            std::fprintf(stderr, "adapt_count: %s is no JSON document\n", argv[1]);
            return 2;
        }
    }
    std::vector<unsigned char> record(64 * 1024);
    int failed = 0;
    for (int i = 0; i < adapts; ++i)
        for (const para::Type& t : para::kTypes)
            if (!para::Section(docs[0], t.key).isNull())
                failed += AdaptParaJson(static_cast<_PARA_TYPE_>(t.type), docs[0], record.data()) != 0;
    std::fflush(stdout);
    std::_Exit(failed ? 1 : 0); // no destructors: the counts hold only the work
}
