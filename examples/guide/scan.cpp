// Takes twenty image sets and prints what was lost on the way.

#include <exception>
#include <iostream>

#include "Head.h"
#include "SetQueue.h"

using namespace guide;

namespace {

/// The number of the set's trigger modulo 256. It replaces one pixel.
unsigned KeyOf(const ImageSet& set) {
    return set.images[1][3];
}

void Work(const ImageSet& set) {
    std::cout << "trigger " << KeyOf(set) << ": " << set.images.size() << " images of " << set.width
              << " x " << set.height << '\n';
}

void Scan(void* const& head, SetQueue& queue) {
    Require(SetScanCallBackFunction(head, &SetQueue::OnSet, &queue), "set the scan callback");
    Require(EnableBlueLaser(head, LASER_WORK_MODE_1, true), "switch the laser lines on");
    Require(SetVideoTriggerPeriod(head, 10), "trigger period");
    Require(EnableVideoTrigger(head, TRIGGER_LASER_LINES_COLOR, true), "start the trigger");
    for (int number = 0; number < 20; ++number) {
        const auto set = queue.Take(std::chrono::seconds(5));
        if (!set) {
            throw std::runtime_error("no image set came within 5 s");
        }
        Work(*set);
    }
    Require(EnableVideoTrigger(head, TRIGGER_LASER_LINES_COLOR, false), "stop the trigger");
    Require(EnableBlueLaser(head, LASER_WORK_MODE_1, false), "switch the laser lines off");
    Require(SetScanCallBackFunction(head, nullptr, nullptr), "end the scan callback");
}

void ShowLosses(void* const& head, const SetQueue& queue) {
    ScanStatistics counts;
    Require(GetScanStatistics(head, counts), "read the statistics");
    std::cout << counts.setsDelivered << " sets, " << counts.setsWithColor << " with colour\n"
              << counts.missingKeys << " triggers without a frame\n"
              << counts.monoWithoutColor << " sets whose colour frame did not come\n"
              << counts.callbackLongestUs << " us in the longest callback\n"
              << queue.Dropped() << " sets dropped by this program\n";
}

}  // namespace

int main() {
    try {
        const Cameras cameras("KV00");
        SetQueue queue(16);  // before the head: the callback uses it while the head exists
        const Head head(cameras);
        Scan(head.Handle(), queue);
        ShowLosses(head.Handle(), queue);
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
    return 0;
}
