#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

#include "korvexctl/commands/Commands.h"

namespace Korvex3Sync::korvexctl {

/// The result of parsing the command line.
struct CommandLine {
    std::string virtualHead;        // as for RequestVirtualHead; empty: not requested
    bool service = false;           // --service
    Uses uses = Uses::Head;         // what the command works with
    std::string notInServiceMode;   // why this command line is not available with --service
    std::filesystem::path logFile;  // empty: none
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

/// The columns of a help that goes to no terminal.
inline constexpr std::size_t kUsualWidth = 80;

/// Reads the command line; the help is laid out for so many columns. Throws for no input.
CommandLineResult ReadCommandLine(int count, const char* const* arguments,
                                  std::size_t width = kUsualWidth);

}  // namespace Korvex3Sync::korvexctl
