#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "camera/discovery/CameraDiscovery.h"
#include "no_memory/FailingAllocation.h"
#include "recorder/Recorder.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;

/// A call of the camera library, from which on the discovery finds no memory once.
struct Step {
    const char* call;
    int nth;
};

/// Runs `action` inside the `nth` call of this name.
void AtCall(const Step& step, std::function<void()> action) {
    const auto left = std::make_shared<int>(step.nth);  // the recorder calls copies
    Recorder::Get().OnCall(step.call, [left, action = std::move(action)] {
        if (--*left == 0) {
            action();
        }
    });
}

class DiscoveryWithoutMemory : public testing::TestWithParam<Step> {};

TEST_P(DiscoveryWithoutMemory, ReleasesEveryInstanceThatItMade) {
    const std::vector<recorder::Camera> cameras{{"KV00A"}, {"KV00B"}, {"KV00C"}};
    int failures = 0;
    for (bool failed = true; failed;) {
        SCOPED_TRACE("allocation " + std::to_string(failures + 1));
        Recorder::Get().Reset();
        Recorder::Get().Attach(cameras);
        AtCall(GetParam(), [nth = failures + 1] { FailAllocation(nth); });
        // What the recorder takes while the instances are released is not the library's.
        AtCall({"GetGainRange", static_cast<int>(cameras.size())}, [] { FailAllocation(0); });
        std::vector<char*> serials;
        std::vector<int> widths;
        std::vector<int> heights;
        std::vector<bool> isColor;
        try {
            EXPECT_EQ(GetAllSpecifyTypeCameraInformation("KV00", serials, widths, heights, isColor),
                      static_cast<int>(cameras.size()));
            failed = false;
        } catch (const std::bad_alloc&) {
            ++failures;
        }
        FailAllocation(0);
        EXPECT_EQ(Recorder::Get().Handles(), 0u);
        EXPECT_EQ(Recorder::Get().Count("CloseCamera"), Recorder::Get().Count("ReleaseCamera"));
        EXPECT_GE(Recorder::Get().Count("ReleaseCamera"), 1u);
        for (const char* serial : serials) {
            delete[] serial;
        }
    }
    EXPECT_GT(failures, 0);
}

INSTANTIATE_TEST_SUITE_P(After, DiscoveryWithoutMemory,
                         testing::Values(Step{"GetDeviceTotal", 1}, Step{"CreateCamera", 2},
                                         Step{"CreateCamera", 3}),
                         [](const auto& step) {
                             return step.param.call + std::to_string(step.param.nth);
                         });

}  // namespace
}  // namespace Korvex3Sync::tests
