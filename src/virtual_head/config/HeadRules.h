#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "virtual_head/base/Export.h"
#include "virtual_head/config/HeadDescription.h"

namespace Korvex3Sync::virtual_head {

/// Where a value stands in a head file, as [table] key.
struct HeadKey {
    const char* table;
    const char* key;
};

/// A whole number of the description and its limits.
struct NumberRule {
    HeadKey where;
    int HeadDescription::*member;
    int lowest;
    int highest;
};

/// A text of the description: printable ASCII of bounded length that begins with `prefix`.
struct TextRule {
    HeadKey where;
    std::string HeadDescription::*member;
    std::size_t shortest;
    std::size_t longest;
    const char* prefix;
};

/// A rule that the description breaks.
struct BrokenRule {
    HeadKey where;
    std::string message;  // "[table] key: what is wrong", one line
};

KORVEX_VIRTUAL_HEAD_API std::span<const NumberRule> NumberRules();
KORVEX_VIRTUAL_HEAD_API std::span<const TextRule> TextRules();

/// What one value does against its rule.
std::optional<BrokenRule> Check(const NumberRule& rule, std::int64_t value);
std::optional<BrokenRule> Check(const TextRule& rule, const std::string& value);
/// What values that are fine by themselves do against each other.
std::optional<BrokenRule> CheckTogether(const HeadDescription& description);
/// All of it: the first rule that the description breaks.
std::optional<BrokenRule> Check(const HeadDescription& description);

}  // namespace Korvex3Sync::virtual_head
