#pragma once

#include <string>

#include "korvexctl/commands/Commands.h"

namespace Korvex3Sync::korvexctl {

/// The result of parsing the command line.
struct CommandLine {
    std::string virtualHead;  // as for RequestVirtualHead; empty: not requested
    std::string logFile;      // empty: none
    bool verbose = false;
    bool json = false;
    RunCommand run;
};

/// How reading the command line ended.
struct CommandLineResult {
    CommandLine commandLine;
    bool run = false;  // false: only print `text`
    std::string text;  // help or version for standard output, or the error
    bool badUsage = false;
};

/// Reads the command line. Throws for no input.
CommandLineResult ReadCommandLine(int count, const char* const* arguments);

}  // namespace Korvex3Sync::korvexctl
