#include "korvexctl/settings/SettingValues.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <nlohmann/json.hpp>

#include "korvexctl/cli/Decimal.h"
#include "platform/text/NearNames.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr double kStepsInOne = 10;
// Far above the rounding of a decimal number, far below a step.
constexpr double kTolerance = 1e-6;

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
    return DecimalText(value);
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
        return {{"values", {false, true}}};
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

/// The text before the range in "... is not".
const char* KindText(const Field& field) {
    switch (field.kind) {
        case FieldKind::Switch:
            return "";
        case FieldKind::Word:
            return "one of ";
        case FieldKind::Tenths:
            return "a number from ";
        case FieldKind::Whole:
            break;
    }
    return "a whole number from ";
}

/// "; did you mean laser", for a misspelt word of the field.
std::string NearWords(const Field& field, std::string_view text) {
    std::vector<std::string> words;
    for (const Word& word : field.words) {
        words.emplace_back(word.text);
    }
    return text::DidYouMean(text, words);
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
    return ReadDecimal<double>(text);
}

}  // namespace

std::optional<std::string> CheckValue(const Field& field, double value) {
    if (field.kind == FieldKind::Switch || field.kind == FieldKind::Word) {
        return std::nullopt;
    }
    // Also true for NaN.
    const bool outside = !(value >= field.low && value <= field.high);
    if (outside) {
        return DecimalText(value) + " is not in " + RangeText(field);
    }
    const double steps = field.kind == FieldKind::Tenths ? value * kStepsInOne : value;
    if (std::abs(steps - std::round(steps)) > kTolerance) {
        return DecimalText(value) + " is not " + KindText(field) + RangeText(field);
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
        return "\"" + std::string(text) + "\" is not " + KindText(field) + RangeText(field) +
               NearWords(field, text);
    }
    return ReadNumber(field, *value);
}

std::string RangeText(const Field& field, Notation notation) {
    const bool inProfile = notation == Notation::Profile;
    if (field.kind == FieldKind::Switch) {
        return inProfile ? "true or false" : "on or off";
    }
    if (field.kind == FieldKind::Word) {
        const std::string quote = inProfile ? "\"" : "";
        std::string text;
        for (const Word& word : field.words) {
            text.append(text.empty() ? "" : ", ").append(quote).append(word.text).append(quote);
        }
        return text;
    }
    const char* steps = field.kind == FieldKind::Tenths ? " in steps of 0.1" : "";
    return RangeText(field.low, field.high) + steps;
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
