#include "korvexctl/scan/ScanSettings.h"

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>

#include "korvexctl/files/Output.h"
#include "korvexctl/head/TriggerModes.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr const char* kPeriod = "trigger-period";

const TriggerMode* FindMode(int mode) {
    const auto* const found = std::find_if(kTriggerModes.begin(), kTriggerModes.end(),
                                           [mode](const TriggerMode& m) { return m.mode == mode; });
    return found == kTriggerModes.end() ? nullptr : found;
}

/// Takes a setting that says what is switched on; false for any other.
bool TakeLight(const Setting& setting, const SettingValue& value, ScanLight& light) {
    const int number = static_cast<int>(value.front());
    if (setting.name == "trigger-mode") {
        const TriggerMode* const mode = FindMode(number);
        light.mode = mode != nullptr ? mode->mode : light.mode;
    } else if (setting.name == "blue-laser") {
        light.laserMode = number;
    } else if (setting.name == "project") {
        light.pattern = number != PROJECT_OFF ? number : light.pattern;
    } else if (setting.name == "ir-laser") {
        light.infrared = number != 0;
    } else {
        return false;
    }
    return true;
}

/// Whether a setting has a part in sets of this light.
bool Matters(const Setting& setting, const ScanLight& light) {
    const bool pattern = ShowsPattern(light.mode);
    const auto isOf = [&setting](const char* name) { return setting.name.starts_with(name); };
    return setting.cameraOrder >= 0 || setting.name == kPeriod || isOf("strobe-") ||
           (pattern && isOf("projector-")) || (!pattern && isOf("laser-line-")) ||
           (light.infrared && isOf("ir-laser-"));
}

}  // namespace

bool ShowsPattern(CAMERA_TRIGGER_MODE mode) {
    const TriggerMode* const known = FindMode(mode);
    return known != nullptr && known->pattern;
}

std::string ModeName(CAMERA_TRIGGER_MODE mode) {
    const TriggerMode* const known = FindMode(mode);
    return known != nullptr ? known->name : std::to_string(static_cast<int>(mode));
}

ScanSettings CombineSettings(std::span<const Assignment> profile,
                             std::span<const Assignment> commandLine) {
    std::map<const Setting*, SettingValue> combined;
    for (const auto& settings : {profile, commandLine}) {
        for (const Assignment& assignment : settings) {
            combined[assignment.setting] = assignment.value;
        }
    }
    ScanSettings scan;
    for (const Setting& setting : AllSettings()) {
        const auto found = combined.find(&setting);
        if (found != combined.end() && !TakeLight(setting, found->second, scan.light)) {
            scan.values.push_back({&setting, found->second});
        }
    }
    return scan;
}

std::optional<int> SettingsInUse::PeriodMs() const {
    for (const Reading& reading : readings) {
        if (reading.setting->name == kPeriod && reading.Known()) {
            return static_cast<int>(reading.value.front());
        }
    }
    return std::nullopt;
}

std::vector<std::string> SettingsInUse::Texts() const {
    std::vector<std::string> texts;
    for (const Reading& reading : readings) {
        if (Matters(*reading.setting, asked.light)) {
            texts.push_back(reading.setting->name + " " + reading.Text());
        }
    }
    return texts;
}

SettingsInUse ApplyAndRead(void* const& handle, std::size_t cameras, ScanSettings asked) {
    Apply(handle, asked.values);
    VerifyApplied(handle, asked.values, [](const Assignment&, const Reading&) {});
    SettingsInUse settings{std::move(asked), {}};
    for (const Setting* setting : SettingsOf(cameras)) {
        if (setting->read) {
            settings.readings.push_back(ReadSetting(handle, *setting));
        }
    }
    return settings;
}

nlohmann::json ToJson(const SettingsInUse& settings) {
    const ScanLight& light = settings.asked.light;
    nlohmann::json given = nlohmann::json::object();
    for (const Assignment& assignment : settings.asked.values) {
        given[assignment.setting->name] = ValueToJson(assignment.setting->fields, assignment.value);
    }
    nlohmann::json values = nlohmann::json::object();
    for (const Reading& reading : settings.readings) {
        values[reading.setting->name] = reading.ToJson();
    }
    nlohmann::json json{
        {"mode", ModeName(light.mode)}, {"laser_mode", nullptr}, {"pattern", nullptr},
        {"infrared", light.infrared},   {"given", given},        {"values", values}};
    json[ShowsPattern(light.mode) ? "pattern" : "laser_mode"] =
        ShowsPattern(light.mode) ? light.pattern : light.laserMode;
    return json;
}

void Print(const SettingsInUse& settings, Output& output) {
    const ScanLight& light = settings.asked.light;
    output.Line("mode " + ModeName(light.mode) +
                (ShowsPattern(light.mode) ? ", pattern " + std::to_string(light.pattern)
                                          : ", laser mode " + std::to_string(light.laserMode)) +
                (light.infrared ? ", with the infrared laser" : ""));
    constexpr std::size_t kLineWidth = 80;
    std::string line;
    for (const std::string& text : settings.Texts()) {
        if (!line.empty() && line.size() + text.size() + 2 > kLineWidth) {
            output.Line(line + ",");
            line.clear();
        }
        line += (line.empty() ? "  " : ", ") + text;
    }
    output.Line(line);
}

}  // namespace Korvex3Sync::korvexctl
