// Command-line parsing shared by the bus tools: --help and --version print and
// end with status 0, any other parse error is one line on standard error and
// status 2.
#ifndef TOOL_ARGUMENTS_H
#define TOOL_ARGUMENTS_H

#include <CLI/CLI.hpp>

#include <cstdio>

// -1 when the arguments are good and the tool goes on; else its exit status.
inline int ParseArguments(CLI::App& app, int argc, char** argv)
{
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

#endif
