#include "korvexctl/SettingsAccess.h"

#include <Korvex3Sync/Cameras.h>

#include <nlohmann/json.hpp>
#include <set>

#include "korvexctl/ExitCodes.h"
#include "korvexctl/Session.h"
#include "korvexctl/system/Signals.h"

namespace Korvex3Sync::korvexctl {

namespace {

std::string WithUnit(const Setting& setting, const std::string& value) {
    return value + (*setting.unit == 0 ? "" : " ") + setting.unit;
}

/// The value that is asked for this half of a camera's pair; else the one that the head has.
double PairValue(void* const& handle, std::span<const Assignment> assignments, CameraPart part,
                 int order) {
    for (const Assignment& assignment : assignments) {
        if (assignment.setting->part == part && assignment.setting->cameraOrder == order) {
            return assignment.value.at(0);
        }
    }
    for (const Setting& setting : AllSettings()) {
        if (setting.part == part && setting.cameraOrder == order) {
            const Reading reading = ReadSetting(handle, setting);
            if (!reading.Known()) {
                throw CommandError(ExitCode::DeviceRefused,
                                   "exposure and gain are set together, and the head does not tell "
                                   "its present " +
                                       setting.name + ": " + StatusText(reading.status) +
                                       "; give both");
            }
            return reading.value.at(0);
        }
    }
    throw std::logic_error("a camera order without settings");
}

}  // namespace

std::string Reading::Text() const {
    if (Known()) {
        return WithUnit(*setting, ValueText(setting->fields, value));
    }
    return NotReadable() ? "not readable" : "unknown";
}

nlohmann::json Reading::ToJson() const {
    return Known() ? ValueToJson(setting->fields, value) : nlohmann::json();
}

Reading ReadSetting(void* const& handle, const Setting& setting) {
    EndIfInterrupted();
    Reading reading{&setting, STATUS_NOT_SUPPORTED, {}};
    if (setting.read) {
        reading.status = setting.read(handle, reading.value);
    }
    return reading;
}

std::vector<const Setting*> SettingsOf(std::size_t cameras) {
    std::vector<const Setting*> settings;
    for (const Setting& setting : AllSettings()) {
        if (setting.cameraOrder < 0 || static_cast<std::size_t>(setting.cameraOrder) < cameras) {
            settings.push_back(&setting);
        }
    }
    return settings;
}

void RequireCamera(const Setting& setting, std::size_t cameras) {
    if (setting.cameraOrder >= 0 && static_cast<std::size_t>(setting.cameraOrder) >= cameras) {
        throw CommandError(ExitCode::DeviceRefused, setting.name + ": the head has " +
                                                        std::to_string(cameras) +
                                                        " cameras, counted from 0");
    }
}

void Apply(void* const& handle, std::span<const Assignment> assignments) {
    std::set<int> camerasSet;
    for (const Assignment& assignment : assignments) {
        const Setting& setting = *assignment.setting;
        if (setting.part == CameraPart::None) {
            Require(setting.write(handle, assignment.value), "set " + setting.name);
        } else if (camerasSet.insert(setting.cameraOrder).second) {
            const int order = setting.cameraOrder;
            const double exposure = PairValue(handle, assignments, CameraPart::Exposure, order);
            const auto gain =
                static_cast<int>(PairValue(handle, assignments, CameraPart::Gain, order));
            Require(SetCameraExposureAndGain(handle, order, exposure, gain),
                    "set exposure and gain of camera " + std::to_string(order));
        }
    }
}

void VerifyApplied(void* const& handle, std::span<const Assignment> assignments,
                   const std::function<void(const Assignment&, const Reading&)>& onReading) {
    std::string wrong;
    for (const Assignment& assignment : assignments) {
        const Setting& setting = *assignment.setting;
        const Reading reading = ReadSetting(handle, setting);
        onReading(assignment, reading);
        const std::string asked = WithUnit(setting, ValueText(setting.fields, assignment.value));
        if (reading.Known() ? !SameValue(reading.value, assignment.value)
                            : !reading.NotReadable()) {
            wrong += (wrong.empty() ? "" : "; ") + setting.name + " was set to " + asked +
                     " and reads back as " + reading.Text();
        }
    }
    if (!wrong.empty()) {
        throw CommandError(ExitCode::DeviceRefused, wrong);
    }
}

nlohmann::json DescribeSetting(const Setting& setting) {
    nlohmann::json description{{"unit", nullptr},
                               {"readable", static_cast<bool>(setting.read)},
                               {"range", RangeToJson(setting.fields)}};
    if (*setting.unit != 0) {
        description["unit"] = setting.unit;
    }
    return description;
}

}  // namespace Korvex3Sync::korvexctl
