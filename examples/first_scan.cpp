#include <Korvex3Sync/Korvex3Sync.h>
#include <chrono>
#include <iostream>
#include <semaphore>
using namespace Korvex3Sync;
std::counting_semaphore<> arrived{0};
// Runs on a camera's thread. The images are valid only during the call: copy what you keep.
void OnSet(const void* const&, std::vector<unsigned char*>&, const int&, const int&,
           std::vector<int>&) {
    arrived.release();
}
int main() {
    std::vector<char*> serials;
    std::vector<int> widths, heights;
    std::vector<bool> color;
    int cameras = 0, sets = 0;
    void* head = nullptr;
    GetCamerasInformation("KV00", serials, widths, heights, color, cameras);
    if (ConnectDevice("KV00", "", serials, widths, heights, head) == STATUS_SUCCESS) {
        SetScanCallBackFunction(head, OnSet, nullptr);
        EnableBlueLaser(head, LASER_WORK_MODE_1, true);
        EnableVideoTrigger(head, TRIGGER_LASER_LINES_COLOR, true);
        while (sets < 20 && arrived.try_acquire_for(std::chrono::seconds(5))) ++sets;
        EnableVideoTrigger(head, TRIGGER_LASER_LINES_COLOR, false);
        DisConnectDevice(head);
    }
    for (char* serial : serials) delete[] serial;
    std::cout << sets << " image sets\n";
    return sets == 20 ? 0 : 1;
}
