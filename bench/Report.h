#pragma once

#include <string>
#include <vector>

/// What the measuring programs share: their output, and figures that were taken several times.
namespace bench {

/// Sends everything that the library prints and logs to nowhere, so that the terminal's speed is
/// not measured. From then on only Print and Fail reach the standard output.
void SilenceLibrary();

/// printf to the standard output that the program was started with.
[[gnu::format(printf, 1, 2)]] void Print(const char* format, ...);

/// Prints a line and ends the program with status 1.
[[noreturn]] void Fail(const std::string& why);

/// Prints "what: median unit (least to most)" of figures that were taken in several rounds.
void PrintSpread(const char* what, std::vector<double> figures, const char* unit);

/// The quotients of figures that were taken in the same rounds.
std::vector<double> Ratios(const std::vector<double>& figures, const std::vector<double>& others);

}  // namespace bench
