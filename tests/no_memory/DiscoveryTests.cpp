#include <gtest/gtest.h>

#include <new>

#include "camera/CameraDiscovery.h"
#include "no_memory/FailingAllocation.h"
#include "recorder/Recorder.h"

namespace Korvex3Sync {
namespace {

using recorder::Recorder;

/// A call of the camera library after which the discovery finds no memory.
struct Step {
    const char* call;
    int nth;
};

class DiscoveryWithoutMemory : public testing::TestWithParam<Step> {};

TEST_P(DiscoveryWithoutMemory, ReleasesEveryInstanceThatItMade) {
    Recorder::Get().Reset();
    Recorder::Get().Attach({{"KV00A"}, {"KV00B"}, {"KV00C"}});
    int left = GetParam().nth;
    Recorder::Get().OnCall(GetParam().call, [&left] {
        if (--left == 0) {
            FailAllocation(2);  // the recorder takes one to answer
        }
    });
    std::vector<char*> serials;
    std::vector<int> widths;
    std::vector<int> heights;
    std::vector<bool> isColor;
    EXPECT_THROW(GetAllSpecifyTypeCameraInformation("KV00", serials, widths, heights, isColor),
                 std::bad_alloc);
    FailAllocation(0);
    EXPECT_TRUE(serials.empty());
    const auto made = Recorder::Get().Count("CreateCamera");
    EXPECT_GE(made, 1u);
    EXPECT_EQ(Recorder::Get().Count("CloseCamera"), made);
    EXPECT_EQ(Recorder::Get().Count("ReleaseCamera"), made);
}

INSTANTIATE_TEST_SUITE_P(After, DiscoveryWithoutMemory,
                         testing::Values(Step{"GetDeviceTotal", 1}, Step{"CreateCamera", 2},
                                         Step{"CreateCamera", 3}),
                         [](const auto& step) {
                             return step.param.call + std::to_string(step.param.nth);
                         });

}  // namespace
}  // namespace Korvex3Sync
