#include "device_service/core/OperationTable.h"

#include <Korvex3Sync/Korvex3Sync.h>

#include <array>
#include <limits>
#include <memory>
#include <optional>
#include <tuple>

#include "device_service/core/Cameras.h"
#include "device_service/core/ServiceLog.h"

namespace Korvex3Sync::device_service {

namespace {

/// One page of the board's user memory.
constexpr std::size_t kPageBytes = 256;

/// Where an exported function puts a result.
template <class T>
class Output {
public:
    explicit Output(T& result) : m_result(result) {}
    operator T&() { return m_result; }

private:
    T& m_result;
};

/// The same for a result that is missing if the function leaves it as it is.
template <>
class Output<std::optional<int>> {
public:
    explicit Output(std::optional<int>& result) : m_result(result) {}
    ~Output() {
        if (m_value != kUntouched) {
            m_result = m_value;
        }
    }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    operator int&() { return m_value; }

private:
    static constexpr int kUntouched = std::numeric_limits<int>::min();
    std::optional<int>& m_result;
    int m_value = kUntouched;
};

/// Adds operations whose first argument is the id of the client's device.
class DeviceTable {
public:
    DeviceTable(link::Server& server, DeviceOwner& owner) : m_server(server), m_owner(owner) {}

    /// An operation that is carried out by `call(device, in, out)`.
    template <class Op, class Call>
    void Add(Call call) {
        m_server.On<Op>([&owner = m_owner, call](link::ClientId client, const typename Op::In& in,
                                                 typename Op::Out& out) {
            const DeviceOwner::Use device = owner.DeviceOf(client, std::get<0>(in));
            return device ? call(*device, in, out) : STATUS_NOT_CONNECTED;
        });
    }

    /// An operation that is carried out by an exported function: it takes the handle, the other
    /// arguments and the results.
    template <class Op, class... Parameters>
    void Add(RETSTATUS (*function)(void* const&, Parameters...)) {
        Add<Op>([function](Device& device, const typename Op::In& in, typename Op::Out& out) {
            const auto withArguments = [&](const qint64&, const auto&... arguments) {
                return std::apply(
                    [&](auto&... results) {
                        return function(device.Handle(), arguments..., Output(results)...);
                    },
                    out);
            };
            return std::apply(withArguments, in);
        });
    }

private:
    link::Server& m_server;
    DeviceOwner& m_owner;
};

RETSTATUS ListCameras(const link::GetCamerasInformation::In& in,
                      link::GetCamerasInformation::Out& out) {
    const CameraList cameras(std::get<0>(in).toStdString());
    auto& [serials, widths, heights, colors, count] = out;
    for (const char* serial : cameras.serials) {
        serials.append(QString::fromLatin1(serial));
    }
    widths = cameras.widths;
    heights = cameras.heights;
    colors = cameras.colors;
    count = cameras.count;
    return cameras.status;
}

/// Without an id: of the board with this serial, which is opened for the query. A failed query ends
/// the connection of the device, as in direct mode.
RETSTATUS QueryFirmware(DeviceOwner& owner, link::ClientId client,
                        const link::GetFirewareVersion::In& in,
                        link::GetFirewareVersion::Out& out) {
    const auto& [id, type, projector] = in;
    const QByteArray typeText = type.toLatin1();
    const QByteArray projectorText = projector.toLatin1();
    std::string version;
    RETSTATUS status = STATUS_NOT_CONNECTED;
    bool ended = false;
    if (id == 0) {
        // The query switches the projection of the board off.
        if (owner.IsOthers(client)) {
            KORVEX_LOG_ERROR(kServiceLog) << "another client has the device: the firmware version "
                                             "cannot be queried without a connection";
            return STATUS_FAILED;
        }
        status =
            GetFirewareVersion(nullptr, typeText.constData(), projectorText.constData(), version);
    } else if (const DeviceOwner::Use device = owner.DeviceOf(client, id)) {
        status = GetFirewareVersion(device->Handle(), typeText.constData(),
                                    projectorText.constData(), version);
        ended = !device->Live();
    }
    if (ended) {
        owner.Disconnect(client, id);
    }
    std::get<0>(out) = QString::fromLatin1(version.c_str());
    return status;
}

RETSTATUS ReadSerial(Device& device, const link::GetCameraSerialNumber::In& in,
                     link::GetCameraSerialNumber::Out& out) {
    char* serial = nullptr;
    const RETSTATUS status = GetCameraSerialNumber(device.Handle(), std::get<1>(in), serial);
    const std::unique_ptr<char[]> owned(serial);
    if (owned) {
        std::get<0>(out) = QString::fromLatin1(serial);
    }
    return status;
}

// One character of a text stands for one byte of the user memory, so that any byte arrives.

RETSTATUS WritePage(Device& device, const link::WriteUserInfomation::In& in,
                    link::WriteUserInfomation::Out& /*out*/) {
    const auto& [id, page, text] = in;
    const QByteArray bytes = text.toLatin1();
    return WriteUserInfomation(device.Handle(), page, bytes.constData(), bytes.size());
}

RETSTATUS ReadPage(Device& device, const link::ReadUserInfomation::In& in,
                   link::ReadUserInfomation::Out& out) {
    std::array<char, kPageBytes> bytes{};
    char* buffer = bytes.data();
    const RETSTATUS status = ReadUserInfomation(device.Handle(), std::get<1>(in), buffer);
    std::get<0>(out) = QString::fromLatin1(bytes.data(), static_cast<int>(bytes.size()));
    return status;
}

RETSTATUS Snap(Device& device, const link::SnapColorImage::In& in, link::SnapColorImage::Out& out) {
    auto [id, camera, exposure, gain, route] = in;
    SnapshotResult result;
    const RETSTATUS status = device.SnapColorImage(camera, exposure, gain, route, result);
    auto& [segments, width, height] = out;
    for (const std::string& segment : result.segments) {
        segments.append(QString::fromStdString(segment));
    }
    width = result.width;
    height = result.height;
    return status;
}

}  // namespace

void AddOperations(link::Server& server, DeviceOwner& owner) {
    server.On<link::GetCamerasInformation>(
        [](link::ClientId, const auto& in, auto& out) { return ListCameras(in, out); });
    server.On<link::GetCameraCount>([](link::ClientId, const auto& in, auto& out) {
        return GetCameraCount(std::get<0>(in).toStdString().c_str(), std::get<0>(out));
    });
    server.On<link::ConnectDevice>([&owner](link::ClientId client, const auto& in, auto& out) {
        std::int64_t id = 0;
        const RETSTATUS status = owner.Connect(client, std::get<0>(in).toStdString(), id);
        std::get<0>(out) = id;
        return status;
    });
    server.On<link::DisConnectDevice>([&owner](link::ClientId client, const auto& in, auto&) {
        return owner.Disconnect(client, std::get<0>(in));
    });
    server.On<link::GetFirewareVersion>([&owner](link::ClientId client, const auto& in, auto& out) {
        return QueryFirmware(owner, client, in, out);
    });

    DeviceTable table(server, owner);
    table.Add<link::ReconnectDevice>(static_cast<RETSTATUS (*)(void* const&)>(ReconnectDevice));
    table.Add<link::CloseDeviceCamera>(CloseDeviceCamera);
    table.Add<link::GetConnectCameraCount>(GetConnectCameraCount);
    table.Add<link::GetCameraSerialNumber>(&ReadSerial);
    table.Add<link::GetCameraResolution>(GetCameraResolution);
    table.Add<link::WriteUserInfomation>(&WritePage);
    table.Add<link::ReadUserInfomation>(&ReadPage);
    table.Add<link::Project>(Project);
    table.Add<link::SetProjectorBrightness>(SetProjectorBrightness);
    table.Add<link::GetProjectorBrightness>(GetProjectorBrightness);
    table.Add<link::EnableBlueLaser>(EnableBlueLaser);
    table.Add<link::EnableIRLaser>(EnableIRLaser);
    table.Add<link::SetStrobeControlledByTrigger>(SetStrobeControlledByTrigger);
    table.Add<link::SetStrobeDutioRatio>(SetStrobeDutioRatio);
    table.Add<link::GetStrobeDutioRatio>(GetStrobeDutioRatio);
    table.Add<link::SetLaserLineDutioRatio>(SetLaserLineDutioRatio);
    table.Add<link::GetLaserLineDutioRatio>(GetLaserLineDutioRatio);
    table.Add<link::SetProjectDutioRatio>(SetProjectDutioRatio);
    table.Add<link::GetProjectDutioRatio>(GetProjectDutioRatio);
    table.Add<link::SetIRLaserDutioRatio>(SetIRLaserDutioRatio);
    table.Add<link::GetIRLaserDutioRatio>(GetIRLaserDutioRatio);
    table.Add<link::SetVideoTriggerPeriod>(SetVideoTriggerPeriod);
    table.Add<link::GetVideoTriggerPeriod>(GetVideoTriggerPeriod);
    table.Add<link::EnableVideoTrigger>([](Device& device, const auto& in, auto&) {
        return device.EnableVideoTrigger(std::get<1>(in), std::get<2>(in));
    });
    table.Add<link::SetDistanceIndicate>(SetDistanceIndicate);
    table.Add<link::SetCameraExposureAndGain>(SetCameraExposureAndGain);
    table.Add<link::GetCameraExposureAndGain>(GetCameraExposureAndGain);
    table.Add<link::SetStatusCallBackFunction>([](Device& device, const auto& in, auto&) {
        return device.SetStatusCallback(std::get<1>(in));
    });
    table.Add<link::SetScanCallBackFunction>([](Device& device, const auto& in, auto&) {
        return device.SetScanCallback(std::get<1>(in));
    });
    table.Add<link::SnapColorImage>(&Snap);
}

}  // namespace Korvex3Sync::device_service
