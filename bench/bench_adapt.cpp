// Parsing the example parameter document with the JSON library beside
// adapting every section present in it, in one run.
#include "BenchSupport.h"
#include "CommonParaAdapter.h"
#include "ParaTypes.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace {

std::string ExampleText() { return bench::ReadText(EXAMPLES_DIR "/mdvr_parameters.json", "bench_adapt"); }

Json::Value Parse(const std::string& text)
{
    Json::Value doc;
    bench::ParseDocument(text, doc);
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
                benchmark::DoNotOptimize(AdaptParaJson(t.type, doc, record.data()));
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
