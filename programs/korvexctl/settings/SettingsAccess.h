#pragma once

#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string>
#include <vector>

#include "korvexctl/settings/Settings.h"

namespace Korvex3Sync::korvexctl {

/// A setting and the value that it is to have.
struct Assignment {
    const Setting* setting;
    SettingValue value;
};

/// What the head told of a setting.
struct Reading {
    const Setting* setting;
    RETSTATUS status;
    SettingValue value;  // if Known

    bool Known() const { return status == STATUS_SUCCESS; }
    /// The head has no way to tell it; anything else that is not known is a failure.
    bool NotReadable() const {
        return status == STATUS_NOT_SUPPORTED || status == STATUS_SYNCHRONISM_TYPE;
    }
    /// "60 percent", "not readable", "unknown".
    std::string Text() const;
    /// The value; null when it is not known.
    nlohmann::json ToJson() const;
};

/// Asks a connected head for one setting.
Reading ReadSetting(void* const& handle, const Setting& setting);

/// The settings that a head with so many cameras has.
std::vector<const Setting*> SettingsOf(std::size_t cameras);

/// Throws CommandError(DeviceRefused) when the setting is that of a camera which a head with so
/// many cameras does not have.
void RequireCamera(const Setting& setting, std::size_t cameras);

/// Sends the values to a connected head, in order; exposure and gain of one camera together, at the
/// place of the first. A half that is not given is read from the head first and sent as it is. Ends
/// at the first setting that the head refuses, with CommandError(DeviceRefused).
void Apply(void* const& handle, std::span<const Assignment> assignments);

/// Reads the settings back that can be read. Throws CommandError(DeviceRefused), after all are
/// read, when one has another value than it was given or cannot be read back. `onReading` is called
/// for each.
void VerifyApplied(void* const& handle, std::span<const Assignment> assignments,
                   const std::function<void(const Assignment&, const Reading&)>& onReading);

/// "unit" (null for none), "readable" and the range of a setting.
nlohmann::json DescribeSetting(const Setting& setting);

}  // namespace Korvex3Sync::korvexctl
