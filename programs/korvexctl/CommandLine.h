#pragma once

#include <string>

#include "korvexctl/commands/Commands.h"

namespace Korvex3Sync::korvexctl {

/// What the person asked for.
struct CommandLine {
    std::string virtualHead;  // as for RequestVirtualHead; empty: not asked for
    std::string logFile;      // empty: none
    bool verbose = false;
    bool json = false;
    RunCommand run;
};

/// How reading the command line ended.
struct CommandLineResult {
    CommandLine commandLine;
    bool run = false;  // false: `text` is all there is to do
    std::string text;  // help or version for standard output, or what is wrong
    bool badUsage = false;
};

/// Reads the command line. Never throws for what a person can type.
CommandLineResult ReadCommandLine(int count, const char* const* arguments);

}  // namespace Korvex3Sync::korvexctl
