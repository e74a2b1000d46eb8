#pragma once

#include <glog/logging.h>

#include <atomic>
#include <cstddef>

namespace Korvex3Sync::tests::support {

/// Counts the ERROR records of this process while it exists.
class LoggedErrors : public google::LogSink {
public:
    LoggedErrors() { google::AddLogSink(this); }
    ~LoggedErrors() override { google::RemoveLogSink(this); }
    LoggedErrors(const LoggedErrors&) = delete;
    LoggedErrors& operator=(const LoggedErrors&) = delete;

    int Count() const { return m_count; }

    using google::LogSink::send;
    void send(google::LogSeverity severity, const char*, const char*, int,
              const google::LogMessageTime&, const char*, std::size_t) override {
        m_count += severity >= google::GLOG_ERROR ? 1 : 0;
    }

private:
    std::atomic<int> m_count{0};
};

}  // namespace Korvex3Sync::tests::support
