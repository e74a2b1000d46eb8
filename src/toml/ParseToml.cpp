#include "toml/ParseToml.h"

#include <algorithm>
#include <optional>

namespace Korvex3Sync {
namespace {

constexpr int kMostParts = 8;
constexpr std::string_view kLineEnds = "\n\r\v\f";

bool IsKeyCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '-' || c == ' ' || c == '\t' || static_cast<unsigned char>(c) >= 0x80;
}

/// Goes through a text as the parser does up to the first mistake, and knows keys, strings and
/// comments from each other.
class KeyScan {
public:
    explicit KeyScan(std::string_view text) : m_text(text) {}

    /// The line of the first key with too many parts.
    std::optional<int> LineOfTooDeepKey() {
        int parts = 1;
        while (m_at < m_text.size()) {
            const char c = m_text[m_at];
            if (c == '"' || c == '\'') {
                SkipString(c);
                continue;
            }
            if (c == '#') {
                m_at = std::min(m_text.find_first_of(kLineEnds, m_at), m_text.size());
                continue;
            }
            if (c == '.') {
                ++parts;
            } else if (!IsKeyCharacter(c)) {
                parts = 1;
            }
            if (parts > kMostParts) {
                return m_line;
            }
            Step();
        }
        return std::nullopt;
    }

private:
    void Step() {
        m_line += m_text[m_at] == '\n' ? 1 : 0;
        ++m_at;
    }

    bool At(std::string_view what) const { return m_text.substr(m_at).starts_with(what); }

    void SkipString(char quote) {
        const std::string three(3, quote);
        const bool many = At(three);
        const std::string end = many ? three : std::string(1, quote);
        m_at += end.size();
        while (m_at < m_text.size() && !At(end)) {
            if (!many && kLineEnds.find(m_text[m_at]) != std::string_view::npos) {
                return;  // not closed: a mistake
            }
            if (quote == '"' && m_text[m_at] == '\\' && m_at + 1 < m_text.size()) {
                Step();
            }
            Step();
        }
        m_at = std::min(m_at + end.size(), m_text.size());
        // A string of several lines can end in up to two quotes of its own.
        for (int more = 0; many && more < 2 && At(end.substr(0, 1)); ++more) {
            ++m_at;
        }
    }

    const std::string_view m_text;
    std::size_t m_at = 0;
    int m_line = 1;
};

}  // namespace

std::variant<toml::table, TomlError> ParseToml(std::string_view text) {
    if (const auto line = KeyScan(text).LineOfTooDeepKey()) {
        return TomlError{*line,
                         "a key has more than " + std::to_string(kMostParts) + " dotted parts"};
    }
    try {
        return toml::parse(text);
    } catch (const toml::parse_error& error) {
        return TomlError{static_cast<int>(error.source().begin.line),
                         std::string(error.description())};
    }
}

}  // namespace Korvex3Sync
