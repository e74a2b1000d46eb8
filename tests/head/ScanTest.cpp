#include <chrono>
#include <thread>

#include "head/HeadSession.h"
#include "support/WaitUntil.h"
#include "virtual_head/images/ImageSource.h"

namespace Korvex3Sync::tests {
namespace {

using support::WaitUntil;

class Scan : public HeadSession {};

struct ModeRow {
    CAMERA_TRIGGER_MODE mode;
    std::size_t images;
};

class ScanModes : public HeadSession, public testing::WithParamInterface<ModeRow> {};

TEST_P(ScanModes, GiveTheSetsOfTheModeInTheOrderOfTheTriggers) {
    Request(SmallHead());
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    SetCollector sets;
    const EndedFirst ended(*this);
    ASSERT_EQ(SetScanCallBackFunction(m_handle, &SetCollector::Receive, &sets), STATUS_SUCCESS);
    ASSERT_EQ(Trigger(GetParam().mode, 2), STATUS_SUCCESS);
    ASSERT_TRUE(sets.WaitFor(300)) << sets.Count();
    ASSERT_EQ(TriggerOff(), STATUS_SUCCESS);
    ASSERT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
    std::size_t number = 0;
    for (const ImageSet& set : sets.Sets()) {
        ASSERT_EQ(set.images.size(), GetParam().images) << "set " << number;
        EXPECT_EQ(set.info, std::vector<int>(GetParam().images, 1));
        EXPECT_EQ(set.width, 64);
        EXPECT_EQ(set.height, 32);
        ASSERT_EQ(set.Key(), number % 256) << "no trigger is missing and none comes twice";
        if (set.images.size() == 3) {
            ASSERT_EQ(set.images[2][3], set.Key()) << "colour of the same trigger";
        }
        ++number;
    }
}

INSTANTIATE_TEST_SUITE_P(All, ScanModes,
                         testing::Values(ModeRow{TRIGGER_LASER_LINES, 2},
                                         ModeRow{TRIGGER_PATTERN, 2},
                                         ModeRow{TRIGGER_PATTERN_COLOR, 3},
                                         ModeRow{TRIGGER_LASER_LINES_COLOR, 3}),
                         [](const auto& row) { return "Mode" + std::to_string(row.param.mode); });

TEST_F(Scan, DeliversTheVeryPixelsThatTheSensorsSaw) {
    Request(SmallHead());
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    SetCollector sets;
    const EndedFirst ended(*this);
    SetScanCallBackFunction(m_handle, &SetCollector::Receive, &sets);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 2), STATUS_SUCCESS);
    ASSERT_TRUE(sets.WaitFor(20));
    const auto light = Head().Board().State();
    TriggerOff();
    std::vector<std::uint8_t> packed(2 * 64 * 32);
    std::size_t trigger = 0;
    for (const ImageSet& set : sets.Sets()) {
        for (bool color : {false, true}) {
            Head().Images().WritePacked(
                {trigger, static_cast<std::uint8_t>(trigger), color, light, {}}, packed.data());
            for (std::size_t pixel = 0; pixel < 64 * 32; ++pixel) {
                const std::size_t place = 8 * (pixel / 4) + 3 - pixel % 4;
                if (color) {
                    ASSERT_EQ(set.images[2][pixel], packed[place + 4]) << pixel;
                } else {
                    ASSERT_EQ(set.images[0][pixel], packed[place]) << pixel;
                    ASSERT_EQ(set.images[1][pixel], packed[place + 4]) << pixel;
                }
            }
        }
        ++trigger;
    }
}

TEST_F(Scan, NothingComesOnceTheTriggerIsOffAndTheCallbackCleared) {
    Request(SmallHead());
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    SetCollector sets;
    const EndedFirst ended(*this);
    SetScanCallBackFunction(m_handle, &SetCollector::Receive, &sets);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 2), STATUS_SUCCESS);
    ASSERT_TRUE(sets.WaitFor(5));
    SetScanCallBackFunction(m_handle, nullptr, nullptr);
    const std::size_t count = sets.Count();
    const auto triggers = Head().Clock().Triggers();
    ASSERT_TRUE(WaitUntil([&] { return Head().Clock().Triggers() >= triggers + 20; }));
    EXPECT_EQ(sets.Count(), count);
    TriggerOff();
}

TEST_F(Scan, DisconnectingWhileSetsStreamEndsEverything) {
    Request(SmallHead());
    for (int round = 0; round < 10; ++round) {
        ASSERT_EQ(Connect(), STATUS_SUCCESS);
        SetCollector sets;
        const EndedFirst ended(*this);
        SetScanCallBackFunction(m_handle, &SetCollector::Receive, &sets);
        ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 1), STATUS_SUCCESS);
        ASSERT_TRUE(sets.WaitFor(5));
        ASSERT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
        const std::size_t count = sets.Count();
        const auto triggers = Head().Clock().Triggers();
        ASSERT_TRUE(WaitUntil([&] { return Head().Clock().Triggers() >= triggers + 5; }));
        ASSERT_EQ(sets.Count(), count) << "a set came after the disconnect";
    }
}

TEST_F(Scan, ASlowCallbackDelaysSetsButMixesNoneUp) {
    Request(SmallHead());
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    SetCollector sets([](const ImageSet& set, std::size_t number) {
        if (number % 10 == 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(30));
        }
        EXPECT_EQ(set.Key(), number % 256);
        ASSERT_EQ(set.images.size(), 3u);
        EXPECT_EQ(set.images[2][3], set.Key());
    });
    const EndedFirst ended(*this);
    SetScanCallBackFunction(m_handle, &SetCollector::Receive, &sets);
    ASSERT_EQ(Trigger(TRIGGER_PATTERN_COLOR, 2), STATUS_SUCCESS);
    EXPECT_TRUE(sets.WaitFor(100));
    TriggerOff();
    DisConnectDevice(m_handle);
}

TEST_F(Scan, AFullSizeHeadGivesWholeSets) {
    virtual_head::HeadDescription description;
    description.cameraBuffers = 4096;
    Request(description);
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    SetCollector sets([](const ImageSet& set, std::size_t number) {
        EXPECT_EQ(set.Key(), number % 256);
        EXPECT_EQ(set.images.size(), 3u);
        EXPECT_EQ(set.width * set.height, 1280 * 1024);
    });
    const EndedFirst ended(*this);
    SetScanCallBackFunction(m_handle, &SetCollector::Receive, &sets);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 5), STATUS_SUCCESS);
    EXPECT_TRUE(sets.WaitFor(30)) << sets.Count();  // the small heads give many
    TriggerOff();
    DisConnectDevice(m_handle);
}

}  // namespace
}  // namespace Korvex3Sync::tests
