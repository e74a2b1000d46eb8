#include "Report.h"

#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <functional>

namespace bench {
namespace {

FILE* g_output = stdout;

}  // namespace

void SilenceLibrary() {
    g_output = fdopen(dup(STDOUT_FILENO), "w");
    if (g_output == nullptr || freopen("/dev/null", "w", stdout) == nullptr ||
        freopen("/dev/null", "w", stderr) == nullptr) {
        std::abort();
    }
}

void Print(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::vfprintf(g_output, format, arguments);
    va_end(arguments);
    std::fflush(g_output);
}

void Fail(const std::string& why) {
    Print("failed: %s\n", why.c_str());
    std::_Exit(EXIT_FAILURE);
}

void PrintSpread(const char* what, std::vector<double> figures, const char* unit) {
    std::sort(figures.begin(), figures.end());
    const std::size_t count = figures.size();
    const double median = (figures[(count - 1) / 2] + figures[count / 2]) / 2;
    Print("%-52s %8.2f %-3s (%.2f to %.2f)\n", what, median, unit, figures.front(), figures.back());
}

std::vector<double> Ratios(const std::vector<double>& figures, const std::vector<double>& others) {
    std::vector<double> ratios;
    std::transform(figures.begin(), figures.end(), others.begin(), std::back_inserter(ratios),
                   std::divides<>());
    return ratios;
}

}  // namespace bench
