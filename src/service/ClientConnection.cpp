// The operations that have rules of their own.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <utility>

#include "service/Forwarding.h"

namespace Korvex3Sync {
namespace {

constexpr char kDeviceType[] = "KV00";
/// Of a camera name that is handed out.
constexpr int kNameBytes = 260;

/// Texts cross the link as Latin-1, which keeps every byte of the user memory.
QString FromText(const char* text) {
    return QString::fromLatin1(text);
}

const char* OrEmpty(const char* text) {
    return text != nullptr ? text : "";
}

/// A zero-terminated copy for the caller.
char* NewText(const QString& text) {
    const QByteArray bytes = text.toLatin1();
    const auto length = static_cast<std::size_t>(bytes.size());
    char* const copy = new char[length + 1]();
    std::memcpy(copy, bytes.constData(), length);
    return copy;
}

/// What is longer than the buffer is cut off.
char* NewName(const QString& name) {
    const QByteArray bytes = name.toLatin1().left(kNameBytes - 1);
    char* const copy = new char[kNameBytes]();
    std::memcpy(copy, bytes.constData(), std::strlen(bytes.constData()));
    return copy;
}

}  // namespace

RETSTATUS zr3DHandiSyncQT::GetCamerasInformation(const char* cameraType, std::vector<char*>& names,
                                                 std::vector<int>& widths,
                                                 std::vector<int>& heights,
                                                 std::vector<bool>& isColor, int& count) {
    if (cameraType == nullptr) {
        return STATUS_PARAMETER;
    }
    const Service service = TheService();
    if (service == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    KORVEX_LOG(kServiceLog) << "GetCamerasInformation: sCameraType = " << cameraType;
    QStringList found;
    const RETSTATUS status = CallService(service, [&](SyncInterface& link, qint64) {
        return link.getCamerasInformation(FromText(cameraType), found, widths, heights, isColor,
                                          count);
    });
    if (status != STATUS_SUCCESS) {
        KORVEX_LOG(kServiceLog) << "GetCamerasInformation: failed!";
        return status;
    }
    names.reserve(names.size() + static_cast<std::size_t>(found.size()));
    for (const QString& name : std::as_const(found)) {
        names.push_back(NewName(name));
    }
    KORVEX_LOG(kServiceLog) << "GetCamerasInformation: camCount = " << count;
    return status;
}

RETSTATUS zr3DHandiSyncQT::GetCameraCount(const char* cameraType, int& count) {
    if (cameraType == nullptr) {
        return STATUS_PARAMETER;
    }
    const Service service = TheService();
    if (service == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    KORVEX_LOG(kServiceLog) << "GetCameraCount: sCameraType = " << cameraType;
    const RETSTATUS status = CallService(service, [&](SyncInterface& link, qint64) {
        return link.getCameraCount(FromText(cameraType), count);
    });
    if (status == STATUS_SUCCESS) {
        KORVEX_LOG(kServiceLog) << "GetCameraCount: camCount = " << count;
    } else {
        KORVEX_LOG(kServiceLog) << "GetCameraCount: failed!";
    }
    return status;
}

RETSTATUS zr3DHandiSyncQT::ConnectDevice(const char* deviceType, void*& handle) {
    const Service service = TheService();
    if (service == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    KORVEX_LOG(kServiceLog) << "ConnectDevice: syncType = " << OrEmpty(deviceType);
    // Without the service lock: connecting does not wait for a reconnect.
    qint64 id = m_llDeviceId;
    const RETSTATUS status = service->connectDevice(kDeviceType, id);
    m_llDeviceId = id;
    if (status == STATUS_SUCCESS) {
        m_account.Begin(id);
    }
    KORVEX_LOG(kServiceLog) << "ConnectDevice = " << status;
    // A number in the shape of a pointer; nothing dereferences it.
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    handle = reinterpret_cast<void*>(static_cast<std::intptr_t>(id));
    return status;
}

RETSTATUS zr3DHandiSyncQT::DisConnectDevice(void*& handle) {
    const Service service = TheService();
    if (service == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    if (m_llDeviceId == 0) {
        return STATUS_PARAMETER;
    }
    ScanWatchdog::Stop stop(m_scanWatchdog);
    const RETSTATUS status = CallService(service, [this](SyncInterface& link, qint64 id) {
        const RETSTATUS disconnected = link.disConnectDevice(id);
        m_llDeviceId = 0;
        return disconnected;
    });
    handle = nullptr;
    if (status == STATUS_SUCCESS) {
        stop.Confirm();
    }
    KORVEX_LOG(kServiceLog) << "DisConnectDevice = " << status;
    return status;
}

RETSTATUS zr3DHandiSyncQT::GetFirewareVersion(void*, const char* deviceType,
                                              const char* projectorId, std::string& version) {
    const Service service = TheService();
    if (service == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    QString text;
    const RETSTATUS status = CallService(service, [&](SyncInterface& link, qint64 id) {
        return link.getFirewareVersion(id, FromText(deviceType), FromText(projectorId), text);
    });
    if (status == STATUS_SUCCESS) {
        version = text.toLatin1().toStdString();
        LogBoth("GetFirewareVersion: " + version);
    } else {
        KORVEX_LOG(kServiceLog) << "GetFirewareVersion failed!";
    }
    return status;
}

RETSTATUS zr3DHandiSyncQT::GetCameraSerialNumber(void*, int camOrder, char*& serial) {
    const Service service = ConnectedService();
    if (service == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    KORVEX_LOG(kServiceLog) << "GetCameraSerialNumber: camOrder: " << camOrder;
    QString text;
    const RETSTATUS status = CallService(service, [&](SyncInterface& link, qint64 id) {
        return link.getCameraSerialNumber(id, camOrder, text);
    });
    if (status == STATUS_SUCCESS) {
        serial = NewText(text);
    }
    KORVEX_LOG(kServiceLog) << "GetCameraSerialNumber = " << status
                            << " camSerialNumber: " << text.toStdString();
    return status;
}

RETSTATUS zr3DHandiSyncQT::WriteUserInfomation(void*, int index, const char* text, int) {
    const Service service = ConnectedService();
    if (service == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    const RETSTATUS status = CallService(service, [&](SyncInterface& link, qint64 id) {
        return link.writeUserInfomation(id, index, FromText(text));
    });
    KORVEX_LOG(kServiceLog) << "WriteUserInfomation = " << status;
    return status;
}

RETSTATUS zr3DHandiSyncQT::ReadUserInfomation(void*, int index, char*& text) {
    const Service service = ConnectedService();
    if (service == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    QString read;
    const RETSTATUS status = CallService(service, [&](SyncInterface& link, qint64 id) {
        return link.readUserInfomation(id, index, read);
    });
    KORVEX_LOG(kServiceLog) << "readUserInfomation = " << status
                            << " strSN: " << OrEmpty(read.toLatin1().constData());
    if (status == STATUS_SUCCESS) {
        text = NewText(read);
    }
    KORVEX_LOG(kServiceLog) << "ReadUserInfomation = " << status;
    return status;
}

RETSTATUS zr3DHandiSyncQT::EnableVideoTrigger(void*, CAMERA_TRIGGER_MODE mode, bool enable) {
    std::optional<ScanWatchdog::Stop> stop;
    if (!enable) {
        stop.emplace(m_scanWatchdog);
    }
    const RETSTATUS status = Set(forwarded::kVideoTrigger, mode, enable);
    if (stop && status == STATUS_SUCCESS) {
        stop->Confirm();
    }
    return status;
}

RETSTATUS zr3DHandiSyncQT::SetCameraExposureAndGain(void*, int camOrder, double exposure,
                                                    int gain) {
    const Service service = ConnectedService();
    if (service == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    m_settings.StoreExposureAndGain(camOrder, exposure, gain);
    KORVEX_LOG(kServiceLog) << LogText(forwarded::kExposureAndGainBefore, camOrder, exposure, gain);
    const RETSTATUS status = CallService(service, [&](SyncInterface& link, qint64 id) {
        return link.setCameraExposureAndGain(id, camOrder, exposure, gain);
    });
    KORVEX_LOG(kServiceLog) << forwarded::kExposureAndGainAfter << status;
    return status;
}

RETSTATUS zr3DHandiSyncQT::SetScanCallBackFunction(void*, ScanCallBackFunction callback,
                                                   void* context) {
    const Service service = ConnectedService();
    if (service == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    const bool start = callback != nullptr && context != nullptr;
    std::optional<ScanWatchdog::Stop> stop;
    if (!start) {
        stop.emplace(m_scanWatchdog);
    }
    const RETSTATUS status = CallService(service, [&](SyncInterface& link, qint64 id) {
        const RETSTATUS set = link.setScanCallBackFunction(id, start);
        if (set == STATUS_SUCCESS) {
            m_scanCallbackOn = start;
        }
        return set;
    });
    if (status == STATUS_SUCCESS) {
        KORVEX_LOG(kServiceLog) << "SetScanCallBackFunction enter lock";
        m_imageSets.Set(callback, context);
        if (stop) {
            stop->Confirm();
        }
    }
    KORVEX_LOG(kServiceLog) << forwarded::kScanCallBackAfter << status;
    return status;
}

RETSTATUS zr3DHandiSyncQT::SetStatusCallBackFunction(void*, StatusCallBackFunction callback,
                                                     void* context) {
    const Service service = ConnectedService();
    if (service == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    const bool start = callback != nullptr && context != nullptr;
    KORVEX_LOG(kServiceLog) << "SetStatusCallBackFunction bStart :" << start;
    const RETSTATUS status = CallService(service, [&](SyncInterface& link, qint64 id) {
        const RETSTATUS set = link.setStatusCallBackFunction(id, start);
        if (set == STATUS_SUCCESS) {
            m_statusCallbackOn = start;
        }
        return set;
    });
    if (status == STATUS_SUCCESS) {
        KORVEX_LOG(kServiceLog) << "SetStatusCallBackFunction enter lock";
        m_status.Set(callback, context);
        if (!start) {
            QMetaObject::invokeMethod(this, "StartStatusTimer", Qt::QueuedConnection,
                                      Q_ARG(bool, false));
        }
    }
    KORVEX_LOG(kServiceLog) << forwarded::kStatusCallBackAfter << status;
    return status;
}

RETSTATUS zr3DHandiSyncQT::SnapColorImage(void*, std::vector<unsigned char*>& images, int& width,
                                          int& height, int camOrder, double& exposure, int& gain,
                                          CONTROLROUTE route) {
    const Service service = ConnectedService();
    if (service == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    KORVEX_LOG(kServiceLog) << "SnapColorImage:  camOrder: " << camOrder << " expro: " << exposure
                            << " gain: " << gain << " lineOrder: " << route;
    const RETSTATUS status = CallService(service, [&](SyncInterface& link, qint64 id) {
        return link.snapColorImage(id, images, width, height, camOrder, exposure, gain, route);
    });
    KORVEX_LOG(kServiceLog) << "SnapColorImage = " << status;
    return status;
}

RETSTATUS zr3DHandiSyncQT::GetScanStatistics(void*, ScanStatistics& statistics) {
    if (ConnectedService() == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    statistics = m_account.Read();
    return STATUS_SUCCESS;
}

}  // namespace Korvex3Sync
