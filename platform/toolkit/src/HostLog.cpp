// Host build of the support library's debug log: standard error, filtered by
// the level threshold in TOOLKIT_LOG_LEVEL (default 0: errors only), one line
// per record.
#include "ToolkitHost.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

ToolkitHost::LogSink g_sink = nullptr;
void* g_sinkContext = nullptr;

int Threshold()
{
    const char* text = std::getenv("TOOLKIT_LOG_LEVEL");
    return text ? std::atoi(text) : 0;
}

} // namespace

namespace Common {

void gclDebugPrintf(int level, const char* file, const char* function, int line, const char* format, ...)
{
    char text[2048];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);

    if (g_sink) {
        ToolkitHost::LogLine entry{level, file ? file : "", function ? function : "", line, text};
        g_sink(entry, g_sinkContext);
        return;
    }
    if (level > Threshold())
        return;
    // One record, one line: a message without a line feed of its own gets one.
    const size_t length = std::strlen(text);
    const char* end = length == 0 || text[length - 1] != '\n' ? "\n" : "";
    std::fprintf(stderr, "[%d] %s:%s:%d: %s%s", level, file ? file : "", function ? function : "", line, text, end);
}

} // namespace Common

namespace ToolkitHost {

void SetLogSink(LogSink sink, void* context)
{
    g_sink = sink;
    g_sinkContext = context;
}

LogCapture::LogCapture() { SetLogSink(&LogCapture::Collect, this); }

LogCapture::~LogCapture() { SetLogSink(nullptr, nullptr); }

std::vector<std::string> LogCapture::messages() const
{
    std::vector<std::string> texts;
    for (const LogLine& l : lines_)
        texts.push_back(l.message);
    return texts;
}

void LogCapture::Collect(const LogLine& line, void* context)
{
    static_cast<LogCapture*>(context)->lines_.push_back(line);
}

} // namespace ToolkitHost
