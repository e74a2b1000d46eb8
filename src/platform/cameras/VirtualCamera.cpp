#include "platform/cameras/VirtualCamera.h"

#include <algorithm>
#include <utility>

#include "platform/cameras/VirtualCameraCall.h"
#include "virtual_head/Request.h"
#include "virtual_head/images/ImageSource.h"

namespace Korvex3Sync::cameras {
namespace {

constexpr int kSensors = 2;
constexpr std::size_t kLongestArgument = 80;

}  // namespace

VirtualCamera::VirtualCamera(const std::shared_ptr<Head>& head, std::string typeOrSerial)
    : m_head(head), m_typeOrSerial(std::move(typeOrSerial)) {}

VirtualCamera::~VirtualCamera() {
    EndStream();
}

std::shared_ptr<virtual_head::VirtualHead> VirtualCamera::PresentHead() const {
    std::shared_ptr<Head> head = m_head.lock();
    return head == virtual_head::RequestedVirtualHead() ? head : nullptr;
}

std::shared_ptr<VirtualCamera::Stream> VirtualCamera::OpenStream() const {
    std::lock_guard lock(m_mutex);
    return m_stream;
}

bool VirtualCamera::Reaches(Head& head, const char* call) const {
    const std::shared_ptr<Stream> stream = OpenStream();
    virtual_head::Faults& faults = head.GetFaults();
    return stream ? faults.ReachCamera(stream->plug, call) : faults.ReachCamera(call);
}

void VirtualCamera::EndStream() {
    std::shared_ptr<Stream> stream;
    {
        std::lock_guard lock(m_mutex);
        stream = std::exchange(m_stream, nullptr);
        if (!stream) {
            return;
        }
        if (const std::shared_ptr<Head> head = m_head.lock()) {
            head->Clock().Detach(stream->queue);
        }
    }
    stream->queue->Close();
}

int VirtualCamera::Release() {
    if (Call(
            "ReleaseCamera", "", kFailed, [](Head&) { return kOk; }, kOk) != kOk) {
        return kFailed;
    }
    {
        std::lock_guard lock(m_mutex);
        m_gone = true;
    }
    EndStream();
    m_released.Set();
    return kOk;
}

int VirtualCamera::DeviceTotal(int& total) {
    return Call("GetDeviceTotal", "", kFailed, [&](Head& head) {
        const auto& description = head.Description();
        const bool meant = description.cameraType.starts_with(m_typeOrSerial) ||
                           description.cameraSerial == m_typeOrSerial;
        total = meant && head.GetFaults().ReachCamera("GetDeviceTotal") ? kSensors : 0;
        return kOk;
    });
}

int VirtualCamera::OpenIndex(int index, int width, int height) {
    return Call("OpenCamera", Arguments(index, width, height), kFailed, [&](Head& head) {
        return Open(head, index >= 0 && index < kSensors, width, height);
    });
}

int VirtualCamera::OpenSerial(std::string_view serial, int width, int height) {
    return Call("OpenCamera", Arguments(serial.substr(0, kLongestArgument), width, height), kFailed,
                [&](Head& head) {
                    return Open(head, serial == head.Description().cameraSerial, width, height);
                });
}

int VirtualCamera::Open(Head& head, bool found, int width, int height) {
    const virtual_head::HeadDescription& description = head.Description();
    const bool native =
        (width == 0 && height == 0) || (width == description.width && height == description.height);
    const std::uint64_t plug = head.GetFaults().Camera().Plug();
    if (!head.GetFaults().ReachCamera(plug, "OpenCamera") || !found || !native) {
        return kFailed;
    }
    auto stream = std::make_shared<Stream>();
    stream->plug = plug;
    stream->queue = std::make_shared<virtual_head::ExposureQueue>(
        static_cast<std::size_t>(description.cameraBuffers));
    stream->buffer.resize(std::size_t{2} * static_cast<std::size_t>(description.width) *
                          static_cast<std::size_t>(description.height));
    std::lock_guard lock(m_mutex);
    if (m_gone || m_stream) {
        return kFailed;
    }
    m_stream = std::move(stream);
    return kOk;
}

int VirtualCamera::Close() {
    if (Call(
            "CloseCamera", "", kFailed, [](Head&) { return kOk; }, kOk) != kOk) {
        return kFailed;
    }
    EndStream();
    return kOk;
}

int VirtualCamera::Start(double value) {
    return Call("StartCamera", Arguments(value), kFailed, [this](Head& head) {
        if (!OpenStream() || !head.Images().Prepare()) {
            return kFailed;
        }
        std::lock_guard lock(m_mutex);
        if (!m_stream) {
            return kFailed;
        }
        head.Clock().Attach(m_stream->queue);
        // Looked at behind the attaching: the unplugging itself detaches what was attached before.
        if (!head.GetFaults().ReachCamera(m_stream->plug, "StartCamera")) {
            head.Clock().Detach(m_stream->queue);
            return kFailed;
        }
        head.GetFaults().Frames().CameraStarted();
        return kOk;
    });
}

int VirtualCamera::Snap(unsigned char*& image) {
    image = nullptr;
    if (!PresentHead()) {
        m_released.Wait(kSnapLimit);
        return kFailed;
    }
    return Call("SnapShot", "", kFailed, [&](Head& head) { return Fetch(head, image); });
}

int VirtualCamera::Fetch(Head& head, unsigned char*& image) {
    const std::shared_ptr<Stream> stream = OpenStream();
    if (!stream || !head.GetFaults().ReachCamera(stream->plug, "SnapShot")) {
        m_released.Wait(kSnapLimit);
        return kFailed;
    }
    stream->misSized = false;
    const std::optional<virtual_head::Exposure> exposure = stream->queue->Pop(kSnapLimit);
    if (!exposure) {
        return kFailed;
    }
    {
        std::lock_guard writing(stream->writing);
        head.Images().WritePacked(*exposure, stream->buffer.data());
        if (exposure->torn) {
            const auto half = static_cast<std::ptrdiff_t>(stream->buffer.size() / 2);
            std::fill(stream->buffer.begin() + half, stream->buffer.end(), std::uint8_t{0});
        }
        stream->misSized = exposure->misSized;
    }
    // Closed meanwhile: nothing keeps the buffer alive for the caller.
    if (OpenStream() != stream) {
        return kFailed;
    }
    image = stream->buffer.data();
    return exposure->torn ? kFailed : kOk;
}

}  // namespace Korvex3Sync::cameras
