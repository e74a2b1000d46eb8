#include "korvexctl/files/Logging.h"

#include <glog/logging.h>

#include <string>

#include "korvexctl/files/StandardOutput.h"
#include "platform/os/Print.h"
#include "platform/text/Printable.h"

namespace Korvex3Sync::korvexctl {

/// Takes the records instead of glog, which would show what a device says as it is.
class Logging::Sink : public google::LogSink {
public:
    Sink(const StandardOutput& output, google::LogSeverity shown)
        : m_output(output), m_shown(shown) {}

    void send(google::LogSeverity severity, const char* /*fullName*/, const char* fileName,
              int line, const google::LogMessageTime& time, const char* message,
              std::size_t length) override {
        const std::string record =
            text::Printable(ToString(severity, fileName, line, time, message, length));
        if (severity >= m_shown) {
            os::PrintError("%s\n", record.c_str());
        }
        m_output.WriteLog(record);
    }

private:
    const StandardOutput& m_output;
    const google::LogSeverity m_shown;
};

Logging::Logging(const char* program, const StandardOutput& output, bool verbose, bool logFile) {
    google::InitGoogleLogging(program);
    for (int severity = google::GLOG_INFO; severity < google::NUM_SEVERITIES; ++severity) {
        google::SetLogDestination(severity, "");
    }
    const google::LogSeverity shown = verbose ? google::GLOG_INFO : google::GLOG_ERROR;
    FLAGS_stderrthreshold = google::NUM_SEVERITIES;
    FLAGS_minloglevel = logFile ? google::GLOG_INFO : shown;
    m_sink = std::make_unique<Sink>(output, shown);
    google::AddLogSink(m_sink.get());
}

Logging::~Logging() {
    google::RemoveLogSink(m_sink.get());
    google::ShutdownGoogleLogging();
}

}  // namespace Korvex3Sync::korvexctl
