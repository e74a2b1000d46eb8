#include <gtest/gtest.h>

#include <functional>

#include "no_memory/FailingAllocation.h"
#include "recorder/Recorder.h"
#include "support/Accounted.h"
#include "support/FramePixels.h"
#include "support/PackedFrames.h"
#include "sync/Head.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;

/// A scan of a recorded head whose grab thread runs out of memory.
class ScanWithoutMemory : public testing::Test {
protected:
    using Images = std::vector<unsigned char*>;

    ScanWithoutMemory() {
        Recorder::Get().Reset();
        EXPECT_EQ(ConnectRecorded(m_manager), STATUS_SUCCESS);
        EXPECT_EQ(m_manager.Board().EnableVideoTrigger(TRIGGER_LASER_LINES_COLOR, true),
                  STATUS_SUCCESS);
        m_manager.Frames().SetScanCallBackFunction(&ScanWithoutMemory::Receive, this);
    }
    void Mono(unsigned char key) { Push(support::MonoFrame(kPixels, 10, 11, key)); }
    void Color(unsigned char key) { Push(support::ColorFrame(kPixels, 30, key)); }
    /// The account when all frames that were pushed have been handled.
    ScanStatistics Handled() {
        EXPECT_TRUE(Recorder::Get().WaitForHandled(m_pushed));
        ScanStatistics statistics;
        EXPECT_EQ(m_manager.Frames().GetScanStatistics(statistics), STATUS_SUCCESS);
        return statistics;
    }

    /// Run on the grab thread in each callback.
    std::function<void(Images&)> m_inCallback = [](Images&) {};

private:
    static void Receive(const void* const& context, Images& images, const int&, const int&,
                        std::vector<int>&) {
        static_cast<const ScanWithoutMemory*>(context)->m_inCallback(images);
    }
    void Push(std::vector<unsigned char> bytes) {
        Recorder::Get().PushSnap({0, false, std::move(bytes)});
        ++m_pushed;
    }

    std::uint64_t m_pushed = 0;
    IManagerSync m_manager;
};

TEST_F(ScanWithoutMemory, LosesTheSetWhoseCallbackCannotBeCalledAndGoesOn) {
    // The application keeps the vector of the first two sets. The colour frame of the third needs
    // no memory until its set is delivered, and gets none then.
    m_inCallback = [](Images& images) { const Images kept = std::move(images); };
    int frames = 0;
    Recorder::Get().OnCall("GetResolution", [&frames] { FailAllocation(++frames == 6 ? 1 : 0); });
    for (unsigned char key = 0; key < 4; ++key) {
        Mono(key);
        Color(key);
    }
    const ScanStatistics statistics = Handled();
    EXPECT_EQ(statistics.setsWithoutCallback, 1u);
    EXPECT_EQ(statistics.setsDelivered, 3u);
    EXPECT_EQ(statistics.missingKeys, 0u);
    EXPECT_EQ(support::AccountedTriggers(statistics), 4u);
}

}  // namespace
}  // namespace Korvex3Sync::tests
