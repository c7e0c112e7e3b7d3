// Stack used by AdaptParaJson: each type's section of a document adapted on
// a thread whose stack was filled with a pattern beforehand; the deepest byte
// that no longer holds the pattern gives the stack the call used, less what
// the thread start itself uses (measured with no call).
//
//   adapt_stack FILE [--quiet-logs]
//
// Prints the five deepest types and the largest figure. Runs natively and
// under qemu-arm, where the figure is the recorder's.
#include "BenchSupport.h"
#include "CommonParaAdapter.h"
#include "ParaTypes.h"
#include "ToolkitHost.h"

#include <pthread.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr size_t kStack = 256 * 1024;
constexpr unsigned char kPattern = 0x5A;

struct Job {
    const Json::Value* doc;
    int type; // -1: no call
    std::vector<unsigned char> record;
};

void* Run(void* arg)
{
    Job& job = *static_cast<Job*>(arg);
    if (job.type >= 0)
        AdaptParaJson(static_cast<_PARA_TYPE_>(job.type), *job.doc, job.record.data());
    return nullptr;
}

// Bytes of stack a job used.
size_t Used(Job& job)
{
    static std::vector<unsigned char> stack(kStack);
    std::memset(stack.data(), kPattern, stack.size());
    pthread_attr_t attr;
    pthread_attr_init(&attr);
    pthread_attr_setstack(&attr, stack.data(), stack.size());
    pthread_t thread;
    if (pthread_create(&thread, &attr, Run, &job) != 0) {
        std::perror("pthread_create");
        std::exit(2);
    }
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attr);
    size_t untouched = 0;
    while (untouched < stack.size() && stack[untouched] == kPattern)
        ++untouched;
    return stack.size() - untouched;
}

void Quiet(const ToolkitHost::LogLine&, void*) {}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: adapt_stack FILE [--quiet-logs]\n");
        return 2;
    }
    if (argc > 2 && std::string(argv[2]) == "--quiet-logs")
        ToolkitHost::SetLogSink(Quiet, nullptr);
    Json::Value doc;
    if (!bench::ParseDocument(bench::ReadText(argv[1], "adapt_stack"), doc)) {
        std::fprintf(stderr, "adapt_stack: %s is no JSON document\n", argv[1]);
        return 2;
    }
    Job idle{&doc, -1, {}};
    const size_t base = Used(idle);
    std::vector<std::pair<size_t, const char*>> used;
    for (const para::Type& t : para::kTypes) {
        Job job{&doc, t.type, std::vector<unsigned char>(t.parser.record->size)};
        used.push_back({Used(job) - base, t.key});
    }
    std::sort(used.rbegin(), used.rend());
    std::printf("stack of the thread start  %zu bytes (not counted)\n", base);
    for (size_t i = 0; i < 5 && i < used.size(); ++i)
        std::printf("  %-10s %6zu bytes\n", used[i].second, used[i].first);
    std::printf("deepest AdaptParaJson      %zu bytes\n", used.empty() ? 0 : used[0].first);
    return 0;
}
