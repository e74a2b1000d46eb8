#include "service/Latency.h"

#include <algorithm>

#include "Report.h"

namespace bench {

namespace {

constexpr double kNanosecondsOfMicrosecond = 1e3;

double Percentile(std::vector<std::int64_t>& values, std::size_t percent) {
    const std::size_t place = (values.size() - 1) * percent / 100;
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(place),
                     values.end());
    return static_cast<double>(values[place]) / kNanosecondsOfMicrosecond;
}

}  // namespace

void PrintLatency(const char* what, std::vector<std::int64_t> nanoseconds) {
    if (nanoseconds.empty()) {
        Fail(std::string(what) + ": nothing was measured");
    }
    const double p50 = Percentile(nanoseconds, 50);
    const double p99 = Percentile(nanoseconds, 99);
    const double longest = Percentile(nanoseconds, 100);
    Print("%-52s p50 %8.1f us  p99 %8.1f us  longest %9.1f us\n", what, p50, p99, longest);
}

double MedianMicroseconds(std::vector<std::int64_t> nanoseconds) {
    return Percentile(nanoseconds, 50);
}

}  // namespace bench
