#include <gtest/gtest.h>

#include "interface/Connected.h"
#include "support/Golden.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using support::MatchesGolden;
using support::Output;

class DiscoveryExports : public Connected {
protected:
    ~DiscoveryExports() override {
        for (char* serial : m_serials) {
            delete[] serial;
        }
    }
    RETSTATUS Read(const char* type) {
        return GetCamerasInformation(type, m_serials, m_widths, m_heights, m_isColor, m_count);
    }

    std::vector<char*> m_serials;
    std::vector<int> m_widths;
    std::vector<int> m_heights;
    std::vector<bool> m_isColor;
    int m_count = -1;
};

TEST_F(DiscoveryExports, ListsEveryCameraAndLogsTheVersion) {
    Output output;
    EXPECT_EQ(Read("KV00"), STATUS_SUCCESS);
    EXPECT_TRUE(MatchesGolden("GetCamerasInformation", "two cameras", output.End()));
    EXPECT_EQ(m_count, 2);
    EXPECT_STREQ(m_serials[0], "KV00R1");
    EXPECT_STREQ(m_serials[1], "KV00R1");
}

TEST_F(DiscoveryExports, AppendsWithoutClearing) {
    EXPECT_EQ(Read("KV00"), STATUS_SUCCESS);
    Output output;
    EXPECT_EQ(Read("KV00"), STATUS_SUCCESS);
    EXPECT_TRUE(MatchesGolden("GetCamerasInformation", "two cameras, again", output.End()));
    EXPECT_EQ(m_count, 2);
    EXPECT_EQ(m_serials.size(), 4u);
    EXPECT_EQ(m_isColor.size(), 4u);
}

TEST_F(DiscoveryExports, SucceedsWithNothingFoundAndForANullType) {
    Recorder::Get().FailAlways("CreateCamera");
    for (const char* type : {"ZQ", "", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(Read(type), STATUS_SUCCESS);
        EXPECT_EQ(m_count, 0);
        int count = 9;
        Output output;
        EXPECT_EQ(GetCameraCount(type, count), STATUS_SUCCESS);
        EXPECT_TRUE(MatchesGolden(
            "GetCameraCount", type == nullptr || *type == 0 ? "no camera, empty type" : "no camera",
            output.End()));
        EXPECT_EQ(count, 0) << "also when no instance can be made";
    }
    EXPECT_TRUE(m_serials.empty());
}

TEST_F(DiscoveryExports, NeedsAClientInServiceMode) {
    SetServiceMode(true);
    EXPECT_EQ(Read("KV00"), STATUS_NOT_CONNECTED);
    EXPECT_EQ(m_count, -1);
    EXPECT_TRUE(Recorder::Get().Calls().empty());
}

TEST_F(DiscoveryExports, TheUsbCheckIsTheSameInEitherMode) {
    bool onU3 = false;
    for (bool service : {false, true}) {
        SetServiceMode(service);
        Output output;
        EXPECT_EQ(IsConnectedOnU3("ignored", onU3), STATUS_FAILED);
        EXPECT_TRUE(MatchesGolden("IsConnectedOnU3", "no board", output.End()));
    }
    Recorder::Get().SetUsbPaths({"HCD[0]-UPT[4]-DEV"});
    EXPECT_EQ(IsConnectedOnU3(nullptr, onU3), STATUS_SUCCESS);
    EXPECT_TRUE(onU3);
    Recorder::Get().SetUsbPaths({"HCD[0]-UPT[3]-DEV"});
    EXPECT_EQ(IsConnectedOnU3(nullptr, onU3), STATUS_SUCCESS);
    EXPECT_FALSE(onU3);
}

}  // namespace
}  // namespace Korvex3Sync::tests
