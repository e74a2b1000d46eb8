#include "korvexctl/files/Logging.h"

#include <glog/logging.h>

#include <string>

#include "korvexctl/files/StandardOutput.h"

namespace Korvex3Sync::korvexctl {

class Logging::FileSink : public google::LogSink {
public:
    explicit FileSink(const StandardOutput& output) : m_output(output) {}

    void send(google::LogSeverity severity, const char* /*fullName*/, const char* fileName,
              int line, const google::LogMessageTime& time, const char* message,
              std::size_t length) override {
        m_output.WriteLog(ToString(severity, fileName, line, time, message, length) + '\n');
    }

private:
    const StandardOutput& m_output;
};

Logging::Logging(const char* program, const StandardOutput& output, bool verbose, bool logFile) {
    google::InitGoogleLogging(program);
    for (int severity = google::GLOG_INFO; severity < google::NUM_SEVERITIES; ++severity) {
        google::SetLogDestination(severity, "");
    }
    FLAGS_stderrthreshold = verbose ? google::GLOG_INFO : google::GLOG_WARNING;
    FLAGS_minloglevel = verbose || logFile ? google::GLOG_INFO : google::GLOG_WARNING;
    if (logFile) {
        m_sink = std::make_unique<FileSink>(output);
        google::AddLogSink(m_sink.get());
    }
}

Logging::~Logging() {
    if (m_sink) {
        google::RemoveLogSink(m_sink.get());
    }
    google::ShutdownGoogleLogging();
}

}  // namespace Korvex3Sync::korvexctl
