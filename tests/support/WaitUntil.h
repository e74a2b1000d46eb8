#pragma once

#include <chrono>
#include <thread>

#include "support/Deadline.h"

namespace Korvex3Sync::tests::support {

/// Waits until the condition holds; false if it does not before the deadline.
template <class Condition>
bool WaitUntil(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + kDeadline;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace Korvex3Sync::tests::support
