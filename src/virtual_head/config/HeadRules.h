#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <variant>

#include "virtual_head/base/Export.h"
#include "virtual_head/config/HeadDescription.h"

namespace Korvex3Sync::virtual_head {

using ThreeNumbers = std::array<double, 3>;

/// A key of a head file that sets a value of the description. This is the only source for reading,
/// checks, error texts and the text of a new file; a test compares docs/virtual-head.md with it.
struct KeyRule {
    /// The value, which also defines the key's type.
    using Member = std::variant<int HeadDescription::*, bool HeadDescription::*,
                                std::string HeadDescription::*,
                                std::filesystem::path HeadDescription::*, int SceneDescription::*,
                                double SceneDescription::*, ThreeNumbers SceneDescription::*>;

    const char* table;
    const char* key;
    Member member;
    /// Limits of a number, of each of three numbers, or of the length of a text. Not used for
    /// booleans and folders.
    double lowest = 0;
    double highest = 0;
    /// The unit of a number; may be empty.
    const char* unit = "";
    /// A phrase without a full stop.
    const char* meaning = "";
    /// A text must begin with this.
    const char* prefix = "";
};

/// All keys, table by table, in the order of a new head file.
KORVEX_VIRTUAL_HEAD_API std::span<const KeyRule> KeyRules();
/// Null if the table has no such key.
const KeyRule* FindKey(const std::string& table, const std::string& key);

/// The values that a key takes: "millimetres, 10 to 500", "true or false".
KORVEX_VIRTUAL_HEAD_API std::string ValuesText(const KeyRule& rule);
/// The value in a description, as written in a head file; empty if there is no default.
KORVEX_VIRTUAL_HEAD_API std::string ValueText(const KeyRule& rule,
                                              const HeadDescription& description);
/// "[table] key"
KORVEX_VIRTUAL_HEAD_API std::string KeyText(const KeyRule& rule);

/// Calls `use` with a reference to the member of the description that the rule sets.
template <class Description, class Use>
auto WithValue(const KeyRule& rule, Description& description, Use use) {
    return std::visit(
        [&](auto member) {
            if constexpr (requires { description.*member; }) {
                return use(description.*member);
            } else {
                return use(description.scene.*member);
            }
        },
        rule.member);
}

// Checks one value. Returns what is wrong, without the key, or nothing if it obeys the rule. NaN is
// out of range.
std::optional<std::string> Check(const KeyRule& rule, std::int64_t value);
std::optional<std::string> Check(const KeyRule& rule, double value);
std::optional<std::string> Check(const KeyRule& rule, const ThreeNumbers& values);
std::optional<std::string> Check(const KeyRule& rule, const std::string& value);

/// A violation of a rule.
struct BrokenRule {
    std::string table;
    std::string key;
    std::string message;  // "[table] key: what is wrong", one line
};

/// Checks that valid values also fit together: limits in order, an image size that can be packed,
/// an object that stays in front of the head.
std::optional<BrokenRule> CheckTogether(const HeadDescription& description);
/// Checks everything. Returns the first violation.
std::optional<BrokenRule> Check(const HeadDescription& description);

}  // namespace Korvex3Sync::virtual_head
