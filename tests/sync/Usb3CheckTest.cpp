#include "sync/board/Usb3Check.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "recorder/Recorder.h"
#include "support/Golden.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using Calls = std::vector<std::string>;

class Usb3Check : public testing::Test {
protected:
    Usb3Check() { Recorder::Get().Reset(); }
};

TEST_F(Usb3Check, TheFirstBoardDecidesTheUsbSpeed) {
    const std::string fast = "HCD[0]-HUB-UPT[4]-DEV";
    const std::string slow = "HCD[0]-HUB-UPT[3]-DEV";
    bool superSpeed = false;
    Recorder::Get().SetUsbPaths({fast, slow});
    EXPECT_TRUE(FindBoardUsbSpeed(superSpeed));
    EXPECT_TRUE(superSpeed);
    Recorder::Get().SetUsbPaths({slow, fast});
    support::Output output;
    EXPECT_TRUE(FindBoardUsbSpeed(superSpeed));
    EXPECT_FALSE(superSpeed);
    EXPECT_TRUE(support::MatchesGolden("IsConnectedOnU3", "a slow board first", output.End()));
    EXPECT_EQ(Recorder::Get().Calls(),
              (Calls{"EnumAllHCD()", "GetSpecifyDeviceTreePath(12903, 22354)", "EraseList()",
                     "EnumAllHCD()", "GetSpecifyDeviceTreePath(12903, 22354)", "EraseList()"}));
}

TEST_F(Usb3Check, TheSpeedMayStandAnywhereInThePath) {
    for (const char* path : {"UPT[4]-DEV", "UPT[4]-DEV-more", "HCD-UPT[4]-DEV-HUB-UPT[3]"}) {
        Recorder::Get().SetUsbPaths({path});
        bool superSpeed = false;
        EXPECT_TRUE(FindBoardUsbSpeed(superSpeed));
        EXPECT_TRUE(superSpeed) << path;
    }
    for (const char* path : {"", "UPT[4]", "UPT[5]-DEV", "upt[4]-dev"}) {
        Recorder::Get().SetUsbPaths({path});
        bool superSpeed = true;
        EXPECT_TRUE(FindBoardUsbSpeed(superSpeed));
        EXPECT_FALSE(superSpeed) << path;
    }
}

TEST_F(Usb3Check, OneCallersUsbTreeIsNeverErasedByAnother) {
    Recorder::Get().SetUsbPaths({"UPT[4]-DEV"});
    const auto ask = [] {
        for (int i = 0; i < 200; ++i) {
            bool superSpeed = false;
            FindBoardUsbSpeed(superSpeed);
        }
    };
    std::thread other(ask);
    ask();
    other.join();
    // Each caller builds, looks up and frees before the next begins.
    std::vector<std::string> calls = Recorder::Get().CallsInOrder();
    ASSERT_EQ(calls.size(), 1200u);
    for (std::size_t i = 0; i < calls.size(); i += 3) {
        ASSERT_EQ(calls[i], "EnumAllHCD()");
        ASSERT_EQ(calls[i + 2], "EraseList()");
    }
}

TEST_F(Usb3Check, WithoutABoardTheUsbAnswerIsUntouched) {
    bool superSpeed = true;
    EXPECT_FALSE(FindBoardUsbSpeed(superSpeed));
    EXPECT_TRUE(superSpeed);
}

}  // namespace
}  // namespace Korvex3Sync::tests
