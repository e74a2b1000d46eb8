#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace Korvex3Sync::korvexctl {

/// A number that has a name.
struct Word {
    const char* text;
    int value;
};

enum class FieldKind {
    Whole,   // a whole number
    Tenths,  // a number in steps of 0.1
    Switch,  // on (1) or off (0)
    Word     // one of a few words
};

/// Where a value is written: a profile writes switches and words differently.
enum class Notation { CommandLine, Profile };

/// One value of a setting, and what it may be.
struct Field {
    const char* name;  // distinguishes the values of one setting; "" where there is only one
    FieldKind kind = FieldKind::Whole;
    double low = 0;
    double high = 0;
    std::span<const Word> words{};  // for FieldKind::Word
};

/// The values of one setting, in the order of its fields. A switch is 0 or 1, a word its number.
using SettingValue = std::vector<double>;

/// What is wrong with a value, as "150 is not in 0 to 100"; empty when nothing is.
std::optional<std::string> CheckValue(const Field& field, double value);

/// The number, rounded to the steps of the field, or what is wrong with it.
std::variant<double, std::string> ReadNumber(const Field& field, double value);

/// Reads a value as a person types it ("60", "8.5", "on", "laser"): the value, rounded to the steps
/// of the field, or what is wrong with the text.
std::variant<double, std::string> ReadValueText(const Field& field, std::string_view text);

/// What the field may be, in words: "0 to 100", "on or off" (in a profile "true or false").
std::string RangeText(const Field& field, Notation notation = Notation::CommandLine);

/// The values as ReadValueText takes them, with blanks between.
std::string ValueText(std::span<const Field> fields, const SettingValue& value);

/// One field: a number, true or false, or a word. Several: an object of them by name.
nlohmann::json ValueToJson(std::span<const Field> fields, const SettingValue& value);

/// "low" and "high", or "words", or for a switch "values". Several fields: an object of these by
/// name.
nlohmann::json RangeToJson(std::span<const Field> fields);

/// Whether both say the same to the device.
bool SameValue(const SettingValue& a, const SettingValue& b);

}  // namespace Korvex3Sync::korvexctl
