// Profiles: settings that keep their own rules and survive being written and read again, or one
// line of the text and what is wrong with it.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <variant>
#include <vector>

#include "korvexctl/settings/ProfileFile.h"

namespace korvexctl = Korvex3Sync::korvexctl;

namespace {

void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

void CheckError(const korvexctl::ProfileError& error, std::string_view text) {
    const auto lines = std::count(text.begin(), text.end(), '\n') + 1;
    Require(error.line >= 1 && error.line <= lines);
    Require(!error.message.empty() && error.message.find('\n') == std::string::npos);
}

/// A number of the range in whole steps, one of the words, or 0 or 1.
void CheckField(const korvexctl::Field& field, double value) {
    const auto read = korvexctl::ReadValueText(
        field, korvexctl::ValueText(std::span(&field, 1), korvexctl::SettingValue{value}));
    Require(std::holds_alternative<double>(read) && std::get<double>(read) == value);
}

void CheckProfile(const korvexctl::Profile& profile) {
    std::vector<korvexctl::Reading> readings;
    const korvexctl::Setting* before = nullptr;
    for (const auto& [setting, value] : profile.settings) {
        Require(before == nullptr || before < setting);
        before = setting;
        Require(value.size() == setting->fields.size());
        for (std::size_t i = 0; i < value.size(); ++i) {
            CheckField(setting->fields[i], value[i]);
        }
        readings.push_back({setting, Korvex3Sync::STATUS_SUCCESS, value});
    }
    const auto read = korvexctl::ParseProfile(korvexctl::WriteProfile(readings));
    const auto* const again = std::get_if<korvexctl::Profile>(&read);
    Require(again != nullptr);
    Require(std::equal(profile.settings.begin(), profile.settings.end(), again->settings.begin(),
                       again->settings.end(), [](const auto& a, const auto& b) {
                           return a.setting == b.setting && a.value == b.value;
                       }));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto read = korvexctl::ParseProfile(text);
    if (const auto* error = std::get_if<korvexctl::ProfileError>(&read)) {
        CheckError(*error, text);
    } else {
        CheckProfile(std::get<korvexctl::Profile>(read));
    }
    return 0;
}
