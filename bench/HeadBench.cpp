// A scan of the default virtual head at 5 ms: sets per second, and how much of one core the whole
// process took for it (head, camera, split, pairing, callback).

#include <benchmark/benchmark.h>

#include <atomic>
#include <ctime>
#include <thread>

#include "Korvex3Sync/Korvex3Sync.h"
#include "virtual_head/Request.h"

namespace {

using namespace Korvex3Sync;

void CountSet(const void* const& context, std::vector<unsigned char*>&, const int&, const int&,
              std::vector<int>&) {
    ++*static_cast<std::atomic<int>*>(const_cast<void*>(context));
}

void Scan(benchmark::State& state) {
    constexpr int kPeriodMs = 5;
    constexpr std::chrono::seconds kScan{3};
    std::string error;
    if (!virtual_head::RequestVirtualHead("default", error)) {
        state.SkipWithError(error.c_str());
        return;
    }
    std::string serial = "KV00A1001";
    void* handle = nullptr;
    ConnectDevice("KV00", "", {serial.data(), serial.data()}, {1280, 1280}, {1024, 1024}, handle);
    std::atomic<int> sets{0};
    SetScanCallBackFunction(handle, CountSet, &sets);
    SetVideoTriggerPeriod(handle, kPeriodMs);
    for (auto _ : state) {
        sets = 0;
        const std::clock_t cpu = std::clock();
        EnableVideoTrigger(handle, TRIGGER_LASER_LINES_COLOR, true);
        std::this_thread::sleep_for(kScan);
        EnableVideoTrigger(handle, TRIGGER_LASER_LINES_COLOR, false);
        const double used = static_cast<double>(std::clock() - cpu) / CLOCKS_PER_SEC;
        state.counters["sets_per_s"] = sets / static_cast<double>(kScan.count());
        state.counters["of_one_core"] = used / static_cast<double>(kScan.count());
    }
    DisConnectDevice(handle);
    virtual_head::WithdrawVirtualHead();
}

BENCHMARK(Scan)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
