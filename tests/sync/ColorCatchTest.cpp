#include "sync/ColorCatch.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace Korvex3Sync {
namespace {

class ColorCatchTest : public testing::Test {
protected:
    unsigned char m_pixels[8] = {};
    std::vector<unsigned char*> m_released;
    ColorCatch m_catch{[this](unsigned char* image) { m_released.push_back(image); }};
};

using Slots = std::array<unsigned char*, ColorCatch::kSlots>;

TEST_F(ColorCatchTest, ThreeFramesFillTheSlotsInOrderAndDisarm) {
    m_catch.Begin();
    m_catch.Arm();
    const auto event = m_catch.CaughtEvent();
    ASSERT_NE(event, nullptr);
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(m_catch.Armed());
        event->Reset();
        m_catch.Catch(&m_pixels[i]);
        EXPECT_TRUE(event->IsSet()) << "signalled for each frame";
    }
    EXPECT_FALSE(m_catch.Armed());
    EXPECT_EQ(m_catch.TakeAll(), (Slots{&m_pixels[0], &m_pixels[1], &m_pixels[2]}));
    EXPECT_TRUE(m_released.empty());
}

TEST_F(ColorCatchTest, AFrameThatNobodyWaitsForIsNotTaken) {
    EXPECT_FALSE(m_catch.Catch(&m_pixels[0]));
    EXPECT_EQ(m_catch.TakeAll(), Slots{});
    m_catch.Begin();
    m_catch.Arm();
    m_catch.End();
    EXPECT_FALSE(m_catch.Catch(&m_pixels[0]));
    EXPECT_TRUE(m_released.empty()) << "it stays the caller's";
}

TEST_F(ColorCatchTest, AFrameThatFindsNoRoomReplacesTheLastAndFreesIt) {
    m_catch.Begin();
    m_catch.Arm();
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(m_catch.Catch(&m_pixels[i]));
    }
    m_catch.Arm();  // the slots of the snapshot before are still full
    EXPECT_TRUE(m_catch.Catch(&m_pixels[3]));
    EXPECT_EQ(m_released, std::vector<unsigned char*>{&m_pixels[2]});
    EXPECT_EQ(m_catch.TakeAll(), (Slots{&m_pixels[0], &m_pixels[1], &m_pixels[3]}));
}

TEST_F(ColorCatchTest, TakenSlotsAreEmptyAndFillAgain) {
    m_catch.Begin();
    m_catch.Arm();
    m_catch.Catch(&m_pixels[0]);
    m_catch.TakeAll();
    m_catch.Catch(&m_pixels[1]);
    EXPECT_EQ(m_catch.TakeAll(), (Slots{&m_pixels[1], nullptr, nullptr}));
}

TEST_F(ColorCatchTest, EndClosesTheEventAndKeepsTheSlots) {
    m_catch.Begin();
    m_catch.Arm();
    m_catch.Catch(&m_pixels[0]);
    m_catch.End();
    EXPECT_FALSE(m_catch.Armed());
    EXPECT_EQ(m_catch.CaughtEvent(), nullptr);
    EXPECT_TRUE(m_released.empty());
    m_catch.ReleaseAll();
    EXPECT_EQ(m_released, std::vector<unsigned char*>{&m_pixels[0]});
}

TEST_F(ColorCatchTest, WakesTheCallerThatWaits) {
    m_catch.Begin();
    m_catch.Arm();
    const auto event = m_catch.CaughtEvent();
    std::thread grab([&] { m_catch.Catch(&m_pixels[0]); });
    EXPECT_EQ(event->Wait(std::chrono::milliseconds(60000)), os::WaitResult::Signalled);
    grab.join();
}

}  // namespace
}  // namespace Korvex3Sync
