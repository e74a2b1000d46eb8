#include <glog/logging.h>
#include <gtest/gtest.h>

#include <string_view>

#include "Korvex3Sync/Korvex3Sync.h"
#include "no_memory/FailingAllocation.h"

namespace Korvex3Sync::tests {
namespace {

TEST(StatusTextWithoutMemory, IsNullAndNeverTheCallersOwnText) {
    char mine = 'x';
    char* text = &mine;
    const FailingAllocation failing(1);
    GetStatusDescriptionString(STATUS_SUCCESS, text);
    EXPECT_TRUE(failing.Failed());
    EXPECT_EQ(text, nullptr) << "the caller deletes it";
    EXPECT_EQ(mine, 'x');
}

TEST(ExportWithoutMemory, SaysThatItWasEnteredAllTheSame) {
    void* const none = nullptr;
    int count = 0;
    const FailingAllocation failing(1);
    EXPECT_EQ(GetConnectCameraCount(none, count), STATUS_NOT_CONNECTED);
    EXPECT_FALSE(failing.Failed()) << "a record outside of the frame that catches needs no memory";
}

/// Records what this thread logs without needing memory for it.
class Mentions : public google::LogSink {
public:
    explicit Mentions(std::string_view text) : m_text(text) { google::AddLogSink(this); }
    ~Mentions() override { google::RemoveLogSink(this); }
    using google::LogSink::send;
    void send(google::LogSeverity, const char*, const char*, int, const google::LogMessageTime&,
              const char* message, std::size_t length) override {
        m_count += std::string_view(message, length) == m_text ? 1 : 0;
    }
    int Count() const { return m_count; }

private:
    const std::string_view m_text;
    int m_count = 0;
};

TEST(ExportWithoutMemory, AConnectSaysThatItFailedAndThatItLeft) {
    const Mentions failed("Connect Device Failed!");
    const Mentions left("ConnectDevice leave");
    int mine = 0;
    void* handle = &mine;
    const FailingAllocation failing(1);
    EXPECT_EQ(ConnectDevice("any", "BOARD", {}, {}, {}, handle), STATUS_FAILED);
    EXPECT_TRUE(failing.Failed()) << "the connection itself";
    EXPECT_EQ(failed.Count(), 1);
    EXPECT_EQ(left.Count(), 1);
    EXPECT_EQ(handle, &mine);
}

}  // namespace
}  // namespace Korvex3Sync::tests
