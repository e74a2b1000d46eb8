#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "platform/include/USBTREE.h"
#include "support/RequestedHead.h"

namespace Korvex3Sync::tests {
namespace {

using namespace USBTREE;
using Korvex3Sync::virtual_head::HeadDescription;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

constexpr unsigned long kVendor = 0x3267;
constexpr unsigned long kProduct = 0x5752;

HeadDescription AtSpeed(int speed) {
    HeadDescription description;
    description.usbSpeed = speed;
    return description;
}

TEST(UsbTree, PathEndsInTheNegotiatedSpeed) {
    for (int speed = 1; speed <= 4; ++speed) {
        const RequestedHead head(AtSpeed(speed));
        EXPECT_TRUE(EnumAllHCD());
        std::vector<std::string> paths;
        EXPECT_TRUE(GetSpecifyDeviceTreePath(kVendor, kProduct, paths));
        ASSERT_EQ(paths.size(), 1U);
        EXPECT_THAT(paths[0], EndsWith("UPT[" + std::to_string(speed) + "]-DEV"));
        if (speed == 4) {
            EXPECT_THAT(paths[0], HasSubstr("UPT[4]-DEV"));
        } else {
            EXPECT_THAT(paths[0], Not(HasSubstr("UPT[4]-DEV")));
        }
        EraseList();
    }
}

TEST(UsbTree, PathsAreAppended) {
    const RequestedHead head;
    EXPECT_TRUE(EnumAllHCD());
    std::vector<std::string> paths{"before"};
    EXPECT_TRUE(GetSpecifyDeviceTreePath(kVendor, kProduct, paths));
    EXPECT_TRUE(GetSpecifyDeviceTreePath(kVendor, kProduct, paths));
    ASSERT_EQ(paths.size(), 3U);
    EXPECT_EQ(paths[0], "before");
    EXPECT_EQ(paths[1], paths[2]);
    EraseList();
}

TEST(UsbTree, OtherIdentifiersFindNothing) {
    const RequestedHead head;
    EXPECT_TRUE(EnumAllHCD());
    std::vector<std::string> paths;
    for (const auto& [vendor, product] : std::vector<std::pair<unsigned long, unsigned long>>{
             {kProduct, kVendor}, {kVendor, 0}, {0, kProduct}, {kVendor + 0x10000, kProduct}}) {
        EXPECT_FALSE(GetSpecifyDeviceTreePath(vendor, product, paths));
    }
    EXPECT_TRUE(paths.empty());
    EraseList();
}

TEST(UsbTree, IsEmptyBeforeTheEnumerationAndAfterItsEnd) {
    const RequestedHead head;
    EraseList();
    std::vector<std::string> paths;
    EXPECT_FALSE(GetSpecifyDeviceTreePath(kVendor, kProduct, paths));
    EXPECT_TRUE(EnumAllHCD());
    EraseList();
    EXPECT_FALSE(GetSpecifyDeviceTreePath(kVendor, kProduct, paths));
    EXPECT_TRUE(paths.empty());
    EraseList();
}

TEST(UsbTree, IsBuiltAnewByEachEnumeration) {
    std::vector<std::string> paths;
    {
        const RequestedHead head(AtSpeed(4));
        EXPECT_TRUE(EnumAllHCD());
    }
    const RequestedHead head(AtSpeed(3));
    EXPECT_TRUE(EnumAllHCD());
    EXPECT_TRUE(GetSpecifyDeviceTreePath(kVendor, kProduct, paths));
    EXPECT_THAT(paths, ElementsAre(EndsWith("UPT[3]-DEV")));
    EraseList();
}

TEST(UsbTree, StandsInTheJournal) {
    const RequestedHead head;
    std::vector<std::string> paths;
    EXPECT_TRUE(EnumAllHCD());
    EXPECT_TRUE(GetSpecifyDeviceTreePath(kVendor, kProduct, paths));
    EXPECT_FALSE(GetSpecifyDeviceTreePath(1, 2, paths));
    EraseList();
    EXPECT_THAT(head->GetJournal().Texts(),
                ElementsAre("EnumAllHCD() = true", "GetSpecifyDeviceTreePath(12903, 22354) = true",
                            "GetSpecifyDeviceTreePath(1, 2) = false", "EraseList() = true"));
}

TEST(UsbTree, MeetsFaults) {
    const RequestedHead head;
    std::vector<std::string> paths;
    ASSERT_TRUE(head->GetFaults().Fail("EnumAllHCD", 1));
    ASSERT_TRUE(head->GetFaults().Fail("GetSpecifyDeviceTreePath", 1));
    EXPECT_TRUE(head->GetFaults().Slow("EraseList", std::chrono::milliseconds(1), 1));
    EXPECT_FALSE(EnumAllHCD());
    EXPECT_TRUE(EnumAllHCD());
    EXPECT_FALSE(GetSpecifyDeviceTreePath(kVendor, kProduct, paths));
    EXPECT_TRUE(paths.empty());
    EXPECT_TRUE(GetSpecifyDeviceTreePath(kVendor, kProduct, paths));
    EraseList();
}

TEST(UsbTree, ABoardThatVanishedIsNotInIt) {
    const RequestedHead head;
    Korvex3Sync::virtual_head::FaultOrder order;
    order.kind = Korvex3Sync::virtual_head::FaultKind::BoardVanish;
    ASSERT_TRUE(head->GetFaults().Order(order));
    std::vector<std::string> paths;
    EXPECT_TRUE(EnumAllHCD());
    EXPECT_FALSE(GetSpecifyDeviceTreePath(kVendor, kProduct, paths));
    order.kind = Korvex3Sync::virtual_head::FaultKind::BoardReturn;
    ASSERT_TRUE(head->GetFaults().Order(order));
    EXPECT_TRUE(EnumAllHCD());
    EXPECT_TRUE(GetSpecifyDeviceTreePath(kVendor, kProduct, paths));
}

TEST(UsbTree, AFailedEnumerationLeavesNoTreeOfTheOneBefore) {
    const RequestedHead head;
    std::vector<std::string> paths;
    EXPECT_TRUE(EnumAllHCD());
    ASSERT_TRUE(head->GetFaults().Fail("EnumAllHCD", 1));
    EXPECT_FALSE(EnumAllHCD());
    EXPECT_FALSE(GetSpecifyDeviceTreePath(kVendor, kProduct, paths));
    EXPECT_TRUE(paths.empty());
}

TEST(UsbTree, MayBeUsedByManyThreads) {
    const RequestedHead head;
    std::vector<std::thread> users;
    for (int number = 0; number < 4; ++number) {
        users.emplace_back([] {
            for (int round = 0; round < 200; ++round) {
                EXPECT_TRUE(EnumAllHCD());
                std::vector<std::string> paths;
                if (GetSpecifyDeviceTreePath(kVendor, kProduct, paths)) {
                    EXPECT_THAT(paths, ElementsAre(EndsWith("UPT[4]-DEV")));
                }
                EraseList();
            }
        });
    }
    for (std::thread& user : users) {
        user.join();
    }
}

}  // namespace
}  // namespace Korvex3Sync::tests
