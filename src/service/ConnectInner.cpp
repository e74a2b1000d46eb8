// What a reconnect does with a new service.
#include "service/ServiceLog.h"
#include "service/zr3DHandiSyncQT.h"

namespace Korvex3Sync {
namespace {

constexpr char kReconnectedType[] = "KV00";
/// Between two commands to the device.
constexpr std::chrono::milliseconds kCommandPause{20};

template <class... Values>
std::string BeforeText(const Setting<Values...>& setting, const CachedSettings& settings) {
    return std::apply([&](auto... field) { return LogText(setting.before, settings.*field...); },
                      setting.cached);
}

}  // namespace

template <class... Values>
RETSTATUS zr3DHandiSyncQT::Push(SyncInterface& service, const CachedSettings& settings,
                                const Setting<Values...>& setting) const {
    return std::apply(
        [&](auto... field) {
            return (service.*setting.call)(m_llDeviceId.load(), settings.*field...);
        },
        setting.cached);
}

template <class... Values>
void zr3DHandiSyncQT::PushLogged(SyncInterface& service, const CachedSettings& settings,
                                 const Setting<Values...>& setting) const {
    LogDebug(BeforeText(setting, settings));
    LogDebug(setting.after + std::to_string(Push(service, settings, setting)));
}

bool zr3DHandiSyncQT::ConnectInner() {
    const Service service = TheService();
    os::CriticalSectionGuard guard(m_csService);
    qint64 id = m_llDeviceId;
    const RETSTATUS status = service->connectDevice(kReconnectedType, id);
    m_llDeviceId = id;
    LogDebug("ConnectDevice = " + std::to_string(status));
    if (status != STATUS_SUCCESS) {
        return false;
    }
    m_account.Continue(id);
    // A setter that comes meanwhile waits for m_csService and sends its value itself.
    const CachedSettings settings = m_settings.Now();
    PushExposuresAndGains(*service, settings);
    if (!PushSettings(*service, settings)) {
        return false;
    }
    Pause(kCommandPause);
    PushCallbacksAndTrigger(*service, settings);
    return true;
}

void zr3DHandiSyncQT::PushExposuresAndGains(SyncInterface& service,
                                            const CachedSettings& settings) {
    for (auto exposure = settings.m_mapExposure.begin(); exposure != settings.m_mapExposure.end();
         ++exposure) {
        const auto gain = settings.m_mapGain.find(exposure.key());
        if (gain == settings.m_mapGain.end()) {
            continue;
        }
        LogDebug(LogText(forwarded::kExposureAndGainBefore, exposure.key(), *exposure, *gain));
        const RETSTATUS status =
            service.setCameraExposureAndGain(m_llDeviceId, exposure.key(), *exposure, *gain);
        LogDebug(forwarded::kExposureAndGainAfter + std::to_string(status));
    }
}

bool zr3DHandiSyncQT::PushSettings(SyncInterface& service, const CachedSettings& settings) {
    if (Push(service, settings, forwarded::kStrobeControlledByTrigger) != STATUS_SUCCESS) {
        return false;
    }
    const auto push = [&](const auto& setting) {
        Pause(kCommandPause);
        PushLogged(service, settings, setting);
    };
    push(forwarded::kBlueLaser);
    push(forwarded::kIRLaser);
    push(forwarded::kVideoTriggerPeriod);
    push(forwarded::kProjectorBrightness);
    push(forwarded::kProject);
    push(forwarded::kStrobeDutioRatio);
    push(forwarded::kLaserLineDutioRatio);
    push(forwarded::kProjectDutioRatio);
    PushLogged(service, settings, forwarded::kIRLaserDutioRatio);
    Pause(kCommandPause);
    const RETSTATUS status = Push(service, settings, forwarded::kDistanceIndicate);
    LogDebug(forwarded::kDistanceIndicate.after + std::to_string(status));
    return status == STATUS_SUCCESS;
}

void zr3DHandiSyncQT::PushCallbacksAndTrigger(SyncInterface& service,
                                              const CachedSettings& settings) {
    LogDebug("SetStatusCallBackFunction start");
    if (m_statusCallbackOn) {
        const RETSTATUS status = service.setStatusCallBackFunction(m_llDeviceId, true);
        LogDebug(forwarded::kStatusCallBackAfter + std::to_string(status));
    }
    LogDebug("SetScanCallBackFunction start");
    if (m_scanCallbackOn) {
        const RETSTATUS status = service.setScanCallBackFunction(m_llDeviceId, true);
        LogDebug(forwarded::kScanCallBackAfter + std::to_string(status));
    }
    PushLogged(service, settings, forwarded::kVideoTrigger);
    if (settings.m_bEnable) {
        m_scanWatchdog.QueueStart();
    }
}

}  // namespace Korvex3Sync
