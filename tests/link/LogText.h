#pragma once

#include <glog/logging.h>

#include <mutex>
#include <string>

namespace Korvex3Sync::tests {

/// Collects the warnings and errors of this process while it exists.
class LogText : public google::LogSink {
public:
    LogText() {
        // The thread sanitizer does not see glog's lock: this one shows that the object was made
        // first.
        { const std::lock_guard lock(s_mutex); }
        google::AddLogSink(this);
    }
    ~LogText() override { google::RemoveLogSink(this); }
    LogText(const LogText&) = delete;
    LogText& operator=(const LogText&) = delete;

    bool Contains(const std::string& text) const { return Count(text) > 0; }
    int Count(const std::string& text) const {
        const std::lock_guard lock(s_mutex);
        int count = 0;
        for (auto place = m_text.find(text); place != std::string::npos;
             place = m_text.find(text, place + 1)) {
            ++count;
        }
        return count;
    }

    using google::LogSink::send;
    void send(google::LogSeverity severity, const char*, const char*, int,
              const google::LogMessageTime&, const char* message, std::size_t size) override {
        if (severity >= google::GLOG_WARNING) {
            const std::lock_guard lock(s_mutex);
            m_text.append(message, size).append("\n");
        }
    }

private:
    static inline std::mutex s_mutex;
    std::string m_text;
};

}  // namespace Korvex3Sync::tests
