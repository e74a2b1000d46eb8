#include "korvexctl/health/SettingTest.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "korvexctl/cli/ExitCodes.h"
#include "korvexctl/head/Session.h"
#include "korvexctl/settings/SettingsAccess.h"

namespace Korvex3Sync::korvexctl {

namespace {

double StepOf(const Field& field) {
    constexpr double kTenth = 0.1;
    return field.kind == FieldKind::Tenths ? kTenth : 1;
}

/// The value moved by so many steps in each field; nothing when that leaves the range.
std::optional<SettingValue> Moved(const Setting& setting, SettingValue value, double steps) {
    for (std::size_t i = 0; i < setting.fields.size(); ++i) {
        value[i] += steps * StepOf(setting.fields[i]);
        if (CheckValue(setting.fields[i], value[i])) {
            return std::nullopt;
        }
    }
    return value;
}

SettingValue Ends(const Setting& setting, double Field::*end) {
    SettingValue value;
    std::transform(setting.fields.begin(), setting.fields.end(), std::back_inserter(value),
                   [end](const Field& field) { return field.*end; });
    return value;
}

/// Sets a value and reads it back. Empty, or what went wrong.
std::string SetAndRead(void* const& handle, const Setting& setting, const SettingValue& value) {
    const std::string asked = ValueText(setting.fields, value);
    const Assignment assignment{&setting, value};
    try {
        Apply(handle, {&assignment, 1});
    } catch (const CommandError& error) {
        return asked + ": " + error.what();
    }
    const Reading reading = ReadSetting(handle, setting);
    if (!reading.Known()) {
        return asked + " was set and cannot be read back: " + StatusText(reading.status);
    }
    if (!SameValue(reading.value, value)) {
        return asked + " was set, and " + reading.Text() + " read back";
    }
    return {};
}

/// A camera may refuse one neighbouring value; any other setting accepts the first in range.
std::string SetAnother(void* const& handle, const Setting& setting, const SettingValue& found,
                       std::string& tried) {
    std::string wrong = "there is no other value";
    for (const double steps : {1.0, -1.0}) {
        const auto other = Moved(setting, found, steps);
        if (!other) {
            continue;
        }
        tried = ValueText(setting.fields, *other);
        wrong = SetAndRead(handle, setting, *other);
        if (wrong.empty() || setting.part == CameraPart::None) {
            break;
        }
    }
    return wrong;
}

Finding TestReadable(void* const& handle, const Setting& setting) {
    const Reading found = ReadSetting(handle, setting);
    if (!found.Known()) {
        return {Verdict::Fault, "cannot be read: " + StatusText(found.status)};
    }
    if (!Moved(setting, found.value, 0)) {
        return {Verdict::NotRun, "the head has " + found.Text() +
                                     ", which is out of range and could not be restored"};
    }
    std::string tried;
    std::string wrong = SetAnother(handle, setting, found.value, tried);
    // A camera may accept less than the range.
    if (setting.part == CameraPart::None) {
        for (double Field::*end : {&Field::low, &Field::high}) {
            const SettingValue value = Ends(setting, end);
            wrong = wrong.empty() ? SetAndRead(handle, setting, value) : wrong;
            tried += ", " + ValueText(setting.fields, value);
        }
    }
    const std::string notBack = SetAndRead(handle, setting, found.value);
    if (!wrong.empty() || !notBack.empty()) {
        return {Verdict::Fault, wrong.empty() ? "not restored: " + notBack : wrong};
    }
    return {Verdict::Ok,
            tried + " set and read back; " + ValueText(setting.fields, found.value) + " restored"};
}

double Lowest(const Field& field) {
    return field.kind == FieldKind::Switch ? 0 : field.low;
}

double Highest(const Field& field) {
    return field.kind == FieldKind::Switch ? 1 : field.high;
}

/// From the highest value down, field by field from the last, so that what was switched on in one
/// state is switched off in that state.
std::vector<SettingValue> WayDown(const Setting& setting) {
    SettingValue value;
    std::transform(setting.fields.begin(), setting.fields.end(), std::back_inserter(value),
                   Highest);
    std::vector<SettingValue> way{value};
    for (std::size_t i = setting.fields.size(); i-- > 0;) {
        value[i] = Lowest(setting.fields[i]);
        way.push_back(value);
    }
    return way;
}

Finding TestTold(void* const& handle, const Setting& setting) {
    std::string tried;
    std::string wrong;
    for (const SettingValue& value : WayDown(setting)) {
        const RETSTATUS status = setting.write(handle, value);
        const std::string text = ValueText(setting.fields, value);
        if (status != STATUS_SUCCESS && wrong.empty()) {
            wrong = text + ": " + StatusText(status);
        }
        tried += (tried.empty() ? "" : ", ") + text;
    }
    if (!wrong.empty()) {
        return {Verdict::Fault, wrong};
    }
    return {Verdict::Ok, tried + " accepted; it cannot be read back"};
}

}  // namespace

Finding TestSetting(void* const& handle, const Setting& setting) {
    return setting.read ? TestReadable(handle, setting) : TestTold(handle, setting);
}

}  // namespace Korvex3Sync::korvexctl
