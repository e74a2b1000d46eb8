#include "virtual_head/faults/Faults.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

namespace Korvex3Sync::tests {
namespace {

using namespace virtual_head;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto kGenerous = 60s;

TEST(Faults, NothingOrderedMeansThatNothingFails) {
    Faults faults;
    EXPECT_FALSE(faults.Meet("SnapShot"));
    EXPECT_THAT(faults.Unused(), IsEmpty());
}

TEST(Faults, CallFailsAsOftenAsOrdered) {
    Faults faults;
    ASSERT_TRUE(faults.Fail("SnapShot", 2));
    EXPECT_TRUE(faults.Meet("SnapShot"));
    EXPECT_TRUE(faults.Meet("SnapShot"));
    EXPECT_FALSE(faults.Meet("SnapShot"));
}

TEST(Faults, OrdersOfOneCallLeaveTheOthersAlone) {
    Faults faults;
    ASSERT_TRUE(faults.Fail("zr3DProject", 1));
    EXPECT_FALSE(faults.Meet("SnapShot"));
    EXPECT_TRUE(faults.Meet("zr3DProject"));
}

TEST(Faults, UnknownNameAndLessThanOneTimeAreRefused) {
    Faults faults;
    for (const char* name : {"", "snapshot", "SnapShot ", "zr3DSetLaser", "OpenOrClose"}) {
        EXPECT_FALSE(faults.Fail(name, 1)) << name;
        EXPECT_FALSE(faults.Slow(name, 1ms, 1)) << name;
        EXPECT_FALSE(faults.Hang(name)) << name;
    }
    EXPECT_FALSE(faults.Fail("SnapShot", 0));
    EXPECT_FALSE(faults.Fail("SnapShot", -1));
    EXPECT_FALSE(faults.Slow("SnapShot", 1ms, 0));
    EXPECT_FALSE(faults.Slow("SnapShot", -1ms, 1));
    EXPECT_THAT(faults.Unused(), IsEmpty());
}

TEST(Faults, EveryPlatformLibraryHasKnownCalls) {
    for (const char* name :
         {"zr3DInitHidDev", "zr3DExitHidDev", "zr3DQueryFirmwareVersionFast", "zr3DSetLaserEnable",
          "zr3DSetDutioRatio", "zr3DReadUserInfomation", "CreateCamera", "UnlockOthers",
          "EnumAllHCD", "GetSpecifyDeviceTreePath", "EraseList"}) {
        EXPECT_TRUE(Faults::Known(name)) << name;
    }
}

TEST(Faults, UnusedNamesWhatIsLeft) {
    Faults faults;
    ASSERT_TRUE(faults.Fail("SnapShot", 3));
    ASSERT_TRUE(faults.Slow("zr3DProject", 0ms, 2));
    ASSERT_TRUE(faults.Hang("EnumAllHCD"));
    faults.Meet("SnapShot");
    faults.Meet("zr3DProject");
    EXPECT_THAT(faults.Unused(), ElementsAre("hang EnumAllHCD: 1 left", "fail SnapShot: 2 left",
                                             "slow zr3DProject: 1 left"));
    faults.Clear();
    EXPECT_THAT(faults.Unused(), IsEmpty());
    EXPECT_FALSE(faults.Meet("SnapShot"));
}

TEST(Faults, SlowCallTakesAtLeastTheExtraTimeAndSucceeds) {
    Faults faults;
    ASSERT_TRUE(faults.Slow("SnapShot", 30ms, 1));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(faults.Meet("SnapShot"));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 30ms);
    EXPECT_THAT(faults.Unused(), IsEmpty());
}

TEST(Faults, SlowCallCanFailToo) {
    Faults faults;
    ASSERT_TRUE(faults.Slow("SnapShot", 1ms, 1));
    ASSERT_TRUE(faults.Fail("SnapShot", 1));
    EXPECT_TRUE(faults.Meet("SnapShot"));
    EXPECT_FALSE(faults.Meet("SnapShot"));
}

TEST(Faults, HangBlocksUntilItIsReleasedAndThenFails) {
    Faults faults;
    ASSERT_TRUE(faults.Hang("SnapShot"));
    std::atomic<bool> returned = false;
    std::atomic<bool> failed = false;
    std::thread caller([&] {
        failed = faults.Meet("SnapShot");
        returned = true;
    });
    EXPECT_TRUE(faults.WaitForHang("SnapShot", kGenerous));
    EXPECT_FALSE(returned);
    EXPECT_FALSE(faults.Meet("zr3DProject")) << "another call is not held up";
    EXPECT_FALSE(faults.Meet("SnapShot")) << "one hang holds one call";
    faults.ReleaseHangs();
    caller.join();
    EXPECT_TRUE(failed);
    EXPECT_THAT(faults.Unused(), IsEmpty());
}

TEST(Faults, ReleaseLeavesAHangThatNobodyMetOrdered) {
    Faults faults;
    ASSERT_TRUE(faults.Hang("SnapShot"));
    faults.ReleaseHangs();
    std::thread caller([&] { faults.Meet("SnapShot"); });
    EXPECT_TRUE(faults.WaitForHang("SnapShot", kGenerous));
    faults.ReleaseHangs();
    caller.join();
}

TEST(Faults, ClearLeavesACallHangingUntilItIsReleased) {
    Faults faults;
    ASSERT_TRUE(faults.Hang("SnapShot"));
    std::thread caller([&] { EXPECT_TRUE(faults.Meet("SnapShot")); });
    ASSERT_TRUE(faults.WaitForHang("SnapShot", kGenerous));
    faults.Clear();
    EXPECT_TRUE(faults.WaitForHang("SnapShot", 0ms));
    faults.ReleaseHangs();
    caller.join();
}

TEST(Faults, WaitForHangGivesUpAtItsLimit) {
    Faults faults;
    EXPECT_FALSE(faults.WaitForHang("SnapShot", 5ms));
}

}  // namespace
}  // namespace Korvex3Sync::tests
