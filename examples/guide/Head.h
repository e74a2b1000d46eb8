#pragma once

#include <vector>

#include "Status.h"

namespace guide {

/// The attached cameras of one type.
struct Cameras {
    explicit Cameras(const char* type) {
        int count = 0;
        Require(GetCamerasInformation(type, serials, widths, heights, color, count),
                "look for cameras");
        if (count == 0) {
            throw std::runtime_error("no camera found");
        }
    }
    ~Cameras() {
        for (char* serial : serials) delete[] serial;
    }
    Cameras(const Cameras&) = delete;
    Cameras& operator=(const Cameras&) = delete;

    std::vector<char*> serials;
    std::vector<int> widths;
    std::vector<int> heights;
    std::vector<bool> color;
};

/// A connected head; the destructor disconnects it.
class Head {
public:
    /// `board` is the serial of the board; "" takes any board.
    explicit Head(const Cameras& cameras, const char* board = "") {
        Require(
            ConnectDevice("", board, cameras.serials, cameras.widths, cameras.heights, m_handle),
            "connect");
    }
    ~Head() { DisConnectDevice(m_handle); }
    Head(const Head&) = delete;
    Head& operator=(const Head&) = delete;

    void* const& Handle() const { return m_handle; }

private:
    void* m_handle = nullptr;
};

}  // namespace guide
