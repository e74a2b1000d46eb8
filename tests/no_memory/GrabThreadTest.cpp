#include <glog/logging.h>
#include <gtest/gtest.h>

#include <atomic>
#include <string_view>

#include "no_memory/FailingAllocation.h"
#include "recorder/Recorder.h"
#include "sync/Head.h"

namespace Korvex3Sync::tests {
namespace {

/// Leaves no memory for the thread whose start is logged, and counts what is said then.
class NoMemoryAtTheStart : public google::LogSink {
public:
    NoMemoryAtTheStart() { google::AddLogSink(this); }
    ~NoMemoryAtTheStart() override { google::RemoveLogSink(this); }

    using google::LogSink::send;
    void send(google::LogSeverity severity, const char*, const char*, int,
              const google::LogMessageTime&, const char* message, std::size_t length) override {
        if (severity >= google::GLOG_ERROR) {
            ++errors;
        }
        if (std::string_view(message, length).starts_with("StartThread m_bOpen=")) {
            FailAllocation(1);
        }
    }

    std::atomic<int> errors{0};
};

TEST(GrabThreadWithoutMemory, DoesNotStartAndTheLogSaysSo) {
    recorder::Recorder::Get().Reset();
    NoMemoryAtTheStart log;
    IManagerSync manager;
    EXPECT_EQ(ConnectRecorded(manager), STATUS_SUCCESS);
    FailAllocation(0);
    EXPECT_EQ(log.errors, 1);
    EXPECT_EQ(recorder::Recorder::Get().Count("SnapShot"), 0u);
}

}  // namespace
}  // namespace Korvex3Sync::tests
