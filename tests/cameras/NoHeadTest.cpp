#include <glog/logging.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <string>

#include "cameras/AllCalls.h"
#include "cameras/HeadFixture.h"
#include "support/Environment.h"

namespace Korvex3Sync::tests {
namespace {

using namespace zr3DCamera;

void ExpectThatNothingIsFound(const char* type) {
    void* handle = nullptr;
    ASSERT_EQ(CreateCamera(handle, type), 0);
    int total = -1;
    EXPECT_EQ(GetDeviceTotal(handle, total), 0);
    EXPECT_EQ(total, 0);
    for (const auto& call : CallsOnAHandle()) {
        const std::string name = call.name;
        EXPECT_EQ(call.succeeds(handle), name == "GetDeviceTotal" || name == "CloseCamera") << name;
    }
    unsigned char byte = 0;
    unsigned char* image = &byte;
    EXPECT_NE(SnapShot(handle, image), 0);
    EXPECT_EQ(image, nullptr);
    EXPECT_EQ(ReleaseCamera(handle), 0);
    EXPECT_EQ(handle, nullptr);
}

TEST(NoHeadTest, NothingIsFoundWithoutARequestForTheVirtualHead) {
    virtual_head::WithdrawVirtualHead();
    ExpectThatNothingIsFound("KV00");
    ExpectThatNothingIsFound("GC00");
}

class GenICamTest : public HeadFixture {};

TEST_F(GenICamTest, CamerasOfAMakerWithoutADriverAreNotThoseOfTheVirtualHead) {
    ExpectThatNothingIsFound("GC00");
    EXPECT_TRUE(m_head->GetJournal().Entries().empty());
}

/// Counts the lines of the log that name the variable.
class Notices : public google::LogSink {
public:
    Notices() { google::AddLogSink(this); }
    ~Notices() override { google::RemoveLogSink(this); }

    void send(google::LogSeverity severity, const char*, const char*, int, const struct tm*,
              const char* message, size_t length) override {
        const std::string text(message, length);
        if (severity == google::GLOG_WARNING &&
            text.find("KORVEX_VIRTUAL_HEAD") != std::string::npos) {
            ++m_count;
        }
    }

    int Count() const { return m_count; }

private:
    std::atomic<int> m_count = 0;
};

void CreateAndRelease(const char* type) {
    void* handle = nullptr;
    CreateCamera(handle, type);
    ReleaseCamera(handle);
}

TEST(NoHeadNoticeTest, LogSaysOnceInAProcessWhatToDo) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            RemoveVariable("KORVEX_VIRTUAL_HEAD");
            Notices notices;
            CreateAndRelease("XX00");
            const int unknown = notices.Count();
            CreateAndRelease("KV00");
            const int first = notices.Count();
            CreateAndRelease("KV00");
            CreateAndRelease("GC00");
            std::exit(unknown == 0 && first == 1 && notices.Count() == 1 ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST(NoHeadNoticeTest, LogSaysNothingWhileAHeadIsThere) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            SetVariable("KORVEX_VIRTUAL_HEAD", "default");
            Notices notices;
            CreateAndRelease("KV00");
            CreateAndRelease("GC00");
            std::exit(notices.Count() == 0 ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace Korvex3Sync::tests
