#pragma once

#include <QMap>

#include <tuple>

#include "Korvex3Sync/Types.h"
#include "platform/os/CriticalSection.h"

namespace Korvex3Sync {

/// The last value that the application requested for each setting. A reconnect writes all of them,
/// so the initial values are also what a device gets that nobody has set.
struct CachedSettings {
    CONTROLROUTE m_controlRoute = CONTROL_ROUTE_2;
    STROBE_STATE m_strobeState = STROBE_STATE_1;
    bool m_bLaserEnable = false;
    LASERWORKMODE m_laserWorkMode = LASER_WORK_MODE_0;
    bool m_bIRLaserEnable = false;
    int m_triggerPeriod = 10;
    int m_brightnessLevel = 10;
    CAMERA_TRIGGER_MODE m_cameraTriggerMode = TRIGGER_LASER_LINES;
    bool m_bEnable = false;
    PROJECTWORKTYPES m_projectType = PROJECT_OFF;
    QMap<int, double> m_mapExposure;  ///< by camera order
    QMap<int, int> m_mapGain;         ///< by camera order
    int m_TexDutioRatio = 100;
    int m_dutioRatio = 100;
    int m_dutioRatioWithTex = 100;
    int m_laserLineDutioRatio = 100;
    int m_projectDutioRatio = 0;
    int m_IRLaserDutioRatio = 100;
    DISTANCESTATUS m_disStauts = DISTANCE_OFF;
};

/// Holds the settings for callers and the worker thread. Thread-safe.
class SettingsCache {
public:
    CachedSettings Now() const {
        os::MutexGuard guard(m_mutex);
        return m_settings;
    }

    template <class... Values>
    void Store(const std::tuple<Values CachedSettings::*...>& fields, const Values&... values) {
        os::MutexGuard guard(m_mutex);
        std::apply([&](auto... field) { ((m_settings.*field = values), ...); }, fields);
    }

    void StoreExposureAndGain(int camOrder, double exposure, int gain) {
        os::MutexGuard guard(m_mutex);
        m_settings.m_mapExposure[camOrder] = exposure;
        m_settings.m_mapGain[camOrder] = gain;
    }

private:
    mutable os::Mutex m_mutex;
    CachedSettings m_settings KORVEX_GUARDED_BY(m_mutex);
};

}  // namespace Korvex3Sync
