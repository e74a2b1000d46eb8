#pragma once

#include <glog/logging.h>

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

namespace Korvex3Sync::tests::support {

/// Collects, while it lives, the log records of this process as "source: text".
class LogCapture : public google::LogSink {
public:
    LogCapture() { google::AddLogSink(this); }
    ~LogCapture() override { google::RemoveLogSink(this); }

    using google::LogSink::send;
    void send(google::LogSeverity severity, const char*, const char* baseFilename, int,
              const google::LogMessageTime&, const char* message, std::size_t length) override {
        std::lock_guard lock(m_mutex);
        m_records.push_back(std::string(baseFilename) + ": " + std::string(message, length));
        m_errors += severity >= google::GLOG_ERROR ? 1 : 0;
    }

    std::vector<std::string> Records() const {
        std::lock_guard lock(m_mutex);
        return m_records;
    }
    /// Whether a record is exactly this text.
    bool Has(const std::string& record) const {
        const auto records = Records();
        return std::find(records.begin(), records.end(), record) != records.end();
    }
    int Errors() const {
        std::lock_guard lock(m_mutex);
        return m_errors;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_records;
    int m_errors = 0;
};

}  // namespace Korvex3Sync::tests::support
