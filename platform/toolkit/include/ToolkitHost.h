// Hooks of the host build of libtoolkit, for tests and development tools.
// Not part of the vendor's interface: the library never includes this file.
#ifndef TOOLKIT_HOST_H
#define TOOLKIT_HOST_H

#include "CommonToolkit.h"

#include <string>
#include <vector>

namespace ToolkitHost {

// One formatted log line as gclDebugPrintf received it.
struct LogLine {
    int level;
    std::string file;
    std::string function;
    int line;
    std::string message;
};

typedef void (*LogSink)(const LogLine& line, void* context);

// Replaces standard error as the destination of every log line (no level
// filter applies to a sink). Pass nullptr to go back to standard error.
TOOLKIT_API void SetLogSink(LogSink sink, void* context);

// Collects every log line while it is alive; restores standard error after.
class TOOLKIT_API LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    const std::vector<LogLine>& lines() const { return lines_; }
    // Just the message texts, in order.
    std::vector<std::string> messages() const;
    void clear() { lines_.clear(); }

private:
    static void Collect(const LogLine& line, void* context);
    std::vector<LogLine> lines_;
};

} // namespace ToolkitHost

#endif
