// Parsing the example parameter document with the JSON library beside
// adapting every section present in it, in one run.
#include "CommonParaAdapter.h"
#include "ParaTypes.h"

#include <benchmark/benchmark.h>
#include <json/reader.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::string ExampleText()
{
    std::ifstream file(EXAMPLES_DIR "/mdvr_parameters.json");
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

Json::Value Parse(const std::string& text)
{
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    Json::Reader reader;
#pragma GCC diagnostic pop
    Json::Value doc;
    reader.parse(text.data(), text.data() + text.size(), doc, true);
    return doc;
}

void BM_ParseExample(benchmark::State& state)
{
    const std::string text = ExampleText();
    for (auto _ : state)
        benchmark::DoNotOptimize(Parse(text));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void BM_AdaptExample(benchmark::State& state)
{
    const Json::Value doc = Parse(ExampleText());
    std::vector<unsigned char> record(64 * 1024);
    int sections = 0;
    for (auto _ : state) {
        sections = 0;
        for (const para::Type& t : para::kTypes)
            if (!para::Section(doc, t.key).isNull()) {
                benchmark::DoNotOptimize(AdaptParaJson(static_cast<_PARA_TYPE_>(t.type), doc, record.data()));
                ++sections;
            }
        benchmark::ClobberMemory();
    }
    state.counters["sections"] = sections;
}

} // namespace

BENCHMARK(BM_ParseExample);
BENCHMARK(BM_AdaptExample);

BENCHMARK_MAIN();
