#pragma once

#include <QString>
#include <QStringList>

#include <chrono>
#include <cstdint>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

#include "Korvex3Sync/Types.h"
#include "platform/link/wire/Values.h"

namespace Korvex3Sync::link {

/// What every operation has: the number that stands for it in messages, its arguments (In), its
/// results (Out), which travel with STATUS_SUCCESS only, and the nominal time after which a caller
/// gets STATUS_FAILED.
template <std::uint16_t kOperationNumber, class Arguments, class Results,
          long long kLimitInMilliseconds = 10'000>
struct Operation {
    static constexpr std::uint16_t kNumber = kOperationNumber;
    static constexpr std::chrono::milliseconds kLimit{kLimitInMilliseconds};
    using In = Arguments;
    using Out = Results;
};

template <class... T>
using Values = std::tuple<T...>;

/// Opening and closing a head waits for its devices.
inline constexpr long long kOpenLimit = 30'000;
/// A reconnection sends about 25 commands of at most 0.5 s each, restarts a silent board for 7 s
/// and does all of that once more.
inline constexpr long long kReconnectLimit = 60'000;
/// A snapshot waits up to 100 s for each of two images, and before that for a reconnection.
inline constexpr long long kSnapshotLimit = 200'000 + kReconnectLimit + kOpenLimit;

// The operations of SyncInterface.

struct GetCamerasInformation
    : Operation<1, Values<QString>,
                Values<QStringList, std::vector<int>, std::vector<int>, std::vector<bool>, int>> {
    static constexpr const char* kName = "getCamerasInformation";
};
struct GetCameraCount : Operation<2, Values<QString>, Values<int>> {
    static constexpr const char* kName = "getCameraCount";
};
struct ConnectDevice : Operation<3, Values<QString>, Values<qint64>, kOpenLimit> {
    static constexpr const char* kName = "connectDevice";
};
struct DisConnectDevice : Operation<4, Values<qint64>, Values<>, kOpenLimit> {
    static constexpr const char* kName = "disConnectDevice";
};
struct ReconnectDevice : Operation<5, Values<qint64>, Values<>, kReconnectLimit> {
    static constexpr const char* kName = "reconnectDevice";
};
struct CloseDeviceCamera : Operation<6, Values<qint64>, Values<>, kOpenLimit> {
    static constexpr const char* kName = "closeDeviceCamera";
};
struct GetFirewareVersion : Operation<7, Values<qint64, QString, QString>, Values<QString>> {
    static constexpr const char* kName = "getFirewareVersion";
};
struct GetConnectCameraCount : Operation<8, Values<qint64>, Values<int>> {
    static constexpr const char* kName = "getConnectCameraCount";
};
struct GetCameraSerialNumber : Operation<9, Values<qint64, int>, Values<QString>> {
    static constexpr const char* kName = "getCameraSerialNumber";
};
/// Width and height; missing if the camera does not answer.
struct GetCameraResolution
    : Operation<10, Values<qint64, int>, Values<std::optional<int>, std::optional<int>>> {
    static constexpr const char* kName = "getCameraResolution";
};
struct WriteUserInfomation : Operation<11, Values<qint64, int, QString>, Values<>> {
    static constexpr const char* kName = "writeUserInfomation";
};
struct ReadUserInfomation : Operation<12, Values<qint64, int>, Values<QString>> {
    static constexpr const char* kName = "readUserInfomation";
};
struct Project : Operation<13, Values<qint64, PROJECTWORKTYPES>, Values<>> {
    static constexpr const char* kName = "project";
};
struct SetProjectorBrightness : Operation<14, Values<qint64, int>, Values<>> {
    static constexpr const char* kName = "setProjectorBrightness";
};
struct GetProjectorBrightness : Operation<15, Values<qint64>, Values<int>> {
    static constexpr const char* kName = "getProjectorBrightness";
};
struct EnableBlueLaser : Operation<16, Values<qint64, LASERWORKMODE, bool>, Values<>> {
    static constexpr const char* kName = "enableBlueLaser";
};
struct EnableIRLaser : Operation<17, Values<qint64, bool>, Values<>> {
    static constexpr const char* kName = "enableIRLaser";
};
struct SetStrobeControlledByTrigger
    : Operation<18, Values<qint64, CONTROLROUTE, STROBE_STATE>, Values<>> {
    static constexpr const char* kName = "setStrobeControlledByTrigger";
};
struct SetStrobeDutioRatio : Operation<19, Values<qint64, int, int, int>, Values<>> {
    static constexpr const char* kName = "setStrobeDutioRatio";
};
struct GetStrobeDutioRatio : Operation<20, Values<qint64>, Values<int, int, int>> {
    static constexpr const char* kName = "getStrobeDutioRatio";
};
struct SetLaserLineDutioRatio : Operation<21, Values<qint64, int>, Values<>> {
    static constexpr const char* kName = "setLaserLineDutioRatio";
};
struct GetLaserLineDutioRatio : Operation<22, Values<qint64>, Values<int>> {
    static constexpr const char* kName = "getLaserLineDutioRatio";
};
struct SetProjectDutioRatio : Operation<23, Values<qint64, int>, Values<>> {
    static constexpr const char* kName = "setProjectDutioRatio";
};
struct GetProjectDutioRatio : Operation<24, Values<qint64>, Values<int>> {
    static constexpr const char* kName = "getProjectDutioRatio";
};
struct SetIRLaserDutioRatio : Operation<25, Values<qint64, int>, Values<>> {
    static constexpr const char* kName = "setIRLaserDutioRatio";
};
struct GetIRLaserDutioRatio : Operation<26, Values<qint64>, Values<int>> {
    static constexpr const char* kName = "getIRLaserDutioRatio";
};
struct SetVideoTriggerPeriod : Operation<27, Values<qint64, int>, Values<>> {
    static constexpr const char* kName = "setVideoTriggerPeriod";
};
struct GetVideoTriggerPeriod : Operation<28, Values<qint64>, Values<int>> {
    static constexpr const char* kName = "getVideoTriggerPeriod";
};
struct EnableVideoTrigger : Operation<29, Values<qint64, CAMERA_TRIGGER_MODE, bool>, Values<>> {
    static constexpr const char* kName = "enableVideoTrigger";
};
struct SetDistanceIndicate : Operation<30, Values<qint64, DISTANCESTATUS>, Values<>> {
    static constexpr const char* kName = "setDistanceIndicate";
};
/// Camera order, exposure, gain.
struct SetCameraExposureAndGain : Operation<31, Values<qint64, int, double, int>, Values<>> {
    static constexpr const char* kName = "setCameraExposureAndGain";
};
/// Exposure and gain; the gain is missing if the camera does not answer.
struct GetCameraExposureAndGain
    : Operation<32, Values<qint64, int>, Values<double, std::optional<int>>> {
    static constexpr const char* kName = "getCameraExposureAndGain";
};
struct SetStatusCallBackFunction : Operation<33, Values<qint64, bool>, Values<>> {
    static constexpr const char* kName = "setStatusCallBackFunction";
};
struct SetScanCallBackFunction : Operation<34, Values<qint64, bool>, Values<>> {
    static constexpr const char* kName = "setScanCallBackFunction";
};
/// Camera order, exposure, gain, route. Results: the segment of each image in the area
/// kSnapshotArea, empty for an image that is missing; width and height.
struct SnapColorImage : Operation<35, Values<qint64, int, double, int, CONTROLROUTE>,
                                  Values<QStringList, int, int>, kSnapshotLimit> {
    static constexpr const char* kName = "snapColorImage";
};

/// The shared memory that snapshots travel through.
inline constexpr const char* kSnapshotArea = "ZrSyncService_Snapshot";

// What people ask the service.

/// A service at one moment.
struct ServiceState {
    QString version;
    qint64 process = 0;
    qint64 uptimeMs = 0;
    QString virtualHead;       ///< the simulated head that it was started with; empty for none
    qint64 clientProcess = 0;  ///< of the client that owns the device; 0 without one
    QString deviceType;        ///< empty without a connected device
    qint64 deviceId = 0;       ///< 0 without a connected device
    double setsPerSecond = 0;
    /// What was lost since the device was connected: places and counts.
    std::vector<std::pair<QString, quint64>> losses;
};

void Write(ByteWriter& out, const ServiceState& state);
bool Read(ByteReader& in, ServiceState& state);

struct GetServiceState : Operation<100, Values<>, Values<ServiceState>, 2'000> {
    static constexpr const char* kName = "getServiceState";
};
/// Asks the service to end; it answers first.
struct StopService : Operation<101, Values<>, Values<>, 2'000> {
    static constexpr const char* kName = "stopService";
};

}  // namespace Korvex3Sync::link
