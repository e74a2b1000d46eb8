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

/// One key of a head file that sets a value of the description. All that is said about a key
/// anywhere (reading, checking, error texts, the text of a new file, docs/virtual-head.md) comes
/// from here.
struct KeyRule {
    /// The value, and with it the key's type.
    using Member = std::variant<int HeadDescription::*, bool HeadDescription::*,
                                std::string HeadDescription::*,
                                std::filesystem::path HeadDescription::*, int SceneDescription::*,
                                double SceneDescription::*, ThreeNumbers SceneDescription::*>;

    const char* table;
    const char* key;
    Member member;
    /// Limits of a number, of each of three numbers, or of the length of a text. Without a use for
    /// true or false, and for a folder.
    double lowest = 0;
    double highest = 0;
    /// What a number counts; may be empty.
    const char* unit = "";
    /// A phrase without a full stop.
    const char* meaning = "";
    /// What a text begins with.
    const char* prefix = "";
};

/// Every key, table by table, in the order of a new head file.
KORVEX_VIRTUAL_HEAD_API std::span<const KeyRule> KeyRules();
/// Null when no table has such a key.
const KeyRule* FindKey(const std::string& table, const std::string& key);

/// The values that a key takes: "millimetres, 10 to 500", "true or false".
KORVEX_VIRTUAL_HEAD_API std::string ValuesText(const KeyRule& rule);
/// The value of a description as a head file writes it; empty where the default is none.
KORVEX_VIRTUAL_HEAD_API std::string ValueText(const KeyRule& rule,
                                              const HeadDescription& description);
/// "[table] key"
KORVEX_VIRTUAL_HEAD_API std::string KeyText(const KeyRule& rule);

/// Calls `use` with the value of the rule, a reference to a member of the description.
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

// What is wrong with one value, without the key; nothing when it keeps the rule. NaN is out of
// range.
std::optional<std::string> Check(const KeyRule& rule, std::int64_t value);
std::optional<std::string> Check(const KeyRule& rule, double value);
std::optional<std::string> Check(const KeyRule& rule, const ThreeNumbers& values);
std::optional<std::string> Check(const KeyRule& rule, const std::string& value);

/// A rule that the description breaks.
struct BrokenRule {
    std::string table;
    std::string key;
    std::string message;  // "[table] key: what is wrong", one line
};

/// What values that are valid by themselves do against each other: limits in order, an image size
/// that can be packed, an object that stays in front of the head.
std::optional<BrokenRule> CheckTogether(const HeadDescription& description);
/// All of it: the first rule that the description breaks.
std::optional<BrokenRule> Check(const HeadDescription& description);

}  // namespace Korvex3Sync::virtual_head
