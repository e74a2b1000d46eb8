// Shows the state of a running scan: rate, time in the scan callback, and what was lost where.
//
//   live_statistics [--seconds N] [--plain]
//
// Runs until Ctrl-C, or for N seconds. --plain writes one block after the other, for a file.

#include <Korvex3Sync/Korvex3Sync.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

using namespace Korvex3Sync;

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kRefresh{250};
// Moves to the upper left corner and clears the screen: the library prints its own lines between
// the blocks.
constexpr const char* kClear = "\033[H\033[2J";

volatile std::sig_atomic_t interrupted = 0;

void OnInterrupt(int) {
    interrupted = 1;
}

// A program that measures would copy or evaluate the images here. This one ignores them.
void OnSet(const void* const&, std::vector<unsigned char*>&, const int&, const int&,
           std::vector<int>&) {}

struct Loss {
    const char* words;
    std::uint64_t ScanStatistics::*count;
};

constexpr std::array kLosses{
    Loss{"frames refused by the camera library", &ScanStatistics::refusedFrames},
    Loss{"frames of a wrong size", &ScanStatistics::rejectedGeometry},
    Loss{"frames that could not be taken apart", &ScanStatistics::undecodableFrames},
    Loss{"frames of an unknown camera", &ScanStatistics::unroutedFrames},
    Loss{"colour frames without mono frame", &ScanStatistics::colorWithoutMono},
    Loss{"sets without their colour", &ScanStatistics::monoWithoutColor},
    Loss{"sets too many", &ScanStatistics::repeatedKeys},
    Loss{"sets dropped", &ScanStatistics::setsDropped},
    Loss{"triggers without a set", &ScanStatistics::missingKeys},
    Loss{"sets that nobody took", &ScanStatistics::setsWithoutCallback},
};

void Show(const ScanStatistics& now, double rate, bool plain) {
    std::cout << (plain ? "" : kClear) << std::fixed << std::setprecision(1) << "rate      " << rate
              << " sets/s\n"
              << "sets      " << now.setsDelivered << ", " << now.setsWithColor << " with colour\n"
              << "callback  " << now.callbackP50Us << " us (half), " << now.callbackP99Us
              << " us (99 %), " << now.callbackLongestUs << " us (longest)\n";
    bool lost = false;
    for (const Loss& loss : kLosses) {
        if (now.*loss.count > 0) {
            std::cout << "lost      " << now.*loss.count << ' ' << loss.words << '\n';
            lost = true;
        }
    }
    std::cout << (lost ? "" : "lost      nothing\n") << std::flush;
}

// Refreshes the display until the end. False if the statistics cannot be read, or if no set
// arrived.
bool Watch(void* const& head, Clock::time_point end, bool plain) {
    ScanStatistics before;
    auto then = Clock::now();
    while (interrupted == 0 && Clock::now() < end) {
        std::this_thread::sleep_for(kRefresh);
        ScanStatistics now;
        if (GetScanStatistics(head, now) != STATUS_SUCCESS) {
            return false;
        }
        const auto time = Clock::now();
        const double seconds = std::chrono::duration<double>(time - then).count();
        Show(now, static_cast<double>(now.setsDelivered - before.setsDelivered) / seconds, plain);
        before = now;
        then = time;
    }
    return before.setsDelivered > 0;
}

}  // namespace

int main(int count, char** arguments) {
    int seconds = 0;  // 0: until Ctrl-C
    bool plain = false;
    for (int i = 1; i < count; ++i) {
        const std::string argument = arguments[i];
        if (argument == "--seconds" && i + 1 < count && std::atoi(arguments[i + 1]) > 0) {
            seconds = std::atoi(arguments[++i]);
        } else if (argument == "--plain") {
            plain = true;
        } else {
            std::cerr << "usage: live_statistics [--seconds N] [--plain]\n";
            return 2;
        }
    }
    std::signal(SIGINT, OnInterrupt);

    std::vector<char*> serials;
    std::vector<int> widths;
    std::vector<int> heights;
    std::vector<bool> color;
    int cameras = 0;
    void* head = nullptr;
    GetCamerasInformation("KV00", serials, widths, heights, color, cameras);
    bool good = false;
    if (ConnectDevice("KV00", "", serials, widths, heights, head) == STATUS_SUCCESS) {
        SetScanCallBackFunction(head, OnSet, nullptr);
        EnableBlueLaser(head, LASER_WORK_MODE_1, true);
        EnableVideoTrigger(head, TRIGGER_LASER_LINES_COLOR, true);
        good = Watch(
            head,
            seconds > 0 ? Clock::now() + std::chrono::seconds(seconds) : Clock::time_point::max(),
            plain);
        EnableVideoTrigger(head, TRIGGER_LASER_LINES_COLOR, false);
        EnableBlueLaser(head, LASER_WORK_MODE_1, false);
        DisConnectDevice(head);
    } else {
        std::cerr << "no head; KORVEX_VIRTUAL_HEAD=default gives a simulated one\n";
    }
    for (char* serial : serials) {
        delete[] serial;
    }
    return good ? 0 : 1;
}
