#include "support/Golden.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string_view>
#include <utility>

#include "support/Environment.h"
#include "support/GoldenSections.h"

namespace Korvex3Sync::tests::support {
namespace {

using Lines = std::vector<std::string>;

std::string Text(const void* address) {
    std::ostringstream text;
    text << address;
    return text.str();
}

std::string Quoted(const std::string& text) {
    std::string quoted = "\"";
    for (const char letter : text) {
        quoted += letter == '\n' ? "\\n" : std::string(1, letter);
    }
    return quoted + '"';
}

/// The text with the addresses that have a name under it, and without the others, nor the number
/// that the address of a serial is logged as.
std::string WithoutAddresses(const std::string& text,
                             const std::map<std::string, std::string>& names) {
    static const std::regex kAddress("0x[0-9a-f]{4,16}");
    std::string result;
    auto rest = text.begin();
    for (std::sregex_iterator match(text.begin(), text.end(), kAddress), end; match != end;
         ++match) {
        result.append(rest, (*match)[0].first);
        const auto name = names.find(match->str());
        result += "<" + (name == names.end() ? "address" : name->second) + ">";
        rest = (*match)[0].second;
    }
    static const std::regex kSerialAsNumber("camSerials\\[i\\]=-?\\d+");
    return std::regex_replace(result.append(rest, text.end()), kSerialAsNumber,
                              "camSerials[i]=<number>");
}

/// The place, or the beginning of its line if it is inside a snap without a frame: another thread
/// may have written only a part of that when a record or the end comes.
std::size_t BeforeSnap(const std::string& printed, std::size_t place) {
    const std::size_t begin = place == 0 ? 0 : printed.rfind('\n', place - 1) + 1;
    std::string line = printed.substr(begin, printed.find('\n', begin) - begin);
    std::replace_if(
        line.begin(), line.end(), [](char letter) { return letter >= '0' && letter <= '9'; }, '0');
    return std::string_view("Camera 0 Snap Failed").starts_with(line) ? begin : place;
}

/// One `print` line for each line of the text; the last may have no end.
void AddPrinted(Lines& lines, const std::string& printed, bool showFailedSnaps) {
    static const std::regex kSnapsWithoutFrame("(Camera \\d+ Snap Failed\n)\\1*");
    const std::string text =
        std::regex_replace(printed, kSnapsWithoutFrame, showFailedSnaps ? "$1" : "");
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size() - 1) + 1;
        lines.push_back("print " + Quoted(text.substr(begin, end - begin)));
        begin = end;
    }
}

/// A golden file: the lines before its first section, and the sections in their order.
struct GoldenFile {
    struct Section {
        std::string name;
        Lines lines;
    };

    explicit GoldenFile(const std::filesystem::path& path) {
        std::ifstream file(path);
        for (std::string line; std::getline(file, line);) {
            if (const auto name = GoldenSection(line)) {
                sections.push_back({*name, {}});
            } else if (!line.empty()) {
                (sections.empty() ? head : sections.back().lines).push_back(line);
            }
        }
    }
    Section* Find(const std::string& name) {
        for (Section& section : sections) {
            if (section.name == name) {
                return &section;
            }
        }
        return nullptr;
    }
    void Write(const std::filesystem::path& path) const {
        std::ofstream file(path);
        for (const std::string& line : head) {
            file << line << '\n';
        }
        for (const Section& section : sections) {
            file << (&section == sections.data() && head.empty() ? "" : "\n") << '[' << section.name
                 << "]\n";
            for (const std::string& line : section.lines) {
                file << line << '\n';
            }
        }
    }

    Lines head;
    std::vector<Section> sections;
};

bool UpdateIsAskedFor() {
    const char* const update = std::getenv("KORVEX_UPDATE_GOLDEN");
    return update != nullptr && std::string(update) == "1";
}

std::string Joined(const Lines& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += "  " + line + '\n';
    }
    return text.empty() ? "  (nothing)\n" : text;
}

}  // namespace

Output::Output(Of of) : m_of(of) {
    CaptureLines();
    google::AddLogSink(this);
}

Output::~Output() {
    End();
}

void Output::Name(const void* address, const std::string& name) {
    m_names[Text(address)] = name;
}

void Output::send(google::LogSeverity severity, const char*, const char* baseFilename, int,
                  const google::LogMessageTime&, const char* message, std::size_t length) {
    const std::lock_guard lock(m_mutex);
    if ((std::this_thread::get_id() == m_thread) != (m_of == Of::kThisThread)) {
        return;
    }
    const char* const level = severity >= google::GLOG_ERROR     ? "error "
                              : severity == google::GLOG_WARNING ? "warning "
                                                                 : "info ";
    std::fflush(stdout);
    const auto printed = static_cast<std::size_t>(::lseek(STDOUT_FILENO, 0, SEEK_CUR));
    const std::string text = std::string(baseFilename) + ": " + std::string(message, length);
    m_records.push_back({printed, level + Quoted(text)});
}

std::vector<std::string> Output::End() {
    if (std::exchange(m_ended, true)) {
        return {};
    }
    google::RemoveLogSink(this);
    // The sanitizer for threads does not see the lock that glog calls its sinks with.
    const std::lock_guard lock(m_mutex);
    std::string printed = testing::internal::GetCapturedStdout();
    for (Record& record : m_records) {
        record.printedBefore = BeforeSnap(printed, record.printedBefore);
    }
    printed.resize(BeforeSnap(printed, printed.size()));
    Lines lines;
    std::size_t shown = 0;
    for (const Record& record : m_records) {
        if (record.printedBefore > shown) {
            AddPrinted(lines, printed.substr(shown, record.printedBefore - shown),
                       m_showFailedSnaps);
            shown = record.printedBefore;
        }
        lines.push_back(record.line);
    }
    AddPrinted(lines, printed.substr(shown), m_showFailedSnaps);
    for (std::string& line : lines) {
        line = WithoutAddresses(line, m_names);
    }
    return lines;
}

testing::AssertionResult MatchesGoldenIn(const std::string& folder, const std::string& operation,
                                         const std::string& section, const Lines& lines) {
    const std::filesystem::path path = std::filesystem::path(folder) / (operation + ".txt");
    GoldenFile golden(path);
    GoldenFile::Section* const expected = golden.Find(section);
    if (expected != nullptr && expected->lines == lines) {
        return testing::AssertionSuccess();
    }
    auto failure = testing::AssertionFailure() << path << " [" << section << "]";
    if (UpdateIsAskedFor()) {
        if (expected != nullptr) {
            expected->lines = lines;
        } else {
            golden.sections.push_back({section, lines});
        }
        golden.Write(path);
        return failure << " was rewritten: review it and run again without KORVEX_UPDATE_GOLDEN";
    }
    if (expected == nullptr) {
        return failure << " is missing; logged and printed:\n" << Joined(lines);
    }
    return failure << " differs; expected:\n"
                   << Joined(expected->lines) << "logged and printed:\n"
                   << Joined(lines);
}

testing::AssertionResult MatchesGolden(const std::string& operation, const std::string& section,
                                       const Lines& lines) {
    NoteGoldenUsed(operation, section);
    return MatchesGoldenIn(KORVEX_GOLDEN_DIR, operation, section, lines);
}

}  // namespace Korvex3Sync::tests::support
