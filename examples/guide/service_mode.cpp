// Takes twenty image sets in service mode. The hub, the device service and this program have to be
// in one directory.

#include <QCoreApplication>

#include <exception>
#include <iostream>

#include "Head.h"
#include "SetQueue.h"

using namespace guide;

namespace {

void Scan(void* const& head, SetQueue& queue) {
    Require(SetScanCallBackFunction(head, &SetQueue::OnSet, &queue), "set the scan callback");
    Require(EnableVideoTrigger(head, TRIGGER_LASER_LINES_COLOR, true), "start the trigger");
    int sets = 0;
    while (sets < 20 && queue.Take(std::chrono::seconds(5))) {
        ++sets;
    }
    Require(EnableVideoTrigger(head, TRIGGER_LASER_LINES_COLOR, false), "stop the trigger");
    Require(SetScanCallBackFunction(head, nullptr, nullptr), "end the scan callback");
    std::cout << sets << " sets through the device service\n";
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);  // service mode needs one; no event loop has to run
    SwitchOnDeviceService(true);               // starts hub and service: about 14 s
    try {
        const Cameras cameras("KV00");
        SetQueue queue(16);  // before the head: the callback uses it while the head exists
        const Head head(cameras);
        Scan(head.Handle(), queue);
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
    return 0;
}
