#pragma once

#include <chrono>
#include <thread>

namespace Korvex3Sync::tests::support {

/// Waits until the condition holds; false if it does not within a minute of real time.
template <class Condition>
bool WaitUntil(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace Korvex3Sync::tests::support
