#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <new>

#include "camera/discovery/CameraDiscovery.h"
#include "recorder/Recorder.h"
#include "support/Golden.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using support::MatchesGolden;
using support::Output;
using Calls = std::vector<std::string>;

class Discovery : public testing::Test {
protected:
    Discovery() { Recorder::Get().Reset(); }
    ~Discovery() override {
        for (char* serial : m_serials) {
            delete[] serial;
        }
    }

    int Read(const char* type) {
        Output output;
        const int read =
            GetAllSpecifyTypeCameraInformation(type, m_serials, m_widths, m_heights, m_isColor);
        m_output = output.End();
        return read;
    }
    int Count(const char* type) {
        Output output;
        const int count = GetSpecifyTypeCameraCount(type);
        m_output = output.End();
        return count;
    }
    /// Whether the last Read or Count logged and printed what it should.
    testing::AssertionResult ReadSays(const std::string& section) const {
        return MatchesGolden("GetAllSpecifyTypeCameraInformation", section, m_output);
    }
    testing::AssertionResult CountSays(const std::string& section) const {
        return MatchesGolden("GetSpecifyTypeCameraCount", section, m_output);
    }

    std::vector<char*> m_serials;
    std::vector<int> m_widths;
    std::vector<int> m_heights;
    std::vector<bool> m_isColor;
    std::vector<std::string> m_output;
};

TEST_F(Discovery, ReadsEveryCameraInItsOrderOfCalls) {
    Recorder::Get().Attach({{"KV00A", 8, 4, 16}, {"KV00B", 16, 2, 1}});
    EXPECT_EQ(Read("KV00"), 2);
    EXPECT_STREQ(m_serials[0], "KV00A");
    EXPECT_STREQ(m_serials[1], "KV00B");
    EXPECT_EQ(m_widths, (std::vector<int>{8, 16}));
    EXPECT_EQ(m_heights, (std::vector<int>{4, 2}));
    EXPECT_EQ(m_isColor, (std::vector<bool>{true, false}));
    EXPECT_TRUE(ReadSays("two cameras"));
    EXPECT_EQ(
        Recorder::Get().Calls(),
        (Calls{"CreateCamera(KV00)", "GetDeviceTotal(C1)", "CreateCamera(KV00)",
               "OpenCamera(C1, 0, 0, 0)", "GetSerialNo(C1)", "GetResolution(C1)",
               "GetColorMode(C1)", "GetGainRange(C1)", "OpenCamera(C2, 1, 0, 0)", "GetSerialNo(C2)",
               "GetResolution(C2)", "GetColorMode(C2)", "GetGainRange(C2)", "CloseCamera(C1)",
               "ReleaseCamera(C1)", "CloseCamera(C2)", "ReleaseCamera(C2)"}));
}

TEST_F(Discovery, AnUnknownTypeGivesNothingButItsFirstTwoCharacters) {
    Recorder::Get().FailAlways("CreateCamera");
    EXPECT_EQ(Count("ZQ77"), 0);
    EXPECT_TRUE(CountSays("unknown type"));
    EXPECT_EQ(Read("ZQ77"), 0);
    EXPECT_TRUE(ReadSays("unknown type"));
    EXPECT_TRUE(m_serials.empty());
    EXPECT_TRUE(m_isColor.empty());
    EXPECT_EQ(Recorder::Get().Calls().back(), "ReleaseCamera(null)");
}

TEST_F(Discovery, ShortAndNullTypesAreAnsweredLikeUnknownOnes) {
    Recorder::Get().FailAlways("CreateCamera");
    for (const char* type : {"K", "", static_cast<const char*>(nullptr)}) {
        const std::string section =
            type == nullptr || *type == 0 ? "empty type" : "type of one letter";
        EXPECT_EQ(Count(type), 0);
        EXPECT_TRUE(CountSays(section));
        EXPECT_EQ(Read(type), 0);
        EXPECT_TRUE(ReadSays(section));
    }
}

TEST_F(Discovery, ACameraThatDoesNotOpenIsSkippedAndNamedByItsPosition) {
    Recorder::Get().Attach({{"KV00A"}, {"KV00B"}, {"KV00C"}});
    Recorder::Get().FailNth("OpenCamera", 2);
    EXPECT_EQ(Read("KV00"), 2);
    EXPECT_TRUE(ReadSays("the second of three does not open"));
    EXPECT_EQ(m_serials.size(), 2u);
    EXPECT_EQ(m_widths.size(), 2u);
    EXPECT_EQ(m_heights.size(), 2u);
    EXPECT_EQ(m_isColor.size(), 2u);
    EXPECT_STREQ(m_serials[1], "KV00C");
    EXPECT_EQ(Recorder::Get().Count("ReleaseCamera"), 3u);
}

TEST_F(Discovery, ACameraWhoseSerialCannotBeReadIsSkipped) {
    Recorder::Get().FailNth("GetSerialNo", 1);
    EXPECT_EQ(Read("KV00"), 1);
    EXPECT_TRUE(ReadSays("the first has no serial"));
}

TEST_F(Discovery, AnInstanceThatCannotBeMadeLowersTheTotal) {
    Recorder::Get().Attach({{"KV00A"}, {"KV00B"}, {"KV00C"}});
    Recorder::Get().FailNth("CreateCamera", 2);
    EXPECT_EQ(Read("KV00"), 2);
    EXPECT_STREQ(m_serials[1], "KV00B");
}

TEST_F(Discovery, ATotalThatCannotBeReadGivesNothing) {
    Recorder::Get().FailAlways("GetDeviceTotal");
    EXPECT_EQ(Count("KV00"), 0);
    EXPECT_TRUE(CountSays("no total"));
    EXPECT_EQ(Recorder::Get().Count("ReleaseCamera"), 0u) << "the count releases nothing";
    EXPECT_EQ(Read("KV00"), 0);
    EXPECT_TRUE(ReadSays("no total"));
    EXPECT_EQ(Recorder::Get().Count("ReleaseCamera"), 1u);
}

TEST_F(Discovery, WithNoCameraTheFirstInstanceIsNeitherClosedNorReleased) {
    Recorder::Get().Attach({});
    EXPECT_EQ(Read("KV00"), 0);
    EXPECT_EQ(Recorder::Get().Calls(), (Calls{"CreateCamera(KV00)", "GetDeviceTotal(C1)"}));
}

TEST_F(Discovery, WithoutMemoryKeepsNoCameraOpenAndTheListsOfOneLength) {
    Recorder::Get().OnCall("GetGainRange", [] { throw std::bad_alloc(); });
    testing::internal::CaptureStdout();
    EXPECT_THROW(
        GetAllSpecifyTypeCameraInformation("KV", m_serials, m_widths, m_heights, m_isColor),
        std::bad_alloc);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(Recorder::Get().Count("CreateCamera"), 2u);
    EXPECT_EQ(Recorder::Get().Count("CloseCamera"), 2u);
    EXPECT_EQ(Recorder::Get().Count("ReleaseCamera"), 2u);
    EXPECT_EQ(m_serials.size(), 1u);
    EXPECT_EQ(m_isColor.size(), 1u);
}

TEST_F(Discovery, AppendsToWhatTheCallerHas) {
    m_serials.push_back(new char[2]{'x', 0});
    m_widths.push_back(1);
    m_heights.push_back(1);
    m_isColor.push_back(false);
    EXPECT_EQ(Read("KV00"), 2);
    EXPECT_EQ(m_serials.size(), 3u);
    EXPECT_STREQ(m_serials[0], "x");
    EXPECT_EQ(m_widths[0], 1);
}

TEST_F(Discovery, ASerialThatDoesNotFitItsBufferIsCut) {
    Recorder::Get().Attach({{std::string(10000, 's')}});
    EXPECT_EQ(Read("KV00"), 1);
    EXPECT_EQ(std::strlen(m_serials[0]), 259u);
}

TEST_F(Discovery, TheCountIsTheLibrarysTotal) {
    EXPECT_EQ(Count("KV00"), 2);
    EXPECT_TRUE(CountSays("two cameras"));
    EXPECT_EQ(Recorder::Get().Calls(), (Calls{"CreateCamera(KV00)", "GetDeviceTotal(C1)"}));
}

}  // namespace
}  // namespace Korvex3Sync::tests
