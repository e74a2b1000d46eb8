#pragma once

#include <gtest/gtest.h>

#include "platform/include/zr3DHandiDLPdev.h"

namespace Korvex3Sync::tests {

/// An open board of the requested head. The destructor closes it unless it is closed already.
class OpenedBoard {
public:
    explicit OpenedBoard(const char* serial = "") {
        EXPECT_TRUE(zr3DHandiDLPdev::zr3DInitHidDev(handle, "3267", "5752", serial));
        EXPECT_NE(handle, nullptr);
    }
    ~OpenedBoard() {
        if (handle) {
            EXPECT_TRUE(zr3DHandiDLPdev::zr3DExitHidDev(handle));
        }
    }
    OpenedBoard(const OpenedBoard&) = delete;
    OpenedBoard& operator=(const OpenedBoard&) = delete;

    void* handle = nullptr;
};

}  // namespace Korvex3Sync::tests
