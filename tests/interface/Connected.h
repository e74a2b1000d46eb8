#pragma once

#include <gtest/gtest.h>

#include "Korvex3Sync/Korvex3Sync.h"
#include "interface/Mode.h"
#include "recorder/Recorder.h"
#include "recorder/SingleColor.h"
#include "support/PackedFrames.h"

namespace Korvex3Sync::tests {

/// Direct mode over the recorded head; ends what a test connected.
class Connected : public testing::Test {
protected:
    Connected() { recorder::Recorder::Get().Reset(); }
    ~Connected() override {
        SetServiceMode(false);
        DisConnectDevice(m_handle);
    }
    RETSTATUS Connect() {
        std::string serial = "KV00R1";
        return ConnectDevice("any", "BOARD", {serial.data(), serial.data()}, {8, 8}, {4, 4},
                             m_handle);
    }

    /// Each single trigger gives a colour frame from now on.
    static void GiveColorFrames() {
        recorder::OnSingleColorTrigger([] {
            recorder::Recorder::Get().PushSnap({0, false, support::ColorFrame(32, 7, 1)});
        });
    }

    void* m_handle = nullptr;
};

}  // namespace Korvex3Sync::tests
