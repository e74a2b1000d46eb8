#include "sync/frames/ColorCatch.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <thread>
#include <vector>

#include "sync/Ledger.h"

namespace Korvex3Sync::tests {
namespace {

class ColorCatchTest : public testing::Test {
protected:
    /// Offers the next image, 1, 2, 3, ...
    bool Catch() {
        Image image = m_ledger.Make();
        return m_catch.Catch(image);
    }
    /// The numbers of the images that the slots held; 0 for an empty slot.
    std::vector<std::uint32_t> TakeAll() {
        std::vector<std::uint32_t> numbers;
        for (const Image& image : m_catch.TakeAll()) {
            numbers.push_back(image ? Ledger::Number(image) : 0);
        }
        return numbers;
    }

    Ledger m_ledger;
    ColorCatch m_catch;
};

using Numbers = std::vector<std::uint32_t>;

TEST_F(ColorCatchTest, ThreeFramesFillTheSlotsInOrderAndDisarm) {
    m_catch.Begin();
    m_catch.Arm();
    const auto event = m_catch.CaughtEvent();
    ASSERT_NE(event, nullptr);
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(m_catch.Armed());
        event->Reset();
        Catch();
        EXPECT_TRUE(event->IsSet()) << "signalled for each frame";
    }
    EXPECT_FALSE(m_catch.Armed());
    EXPECT_EQ(m_ledger.Live(), 3u);
    EXPECT_EQ(TakeAll(), (Numbers{1, 2, 3}));
}

TEST_F(ColorCatchTest, AFrameThatNobodyWaitsForIsNotTaken) {
    Image image = m_ledger.Make();
    EXPECT_FALSE(m_catch.Catch(image));
    EXPECT_EQ(TakeAll(), (Numbers{0, 0, 0}));
    m_catch.Begin();
    m_catch.Arm();
    m_catch.End();
    EXPECT_FALSE(m_catch.Catch(image));
    EXPECT_TRUE(image) << "it stays the caller's";
}

TEST_F(ColorCatchTest, AFrameThatFindsNoRoomReplacesTheLastAndFreesIt) {
    m_catch.Begin();
    m_catch.Arm();
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(Catch());
    }
    m_catch.Arm();  // the slots of the snapshot before are still full
    EXPECT_TRUE(Catch());
    EXPECT_EQ(m_ledger.Released(), Numbers{3});
    EXPECT_EQ(TakeAll(), (Numbers{1, 2, 4}));
}

TEST_F(ColorCatchTest, TakenSlotsAreEmptyAndFillAgain) {
    m_catch.Begin();
    m_catch.Arm();
    Catch();
    TakeAll();
    Catch();
    EXPECT_EQ(TakeAll(), (Numbers{2, 0, 0}));
}

TEST_F(ColorCatchTest, EndClosesTheEventAndKeepsTheSlots) {
    m_catch.Begin();
    m_catch.Arm();
    Catch();
    m_catch.End();
    EXPECT_FALSE(m_catch.Armed());
    EXPECT_EQ(m_catch.CaughtEvent(), nullptr);
    EXPECT_EQ(m_ledger.Live(), 1u);
    m_catch.ReleaseAll();
    EXPECT_EQ(m_ledger.Live(), 0u);
}

TEST_F(ColorCatchTest, WakesTheCallerThatWaits) {
    m_catch.Begin();
    m_catch.Arm();
    const auto event = m_catch.CaughtEvent();
    std::thread grab([&] { Catch(); });
    EXPECT_EQ(event->Wait(std::chrono::milliseconds(60000)), os::WaitResult::Signalled);
    grab.join();
}

}  // namespace
}  // namespace Korvex3Sync::tests
