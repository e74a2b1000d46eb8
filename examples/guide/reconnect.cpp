// Scans, reconnects the head when it drops out, and continues.

#include <exception>
#include <iostream>
#include <thread>

#include "BoardWatch.h"
#include "Head.h"
#include "SetQueue.h"

using namespace guide;

namespace {

using std::chrono::seconds;

/// Reconnects, then waits until the board accepts commands again.
void BringBack(void* const& head, BoardWatch& watch) {
    for (int attempt = 1; ReconnectDevice(head) != STATUS_SUCCESS; ++attempt) {
        if (attempt == 5) {
            throw std::runtime_error("the head does not come back");
        }
        std::this_thread::sleep_for(seconds(2));
    }
    if (!watch.WaitForGoodPoll(seconds(10))) {
        throw std::runtime_error("the board does not answer");
    }
    std::cout << "reconnected\n";
}

/// Takes `sets` sets; reconnects the head whenever it stops answering.
void TakeSets(void* const& head, SetQueue& queue, BoardWatch& watch, int sets) {
    int taken = 0;
    while (taken < sets) {
        if (queue.Take(seconds(2))) {
            ++taken;
        } else {
            std::cout << (watch.Silent() ? "the board is silent\n" : "no frames come\n");
            BringBack(head, watch);
        }
    }
    std::cout << taken << " sets\n";
}

}  // namespace

int main() {
    try {
        const Cameras cameras("KV00");
        SetQueue queue(16);
        BoardWatch watch;
        const Head head(cameras);
        Require(SetScanCallBackFunction(head.Handle(), &SetQueue::OnSet, &queue), "scan callback");
        Require(SetStatusCallBackFunction(head.Handle(), &BoardWatch::OnStatus, &watch),
                "status callback");
        Require(EnableVideoTrigger(head.Handle(), TRIGGER_LASER_LINES_COLOR, true), "start");
        TakeSets(head.Handle(), queue, watch, 20);
        BringBack(head.Handle(), watch);  // as a button of the program would do
        TakeSets(head.Handle(), queue, watch, 20);
        Require(EnableVideoTrigger(head.Handle(), TRIGGER_LASER_LINES_COLOR, false), "stop");
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
    return 0;
}
