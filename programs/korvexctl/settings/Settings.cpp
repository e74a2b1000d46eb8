#include "korvexctl/settings/Settings.h"

#include <Korvex3Sync/Cameras.h>
#include <Korvex3Sync/Connection.h>
#include <Korvex3Sync/Light.h>

#include <algorithm>
#include <array>
#include <iomanip>
#include <sstream>

#include "korvexctl/cli/ExitCodes.h"
#include "korvexctl/head/TriggerModes.h"
#include "platform/text/NearNames.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr double kMostPercent = 100;
constexpr double kLongestPeriodMs = 10'000;
constexpr double kLongestWorkTimeUs = 1'000'000;
// The range of one byte in steps of 0.1 ms; 0 would only select the camera.
constexpr double kShortestExposureMs = 0.1;
constexpr double kLongestExposureMs = 25.5;
// The range of six bits.
constexpr double kHighestGain = 63;

constexpr int kTriggerOff = 0;
/// Off, the modes that give image sets, and the single colour frame.
constexpr auto kTriggerWords = [] {
    std::array<Word, kTriggerModes.size() + 2> words{Word{"off", kTriggerOff}};
    std::size_t next = 1;
    for (const TriggerMode& known : kTriggerModes) {
        words[next++] = {known.name, known.mode};
    }
    words[next] = {"single-color", TRIGGER_SINGLE_COLOR};
    return words;
}();

int Whole(const SettingValue& value, std::size_t index = 0) {
    return static_cast<int>(value.at(index));
}

bool On(const SettingValue& value, std::size_t index = 0) {
    return value.at(index) != 0;
}

using ReadNumber = RETSTATUS (*)(void* const& handle, int& value);
using WriteNumber = RETSTATUS (*)(void* const& handle, const int& value);

Setting DirectModeOnly(Setting setting) {
    setting.directModeOnly = true;
    return setting;
}

/// A setting that is one number, and can be read.
Setting Number(const char* name, const char* unit, double low, double high, const char* help,
               ReadNumber read, WriteNumber write) {
    Setting setting{name, help, unit, {{"", FieldKind::Whole, low, high}}, {}, {}};
    setting.read = [read](void* const& handle, SettingValue& value) {
        int number = 0;
        const RETSTATUS status = read(handle, number);
        value = {static_cast<double>(number)};
        return status;
    };
    setting.write = [write](void* const& handle, const SettingValue& value) {
        return write(handle, Whole(value));
    };
    return setting;
}

Setting Percent(const char* name, const char* help, ReadNumber read, WriteNumber write) {
    return Number(name, "percent", 0, kMostPercent, help, read, write);
}

Setting WorkTime(const char* name, const char* help, ReadNumber read, WriteNumber write) {
    return DirectModeOnly(Number(name, "us", 0, kLongestWorkTimeUs, help, read, write));
}

using Write = RETSTATUS (*)(void* const& handle, const SettingValue& value);

/// A setting without unit that cannot be read.
Setting Told(const char* name, std::vector<Field> fields, const char* help, Write write) {
    return {name, help, "", std::move(fields), {}, write};
}

/// A setting with values that stay on after disconnecting.
Setting LeavingOn(const char* what, bool (*staysOn)(const SettingValue& value), Setting setting) {
    setting.leavesOn = what;
    setting.staysOn = staysOn;
    return setting;
}

Setting StrobeDuty() {
    const auto part = [](const char* name) {
        return Field{name, FieldKind::Whole, 0, kMostPercent};
    };
    return {"strobe-duty",
            "duty ratios of the strobe: texture frames, plain frames, plain frames in a mode with "
            "texture",
            "percent",
            {part("texture"), part("plain"), part("with-texture")},
            [](void* const& handle, SettingValue& value) {
                int texture = 0;
                int plain = 0;
                int withTexture = 0;
                const RETSTATUS status = GetStrobeDutioRatio(handle, texture, plain, withTexture);
                value = {static_cast<double>(texture), static_cast<double>(plain),
                         static_cast<double>(withTexture)};
                return status;
            },
            [](void* const& handle, const SettingValue& value) {
                return SetStrobeDutioRatio(handle, Whole(value, 0), Whole(value, 1),
                                           Whole(value, 2));
            }};
}

Setting StrobeWorkTime() {
    const auto part = [](const char* name) {
        return Field{name, FieldKind::Whole, 0, kLongestWorkTimeUs};
    };
    return {"strobe-work-time",
            "work times of the strobe, with texture and without",
            "us",
            {part("with-texture"), part("plain")},
            [](void* const& handle, SettingValue& value) {
                int withTexture = 0;
                int plain = 0;
                const RETSTATUS status = GetStrobeWorkTime(handle, withTexture, plain);
                value = {static_cast<double>(withTexture), static_cast<double>(plain)};
                return status;
            },
            [](void* const& handle, const SettingValue& value) {
                return SetStrobeWorkTime(handle, Whole(value, 0), Whole(value, 1));
            }};
}

std::vector<Setting> BoardSettings() {
    return {
        Percent("projector-brightness", "brightness of the projector", GetProjectorBrightness,
                SetProjectorBrightness),
        Percent("projector-duty", "duty ratio of the projector", GetProjectDutioRatio,
                SetProjectDutioRatio),
        WorkTime("projector-work-time", "work time of the projector", GetProjectWorkTime,
                 SetProjectWorkTime),
        Percent("laser-line-duty", "duty ratio of the laser lines", GetLaserLineDutioRatio,
                SetLaserLineDutioRatio),
        WorkTime("laser-line-work-time", "work time of the laser lines", GetLaserLineWorkTime,
                 SetLaserLineWorkTime),
        Percent("ir-laser-duty", "duty ratio of the infrared laser", GetIRLaserDutioRatio,
                SetIRLaserDutioRatio),
        WorkTime("ir-laser-work-time", "work time of the infrared laser", GetIRLaserWorkTime,
                 SetIRLaserWorkTime),
        DirectModeOnly(Told("ir-laser-level", {{"", FieldKind::Whole, 1, 10}},
                            "level of the infrared laser",
                            [](void* const& handle, const SettingValue& value) {
                                return SetIRLaserBrightnessLevel(handle, Whole(value));
                            })),
        StrobeDuty(),
        DirectModeOnly(StrobeWorkTime()),
        Told("strobe", {{"route", FieldKind::Whole, 0, 2}, {"state", FieldKind::Whole, 1, 4}},
             "which strobe output follows the trigger, and how",
             [](void* const& handle, const SettingValue& value) {
                 return SetStrobeControlledByTrigger(handle,
                                                     static_cast<CONTROLROUTE>(Whole(value, 0)),
                                                     static_cast<STROBE_STATE>(Whole(value, 1)));
             }),
        LeavingOn(
            "laser lines", [](const SettingValue& value) { return On(value, 1); },
            Told("blue-laser", {{"mode", FieldKind::Whole, 0, 3}, {"enable", FieldKind::Switch}},
                 "work mode of the laser lines, and whether they are on",
                 [](void* const& handle, const SettingValue& value) {
                     return EnableBlueLaser(handle, static_cast<LASERWORKMODE>(Whole(value, 0)),
                                            On(value, 1));
                 })),
        LeavingOn(
            "infrared laser", [](const SettingValue& value) { return On(value); },
            Told("ir-laser", {{"", FieldKind::Switch}}, "the infrared laser",
                 [](void* const& handle, const SettingValue& value) {
                     return EnableIRLaser(handle, On(value));
                 })),
        Told("project", {{"", FieldKind::Whole, 0, 2}},
             "what the projector shows: 0 nothing, 1 and 2 its patterns; disconnecting sets 0",
             [](void* const& handle, const SettingValue& value) {
                 return Project(handle, static_cast<PROJECTWORKTYPES>(Whole(value)));
             }),
        Told("distance", {{"", FieldKind::Whole, 0, 3}}, "state of the distance lights, 0 for off",
             [](void* const& handle, const SettingValue& value) {
                 return SetDistanceIndicate(handle, static_cast<DISTANCESTATUS>(Whole(value)));
             }),
        // The service takes it, and has a heartbeat of its own.
        DirectModeOnly(Told("heartbeat", {{"", FieldKind::Switch}},
                            "the board's heartbeat; disconnecting switches it off",
                            [](void* const& handle, const SettingValue& value) {
                                bool on = On(value);
                                return EnableHeartbeat(handle, on);
                            })),
    };
}

/// A missing camera leaves the values untouched and answers success, which is a failure here.
RETSTATUS ReadCamera(void* const& handle, int order, double& exposure, int& gain) {
    exposure = -1;
    gain = -1;
    const RETSTATUS status = GetCameraExposureAndGain(handle, order, exposure, gain);
    return status == STATUS_SUCCESS && (exposure <= 0 || gain < 0) ? STATUS_CAMERA : status;
}

Setting Exposure(int order) {
    return {"exposure." + std::to_string(order),
            "exposure time of the camera at this order; at order 0 with gain 0 no less than 0.4",
            "ms",
            {{"", FieldKind::Tenths, kShortestExposureMs, kLongestExposureMs}},
            [order](void* const& handle, SettingValue& value) {
                int gain = 0;
                value.resize(1);
                return ReadCamera(handle, order, value[0], gain);
            },
            {},
            CameraPart::Exposure,
            order};
}

Setting Gain(int order) {
    return {"gain." + std::to_string(order),
            "gain of the camera at this order; the camera may take less than the range",
            "",
            {{"", FieldKind::Whole, 0, kHighestGain}},
            [order](void* const& handle, SettingValue& value) {
                double exposure = 0;
                int gain = 0;
                const RETSTATUS status = ReadCamera(handle, order, exposure, gain);
                value = {static_cast<double>(gain)};
                return status;
            },
            {},
            CameraPart::Gain,
            order};
}

std::vector<Setting> MakeSettings() {
    std::vector<Setting> all = BoardSettings();
    for (int order = 0; order < kCameraOrders; ++order) {
        all.push_back(Exposure(order));
        all.push_back(Gain(order));
    }
    all.push_back(Number("trigger-period", "ms", 1, kLongestPeriodMs,
                         "time from trigger to trigger", GetVideoTriggerPeriod,
                         SetVideoTriggerPeriod));
    all.push_back(LeavingOn(
        "trigger",
        [](const SettingValue& value) {
            return Whole(value) != kTriggerOff && Whole(value) != TRIGGER_SINGLE_COLOR;
        },
        Told("trigger-mode", {{"", FieldKind::Word, 0, 0, kTriggerWords}},
             "what each trigger gives", [](void* const& handle, const SettingValue& value) {
                 return EnableVideoTrigger(handle, static_cast<CAMERA_TRIGGER_MODE>(Whole(value)),
                                           Whole(value) != kTriggerOff);
             })));
    return all;
}

}  // namespace

bool OnlySelects(int cameraOrder, double exposureMs, double gain) {
    constexpr double kShortestTaken = 0.4;
    // Halfway to the step below.
    constexpr double kHalfStep = 0.05;
    return cameraOrder == 0 && gain == 0 && exposureMs < kShortestTaken - kHalfStep;
}

std::span<const Setting> AllSettings() {
    static const std::vector<Setting> s_all = MakeSettings();
    return s_all;
}

const Setting* FindSetting(std::string_view name) {
    const auto all = AllSettings();
    const auto found = std::find_if(all.begin(), all.end(),
                                    [name](const Setting& known) { return known.name == name; });
    return found == all.end() ? nullptr : &*found;
}

const Setting& RequireSetting(std::string_view name) {
    const Setting* setting = FindSetting(name);
    if (setting == nullptr) {
        throw CommandError(ExitCode::Usage, UnknownSetting(name) + " (see --help)");
    }
    return *setting;
}

std::string UnknownSetting(std::string_view name) {
    // Of each kind of camera setting only the order that is meant: not every head has all of them.
    const std::string order = name.empty() ? "" : std::string(1, name.back());
    const bool has = order.find_first_of("0123") != std::string::npos;
    std::vector<std::string> names;
    for (const Setting& setting : AllSettings()) {
        if (setting.cameraOrder < 0 || setting.name.ends_with(has ? order : "0")) {
            names.push_back(setting.name);
        }
    }
    return "unknown setting \"" + std::string(name) + "\"" + text::DidYouMean(name, names);
}

std::string SwitchOffText(const Setting& setting, const SettingValue& value) {
    SettingValue off = value;
    for (std::size_t i = 0; i < off.size(); ++i) {
        if (setting.fields[i].kind == FieldKind::Switch) {
            off[i] = 0;
        } else if (setting.fields[i].kind == FieldKind::Word) {
            off[i] = kTriggerOff;
        }
    }
    return setting.name + ' ' + ValueText(setting.fields, off);
}

std::string RangeText(const Setting& setting, Notation notation) {
    const std::string unit = setting.unit;
    std::string text = unit;
    for (const Field& field : setting.fields) {
        const std::string name = field.name;
        text += (text.empty() ? "" : ", ") + name + (name.empty() ? "" : " ") +
                RangeText(field, notation);
    }
    return text;
}

std::string SettingsTable(Notation notation) {
    std::ostringstream text;
    text << "Settings (name: unit, range: meaning):\n";
    for (const Setting& setting : AllSettings()) {
        text << "  " << setting.name << ": " << RangeText(setting, notation) << "\n      "
             << setting.help << (setting.read ? "" : " (not readable)")
             << (setting.directModeOnly ? " (not with --service)" : "") << '\n';
    }
    return text.str();
}

}  // namespace Korvex3Sync::korvexctl
