#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <string>

#include "korvexctl/cli/Interrupt.h"

namespace Korvex3Sync::tests {

/// Counts its interrupts.
class CountingInterrupt : public korvexctl::Interrupt {
public:
    explicit CountingInterrupt(std::atomic<int>& calls)
        : Interrupt([&calls] {
              ++calls;
              return std::string();
          }) {}
};

/// Fails the test when it is interrupted.
class UnwantedInterrupt : public korvexctl::Interrupt {
public:
    explicit UnwantedInterrupt(const char* why)
        : Interrupt([why] {
              ADD_FAILURE() << why;
              return std::string();
          }) {}
};

}  // namespace Korvex3Sync::tests
