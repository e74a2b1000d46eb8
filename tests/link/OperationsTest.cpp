#include <gtest/gtest.h>

#include <QThread>

#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <tuple>
#include <utility>

#include "link/LinkSession.h"
#include "link/WireSamples.h"
#include "platform/include/SyncInterface.h"
#include "platform/os/CriticalSection.h"
#include "platform/tunnel/AreaWriter.h"

namespace Korvex3Sync::tests {
namespace {

using namespace Korvex3Sync::link;

template <class T>
T OutputOf(const T& result, const T&) {
    return result;
}

template <class T>
T OutputOf(const std::optional<T>& result, const std::optional<T>& before) {
    return result ? *result : before.value_or(T());
}

/// The outputs of an operation with these results: a missing result leaves the output as before.
template <class... T>
auto Outputs(const std::tuple<T...>& results, const std::tuple<T...>& before) {
    return [&]<std::size_t... kPlace>(std::index_sequence<kPlace...>) {
        return std::make_tuple(OutputOf(std::get<kPlace>(results), std::get<kPlace>(before))...);
    }
    (std::index_sequence_for<T...>());
}

/// What the service receives and answers for an operation.
template <class Op>
struct ServiceScript {
    os::Mutex mutex;
    typename Op::In received;
    typename Op::Out results;
    RETSTATUS status = STATUS_FAILED;

    RETSTATUS Run(const typename Op::In& in, typename Op::Out& out) {
        os::MutexGuard lock(mutex);
        received = in;
        out = results;
        return status;
    }
};

class SyncOperations : public ::testing::Test {
protected:
    SyncOperations() {
        EXPECT_TRUE(support::WaitUntil([this] {
            int count = 0;
            return m_sync.getCameraCount("KV00", count) == STATUS_SUCCESS;
        }));
    }

    /// Calls a member of SyncInterface and compares what arrives at both ends, for every sample.
    template <class Op, class... Parameters>
    void Check(RETSTATUS (SyncInterface::*member)(Parameters...)) {
        SCOPED_TRACE(Op::kName);
        const auto ins = WireSamples<typename Op::In>::All();
        const auto outs = WireSamples<typename Op::Out>::All();
        for (std::size_t i = 0; i < std::max(ins.size(), outs.size()); ++i) {
            const auto& in = ins[i % ins.size()];
            const auto& results = outs[i % outs.size()];
            const RETSTATUS status = i % 2 == 0 ? STATUS_SUCCESS : static_cast<RETSTATUS>(i % 7);
            auto out = Outputs(outs.front(), typename Op::Out());
            const auto expected = Outputs(
                status == STATUS_SUCCESS ? results : typename Op::Out(outs.front()), outs.front());
            Prepare<Op>(status, results);
            EXPECT_EQ(CallMember<Op>(member, in, out), status);
            EXPECT_EQ(WireBytes(Received<Op>()), WireBytes(in));
            EXPECT_EQ(WireBytes(out), WireBytes(expected));
        }
    }

    template <class Op>
    void Prepare(RETSTATUS status, const typename Op::Out& results) {
        auto& script = std::get<ServiceScript<Op>>(m_scripts);
        os::MutexGuard lock(script.mutex);
        script.status = status;
        script.results = results;
    }

    template <class Op>
    typename Op::In Received() {
        auto& script = std::get<ServiceScript<Op>>(m_scripts);
        os::MutexGuard lock(script.mutex);
        return script.received;
    }

    SyncInterface& Sync() { return m_sync; }

private:
    template <class Op, class... Parameters>
    RETSTATUS CallMember(RETSTATUS (SyncInterface::*member)(Parameters...),
                         const typename Op::In& in, auto& out) {
        auto arguments = in;
        return std::apply([&](auto&... values) { return (m_sync.*member)(values...); },
                          std::tuple_cat(Tied(arguments), Tied(out)));
    }

    template <class... T>
    static std::tuple<T&...> Tied(std::tuple<T...>& values) {
        return std::apply([](T&... each) { return std::tie(each...); }, values);
    }

    template <class... Op>
    static std::tuple<ServiceScript<Op>...> ScriptsOf(std::type_identity<std::tuple<Op...>>);
    using Scripts = decltype(ScriptsOf(std::type_identity<AllOperations>()));

    void AddScripts(Server& server) {
        ForEachOperation([&]<class Op>() {
            server.On<Op>([this](ClientId, const typename Op::In& in, typename Op::Out& out) {
                return std::get<ServiceScript<Op>>(m_scripts).Run(in, out);
            });
        });
        Prepare<GetCameraCount>(STATUS_SUCCESS, {1});
    }

    Folders m_folders;
    Scripts m_scripts;
    TestHub m_hub;
    TestService m_service{[this](Server& server) { AddScripts(server); }};
    SyncInterface m_sync;
};

TEST_F(SyncOperations, AreCarriedThereAndBack) {
    Check<GetCamerasInformation>(&SyncInterface::getCamerasInformation);
    Check<GetCameraCount>(&SyncInterface::getCameraCount);
    Check<ConnectDevice>(&SyncInterface::connectDevice);
    Check<DisConnectDevice>(&SyncInterface::disConnectDevice);
    Check<ReconnectDevice>(&SyncInterface::reconnectDevice);
    Check<CloseDeviceCamera>(&SyncInterface::closeDeviceCamera);
    Check<GetFirewareVersion>(&SyncInterface::getFirewareVersion);
    Check<GetConnectCameraCount>(&SyncInterface::getConnectCameraCount);
    Check<GetCameraSerialNumber>(&SyncInterface::getCameraSerialNumber);
    Check<GetCameraResolution>(&SyncInterface::getCameraResolution);
    Check<WriteUserInfomation>(&SyncInterface::writeUserInfomation);
    Check<ReadUserInfomation>(&SyncInterface::readUserInfomation);
    Check<Project>(&SyncInterface::project);
    Check<SetProjectorBrightness>(&SyncInterface::setProjectorBrightness);
    Check<GetProjectorBrightness>(&SyncInterface::getProjectorBrightness);
    Check<EnableBlueLaser>(&SyncInterface::enableBlueLaser);
    Check<EnableIRLaser>(&SyncInterface::enableIRLaser);
    Check<SetStrobeControlledByTrigger>(&SyncInterface::setStrobeControlledByTrigger);
    Check<SetStrobeDutioRatio>(&SyncInterface::setStrobeDutioRatio);
    Check<GetStrobeDutioRatio>(&SyncInterface::getStrobeDutioRatio);
    Check<SetLaserLineDutioRatio>(&SyncInterface::setLaserLineDutioRatio);
    Check<GetLaserLineDutioRatio>(&SyncInterface::getLaserLineDutioRatio);
    Check<SetProjectDutioRatio>(&SyncInterface::setProjectDutioRatio);
    Check<GetProjectDutioRatio>(&SyncInterface::getProjectDutioRatio);
    Check<SetIRLaserDutioRatio>(&SyncInterface::setIRLaserDutioRatio);
    Check<GetIRLaserDutioRatio>(&SyncInterface::getIRLaserDutioRatio);
    Check<SetVideoTriggerPeriod>(&SyncInterface::setVideoTriggerPeriod);
    Check<GetVideoTriggerPeriod>(&SyncInterface::getVideoTriggerPeriod);
    Check<EnableVideoTrigger>(&SyncInterface::enableVideoTrigger);
    Check<SetDistanceIndicate>(&SyncInterface::setDistanceIndicate);
    Check<SetCameraExposureAndGain>(&SyncInterface::setCameraExposureAndGain);
    Check<GetCameraExposureAndGain>(&SyncInterface::getCameraExposureAndGain);
    Check<SetStatusCallBackFunction>(&SyncInterface::setStatusCallBackFunction);
    Check<SetScanCallBackFunction>(&SyncInterface::setScanCallBackFunction);
}

TEST_F(SyncOperations, TakeAnyStatusOfTheService) {
    for (const int status : {-1, 8, 42, std::numeric_limits<int>::max()}) {
        Prepare<SetProjectorBrightness>(static_cast<RETSTATUS>(status), {});
        EXPECT_EQ(Sync().setProjectorBrightness(1, 2), status);
    }
}

TEST_F(SyncOperations, WithTextsLongerThanAMessageAreRefused) {
    Prepare<WriteUserInfomation>(STATUS_SUCCESS, {});
    EXPECT_EQ(Sync().writeUserInfomation(1, 2, QString(600'000, 'x')), STATUS_PARAMETER);
    EXPECT_EQ(Sync().writeUserInfomation(1, 2, QString(500'000, 'x')), STATUS_SUCCESS);
    EXPECT_EQ(std::get<2>(Received<WriteUserInfomation>()).size(), 500'000);
}

TEST_F(SyncOperations, FailWhenTheAnswerIsTooLong) {
    QString text = "untouched";
    Prepare<ReadUserInfomation>(STATUS_SUCCESS, {QString(600'000, 'x')});
    EXPECT_EQ(Sync().readUserInfomation(1, 2, text), STATUS_FAILED);
    EXPECT_EQ(text, "untouched");
    Prepare<ReadUserInfomation>(STATUS_SUCCESS, {"short"});
    EXPECT_EQ(Sync().readUserInfomation(1, 2, text), STATUS_SUCCESS);
}

/// A snapshot whose pixels the service has left in shared memory.
class SyncSnapshot : public SyncOperations {
protected:
    static constexpr int kWidth = 64;
    static constexpr int kHeight = 48;

    SyncSnapshot() {
        std::string reason;
        m_area = tunnel::AreaWriter::Make(kSnapshotArea, 4, 2 * kWidth * kHeight, reason);
        EXPECT_TRUE(m_area) << reason;
    }
    ~SyncSnapshot() override {
        for (unsigned char* const image : m_images) {
            delete[] image;
        }
    }

    void Write(const char* name, unsigned char value, std::size_t size = kWidth * kHeight) {
        const std::vector<unsigned char> pixels(size, value);
        const tunnel::SegmentBytes segment{name, pixels.data(), pixels.size()};
        EXPECT_TRUE(m_area->WriteSet({&segment, 1}));
    }
    RETSTATUS Snap() {
        return Sync().snapColorImage(7, m_images, m_width, m_height, 2, m_exposure, m_gain,
                                     CONTROL_ROUTE_1);
    }
    void ExpectNothingChanged() {
        EXPECT_TRUE(m_images.empty());
        EXPECT_EQ(m_width, -1);
        EXPECT_EQ(m_height, -1);
    }

    std::unique_ptr<tunnel::AreaWriter> m_area;
    std::vector<unsigned char*> m_images;
    int m_width = -1;
    int m_height = -1;
    double m_exposure = 1.5;
    int m_gain = 9;
};

TEST_F(SyncSnapshot, HandsOverWhatLiesInSharedMemory) {
    Write("a", 11);
    Write("b", 22);
    m_images.push_back(new unsigned char[1]{5});
    Prepare<SnapColorImage>(STATUS_SUCCESS, {{"a", "b"}, kWidth, kHeight});
    ASSERT_EQ(Snap(), STATUS_SUCCESS);
    EXPECT_EQ(Received<SnapColorImage>(), (SnapColorImage::In{7, 2, 1.5, 9, CONTROL_ROUTE_1}));
    EXPECT_EQ(m_width, kWidth);
    EXPECT_EQ(m_height, kHeight);
    ASSERT_EQ(m_images.size(), 3U);
    EXPECT_EQ(m_images[0][0], 5);
    for (int i = 0; i < kWidth * kHeight; ++i) {
        ASSERT_EQ(m_images[1][i], 11);
        ASSERT_EQ(m_images[2][i], 22);
    }
    EXPECT_EQ(m_exposure, 1.5);
    EXPECT_EQ(m_gain, 9);
}

TEST_F(SyncSnapshot, MayLackTheSecondImage) {
    Write("a", 11);
    Prepare<SnapColorImage>(STATUS_SUCCESS, {{"a", ""}, kWidth, kHeight});
    ASSERT_EQ(Snap(), STATUS_SUCCESS);
    ASSERT_EQ(m_images.size(), 2U);
    EXPECT_EQ(m_images[0][0], 11);
    EXPECT_EQ(m_images[1], nullptr);
}

TEST_F(SyncSnapshot, FailsWithoutItsSegments) {
    Write("a", 11);
    Prepare<SnapColorImage>(STATUS_SUCCESS, {{"a", "gone"}, kWidth, kHeight});
    EXPECT_EQ(Snap(), STATUS_FAILED);
    ExpectNothingChanged();
    m_area.reset();
    Prepare<SnapColorImage>(STATUS_SUCCESS, {{"a"}, kWidth, kHeight});
    EXPECT_EQ(Snap(), STATUS_FAILED);
    ExpectNothingChanged();
}

TEST_F(SyncSnapshot, FailsWithASegmentThatIsSmallerThanTheImage) {
    Write("a", 11, kWidth * kHeight - 1);
    Prepare<SnapColorImage>(STATUS_SUCCESS, {{"a"}, kWidth, kHeight});
    EXPECT_EQ(Snap(), STATUS_FAILED);
    ExpectNothingChanged();
}

TEST_F(SyncSnapshot, HandsOverNothingThatTheServiceRefuses) {
    Write("a", 11);
    Prepare<SnapColorImage>(STATUS_NOT_CONNECTED, {{"a"}, kWidth, kHeight});
    EXPECT_EQ(Snap(), STATUS_NOT_CONNECTED);
    ExpectNothingChanged();
}

}  // namespace
}  // namespace Korvex3Sync::tests
