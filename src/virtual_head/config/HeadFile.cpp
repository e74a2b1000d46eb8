#include "virtual_head/config/HeadFile.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/os/FileName.h"
#include "platform/text/NearNames.h"
#include "platform/text/Printable.h"
#include "toml/ParseToml.h"
#include "virtual_head/base/FileBytes.h"
#include "virtual_head/config/FaultKeys.h"
#include "virtual_head/config/HeadRules.h"
#include "virtual_head/config/KeyReader.h"
#include "virtual_head/config/UserMemoryKeys.h"

namespace Korvex3Sync::virtual_head {
namespace {

constexpr std::uintmax_t kLargestFile = 1U << 20U;
constexpr const char* kBoard = "board";
constexpr const char* kUserMemory = "user_memory";
constexpr const char* kReplay = "replay";
constexpr const char* kReplayFolder = "folder";

int LineOf(const toml::key& key) {
    return static_cast<int>(key.source().begin.line);
}

/// The line that names the folder of images; 0 if there is none.
int LineOfReplay(const toml::table& root) {
    const toml::table* const replay = root[kReplay].as_table();
    if (replay != nullptr) {
        for (const auto& [key, value] : *replay) {
            if (key == kReplayFolder) {
                return LineOf(key);
            }
        }
    }
    return 0;
}

std::vector<std::string> TableNames() {
    std::vector<std::string> names{"fault", "faults"};
    for (const KeyRule& rule : KeyRules()) {
        if (names.back() != rule.table) {
            names.emplace_back(rule.table);
        }
    }
    return names;
}

std::vector<std::string> KeyNamesOf(const std::string& table) {
    std::vector<std::string> keys;
    for (const KeyRule& rule : KeyRules()) {
        if (rule.table == table) {
            keys.emplace_back(rule.key);
        }
    }
    if (table == kBoard) {
        keys.emplace_back(kUserMemory);
    }
    return keys;
}

/// Copies the values of a parsed file to a description and collects what is wrong.
class Reader {
public:
    explicit Reader(const std::filesystem::path& folder) : m_folder(folder) {}

    void Read(const toml::table& root) {
        for (const auto& [key, value] : root) {
            const int line = LineOf(key);
            const toml::table* table = value.as_table();
            if (ReadFaultTables(key.str(), value)) {
                continue;
            }
            if (key != "camera" && key != "board" && key != kReplay && key != "scene") {
                Find(line, "unknown key \"" + std::string(key.str()) + "\"" +
                               text::DidYouMean(key.str(), TableNames()));
            } else if (table == nullptr) {
                Find(line, "\"" + std::string(key.str()) + "\" is not a table");
            } else {
                ReadTable(key.str(), *table);
            }
        }
        if (m_findings.empty()) {
            Find(CheckTogether(m_description));
        }
    }

    /// The first finding in the file.
    std::optional<std::pair<int, std::string>> FirstFinding() const {
        const auto first =
            std::min_element(m_findings.begin(), m_findings.end(),
                             [](const auto& a, const auto& b) { return a.first < b.first; });
        return first == m_findings.end() ? std::nullopt : std::optional(*first);
    }

    HeadDescription& Description() { return m_description; }

private:
    void Find(int line, std::string what) { m_findings.emplace_back(line, std::move(what)); }

    void Find(const std::optional<BrokenRule>& broken) {
        if (broken) {
            const auto line = m_lines.find({broken->table, broken->key});
            Find(line == m_lines.end() ? 1 : line->second, broken->message);
        }
    }

    /// False if the key does not belong to the faults.
    bool ReadFaultTables(std::string_view key, const toml::node& value) {
        if (key != "fault" && key != "faults") {
            return false;
        }
        if (auto wrong = key == "fault" ? ReadFaults(value, m_description)
                                        : ReadFaultSeed(value, m_description)) {
            Find(wrong->line, std::move(wrong->what));
        }
        return true;
    }

    void ReadTable(std::string_view table, const toml::table& values) {
        for (const auto& [key, value] : values) {
            const std::pair<std::string, std::string> where{table, key.str()};
            m_lines[where] = LineOf(key);
            if (!ReadKey(where, value)) {
                Find(LineOf(key), "unknown key \"" + where.second + "\" in [" + where.first + "]" +
                                      text::DidYouMean(where.second, KeyNamesOf(where.first)));
            }
        }
    }

    /// False if the table has no such key.
    bool ReadKey(const std::pair<std::string, std::string>& where, const toml::node& value) {
        if (where == std::pair<std::string, std::string>{kBoard, kUserMemory}) {
            if (auto wrong = ReadUserMemory(value, m_description.userMemory)) {
                Find(wrong->line, std::move(wrong->what));
            }
            return true;
        }
        const KeyRule* const rule = FindKey(where.first, where.second);
        if (rule == nullptr) {
            return false;
        }
        if (const auto wrong = ReadValue(*rule, value, m_folder, m_description)) {
            Find(m_lines[where], KeyText(*rule) + ": " + *wrong);
        }
        return true;
    }

    const std::filesystem::path m_folder;
    HeadDescription m_description;
    std::map<std::pair<std::string, std::string>, int> m_lines;
    std::vector<std::pair<int, std::string>> m_findings;
};

HeadFileError Refuse(const std::filesystem::path& file, int line, const std::string& what) {
    const std::string place = line > 0 ? ":" + std::to_string(line) : "";
    return {file, line, text::Printable(os::TextOf(file) + place + ": " + what)};
}

}  // namespace

std::variant<HeadDescription, HeadFileError> ParseHeadFile(std::string_view text,
                                                           const std::filesystem::path& file) {
    try {
        Reader reader(file.parent_path());
        const auto parsed = ParseToml(text);
        if (const auto* wrong = std::get_if<TomlError>(&parsed)) {
            return Refuse(file, wrong->line, wrong->what);
        }
        reader.Read(std::get<toml::table>(parsed));
        if (auto finding = reader.FirstFinding()) {
            return Refuse(file, finding->first, finding->second);
        }
        return std::move(reader.Description());
    } catch (const std::exception& error) {
        return Refuse(file, 0, error.what());
    }
}

std::variant<HeadDescription, HeadFileError> ReadHeadFile(const std::filesystem::path& file) {
    try {
        const auto bytes = ReadFileBytes(file, kLargestFile);
        if (const auto* wrong = std::get_if<const char*>(&bytes)) {
            return Refuse(file, 0, *wrong);
        }
        return ParseHeadFile(std::get<std::string>(bytes), file);
    } catch (const std::exception& error) {
        return Refuse(file, 0, error.what());
    }
}

HeadFileError RefuseReplay(const std::filesystem::path& file, const std::string& what) {
    int line = 0;
    try {
        // The file was valid a moment ago; now only the line is needed.
        const auto bytes = ReadFileBytes(file, kLargestFile);
        if (const auto* text = std::get_if<std::string>(&bytes)) {
            line = LineOfReplay(std::get<toml::table>(ParseToml(*text)));
        }
    } catch (const std::exception&) {
        line = 0;
    }
    return Refuse(file, line, std::string("[") + kReplay + "] " + kReplayFolder + ": " + what);
}

}  // namespace Korvex3Sync::virtual_head
