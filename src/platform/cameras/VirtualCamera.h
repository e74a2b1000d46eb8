#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "platform/cameras/Camera.h"
#include "platform/os/Event.h"

namespace Korvex3Sync::virtual_head {
class ExposureQueue;
class VirtualHead;
}  // namespace Korvex3Sync::virtual_head

namespace Korvex3Sync::cameras {

/// An instance of the virtual head's driver. The head has two sensors that share one serial and one
/// packed frame: both indices open the same. An instance belongs to the head that was requested
/// when it was made; when that one is replaced or withdrawn, everything but Close and Release
/// fails. The same holds from when the camera is unplugged until the instance is closed and opened
/// again on the one that came back. Every call first meets the head's faults and then goes into its
/// journal.
class VirtualCamera : public Camera {
public:
    /// `typeOrSerial` is what the instance was created for: the cameras of the head are counted
    /// when it is the beginning of the head's type, or its serial.
    VirtualCamera(const std::shared_ptr<virtual_head::VirtualHead>& head, std::string typeOrSerial);
    ~VirtualCamera() override;

    int Release() override;
    int DeviceTotal(int& total) override;
    int OpenIndex(int index, int width, int height) override;
    int OpenSerial(std::string_view serial, int width, int height) override;
    int Close() override;
    int Start(double value) override;
    int Snap(unsigned char*& image) override;
    int Serial(std::string& serial) override;
    int Resolution(int& width, int& height) override;
    int ColorMode(int& mode) override;
    int GainRange(int& low, int& high) override;
    int SetExposure(long microseconds) override;
    int Exposure(long& microseconds) override;
    int SetGain(int gain) override;
    int Gain(int& gain) override;
    bool SetIntParameter(int parameter, int value) override;
    bool DeviceType(int& type) override;
    bool ResetState() override;
    bool UnlockOthers() override;

private:
    using Head = virtual_head::VirtualHead;

    /// What an open camera has; a snap in progress keeps it alive beyond the closing.
    struct Stream {
        std::shared_ptr<virtual_head::ExposureQueue> queue;
        std::uint64_t plug = 0;              // of the camera that was opened
        std::atomic<bool> misSized = false;  // the latest frame came with an impossible size
        std::mutex writing;                  // snaps of several threads share the buffer
        std::vector<unsigned char> buffer;
    };

    /// The head, while it is the requested one.
    std::shared_ptr<Head> PresentHead() const;
    template <class Result, class Work>
    Result Call(const char* name, const std::string& arguments, Result failed, Work work,
                std::type_identity_t<Result> gone);
    template <class Result, class Work>
    Result Call(const char* name, const std::string& arguments, Result failed, Work work);
    template <class Result, class Work>
    Result CallOpen(const char* name, const std::string& arguments, Result failed, Work work);

    std::shared_ptr<Stream> OpenStream() const;
    /// Whether a call gets to the camera: to the one that was opened, or to any when none was.
    bool Reaches(Head& head, const char* call) const;
    int Open(Head& head, bool found, int width, int height);
    int Fetch(Head& head, unsigned char*& image);
    void EndStream();

    const std::weak_ptr<Head> m_head;
    const std::string m_typeOrSerial;
    mutable std::mutex m_mutex;
    std::shared_ptr<Stream> m_stream;  // null: not open
    bool m_gone = false;               // released
    os::Event m_released;
};

}  // namespace Korvex3Sync::cameras
