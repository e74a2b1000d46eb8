#include "virtual_head/cameras/SensorSettings.h"

namespace Korvex3Sync::virtual_head {
namespace {

constexpr int kWidestWord = 0xFFFF;
constexpr long kMicrosecondsPerTenth = 100;

}  // namespace

SensorSettings::SensorSettings(const HeadDescription& description)
    : m_gainLow(description.gainLow), m_gainHigh(description.gainHigh) {
    PowerOff();
}

void SensorSettings::PowerOff() {
    std::lock_guard lock(m_mutex);
    for (SensorSetting& setting : m_settings) {
        setting = {};
        setting.gain = m_gainLow;
    }
    m_selected = 0;
}

bool SensorSettings::ApplyWord(int word) {
    if (word < 0 || word > kWidestWord) {
        return false;
    }
    std::lock_guard lock(m_mutex);
    const auto bits = static_cast<unsigned>(word);
    if (bits < kOrders) {
        m_selected = bits;
        return true;
    }
    const unsigned tenths = bits & 0xFFU;
    const int gain = static_cast<int>(bits >> 10U);
    if (tenths != 0 && !GainInRange(gain)) {
        return false;
    }
    m_selected = (bits >> 8U) & 3U;
    if (tenths != 0) {
        m_settings[m_selected] = {static_cast<long>(tenths) * kMicrosecondsPerTenth, gain};
    }
    return true;
}

bool SensorSettings::SetExposure(long microseconds) {
    if (microseconds < kShortestExposure || microseconds > kLongestExposure) {
        return false;
    }
    std::lock_guard lock(m_mutex);
    m_settings[m_selected].exposure = microseconds;
    return true;
}

long SensorSettings::Exposure() const {
    std::lock_guard lock(m_mutex);
    return m_settings[m_selected].exposure;
}

bool SensorSettings::SetGain(int gain) {
    if (!GainInRange(gain)) {
        return false;
    }
    std::lock_guard lock(m_mutex);
    m_settings[m_selected].gain = gain;
    return true;
}

int SensorSettings::Gain() const {
    std::lock_guard lock(m_mutex);
    return m_settings[m_selected].gain;
}

int SensorSettings::SelectedOrder() const {
    std::lock_guard lock(m_mutex);
    return static_cast<int>(m_selected);
}

std::array<SensorSetting, 2> SensorSettings::Sensors() const {
    std::lock_guard lock(m_mutex);
    return {m_settings[0], m_settings[1]};
}

}  // namespace Korvex3Sync::virtual_head
