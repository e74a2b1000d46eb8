#include "sync/board/BoardTranslation.h"

#include <gtest/gtest.h>

#include <climits>

namespace Korvex3Sync::tests {
namespace {

TEST(BoardTranslation, LaserModesKeepTheirNumbers) {
    for (int mode : {0, 1, 2, 3, 9, -1}) {
        EXPECT_EQ(int{ToBoard(LASERWORKMODE{mode})}, mode);
    }
}

TEST(BoardTranslation, AnUnknownProjectionIsOff) {
    for (int type : {0, 1, 2}) {
        EXPECT_EQ(int{ToBoard(PROJECTWORKTYPES{type})}, type);
    }
    for (int type : {3, -1, INT_MAX}) {
        EXPECT_EQ(int{ToBoard(PROJECTWORKTYPES{type})}, 0);
    }
}

TEST(BoardTranslation, DistanceStates2And3AreCrossedOver) {
    EXPECT_EQ(int{ToBoard(DISTANCESTATUS{1})}, 1);
    EXPECT_EQ(int{ToBoard(DISTANCESTATUS{2})}, 3);
    EXPECT_EQ(int{ToBoard(DISTANCESTATUS{3})}, 2);
    for (int state : {0, 4, 7, -1, INT_MIN}) {
        EXPECT_EQ(int{ToBoard(DISTANCESTATUS{state})}, 0);
    }
}

TEST(BoardTranslation, TriggerModesBecomeTheBoardsOwn) {
    const int expected[] = {5, 1, 2, 3, 6, 4, 5, 5, 5, 5};
    for (int mode = 0; mode < 10; ++mode) {
        EXPECT_EQ(int{ToBoard(CAMERA_TRIGGER_MODE{mode}, true)}, expected[mode]) << mode;
        EXPECT_EQ(int{ToBoard(CAMERA_TRIGGER_MODE{mode}, false)}, 5) << mode;
    }
}

TEST(BoardTranslation, RoutesAndStrobeStatesOutsideTheirRangeHaveNoTranslation) {
    for (int route : {0, 1, 2}) {
        ASSERT_TRUE(ToBoard(CONTROLROUTE{route}));
        EXPECT_EQ(int{*ToBoard(CONTROLROUTE{route})}, route);
    }
    EXPECT_FALSE(ToBoard(CONTROLROUTE{3}));
    EXPECT_FALSE(ToBoard(CONTROLROUTE{-1}));
    for (int state : {1, 2, 3, 4}) {
        ASSERT_TRUE(ToBoard(STROBE_STATE{state}));
        EXPECT_EQ(int{*ToBoard(STROBE_STATE{state})}, state);
    }
    EXPECT_FALSE(ToBoard(STROBE_STATE{0}));
    EXPECT_FALSE(ToBoard(STROBE_STATE{5}));
}

}  // namespace
}  // namespace Korvex3Sync::tests
