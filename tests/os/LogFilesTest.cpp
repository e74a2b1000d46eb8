#include "platform/os/LogFiles.h"

#include <glog/logging.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

#include "platform/os/Log.h"

namespace Korvex3Sync::tests {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class LogFilesTest : public testing::Test {
protected:
    LogFilesTest() { fs::create_directories(m_folder); }
    ~LogFilesTest() override { fs::remove_all(m_folder); }

    void Make(const std::string& name, std::chrono::hours age = {}) const {
        std::ofstream(m_folder / name) << "x";
        fs::last_write_time(m_folder / name, fs::file_time_type::clock::now() - age);
    }
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(m_folder)) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    const fs::path m_folder = fs::path(testing::TempDir()) / "korvex_log_files_test";
};

TEST_F(LogFilesTest, TheNewestStay) {
    for (const char* name : {"hub.20250101-000000.5", "hub.20250101-000001.4",
                             "hub.20250102-000000.9", "hub.20241231-235959.7"}) {
        Make(name);
    }
    EXPECT_EQ(os::NewestLogFile(m_folder, "hub"), m_folder / "hub.20250102-000000.9");
    EXPECT_EQ(os::NewestLogFile(m_folder, "service"), "");
    os::CleanLogFiles(m_folder, "hub", {.files = 2});
    EXPECT_THAT(Names(), ElementsAre("hub.20250101-000001.4", "hub.20250102-000000.9"));
}

TEST_F(LogFilesTest, OldOnesGoButTheNewest) {
    Make("hub.20250101-000000.1", std::chrono::hours(50));
    Make("hub.20250102-000000.1", std::chrono::hours(49));
    Make("hub.20250103-000000.1", std::chrono::hours(47));
    os::CleanLogFiles(m_folder, "hub", {.files = 9, .age = std::chrono::hours(48)});
    EXPECT_THAT(Names(), ElementsAre("hub.20250103-000000.1"));
    fs::last_write_time(m_folder / "hub.20250103-000000.1",
                        fs::file_time_type::clock::now() - std::chrono::hours(100));
    os::CleanLogFiles(m_folder, "hub", {.files = 9, .age = std::chrono::hours(48)});
    EXPECT_THAT(Names(), ElementsAre("hub.20250103-000000.1"));
}

TEST_F(LogFilesTest, OtherFilesStay) {
    for (const char* name :
         {"ZrSyncService.20250101-000000.1", "hub", "hub.", "hub.lock", "hubs.20250101-000000.1",
          "hub.20250101-000000.1", "hub.20250102-000000.1"}) {
        Make(name);
    }
    os::CleanLogFiles(m_folder, "hub", {.files = 1});
    EXPECT_THAT(Names(),
                ElementsAre("ZrSyncService.20250101-000000.1", "hub", "hub.",
                            "hub.20250102-000000.1", "hub.lock", "hubs.20250101-000000.1"));
}

TEST_F(LogFilesTest, AFolderThatIsGoneIsNoError) {
    os::CleanLogFiles(m_folder / "gone", "hub");
    EXPECT_THAT(Names(), ElementsAre());
}

TEST_F(LogFilesTest, OnlyTheirUserMayReadThem) {
    const os::LogFiles log(m_folder, "hub");
    KORVEX_LOG("here") << "a record";
    ASSERT_EQ(Names().size(), 1U);
    EXPECT_EQ(fs::status(m_folder / Names().front()).permissions() &
                  (fs::perms::group_all | fs::perms::others_all),
              fs::perms::none);
}

TEST_F(LogFilesTest, EachRecordIsInTheFileAtOnceAndNotOnStandardError) {
    testing::internal::CaptureStderr();
    {
        const os::LogFiles log(m_folder, "hub");
        KORVEX_LOG("here") << "a record";
        KORVEX_LOG_ERROR("here") << "an error";
        ASSERT_EQ(Names().size(), 1U);
        const fs::path file = m_folder / Names().front();
        EXPECT_TRUE(std::regex_match(Names().front(), std::regex("hub\\.[0-9]+-[0-9]+\\.[0-9]+")))
            << Names().front();
        std::ifstream stream(file);
        const std::string text{std::istreambuf_iterator<char>(stream), {}};
        EXPECT_THAT(text, HasSubstr("a record"));
        EXPECT_THAT(text, HasSubstr("an error"));
    }
    EXPECT_THAT(testing::internal::GetCapturedStderr(), Not(HasSubstr("error")));
}

}  // namespace
}  // namespace Korvex3Sync::tests
