// Whether memory, threads or descriptors grow over a long scan and over many connections:
//
//     growth_bench [sets] [connections]
//
// Ends with status 1 when they do.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <string>

#include "Connection.h"
#include "Report.h"

namespace {

constexpr int kSize = 16;
/// Memory that is no growth: the system counts pages late and in lots.
constexpr long kSlackKiB = 512;
constexpr long kFirstSets = 200'000;
constexpr long kFirstConnections = 50;
constexpr long kSetsOfConnection = 100;

struct Usage {
    long residentKiB = 0;
    long threads = 0;
    long descriptors = 0;
};

Usage UsageNow() {
    Usage usage;
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        if (word == "VmRSS:") {
            status >> usage.residentKiB;
        } else if (word == "Threads:") {
            status >> usage.threads;
        }
    }
    for ([[maybe_unused]] const auto& entry :
         std::filesystem::directory_iterator("/proc/self/fd")) {
        ++usage.descriptors;
    }
    return usage;
}

void PrintUsage(const std::string& when, const Usage& usage) {
    bench::Print("%-40s %10ld KiB %6ld threads %6ld descriptors\n", when.c_str(), usage.residentKiB,
                 usage.threads, usage.descriptors);
}

/// True when `later` is more than `first`.
bool Grown(const Usage& first, const Usage& later) {
    return later.residentKiB > first.residentKiB + kSlackKiB || later.threads > first.threads ||
           later.descriptors > first.descriptors;
}

/// Notes the usage inside a scan, after the first sets and after the last.
struct Scan {
    long last = 0;
    long count = 0;
    Usage early;
    Usage late;
    std::promise<void> done;
};

void TakeSet(const void* const& context, std::vector<unsigned char*>&, const int&, const int&,
             std::vector<int>&) {
    auto& scan = *static_cast<Scan*>(const_cast<void*>(context));
    ++scan.count;
    if (scan.count == kFirstSets) {
        scan.early = UsageNow();
    }
    if (scan.count == scan.last) {
        scan.late = UsageNow();
        scan.done.set_value();
    }
}

/// Scans until `sets` sets have come.
void Run(Scan& scan, long sets) {
    scan.last = sets;
    bench::Connection connection(kSize, kSize);
    connection.StartScan(TakeSet, &scan);
    if (scan.done.get_future().wait_for(std::chrono::minutes(2)) != std::future_status::ready) {
        bench::Fail("the sets did not arrive within two minutes");
    }
}

void ConnectOften(long connections) {
    for (long i = 0; i < connections; ++i) {
        Scan scan;
        Run(scan, kSetsOfConnection);
    }
}

long Argument(int count, char** values, int index, long otherwise) {
    return count > index ? std::strtol(values[index], nullptr, 10) : otherwise;
}

}  // namespace

int main(int argc, char** argv) {
    bench::SilenceLibrary();
    const long sets = Argument(argc, argv, 1, 10'000'000);
    const long connections = Argument(argc, argv, 2, 1'000);
    if (sets < kFirstSets || connections < kFirstConnections) {
        bench::Fail("give at least " + std::to_string(kFirstSets) + " sets and " +
                    std::to_string(kFirstConnections) + " connections");
    }
    Scan scan;
    Run(scan, sets);
    PrintUsage("in a scan, after " + std::to_string(kFirstSets) + " sets", scan.early);
    PrintUsage("in the same scan, after " + std::to_string(sets) + " sets", scan.late);

    ConnectOften(kFirstConnections);
    const Usage early = UsageNow();
    ConnectOften(connections - kFirstConnections);
    const Usage late = UsageNow();
    PrintUsage("after " + std::to_string(kFirstConnections) + " connections", early);
    PrintUsage("after " + std::to_string(connections) + " connections", late);

    if (Grown(scan.early, scan.late) || Grown(early, late)) {
        bench::Fail("something grew");
    }
    bench::Print("nothing grew\n");
}
