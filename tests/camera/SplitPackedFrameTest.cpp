#include <gtest/gtest.h>

#include "camera/Listener.h"
#include "camera/PhysicalCameraThread.h"
#include "recorder/Recorder.h"
#include "support/PackedFrames.h"

namespace Korvex3Sync {
namespace {

class SplitPackedFrame : public testing::Test {
protected:
    SplitPackedFrame() { recorder::Recorder::Get().Reset(); }

    void Open() {
        ASSERT_TRUE(m_camera.InializeCamera("KV00R1"));
        ASSERT_TRUE(m_camera.OpenCamera("KV00R1", 8, 4));
    }
    bool Split(const unsigned char* data) {
        return m_camera.SplitPackedFrame(m_images, m_widths, m_heights, m_channels, data, m_pool);
    }
    ~SplitPackedFrame() override {
        for (unsigned char* image : m_images) {
            m_pool.Release(image);
        }
    }

    SilentListener m_listener;
    CPhysicalCameraThread m_camera{&m_listener};
    ImagePool m_pool;
    std::vector<unsigned char*> m_images;
    std::vector<int> m_widths;
    std::vector<int> m_heights;
    std::vector<int> m_channels;
};

TEST_F(SplitPackedFrame, AMonoFrameGivesTwoImages) {
    Open();
    const auto frame = support::MonoFrame(32, 11, 22, 7);
    ASSERT_TRUE(Split(frame.data()));
    ASSERT_EQ(m_images.size(), 2u);
    EXPECT_EQ(m_widths, (std::vector<int>{8, 8}));
    EXPECT_EQ(m_heights, (std::vector<int>{4, 4}));
    EXPECT_EQ(m_channels, (std::vector<int>{1, 1}));
    EXPECT_EQ(m_images[0][31], 11);
    EXPECT_EQ(m_images[1][31], 22);
    EXPECT_EQ(m_images[1][3], 7) << "the key is a pixel too";
}

TEST_F(SplitPackedFrame, AMarkerFrameGivesOneColourImage) {
    Open();
    const auto frame = support::ColorFrame(32, 33, 9);
    ASSERT_TRUE(Split(frame.data()));
    ASSERT_EQ(m_images.size(), 1u);
    EXPECT_EQ(m_widths, std::vector<int>{8});
    EXPECT_EQ(m_heights, std::vector<int>{4});
    EXPECT_EQ(m_channels, std::vector<int>{1});
    EXPECT_EQ(m_images[0][31], 33);
}

TEST_F(SplitPackedFrame, FailsWithoutACameraOrWithoutData) {
    const auto frame = support::MonoFrame(32, 1, 2, 3);
    EXPECT_FALSE(Split(frame.data()));
    Open();
    EXPECT_FALSE(Split(nullptr));
    EXPECT_TRUE(m_images.empty());
    EXPECT_TRUE(m_widths.empty());
}

TEST_F(SplitPackedFrame, ASizeThatHoldsNoPixelIsRefused) {
    ASSERT_TRUE(m_camera.InializeCamera("KV00R1"));
    ASSERT_TRUE(m_camera.OpenCamera("KV00R1", 0, 0));
    const auto frame = support::MonoFrame(32, 1, 2, 3);
    EXPECT_FALSE(Split(frame.data()));
}

TEST_F(SplitPackedFrame, MakesNoNewBufferOnceBuffersComeBack) {
    Open();
    const auto frame = support::MonoFrame(32, 1, 2, 3);
    for (int i = 0; i < 10; ++i) {
        ASSERT_TRUE(Split(frame.data()));
        for (unsigned char* image : m_images) {
            m_pool.Release(image);
        }
        m_images.clear();
    }
    EXPECT_EQ(m_pool.Free(), 2u);
}

}  // namespace
}  // namespace Korvex3Sync
