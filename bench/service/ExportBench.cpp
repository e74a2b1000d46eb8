// Image sets through the device service and the exported functions:
//
//     export_bench delay   how long three images take from the scan callback of the service to that
//                          of the application
//     export_bench scan    a scan of the virtual head in the device service at 5 ms: sets per
//                          second, and losses
//     export_bench serve   is the service for "delay"
//
// The library ends services by name, so it runs in a process namespace of its own.

#include <Korvex3Sync/Korvex3Sync.h>

#include <QCoreApplication>
#include <atomic>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "Report.h"
#include "service/DeliveryServer.h"
#include "service/Latency.h"
#include "service/ServicePair.h"
#include "support/ProcessNamespace.h"

namespace {

namespace fs = std::filesystem;
using namespace Korvex3Sync;

constexpr int kWarmUp = 400;
constexpr int kSets = 4000;

/// Puts hub and service where the library looks for them.
void FillApplicationDirectory(const std::string& way) {
    const fs::path folder = QCoreApplication::applicationDirPath().toStdString();
    fs::copy_file(KORVEX_PROGRAMS "/hub.exe", folder / "hub.exe");
    const fs::path service = folder / "ZrSyncService.exe";
    if (way == "scan") {
        fs::copy_file(KORVEX_PROGRAMS "/ZrSyncService.exe", service);
        return;
    }
    std::ofstream(service) << "#!/bin/sh\nexec '" << KORVEX_PROGRAMS << "/export_bench' serve\n";
    fs::permissions(service, fs::perms::owner_all);
}

/// What the scan callback sees of each set.
struct Seen {
    std::atomic<int> sets{0};
    std::int64_t first = 0;  // moments of the first and the last set that count
    std::int64_t last = 0;
    std::vector<std::int64_t> delays;
    int key = -1;  // of the set before
    int lost = 0;
    std::vector<unsigned char> copies = std::vector<unsigned char>(bench::kBytesOfASet);
};

/// Until the application has its own copy, as it needs one.
void Copy(Seen& seen, const std::vector<unsigned char*>& images, std::size_t bytes) {
    for (std::size_t i = 0; i < images.size(); ++i) {
        std::memcpy(seen.copies.data() + i * bytes, images[i], bytes);
    }
}

void OnSet(const void* const& context, std::vector<unsigned char*>& images, const int& width,
           const int& height, std::vector<int>&) {
    const std::int64_t now = bench::Nanoseconds();
    Seen& seen = *static_cast<Seen*>(const_cast<void*>(context));
    std::int64_t begin = 0;
    std::memcpy(&begin, images.front(), sizeof(begin));
    // The key of the trigger replaces this pixel of the right image.
    constexpr int kKeyPixel = 3;
    constexpr int kKeys = 256;
    const int key = images[1][kKeyPixel];
    Copy(seen, images, static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    if (seen.sets >= kWarmUp && seen.sets < kWarmUp + kSets) {
        seen.delays.push_back(now - begin);
        seen.first = seen.first == 0 ? now : seen.first;
        seen.last = now;
        seen.lost += (key - seen.key - 1 + kKeys) % kKeys;
    }
    seen.key = key;
    ++seen.sets;
}

void WaitForSets(const Seen& seen) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(2);
    while (seen.sets < kWarmUp + kSets) {
        if (std::chrono::steady_clock::now() > end) {
            bench::Fail(std::to_string(seen.sets) + " sets arrived within two minutes");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

void Require(RETSTATUS status, const char* call) {
    if (status != STATUS_SUCCESS) {
        bench::Fail(std::string(call) + " gave " + std::to_string(status));
    }
}

void Measure(const std::string& way) {
    const tests::OwnFolders folders;
    bench::UseFolders(folders);
    ::setenv("KORVEX_VIRTUAL_HEAD", "default", 1);
    FillApplicationDirectory(way);
    Require(SwitchOnDeviceService(true), "SwitchOnDeviceService");
    Seen seen;
    void* handle = nullptr;
    Require(ConnectDevice("KV00", "", {}, {}, {}, handle), "ConnectDevice");
    Require(SetScanCallBackFunction(handle, OnSet, &seen), "SetScanCallBackFunction");
    if (way == "scan") {
        constexpr int kPeriodMs = 5;
        Require(SetVideoTriggerPeriod(handle, kPeriodMs), "SetVideoTriggerPeriod");
        Require(EnableVideoTrigger(handle, TRIGGER_LASER_LINES_COLOR, true), "EnableVideoTrigger");
    }
    WaitForSets(seen);
    // The service for "delay" never stops sending.
    Require(SetScanCallBackFunction(handle, nullptr, nullptr), "SetScanCallBackFunction");
    DisConnectDevice(handle);
    if (way == "delay") {
        bench::PrintLatency("service: callback to the application's callback", seen.delays);
        return;
    }
    constexpr double kNanosecondsOfSecond = 1e9;
    const double seconds = static_cast<double>(seen.last - seen.first) / kNanosecondsOfSecond;
    bench::Print("%d sets of three images in %.2f s: %.1f sets/s, %d lost\n", kSets, seconds,
                 (kSets - 1) / seconds, seen.lost);
}

}  // namespace

int main(int count, char** arguments) {
    const std::string way = count == 2 ? arguments[1] : "";
    if (way == "serve") {
        QCoreApplication application(count, arguments);
        return bench::ServeDelivery("hub", "");
    }
    if (way != "delay" && way != "scan") {
        std::fputs("export_bench delay|scan\n", stderr);
        return 2;
    }
    return tests::RunInProcessNamespace(count, arguments, [](int words, char** texts) {
        QCoreApplication application(words, texts);
        bench::SilenceLibrary();
        Measure(texts[1]);
        return 0;
    });
}
