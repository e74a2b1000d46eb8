#include "korvexctl/SettingValues.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <sstream>

namespace Korvex3Sync::korvexctl {

namespace {

constexpr int kDigits = 10;
constexpr double kStepsInOne = 10;
// Far above the rounding of a decimal number, far below a step.
constexpr double kTolerance = 1e-6;

std::string NumberText(double value) {
    std::ostringstream text;
    // Enough that every whole number of a range is written out.
    text << std::setprecision(kDigits) << value;
    return text.str();
}

const Word* FindWord(const Field& field, double value) {
    const auto found = std::find_if(field.words.begin(), field.words.end(),
                                    [value](const Word& word) { return word.value == value; });
    return found == field.words.end() ? nullptr : &*found;
}

std::string FieldText(const Field& field, double value) {
    if (field.kind == FieldKind::Switch) {
        return value != 0 ? "on" : "off";
    }
    if (const Word* word = FindWord(field, value)) {
        return word->text;
    }
    return NumberText(value);
}

nlohmann::json FieldToJson(const Field& field, double value) {
    switch (field.kind) {
        case FieldKind::Switch:
            return value != 0;
        case FieldKind::Word:
            return FieldText(field, value);
        case FieldKind::Tenths:
            return value;
        case FieldKind::Whole:
            break;
    }
    return static_cast<std::int64_t>(value);
}

nlohmann::json FieldRangeToJson(const Field& field) {
    if (field.kind == FieldKind::Switch) {
        return nlohmann::json::object();
    }
    if (field.kind == FieldKind::Word) {
        nlohmann::json words = nlohmann::json::array();
        for (const Word& word : field.words) {
            words.push_back(word.text);
        }
        return {{"words", words}};
    }
    const Field plain{"", field.kind};
    return {{"low", FieldToJson(plain, field.low)}, {"high", FieldToJson(plain, field.high)}};
}

/// The one field's document, or an object of those of several.
template <typename Call>
nlohmann::json Gather(std::span<const Field> fields, const Call& call) {
    if (fields.size() == 1) {
        return call(0);
    }
    nlohmann::json all = nlohmann::json::object();
    for (std::size_t i = 0; i < fields.size(); ++i) {
        all[fields[i].name] = call(i);
    }
    return all;
}

/// The number or word that the text means, whatever the range.
std::optional<double> Meaning(const Field& field, std::string_view text) {
    if (field.kind == FieldKind::Switch) {
        if (text == "on" || text == "true") {
            return 1;
        }
        return text == "off" || text == "false" ? std::optional<double>(0) : std::nullopt;
    }
    if (field.kind == FieldKind::Word) {
        for (const Word& word : field.words) {
            if (text == word.text) {
                return word.value;
            }
        }
        return std::nullopt;
    }
    double value = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && rest == end ? std::optional(value) : std::nullopt;
}

}  // namespace

std::optional<std::string> CheckValue(const Field& field, double value) {
    if (field.kind == FieldKind::Switch || field.kind == FieldKind::Word) {
        return std::nullopt;
    }
    // Also true for what is no number.
    const bool outside = !(value >= field.low && value <= field.high);
    const double steps = field.kind == FieldKind::Tenths ? value * kStepsInOne : value;
    if (outside || std::abs(steps - std::round(steps)) > kTolerance) {
        return NumberText(value) + " is not in " + RangeText(field);
    }
    return std::nullopt;
}

std::variant<double, std::string> ReadNumber(const Field& field, double value) {
    if (std::optional<std::string> wrong = CheckValue(field, value)) {
        return *wrong;
    }
    return field.kind == FieldKind::Tenths ? std::round(value * kStepsInOne) / kStepsInOne
                                           : std::round(value);
}

std::variant<double, std::string> ReadValueText(const Field& field, std::string_view text) {
    const std::optional<double> value = Meaning(field, text);
    if (!value) {
        return "\"" + std::string(text) + "\" is not " +
               (field.kind == FieldKind::Switch ? "" : "one of ") + RangeText(field);
    }
    return ReadNumber(field, *value);
}

std::string RangeText(const Field& field) {
    if (field.kind == FieldKind::Switch) {
        return "on or off";
    }
    if (field.kind == FieldKind::Word) {
        std::string text;
        for (const Word& word : field.words) {
            text += (text.empty() ? "" : ", ") + std::string(word.text);
        }
        return text;
    }
    const char* steps = field.kind == FieldKind::Tenths ? " in steps of 0.1" : "";
    return NumberText(field.low) + " to " + NumberText(field.high) + steps;
}

std::string ValueText(std::span<const Field> fields, const SettingValue& value) {
    std::string text;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        text += (text.empty() ? "" : " ") + FieldText(fields[i], value.at(i));
    }
    return text;
}

nlohmann::json ValueToJson(std::span<const Field> fields, const SettingValue& value) {
    return Gather(fields, [&](std::size_t i) { return FieldToJson(fields[i], value.at(i)); });
}

nlohmann::json RangeToJson(std::span<const Field> fields) {
    return Gather(fields, [&](std::size_t i) { return FieldRangeToJson(fields[i]); });
}

bool SameValue(const SettingValue& a, const SettingValue& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](double x, double y) { return std::abs(x - y) < kTolerance; });
}

}  // namespace Korvex3Sync::korvexctl
