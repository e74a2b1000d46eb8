#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <future>
#include <mutex>
#include <utility>

#include "interface/Connected.h"
#include "platform/os/TimeScale.h"
#include "support/Deadline.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;

constexpr std::chrono::milliseconds kLongEnough{100};  // for a call that nothing stops

/// Operations of one handle that meet each other on different threads.
class Overlap : public Connected {
protected:
    void SetUp() override { ASSERT_EQ(Connect(), STATUS_SUCCESS); }

    /// Starts a call on another thread, which must not end while the calling one is at work.
    template <class Call>
    static std::future<RETSTATUS> StartAndSeeItWait(Call call) {
        auto other = std::async(std::launch::async, std::move(call));
        EXPECT_EQ(other.wait_for(kLongEnough), std::future_status::timeout);
        return other;
    }
};

TEST_F(Overlap, AnOperationWaitsWhileASnapshotRestartsTheCameras) {
    const os::ScopedTimeScale fast(0.1);
    GiveColorFrames();
    std::future<RETSTATUS> other;
    Recorder::Get().OnCall("ResetCameraState", [&] {
        other = StartAndSeeItWait([&] { return SetLaserLineDutioRatio(m_handle, 77); });
    });
    std::vector<unsigned char*> images;
    int width = 0;
    int height = 0;
    double exposure = 1.0;
    int gain = 1;
    EXPECT_EQ(SnapColorImage(m_handle, images, width, height, 0, exposure, gain, CONTROL_ROUTE_0),
              STATUS_SUCCESS);
    ASSERT_TRUE(other.valid());
    EXPECT_EQ(other.get(), STATUS_SUCCESS);
    for (unsigned char* image : images) {
        delete[] image;
    }
}

TEST_F(Overlap, ACallThatMeetsTheOpeningOfTheBoardOpensNoSecondOne) {
    Recorder::Get().FailAlways("zr3DInitHidDev");
    ASSERT_EQ(ReconnectDevice(m_handle), STATUS_FAILED) << "no board is open from now on";
    Recorder::Get().FailAlways("zr3DInitHidDev", false);
    const auto opened = Recorder::Get().Count("zr3DInitHidDev");
    std::future<RETSTATUS> other;
    Recorder::Get().OnCall("zr3DInitHidDev", [&] {
        if (!other.valid()) {
            other = StartAndSeeItWait([&] { return ReconnectDevice(m_handle, false, false); });
        }
    });
    EXPECT_EQ(ReconnectDevice(m_handle, false, false), STATUS_SUCCESS);
    ASSERT_TRUE(other.valid());
    EXPECT_EQ(other.get(), STATUS_SUCCESS);
    EXPECT_EQ(Recorder::Get().Count("zr3DInitHidDev"), opened + 1);
}

/// How many polls there had been when it was called first.
class FirstReport {
public:
    static void Receive(const void* const& context, const unsigned char&, const unsigned char&) {
        auto* const report = static_cast<FirstReport*>(const_cast<void*>(context));
        const std::lock_guard lock(report->m_mutex);
        if (report->m_polls == 0) {
            report->m_polls = Recorder::Get().Count("zr3DQueryCurrentStatus");
        }
        report->m_changed.notify_all();
    }
    /// 0 when no report comes.
    std::uint64_t Wait() {
        std::unique_lock lock(m_mutex);
        m_changed.wait_for(lock, kDeadline, [this] { return m_polls > 0; });
        return m_polls;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::uint64_t m_polls = 0;
};

TEST_F(Overlap, AStatusCallbackThatIsChangedBeforeItsFirstReportWaitsForFourPollsAgain) {
    const os::ScopedTimeScale fast(0.25);
    FirstReport first;
    FirstReport second;
    const auto polls = [] { return Recorder::Get().Count("zr3DQueryCurrentStatus"); };
    const auto before = polls();
    SetStatusCallBackFunction(m_handle, &FirstReport::Receive, &first);
    ASSERT_TRUE(Recorder::Get().WaitForCount("zr3DQueryCurrentStatus", before + 2));
    const auto atChange = polls();
    SetStatusCallBackFunction(m_handle, &FirstReport::Receive, &second);
    // The poll that was under way at the change may be the first of the four.
    EXPECT_GE(second.Wait(), atChange + 4);
    SetStatusCallBackFunction(m_handle, nullptr, nullptr);
}

}  // namespace
}  // namespace Korvex3Sync::tests
