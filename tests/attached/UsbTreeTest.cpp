#include <Korvex3Sync/Connection.h>
#include <Korvex3Sync/Discovery.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "attached/MockBoard.h"
#include "platform/include/USBTREE.h"
#include "support/RequestedHead.h"

namespace Korvex3Sync::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The paths of the boards that are attached now.
std::vector<std::string> Paths() {
    std::vector<std::string> paths;
    EXPECT_TRUE(USBTREE::EnumAllHCD());
    const bool found = USBTREE::GetSpecifyDeviceTreePath(0x3267, 0x5752, paths);
    EXPECT_EQ(found, !paths.empty());
    USBTREE::EraseList();
    return paths;
}

TEST(AttachedUsbTree, NamesBusPortsAndSpeed) {
    MockMachine machine;
    EXPECT_THAT(Paths(), IsEmpty());
    const MockBoard board(machine, {"2-1.4.11", "5000", ""});
    EXPECT_THAT(Paths(), ElementsAre("HCD[2]-RHUB-PORT[1]-HUB-PORT[4]-HUB-PORT[11]-UPT[4]-DEV"));
}

TEST(AttachedUsbTree, NumbersTheSpeeds) {
    MockMachine machine;
    for (const auto& [speed, number] :
         std::vector<std::pair<std::string, std::string>>{{"1.5", "1"},
                                                          {"12", "2"},
                                                          {"480", "3"},
                                                          {"5000", "4"},
                                                          {"10000", "4"},
                                                          {"20000", "4"},
                                                          {"unknown", "0"}}) {
        const MockBoard board(machine, {"1-3", speed, ""});
        EXPECT_THAT(Paths(), ElementsAre("HCD[1]-RHUB-PORT[3]-UPT[" + number + "]-DEV"));
    }
}

TEST(AttachedUsbTree, HasEachBoardInTheOrderOfThePorts) {
    MockMachine machine;
    const MockBoard second(machine, {"2-2", "480", "K3-2"});
    MockBoard first(machine, {"2-1", "5000", "K3-1", false});
    EXPECT_THAT(Paths(),
                ElementsAre("HCD[2]-RHUB-PORT[1]-UPT[4]-DEV", "HCD[2]-RHUB-PORT[2]-UPT[3]-DEV"));
    first.Unplug();
    EXPECT_THAT(Paths(), ElementsAre("HCD[2]-RHUB-PORT[2]-UPT[3]-DEV"));
}

TEST(AttachedUsbTree, IsThatOfTheVirtualHeadWhenOneIsRequested) {
    MockMachine machine;
    const MockBoard board(machine, {"1-3", "480", ""});
    const RequestedHead head;
    EXPECT_THAT(Paths(), ElementsAre("HCD[0]-RHUB-PORT[2]-HUB-PORT[1]-UPT[4]-DEV"));
}

TEST(AttachedUsbTree, TellsTheLibraryWhetherTheHeadIsOnUsb3) {
    MockMachine machine;
    bool onUsb3 = true;
    EXPECT_EQ(IsConnectedOnU3("", onUsb3), STATUS_FAILED);
    {
        const MockBoard slow(machine, {"1-3", "480", ""});
        EXPECT_EQ(IsConnectedOnU3("", onUsb3), STATUS_SUCCESS);
        EXPECT_FALSE(onUsb3);
    }
    const MockBoard fast(machine, {"2-3", "10000", "K3-0007"});
    EXPECT_EQ(IsConnectedOnU3("", onUsb3), STATUS_SUCCESS);
    EXPECT_TRUE(onUsb3);
    std::string version;
    EXPECT_EQ(GetFirewareVersion("K3-0007", version), STATUS_SUCCESS);
    EXPECT_EQ(version, virtual_head::HeadDescription{}.firmware);
}

}  // namespace
}  // namespace Korvex3Sync::tests
