// What the parameter benchmarks share: the document's text read whole, parsed
// as the library parses a message body, and a count of heap allocations.
#ifndef BENCH_SUPPORT_H
#define BENCH_SUPPORT_H

#include <json/reader.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace bench {

// The whole text of `path`; an unreadable or empty file ends `program` with
// one line and status 2.
inline std::string ReadText(const char* path, const char* program)
{
    std::ifstream file(path);
    std::stringstream buffer;
    buffer << file.rdbuf();
    std::string text = buffer.str();
    if (!file || text.empty()) {
        std::fprintf(stderr, "%s: cannot read %s\n", program, path);
        std::exit(2);
    }
    return text;
}

// Parses `text` with the reader and settings the library's ParseJsonMessage
// uses (comments kept).
inline bool ParseDocument(const std::string& text, Json::Value& doc)
{
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    Json::Reader reader;
#pragma GCC diagnostic pop
    return reader.parse(text.data(), text.data() + text.size(), doc, true);
}

} // namespace bench

#endif
