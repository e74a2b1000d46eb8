#pragma once

#include <glog/logging.h>
#include <gtest/gtest.h>

#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Korvex3Sync::tests::support {

/// Records, until End, what a thread logs and what is printed, in order. Prints of snaps without a
/// frame are left out: cameras without frames make them at any time. One at a time in a process,
/// and none beside a capture of standard output.
class Output : public google::LogSink {
public:
    /// Whose log records count. Prints cannot be told apart.
    enum class Of { kThisThread, kOtherThreads };

    explicit Output(Of of = Of::kThisThread);
    ~Output() override;
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /// This address is written as "<name>" in the lines; others as "<address>".
    void Name(const void* address, const std::string& name);
    /// Keeps the prints of snaps without a frame after all, the same ones in a row as one.
    void ShowFailedSnaps() { m_showFailedSnaps = true; }
    /// Ends the recording. One line for each record and each printed line:
    /// `info "Source: text"` (or "warning", "error") and `print "text\n"`.
    std::vector<std::string> End();

    using google::LogSink::send;
    void send(google::LogSeverity severity, const char* fullFilename, const char* baseFilename,
              int line, const google::LogMessageTime& time, const char* message,
              std::size_t length) override;

private:
    struct Record {
        std::size_t printedBefore;  // bytes
        std::string line;
    };

    const Of m_of;
    const std::thread::id m_thread = std::this_thread::get_id();
    bool m_ended = false;
    bool m_showFailedSnaps = false;
    std::map<std::string, std::string> m_names;
    std::mutex m_mutex;
    std::vector<Record> m_records;
};

/// Compares the lines with a section of tests/golden/<operation>.txt; a missing section matches
/// nothing. The section is noted as used (GoldenSections.h). With KORVEX_UPDATE_GOLDEN=1 in the
/// environment the section is rewritten when it differs, and still does not match, so that no such
/// run passes unnoticed.
testing::AssertionResult MatchesGolden(const std::string& operation, const std::string& section,
                                       const std::vector<std::string>& lines);

/// The same with the golden files of another folder, and without a note.
testing::AssertionResult MatchesGoldenIn(const std::string& folder, const std::string& operation,
                                         const std::string& section,
                                         const std::vector<std::string>& lines);

}  // namespace Korvex3Sync::tests::support
