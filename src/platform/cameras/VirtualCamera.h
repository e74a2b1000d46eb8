#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/cameras/Camera.h"
#include "platform/os/CriticalSection.h"
#include "platform/os/Event.h"

namespace Korvex3Sync::virtual_head {
class ExposureQueue;
class VirtualHead;
}  // namespace Korvex3Sync::virtual_head

namespace Korvex3Sync::cameras {

/// An instance of the virtual head's driver. The head has two sensors that share one serial and one
/// packed frame, so both indices open the same camera. An instance belongs to the head that was
/// requested when it was created. If that head is replaced or withdrawn, everything except Close
/// and Release fails. The same applies after the camera was unplugged, until it is plugged in and
/// the instance is reopened. Every call first applies the faults of the head and is then entered in
/// its journal.
class VirtualCamera : public Camera {
public:
    /// `typeOrSerial` is the text that the instance was created with. CountDevices counts the
    /// cameras of the head if it is a prefix of the head's type, or its serial.
    VirtualCamera(const std::shared_ptr<virtual_head::VirtualHead>& head, std::string typeOrSerial);
    ~VirtualCamera() override;

    bool Run(const LibraryCall& call, const std::function<bool()>& work) override;
    bool Release() override;
    bool CountDevices(int& total) override;
    bool OpenIndex(int index, int width, int height) override;
    bool OpenSerial(std::string_view serial, int width, int height) override;
    bool Close() override;
    bool Start() override;
    bool Snap(Deadline deadline, unsigned char*& image) override;
    bool Serial(std::string& serial) override;
    bool Resolution(int& width, int& height) override;
    bool HasColor(bool& color) override;
    bool GainRange(int& low, int& high) override;
    bool SelectOrder(int order) override;
    bool SetExposure(long microseconds) override;
    bool Exposure(long& microseconds) override;
    bool SetGain(int gain) override;
    bool Gain(int& gain) override;
    bool SelectAndSet(int order, long exposureMicroseconds, int gain) override;
    bool IsPresent() override;
    bool ResetState() override;
    bool UnlockOthers() override;

private:
    using Head = virtual_head::VirtualHead;

    /// The state of an open camera. A running snap keeps it alive after the camera has been closed.
    struct Stream {
        std::shared_ptr<virtual_head::ExposureQueue> queue;
        std::uint64_t plug = 0;              // of the camera that was opened
        std::atomic<bool> misSized = false;  // the latest frame came with an impossible size
        os::Mutex writing;                   // snaps of several threads share the bytes
        std::vector<unsigned char> buffer;
    };
    /// The head and the open camera that a call reaches.
    struct Reached {
        std::shared_ptr<Head> head;
        std::shared_ptr<Stream> stream;
    };

    /// The head, if it is still the requested one.
    std::shared_ptr<Head> PresentHead() const;
    std::shared_ptr<Stream> OpenStream() const;
    /// Nothing if no camera is open or a fault blocks the call. `call` is the name of a platform
    /// function.
    std::optional<Reached> Reach(const char* call) const;
    /// The same for a call that needs no open camera.
    bool ReachAny(const char* call) const;
    bool Open(bool found, int width, int height);
    void EndStream();

    const std::weak_ptr<Head> m_head;
    const std::string m_typeOrSerial;
    mutable os::Mutex m_mutex;
    std::shared_ptr<Stream> m_stream KORVEX_GUARDED_BY(m_mutex);  // null: not open
    bool m_gone KORVEX_GUARDED_BY(m_mutex) = false;               // released
    os::Event m_released;
};

}  // namespace Korvex3Sync::cameras
