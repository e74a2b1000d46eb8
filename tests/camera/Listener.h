#pragma once

#include <gtest/gtest.h>

#include "camera/PhysicalCameraThreadListener.h"

namespace Korvex3Sync::tests {

/// A listener that must never be called.
class SilentListener : public PhysicalCameraThreadListener {
public:
    void OnThreadNotify(int, int) override { ADD_FAILURE() << "the listener was called"; }
    void OnThreadSignal(int) override { ADD_FAILURE() << "the listener was called"; }
};

}  // namespace Korvex3Sync::tests
