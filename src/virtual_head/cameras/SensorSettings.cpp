#include "virtual_head/cameras/SensorSettings.h"

namespace Korvex3Sync::virtual_head {

SensorSettings::SensorSettings(const HeadDescription& description)
    : m_gainLow(description.gainLow), m_gainHigh(description.gainHigh) {
    PowerOff();
}

void SensorSettings::PowerOff() {
    os::MutexGuard lock(m_mutex);
    for (SensorSetting& setting : m_settings) {
        setting = {};
        setting.gain = m_gainLow;
    }
    m_selected = 0;
}

bool SensorSettings::SelectOrder(int order) {
    if (!OrderInRange(order)) {
        return false;
    }
    os::MutexGuard lock(m_mutex);
    m_selected = static_cast<std::size_t>(order);
    return true;
}

bool SensorSettings::SelectAndSet(int order, long exposureMicroseconds, int gain) {
    if (!OrderInRange(order) || !ExposureInRange(exposureMicroseconds) || !GainInRange(gain)) {
        return false;
    }
    os::MutexGuard lock(m_mutex);
    m_selected = static_cast<std::size_t>(order);
    m_settings[m_selected] = {exposureMicroseconds, gain};
    return true;
}

bool SensorSettings::SetExposure(long microseconds) {
    if (!ExposureInRange(microseconds)) {
        return false;
    }
    os::MutexGuard lock(m_mutex);
    m_settings[m_selected].exposure = microseconds;
    return true;
}

long SensorSettings::Exposure() const {
    os::MutexGuard lock(m_mutex);
    return m_settings[m_selected].exposure;
}

bool SensorSettings::SetGain(int gain) {
    if (!GainInRange(gain)) {
        return false;
    }
    os::MutexGuard lock(m_mutex);
    m_settings[m_selected].gain = gain;
    return true;
}

int SensorSettings::Gain() const {
    os::MutexGuard lock(m_mutex);
    return m_settings[m_selected].gain;
}

int SensorSettings::SelectedOrder() const {
    os::MutexGuard lock(m_mutex);
    return static_cast<int>(m_selected);
}

std::array<SensorSetting, 2> SensorSettings::Sensors() const {
    os::MutexGuard lock(m_mutex);
    return {m_settings[0], m_settings[1]};
}

}  // namespace Korvex3Sync::virtual_head
