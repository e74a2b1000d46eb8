// Shows what is attached.

#include <exception>
#include <iostream>

#include "Head.h"

using namespace guide;

namespace {

void ShowCameras() {
    const Cameras cameras("KV00");
    for (std::size_t i = 0; i < cameras.serials.size(); ++i) {
        std::cout << "camera " << cameras.serials[i] << ", " << cameras.widths[i] << " x "
                  << cameras.heights[i] << (cameras.color[i] ? ", colour\n" : ", grey\n");
    }
}

void ShowBoard() {
    bool onU3 = false;
    if (IsConnectedOnU3("", onU3) == STATUS_SUCCESS) {
        std::cout << (onU3 ? "the board runs at USB 3 speed\n"
                           : "the board does not run at USB 3 speed\n");
    }
    std::string version;
    if (GetFirewareVersion("", version) == STATUS_SUCCESS) {
        std::cout << "firmware " << version << '\n';
    }
}

}  // namespace

int main() {
    try {
        ShowCameras();
        ShowBoard();
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
    return 0;
}
