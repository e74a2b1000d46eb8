// An application of the exported functions in service mode. It carries out the commands that it
// reads from its standard input, one in each line, until the end of the input, and says what
// happens in lines on standard output (ApplicationProcess.h reads them):
//
//     survival_host SCALE FOLDER [idle]
//
// SCALE is the time scale of this process only, FOLDER its current directory. With "idle" its main
// thread runs no event loop. Commands: see Obey.

#include <unistd.h>

#include <Korvex3Sync/Korvex3Sync.h>

#include <QCoreApplication>
#include <atomic>
#include <chrono>
#include <iostream>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "interface/EveryExport.h"
#include "platform/os/TimeScale.h"
#include "survival/HostSettings.h"
#include "survival/Lines.h"

namespace Korvex3Sync::tests::survival {
namespace {

void SayDebugLine(QtMsgType, const QMessageLogContext&, const QString& text) {
    Say("debug %" PRId64 " %s\n", Nanoseconds(), qUtf8Printable(text.simplified()));
}

class Host {
public:
    ~Host() { StopAsking(); }

    /// False for an unknown command.
    bool Obey(const std::string& line) {
        std::istringstream words(line);
        std::string command;
        int a = 0;
        int b = 0;
        words >> command >> a >> b;
        if (command == "switch") {  // 1: to service mode, 0: to direct mode
            Timed("SwitchOnDeviceService", [a] { return SwitchOnDeviceService(a != 0); });
        } else if (command == "connect") {
            Connect();
        } else if (command == "disconnect") {
            Timed("DisConnectDevice", [this] { return DisConnectDevice(m_handle); });
            Say("handle %" PRId64 " %d\n", Nanoseconds(), m_handle == nullptr ? 0 : 1);
        } else if (command == "settings") {  // the number of HostSettings
            m_settings = a;
            MakeSettings(HostSettings(a));
        } else if (command == "trigger") {  // mode, on
            Timed("EnableVideoTrigger", [&] {
                return EnableVideoTrigger(m_handle, static_cast<CAMERA_TRIGGER_MODE>(a), b != 0);
            });
        } else if (command == "sets") {  // on
            Timed("SetScanCallBackFunction", [&] {
                return SetScanCallBackFunction(m_handle, a != 0 ? OnSet : nullptr, this);
            });
        } else if (command == "status") {  // on
            Timed("SetStatusCallBackFunction", [&] {
                return SetStatusCallBackFunction(m_handle, a != 0 ? OnStatus : nullptr, this);
            });
        } else if (command == "ask") {  // on: calls without a pause on two more threads
            a != 0 ? Ask() : StopAsking();
        } else if (command == "every") {  // every function, once
            for (const Export& one : EveryExport()) {
                Timed(one.name, [&] { return one.call(m_handle); });
            }
        } else if (command == "gaps") {  // reconnections, and how long they took in milliseconds
            ScanStatistics statistics;
            Timed("GetScanStatistics", [&] { return GetScanStatistics(m_handle, statistics); });
            Say("gaps %" PRId64 " %" PRIu64 "/%" PRIu64 "\n", Nanoseconds(),
                statistics.serviceReconnects, statistics.serviceGapMs);
        } else if (command == "park") {  // keeps this handle and takes the other one
            std::swap(m_handle, m_parked);
        } else {
            return false;
        }
        Say("done %" PRId64 " %s\n", Nanoseconds(), command.c_str());
        return true;
    }

private:
    void Connect() {
        std::vector<char*> names;
        std::vector<int> widths;
        std::vector<int> heights;
        std::vector<bool> colors;
        int count = 0;
        Timed("GetCamerasInformation",
              [&] { return GetCamerasInformation("KV00", names, widths, heights, colors, count); });
        Timed("ConnectDevice",
              [&] { return ConnectDevice("KV00", "", names, widths, heights, m_handle); });
        for (const char* name : names) {
            delete[] name;
        }
    }

    void MakeSettings(const HostSettings& s) {
        void* const h = m_handle;
        Timed("SetVideoTriggerPeriod", [&] { return SetVideoTriggerPeriod(h, s.period); });
        Timed("SetDistanceIndicate", [&] { return SetDistanceIndicate(h, s.distance); });
        Timed("SetIRLaserDutioRatio", [&] { return SetIRLaserDutioRatio(h, s.infraredRatio); });
        Timed("SetProjectDutioRatio", [&] { return SetProjectDutioRatio(h, s.projectRatio); });
        Timed("SetLaserLineDutioRatio", [&] { return SetLaserLineDutioRatio(h, s.laserRatio); });
        Timed("SetStrobeDutioRatio",
              [&] { return SetStrobeDutioRatio(h, s.texture, s.ratio, s.ratioWithTexture); });
        Timed("Project", [&] { return Project(h, s.project); });
        Timed("SetProjectorBrightness", [&] { return SetProjectorBrightness(h, s.brightness); });
        Timed("EnableIRLaser", [&] { return EnableIRLaser(h, s.infrared); });
        Timed("EnableBlueLaser", [&] { return EnableBlueLaser(h, s.laserMode, s.laser); });
        Timed("SetStrobeControlledByTrigger",
              [&] { return SetStrobeControlledByTrigger(h, s.route, s.state); });
        for (const int order : {1, 0}) {
            Timed("SetCameraExposureAndGain", [&] {
                return SetCameraExposureAndGain(h, order, s.exposures[order], s.gains[order]);
            });
        }
    }

    void Ask() {
        m_asking = true;
        m_askers.emplace_back([this, handle = m_handle] {
            while (m_asking) {
                int period = 0;
                Timed("GetVideoTriggerPeriod",
                      [&] { return GetVideoTriggerPeriod(handle, period); });
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            }
        });
        m_askers.emplace_back([this, handle = m_handle] {
            while (m_asking) {
                const HostSettings settings(m_settings);
                Timed("SetDistanceIndicate",
                      [&] { return SetDistanceIndicate(handle, settings.distance); });
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            }
        });
    }
    void StopAsking() {
        m_asking = false;
        for (std::thread& asker : m_askers) {
            asker.join();
        }
        m_askers.clear();
    }

    static void OnSet(const void* const&, std::vector<unsigned char*>& images, const int& width,
                      const int& height, std::vector<int>&) {
        // Every cache line is read, so that a sanitizer finds an image that is not there.
        constexpr int kCacheLine = 64;
        unsigned sum = 0;
        for (const unsigned char* image : images) {
            for (int i = 0; i < width * height; i += kCacheLine) {
                sum += image[i];
            }
        }
        if (sum == 0) {
            Say("bad %" PRId64 " black\n", Nanoseconds());
        }
        Say("set %" PRId64 " %zu\n", Nanoseconds(), images.size());
    }
    static void OnStatus(const void* const&, const unsigned char& a, const unsigned char& b) {
        Say("status %" PRId64 " %d,%d\n", Nanoseconds(), a, b);
    }

    void* m_handle = nullptr;
    void* m_parked = nullptr;
    std::atomic<int> m_settings{0};
    std::atomic<bool> m_asking{false};
    std::vector<std::thread> m_askers;
};

bool ObeyInput() {
    Host host;
    for (std::string line; std::getline(std::cin, line);) {
        if (!host.Obey(line)) {
            Say("bad %" PRId64 " command\n", Nanoseconds());
            return false;
        }
    }
    return true;
}

}  // namespace
}  // namespace Korvex3Sync::tests::survival

int main(int count, char** arguments) {
    using namespace Korvex3Sync::tests::survival;
    constexpr int kArguments = 3;
    if (count < kArguments || ::chdir(arguments[2]) != 0) {
        return 2;
    }
    const Korvex3Sync::os::ScopedTimeScale scale(std::stod(arguments[1]));
    qInstallMessageHandler(SayDebugLine);
    QCoreApplication application(count, arguments);
    bool obeyed = false;
    if (count > kArguments) {
        obeyed = ObeyInput();
    } else {
        std::thread input([&] {
            obeyed = ObeyInput();
            QCoreApplication::quit();
        });
        QCoreApplication::exec();
        input.join();
    }
    return obeyed ? 0 : 1;
}
