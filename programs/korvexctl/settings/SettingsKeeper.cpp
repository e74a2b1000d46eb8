#include "korvexctl/settings/SettingsKeeper.h"

#include <algorithm>

#include "korvexctl/cli/ExitCodes.h"

namespace Korvex3Sync::korvexctl {

namespace {

bool CanBeSet(const Reading& reading) {
    const auto& fields = reading.setting->fields;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (CheckValue(fields[i], reading.value.at(i))) {
            return false;
        }
    }
    return true;
}

bool Has(void* const& handle, const Assignment& assignment) {
    const Reading reading = ReadSetting(handle, *assignment.setting);
    return reading.Known() && SameValue(reading.value, assignment.value);
}

}  // namespace

SettingsKeeper::SettingsKeeper(void* const& handle, std::size_t cameras) {
    for (const Setting* setting : SettingsOf(cameras)) {
        Reading reading = ReadSetting(handle, *setting);
        if (reading.Known() && CanBeSet(reading)) {
            m_found.push_back({setting, std::move(reading.value)});
        }
    }
}

std::vector<std::string> SettingsKeeper::PutBack(void* const& handle) const {
    std::vector<std::string> failed;
    for (const Assignment& assignment : m_found) {
        if (Has(handle, assignment)) {
            continue;
        }
        try {
            // The other half of a camera's pair is sent with its current value, and follows.
            Apply(handle, {&assignment, 1});
        } catch (const CommandError&) {
            // Reported by the reading.
        }
        if (!Has(handle, assignment)) {
            failed.push_back(assignment.setting->name);
        }
    }
    return failed;
}

}  // namespace Korvex3Sync::korvexctl
