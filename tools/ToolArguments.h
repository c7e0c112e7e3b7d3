// Command-line parsing shared by the tools: --help and --version print and
// end with status 0, any other parse error is one line on standard error and
// status 2.
#ifndef TOOL_ARGUMENTS_H
#define TOOL_ARGUMENTS_H

#include <CLI/CLI.hpp>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>

// -1 when the arguments are good and the tool goes on; else its exit status.
inline int ParseArguments(CLI::App& app, int argc, char** argv)
{
    // "--format=" would take the next word for its value.
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--")
            break;
        if (arg.size() > 3 && arg.compare(0, 2, "--") == 0 && arg.back() == '=') {
            std::fprintf(stderr, "%s: option %s has an empty value\n", app.get_name().c_str(), arg.c_str());
            return 2;
        }
    }
    try {
        app.parse(argc, argv);
        return -1;
    } catch (const CLI::ParseError& e) {
        if (e.get_exit_code() == 0) // --help or --version, of the tool or of a subcommand
            return app.exit(e);
        std::fprintf(stderr, "%s: %s\n", app.get_name().c_str(), e.what());
        return 2;
    }
}

// A number as every tool reads it: decimal (with a sign), or hexadecimal after
// 0x; nothing after it. False when `text` is not one, or is outside low..high.
inline bool ParseNumber(const std::string& text, long long low, long long high, long long& value)
{
    const bool hex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    const char* digits = text.c_str() + (hex ? 2 : 0);
    if (hex && !std::isxdigit(static_cast<unsigned char>(*digits)))
        return false;
    char* end = nullptr;
    errno = 0;
    value = std::strtoll(digits, &end, hex ? 16 : 10);
    return end != digits && *end == '\0' && errno == 0 && value >= low && value <= high;
}

#endif
