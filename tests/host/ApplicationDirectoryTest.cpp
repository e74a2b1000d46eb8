#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <tuple>

#include "service/ReconnectConfiguration.h"
#include "support/OwnFolders.h"

namespace Korvex3Sync::tests {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::StartsWith;

const fs::path kDirectory = KORVEX_PROGRAMS;

std::string Content(const fs::path& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

const fs::path kConfiguration = kDirectory / "res" / "DeviceServiceConfig.ini";

/// The nine values, as the log shows them.
auto ValuesOf(const ReconnectConfiguration& read) {
    return std::make_tuple(
        read.m_iMaxReconnectCount, read.m_iCheckVideoPeriod, read.m_iWaitTimeAfterRestartDevice,
        read.m_iReconnectPeriod, read.m_iRestartProcessWaitTime, read.m_iGetVideoPeriod,
        read.m_iMaxNumOnStatusOffline, read.m_iStatusTimeOut, read.m_iStatusTimeOutNoticeMaxNum);
}

TEST(ConfigurationFile, HasTheDefaultsOfTheLibrary) {
    const auto file = QString::fromStdString(kConfiguration.string());
    EXPECT_EQ(ValuesOf(ReconnectConfiguration::Read(file)), ValuesOf(ReconnectConfiguration()));
}

TEST(ConfigurationFile, EveryKeyIsReadAndNoneIsMissing) {
    OwnFolders folders;
    const fs::path changed = folders.Path() / "changed.ini";
    std::istringstream lines(Content(kConfiguration));
    std::ofstream out(changed);
    int keys = 0;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t equals = line.find('=');
        if (!line.starts_with(";") && equals != std::string::npos) {
            line = line.substr(0, equals + 1) + std::to_string(1000 + ++keys);
        }
        out << line << '\n';
    }
    out.close();
    EXPECT_EQ(ValuesOf(ReconnectConfiguration::Read(QString::fromStdString(changed.string()))),
              std::make_tuple(1001, 1002, 1003, 1004, 1005, 1006, 1007, 1008, 1009));
}

TEST(ConfigurationFile, ExplainsEachKeyWithItsUnitAndDefault) {
    std::istringstream lines(Content(kConfiguration));
    std::string before;
    int keys = 0;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t equals = line.find('=');
        if (!line.starts_with(";") && equals != std::string::npos) {
            ++keys;
            EXPECT_THAT(before, StartsWith("; Unit: ")) << line;
            EXPECT_THAT(before, HasSubstr(". Default: " + line.substr(equals + 1) + ".")) << line;
        }
        before = line;
    }
    EXPECT_EQ(keys, 9);
}

TEST(ApplicationDirectory, HoldsWhatServiceModeStarts) {
    for (const fs::path program :
         {"hub.exe", "ZrSyncService.exe", "restart_VID0219_PID0813_REV0221.bat",
          "restart_VID05E3_PID0620_REV2307.bat", KORVEX_KORVEXCTL}) {
        const fs::perms permissions = fs::status(kDirectory / program).permissions();
        EXPECT_NE(permissions & fs::perms::others_exec, fs::perms::none) << program;
    }
}

}  // namespace
}  // namespace Korvex3Sync::tests
