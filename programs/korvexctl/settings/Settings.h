#pragma once

#include <Korvex3Sync/Status.h>

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "korvexctl/settings/SettingValues.h"

namespace Korvex3Sync::korvexctl {

/// Which half of a camera's exposure and gain a setting is; the head accepts them only together.
enum class CameraPart { None, Exposure, Gain };

/// One setting of a head, by name.
struct Setting {
    std::string name;
    const char* help;
    const char* unit;  // of all its fields; "" for none
    std::vector<Field> fields;
    /// Reads it from the head; empty where that is not possible.
    std::function<RETSTATUS(void* const& handle, SettingValue& value)> read;
    /// Writes it to the head. Empty for a camera's exposure and gain, which Apply writes together.
    std::function<RETSTATUS(void* const& handle, const SettingValue& value)> write;
    CameraPart part = CameraPart::None;
    int cameraOrder = -1;  // 0 to 3 for a camera's exposure and gain
    /// What it can leave on when the head is disconnected; "" for nothing.
    const char* leavesOn = "";
    /// Whether this value does. Empty when nothing can stay on.
    std::function<bool(const SettingValue& value)> staysOn{};
    /// Whether the device service does not forward it.
    bool directModeOnly = false;
};

/// Exposures and gains are addressed by camera order, 0 to 3.
inline constexpr int kCameraOrders = 4;

/// Whether a camera reads this exposure and gain as the selection of a camera order, and changes
/// nothing: their parameter word is as low as the number of an order.
bool OnlySelects(int cameraOrder, double exposureMs, double gain);

/// All settings, in the order of a profile: lights first, then the trigger that fires them. They
/// live as long as the program.
std::span<const Setting> AllSettings();

/// The value that switches off what a setting leaves on, as set takes it: "blue-laser 1 off".
std::string SwitchOffText(const Setting& setting, const SettingValue& value);

/// Null for an unknown name.
const Setting* FindSetting(std::string_view name);

/// The setting; for an unknown name throws CommandError(Usage), which suggests similar ones.
const Setting& RequireSetting(std::string_view name);

/// "unknown setting "X"", with the names that come near.
std::string UnknownSetting(std::string_view name);

/// "percent, 0 to 100", or with several values "route 0 to 2, state 1 to 4".
std::string RangeText(const Setting& setting, Notation notation = Notation::CommandLine);

/// One line for each setting: name, unit, range and meaning, for the help.
std::string SettingsTable(Notation notation = Notation::CommandLine);

}  // namespace Korvex3Sync::korvexctl
