#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

#include <algorithm>
#include <limits>
#include <optional>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/link/HubOperations.h"
#include "platform/link/Operations.h"
#include "platform/link/wire/Messages.h"

namespace Korvex3Sync::tests {

/// Values of a type that travel through messages, the borders among them.
template <class T>
struct WireSamples;

template <class T>
requires std::is_enum_v<T>
struct WireSamples<T> {
    static std::vector<T> All() {
        std::vector<T> all;
        for (const int number : {0, 1, 2, 3, 4, 5, -1, 99, std::numeric_limits<int>::max(),
                                 std::numeric_limits<int>::min()}) {
            all.push_back(static_cast<T>(number));
        }
        return all;
    }
};

template <class T>
requires(std::is_integral_v<T> && !std::is_same_v<T, bool>) struct WireSamples<T> {
    static std::vector<T> All() {
        using Limits = std::numeric_limits<T>;
        return {0,
                1,
                static_cast<T>(-1),
                255,
                256,
                65536,
                Limits::max(),
                Limits::min(),
                Limits::max() / 2 + 1};
    }
};

template <>
struct WireSamples<bool> {
    static std::vector<bool> All() { return {false, true}; }
};

template <>
struct WireSamples<double> {
    static std::vector<double> All() {
        using Limits = std::numeric_limits<double>;
        return {0.0,
                -0.0,
                1.5,
                Limits::quiet_NaN(),
                -12345.678,
                Limits::max(),
                Limits::min(),
                Limits::lowest(),
                Limits::infinity(),
                -Limits::infinity(),
                Limits::denorm_min()};
    }
};

template <>
struct WireSamples<QString> {
    static std::vector<QString> All() {
        QByteArray page;
        for (int i = 0; i < 256; ++i) {
            page.append(static_cast<char>(i));
        }
        return {"",
                "KV00",
                QString::fromLatin1(page),           // a page of user memory
                QString::fromLatin1(page.right(1)),  // 0xFF
                QString::fromUtf8("\xC3\xA9t\xC3\xA9 \xE4\xB8\xAD \xF0\x9F\x98\x80"),
                QString(QChar(0xD800)),  // half of a character
                QString(3, QChar(0)),
                QString(10'000, 'x')};
    }
};

template <>
struct WireSamples<QStringList> {
    static std::vector<QStringList> All() {
        return {{}, {""}, {"KV01", "", "KV02"}, QStringList(WireSamples<QString>::All().front())};
    }
};

template <>
struct WireSamples<QVariantList> {
    static std::vector<QVariantList> All() {
        const QVariantList every{QVariant(),
                                 true,
                                 -5,
                                 std::numeric_limits<qlonglong>::min(),
                                 std::numeric_limits<qulonglong>::max(),
                                 2.5,
                                 "GrayImage",
                                 QStringList{"a", "b"}};
        return {{}, every, {QVariant(every), 1}, {QVariantList{QVariantList{QVariantList{1}}}}};
    }
};

template <class T>
struct WireSamples<std::optional<T>> {
    static std::vector<std::optional<T>> All() {
        const std::vector<T> values = WireSamples<T>::All();
        std::vector<std::optional<T>> all(values.begin(), values.end());
        all.insert(all.begin() + 1, std::nullopt);
        return all;
    }
};

template <class A, class B>
struct WireSamples<std::pair<A, B>> {
    static std::vector<std::pair<A, B>> All() {
        return {{WireSamples<A>::All().back(), WireSamples<B>::All().back()}, {}};
    }
};

template <class T>
struct WireSamples<std::vector<T>> {
    static std::vector<std::vector<T>> All() {
        return {{}, WireSamples<T>::All(), {WireSamples<T>::All().front()}};
    }
};

template <>
struct WireSamples<link::ServiceState> {
    static std::vector<link::ServiceState> All() {
        return {{},
                {"1.2.3",
                 4,
                 5,
                 "default",
                 6,
                 "KV00",
                 std::numeric_limits<qint64>::max(),
                 99.5,
                 {{"missingKeys", 7}, {"", std::numeric_limits<quint64>::max()}}}};
    }
};

template <>
struct WireSamples<link::Registration> {
    static std::vector<link::Registration> All() {
        return {{}, {"ZrSyncService", "/run/x", "instance", 7, link::kProtocolVersion}};
    }
};

template <>
struct WireSamples<link::HubState> {
    static std::vector<link::HubState> All() {
        return {{}, {"1", 2, 3, WireSamples<link::Registration>::All()}};
    }
};

/// Cases that together contain every sample of every element.
template <class... T>
struct WireSamples<std::tuple<T...>> {
    static std::vector<std::tuple<T...>> All() {
        std::size_t most = 1;
        ((most = std::max(most, WireSamples<T>::All().size())), ...);
        std::vector<std::tuple<T...>> all;
        for (std::size_t i = 0; i < most; ++i) {
            std::size_t place = i;
            // The elements of one case come from different places of their samples.
            [[maybe_unused]] const auto next = [&place](const auto& samples) {
                using Value = typename std::decay_t<decltype(samples)>::value_type;
                return static_cast<Value>(samples[place++ % samples.size()]);
            };
            all.push_back(std::tuple<T...>{next(WireSamples<T>::All())...});
        }
        return all;
    }
};

/// The bytes of a value as it travels: equal exactly for equal values, NaN included.
template <class T>
QByteArray WireBytes(const T& value) {
    link::ByteWriter out;
    Write(out, value);
    return out.Bytes();
}

/// Every operation of the link.
using AllOperations =
    std::tuple<link::GetCamerasInformation, link::GetCameraCount, link::ConnectDevice,
               link::DisConnectDevice, link::ReconnectDevice, link::CloseDeviceCamera,
               link::GetFirewareVersion, link::GetConnectCameraCount, link::GetCameraSerialNumber,
               link::GetCameraResolution, link::WriteUserInfomation, link::ReadUserInfomation,
               link::Project, link::SetProjectorBrightness, link::GetProjectorBrightness,
               link::EnableBlueLaser, link::EnableIRLaser, link::SetStrobeControlledByTrigger,
               link::SetStrobeDutioRatio, link::GetStrobeDutioRatio, link::SetLaserLineDutioRatio,
               link::GetLaserLineDutioRatio, link::SetProjectDutioRatio, link::GetProjectDutioRatio,
               link::SetIRLaserDutioRatio, link::GetIRLaserDutioRatio, link::SetVideoTriggerPeriod,
               link::GetVideoTriggerPeriod, link::EnableVideoTrigger, link::SetDistanceIndicate,
               link::SetCameraExposureAndGain, link::GetCameraExposureAndGain,
               link::SetStatusCallBackFunction, link::SetScanCallBackFunction, link::SnapColorImage,
               link::GetServiceState, link::StopService, link::RegisterService, link::LookUpService,
               link::GetHubState, link::StopHub>;

/// Calls `body.operator()<Op>()` for every operation.
template <class Body>
void ForEachOperation(Body body) {
    [&body]<class... Op>(std::type_identity<std::tuple<Op...>>) {
        (body.template operator()<Op>(), ...);
    }(std::type_identity<AllOperations>());
}

}  // namespace Korvex3Sync::tests
