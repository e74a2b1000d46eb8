#include "korvexctl/settings/SettingsAccess.h"

#include <Korvex3Sync/Cameras.h>

#include <cstdlib>
#include <nlohmann/json.hpp>
#include <set>

#include "korvexctl/cli/ExitCodes.h"
#include "korvexctl/cli/Interrupt.h"
#include "korvexctl/head/ServiceUse.h"
#include "korvexctl/head/Session.h"

namespace Korvex3Sync::korvexctl {

namespace {

std::string WithUnit(const Setting& setting, const std::string& value) {
    return value + (*setting.unit == 0 ? "" : " ") + setting.unit;
}

/// The requested value for this half of a camera's pair; otherwise the head's current one.
Reading PairReading(void* const& handle, std::span<const Assignment> assignments, CameraPart part,
                    int order) {
    for (const Assignment& assignment : assignments) {
        if (assignment.setting->part == part && assignment.setting->cameraOrder == order) {
            return {assignment.setting, STATUS_SUCCESS, assignment.value};
        }
    }
    for (const Setting& setting : AllSettings()) {
        if (setting.part == part && setting.cameraOrder == order) {
            return ReadSetting(handle, setting);
        }
    }
    throw std::logic_error("a camera order without settings");
}

double PairValue(void* const& handle, std::span<const Assignment> assignments, CameraPart part,
                 int order) {
    const Reading reading = PairReading(handle, assignments, part, order);
    if (!reading.Known()) {
        throw CommandError(
            ExitCode::DeviceRefused,
            "exposure and gain are set together, and the head does not report its current " +
                reading.setting->name + ": " + StatusText(reading.status) + "; give both");
    }
    return reading.value.at(0);
}

/// Whether a camera takes this gain: sets it and reads it back.
bool TakesGain(void* const& handle, int order, double exposure, int gain) {
    double exposureNow = 0;
    int gainNow = -1;
    return SetCameraExposureAndGain(handle, order, exposure, gain) == STATUS_SUCCESS &&
           GetCameraExposureAndGain(handle, order, exposureNow, gainNow) == STATUS_SUCCESS &&
           gainNow == gain;
}

/// The gain next to the refused one that a camera takes; it tells its range nowhere. The camera has
/// `taken` before and after it. Takes six questions at most.
std::string GainLimit(void* const& handle, int order, double exposure, int taken, int refused) {
    int last = taken;
    int next = refused;
    while (std::abs(next - last) > 1) {
        const int middle = (last + next) / 2;
        (TakesGain(handle, order, exposure, middle) ? last : next) = middle;
    }
    TakesGain(handle, order, exposure, taken);
    return std::string(" (the camera takes no gain ") + (refused > taken ? "above " : "below ") +
           std::to_string(last) + ")";
}

/// Why a camera did not accept a value, as the end of a message; "" when unknown.
std::string WhyNotTaken(void* const& handle, std::span<const Assignment> assignments,
                        const Setting& setting, const Reading& readBack) {
    if (setting.part == CameraPart::None) {
        return "";
    }
    const int order = setting.cameraOrder;
    const Reading exposure = PairReading(handle, assignments, CameraPart::Exposure, order);
    const Reading gain = PairReading(handle, assignments, CameraPart::Gain, order);
    if (!exposure.Known() || !gain.Known()) {
        return "";
    }
    if (!OnlySelects(order, exposure.value.at(0), gain.value.at(0))) {
        return setting.part == CameraPart::Gain && readBack.Known()
                   ? GainLimit(handle, order, exposure.value.at(0),
                               static_cast<int>(readBack.value.at(0)),
                               static_cast<int>(gain.value.at(0)))
                   : "";
    }
    return " (with gain 0, an " + exposure.setting->name +
           " of 0.1 to 0.3 ms only selects a camera; give at least 0.4, or a gain)";
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
        const bool has =
            setting.cameraOrder < 0 || static_cast<std::size_t>(setting.cameraOrder) < cameras;
        if (has && !(setting.directModeOnly && ThroughService())) {
            settings.push_back(&setting);
        }
    }
    return settings;
}

void RequireOnHead(const Setting& setting, std::size_t cameras) {
    if (setting.directModeOnly) {
        RefuseInServiceMode(setting.name, kDirectModeOnly);
    }
    if (setting.cameraOrder >= 0 && static_cast<std::size_t>(setting.cameraOrder) >= cameras) {
        throw CommandError(ExitCode::DeviceRefused,
                           setting.name + ": the head has " + std::to_string(cameras) +
                               (cameras == 1 ? " camera" : " cameras") + ", counted from 0");
    }
}

void Apply(void* const& handle, std::span<const Assignment> assignments,
           const std::function<void(const Assignment&)>& onSend) {
    std::set<int> camerasSet;
    for (const Assignment& assignment : assignments) {
        const Setting& setting = *assignment.setting;
        onSend(assignment);
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
                     " and reads back as " + reading.Text() +
                     WhyNotTaken(handle, assignments, setting, reading);
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
