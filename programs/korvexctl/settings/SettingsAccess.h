#pragma once

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string>
#include <vector>

#include "korvexctl/settings/Settings.h"

namespace Korvex3Sync::korvexctl {

/// A setting and the value to set.
struct Assignment {
    const Setting* setting;
    SettingValue value;
};

/// The value of a setting as read from the head.
struct Reading {
    const Setting* setting;
    RETSTATUS status;
    SettingValue value;  // if Known

    bool Known() const { return status == STATUS_SUCCESS; }
    /// The head cannot report it; any other unknown value is a failure.
    bool NotReadable() const {
        return status == STATUS_NOT_SUPPORTED || status == STATUS_SYNCHRONISM_TYPE;
    }
    /// "60 percent", "not readable", "unknown".
    std::string Text() const;
    /// The value; null when it is not known.
    nlohmann::json ToJson() const;
};

/// Reads one setting of a connected head.
Reading ReadSetting(void* const& handle, const Setting& setting);

/// The settings of a head with this many cameras; in service mode those that the service forwards.
std::vector<const Setting*> SettingsOf(std::size_t cameras);

/// Throws CommandError: DeviceRefused for a setting of a camera that a head with this many cameras
/// does not have, NotInServiceMode for one that the service does not forward.
void RequireOnHead(const Setting& setting, std::size_t cameras);

/// Sends the values to a connected head, in order; exposure and gain of one camera together, at the
/// place of the first. A half that is not given is read from the head first and keeps its value.
/// Stops at the first setting that the head refuses, with CommandError(DeviceRefused). `onSend` is
/// called for each before it is sent.
void Apply(
    void* const& handle, std::span<const Assignment> assignments,
    const std::function<void(const Assignment&)>& onSend = [](const Assignment&) {});

/// Reads the readable settings back. After all are read, throws CommandError(DeviceRefused) when
/// one has a different value or cannot be read. `onReading` is called for each.
void VerifyApplied(void* const& handle, std::span<const Assignment> assignments,
                   const std::function<void(const Assignment&, const Reading&)>& onReading);

/// "unit" (null for none), "readable" and the range of a setting.
nlohmann::json DescribeSetting(const Setting& setting);

}  // namespace Korvex3Sync::korvexctl
