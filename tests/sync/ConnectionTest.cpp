#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Golden.h"
#include "sync/Head.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using support::MatchesGolden;
using support::Output;
using testing::Contains;
using Calls = std::vector<std::string>;

class Connection : public testing::Test {
protected:
    Connection() { Recorder::Get().Reset(); }
    RETSTATUS Connect(const SerialList& serials, const std::vector<int>& widths,
                      const std::vector<int>& heights) {
        Output output;
        const RETSTATUS status =
            m_manager->Connect("any", "BOARD", serials.Pointers(), widths, heights);
        m_output = output.End();
        return status;
    }
    /// Whether the last Connect logged and printed what it should.
    testing::AssertionResult Says(const std::string& section) const {
        return MatchesGolden("Connect", section, m_output);
    }

    std::vector<std::string> m_output;
    std::unique_ptr<IManagerSync> m_manager = std::make_unique<IManagerSync>();
};

TEST_F(Connection, OpensBoardThenCamerasThenAsksTheStatusAndClosesEverythingInOrder) {
    EXPECT_EQ(Connect({"KV00R1", "KV00R1"}, {8, 8}, {4, 4}), STATUS_SUCCESS);
    m_manager.reset();
    EXPECT_EQ(Recorder::Get().Calls(),
              (Calls{"zr3DInitHidDev(null, 3267, 5752, BOARD)", "CreateCamera(KV00R1)",
                     "GetDeviceTotal(C1)", "OpenCamera(C1, KV00R1, 8, 4)", "GetColorMode(C1)",
                     "StartCamera(C1, 0)", "zr3DQueryCurrentStatus(B1)", "UnlockOthers(C1)",
                     "CloseCamera(C1)", "ReleaseCamera(C1)", "zr3DProject(B1, 0)",
                     "zr3DExitHidDev(B1)"}));
    EXPECT_TRUE(Says("one camera for two serials"));
}

TEST_F(Connection, EqualNeighboursShareOneCameraAndTheOthersGetTheirOwn) {
    Recorder::Get().Attach({{"A"}, {"A"}, {"B"}});
    EXPECT_EQ(Connect({"A", "A", "B"}, {8, 8, 16}, {4, 4, 2}), STATUS_SUCCESS);
    EXPECT_TRUE(Says("two cameras for three serials"));
    const Calls calls = Recorder::Get().Calls();
    EXPECT_THAT(calls, Contains("OpenCamera(C1, A, 8, 4)"));
    EXPECT_THAT(calls, Contains("OpenCamera(C2, B, 16, 2)"));
    EXPECT_EQ(Recorder::Get().Count("OpenCamera"), 2u);
}

TEST_F(Connection, TheSameSerialFurtherDownOpensAThirdCamera) {
    Recorder::Get().Attach({{"A"}, {"B"}, {"A"}});
    EXPECT_EQ(Connect({"A", "B", "A"}, {8, 8, 8}, {4, 4, 4}), STATUS_SUCCESS);
    EXPECT_EQ(Recorder::Get().Count("OpenCamera"), 3u);
    EXPECT_THAT(Recorder::Get().Calls(), Contains("OpenCamera(C3, A, 8, 4)"));
}

TEST_F(Connection, AnEmptySerialListIsABadParameterAndTheBoardIsClosedAgain) {
    EXPECT_EQ(Connect({}, {}, {}), STATUS_PARAMETER);
    EXPECT_EQ(Recorder::Get().Calls(),
              (Calls{"zr3DInitHidDev(null, 3267, 5752, BOARD)", "zr3DExitHidDev(B1)"}));
}

TEST_F(Connection, ListsOfUnequalLengthAreABadParameterAndNothingIsOpened) {
    EXPECT_EQ(Connect({"A"}, {8, 8}, {4, 4}), STATUS_PARAMETER);
    EXPECT_EQ(Connect({"A", "A"}, {8, 8}, {4}), STATUS_PARAMETER);
    EXPECT_TRUE(Recorder::Get().Calls().empty());
}

TEST_F(Connection, ANullDeviceNameIsABadParameterAndNothingIsOpened) {
    SerialList serials{"A"};
    EXPECT_EQ(m_manager->Connect(nullptr, "BOARD", serials.Pointers(), {8}, {4}), STATUS_PARAMETER);
    EXPECT_TRUE(Recorder::Get().Calls().empty());
}

TEST_F(Connection, ANullBoardSerialIsABadParameter) {
    SerialList serials{"A"};
    Output output;
    EXPECT_EQ(m_manager->Connect("any", nullptr, serials.Pointers(), {8}, {4}), STATUS_PARAMETER);
    EXPECT_TRUE(MatchesGolden("Connect", "null board serial", output.End()));
    EXPECT_TRUE(Recorder::Get().Calls().empty());
}

TEST_F(Connection, ABoardThatDoesNotOpenIsStatusOne) {
    Recorder::Get().FailAlways("zr3DInitHidDev");
    EXPECT_EQ(Connect({"KV00R1"}, {8}, {4}), STATUS_PROJECTOR);
    EXPECT_EQ(Recorder::Get().Count("CreateCamera"), 0u);
}

TEST_F(Connection, WhatABoardThatDoesNotOpenLeftIsClosedWithTheManager) {
    Recorder::Get().LeaveHandlesOnFailure();
    Recorder::Get().FailAlways("zr3DInitHidDev");
    auto manager = std::make_unique<IManagerSync>();
    EXPECT_EQ(ConnectRecorded(*manager), STATUS_PROJECTOR);
    manager.reset();
    EXPECT_EQ(Recorder::Get().Calls(), (Calls{"zr3DInitHidDev(null, 3267, 5752, BOARD)",
                                              "zr3DProject(B1, 0)", "zr3DExitHidDev(B1)"}));
}

TEST_F(Connection, ThirdCameraThatDoesNotOpenClosesTheFirstTwoAndDestroysAll) {
    Recorder::Get().Attach({{"A"}, {"B"}, {"C"}});
    Recorder::Get().FailNth("OpenCamera", 3);
    EXPECT_EQ(Connect({"A", "B", "C"}, {8, 8, 8}, {4, 4, 4}), STATUS_CAMERA);
    EXPECT_EQ(Recorder::Get().Calls(), (Calls{"zr3DInitHidDev(null, 3267, 5752, BOARD)",
                                              "CreateCamera(A)",
                                              "CreateCamera(B)",
                                              "CreateCamera(C)",
                                              "GetDeviceTotal(C1)",
                                              "GetDeviceTotal(C2)",
                                              "GetDeviceTotal(C3)",
                                              "OpenCamera(C1, A, 8, 4)",
                                              "GetColorMode(C1)",
                                              "StartCamera(C1, 0)",
                                              "OpenCamera(C2, B, 8, 4)",
                                              "GetColorMode(C2)",
                                              "StartCamera(C2, 0)",
                                              "OpenCamera(C3, C, 8, 4)",
                                              "CloseCamera(C1)",
                                              "ReleaseCamera(C1)",
                                              "CloseCamera(C2)",
                                              "ReleaseCamera(C2)",
                                              "ReleaseCamera(C3)",
                                              "zr3DExitHidDev(B1)"}));
    EXPECT_TRUE(Says("the third camera does not open"));
}

TEST_F(Connection, ACameraThatCannotBeCreatedDestroysThoseBeforeIt) {
    Recorder::Get().FailNth("CreateCamera", 2);
    EXPECT_EQ(Connect({"A", "B"}, {8, 8}, {4, 4}), STATUS_CAMERA);
    EXPECT_EQ(Recorder::Get().Calls(),
              (Calls{"zr3DInitHidDev(null, 3267, 5752, BOARD)", "CreateCamera(A)",
                     "CreateCamera(B)", "ReleaseCamera(C1)", "zr3DExitHidDev(B1)"}));
    EXPECT_TRUE(Says("the second camera cannot be created"));
}

TEST_F(Connection, ACameraLibraryWithoutCamerasIsACameraFailure) {
    Recorder::Get().Attach({});
    EXPECT_EQ(Connect({"A", "B"}, {8, 8}, {4, 4}), STATUS_CAMERA);
    EXPECT_TRUE(Says("no cameras"));
    EXPECT_EQ(Recorder::Get().Count("OpenCamera"), 0u);
    EXPECT_EQ(Recorder::Get().Count("ReleaseCamera"), 2u);
}

TEST_F(Connection, ANullSerialIsACameraFailure) {
    EXPECT_EQ(m_manager->Connect("any", "BOARD", {nullptr}, {8}, {4}), STATUS_CAMERA);
    EXPECT_EQ(Recorder::Get().Count("CreateCamera"), 0u);
}

TEST_F(Connection, ASerialOfTenThousandBytesIsACameraFailureLikeAnyUnknownOne) {
    EXPECT_EQ(Connect({std::string(10000, 'x')}, {8}, {4}), STATUS_CAMERA);
}

TEST_F(Connection, MoreCamerasThanTheCodesCanNumberAreACameraFailure) {
    std::vector<std::string> texts;
    std::vector<char*> serials;
    for (char c = 'a'; c < 'a' + 17; ++c) {
        texts.emplace_back(1, c);
    }
    for (auto& text : texts) {
        serials.push_back(text.data());
    }
    const std::vector<int> sizes(17, 8);
    Output output;
    EXPECT_EQ(m_manager->Connect("any", "BOARD", serials, sizes, sizes), STATUS_CAMERA);
    EXPECT_TRUE(MatchesGolden("Connect", "seventeen cameras", output.End()));
    EXPECT_EQ(Recorder::Get().Count("CreateCamera"), 0u);
    std::string same = "KV00R1";
    const std::vector<char*> equal(17, same.data());
    EXPECT_EQ(m_manager->Connect("any", "BOARD", equal, sizes, sizes), STATUS_CAMERA);
    EXPECT_EQ(Recorder::Get().Count("CreateCamera"), 0u);
}

TEST_F(Connection, SixteenEqualNeighboursShareOneCamera) {
    std::string same = "KV00R1";
    const std::vector<char*> equal(16, same.data());
    EXPECT_EQ(
        m_manager->Connect("any", "BOARD", equal, std::vector<int>(16, 8), std::vector<int>(16, 4)),
        STATUS_SUCCESS);
    EXPECT_EQ(Recorder::Get().Count("OpenCamera"), 1u);
}

TEST_F(Connection, TheDestructorSwitchesTheHeartbeatOffThatWasOn) {
    ASSERT_EQ(ConnectRecorded(*m_manager), STATUS_SUCCESS);
    EXPECT_EQ(m_manager->Board().EnableHeartbeat(true), STATUS_SUCCESS);
    m_manager.reset();
    const Calls calls = Recorder::Get().Calls();
    EXPECT_EQ(Calls(calls.end() - 3, calls.end()),
              (Calls{"zr3DEnableHeartbeat(B1, 0)", "zr3DProject(B1, 0)", "zr3DExitHidDev(B1)"}));
}

TEST_F(Connection, AManagerThatNeverConnectedTouchesNothingWhenItGoes) {
    m_manager.reset();
    EXPECT_TRUE(Recorder::Get().Calls().empty());
}

}  // namespace
}  // namespace Korvex3Sync::tests
