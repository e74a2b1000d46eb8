#include "platform/cameras/VirtualCamera.h"

#include <algorithm>
#include <utility>

#include "virtual_head/Request.h"
#include "virtual_head/VirtualHead.h"
#include "virtual_head/images/ImageSource.h"

namespace Korvex3Sync::cameras {
namespace {

constexpr int kSensors = 2;

}  // namespace

VirtualCamera::VirtualCamera(const std::shared_ptr<Head>& head, std::string typeOrSerial)
    : m_head(head), m_typeOrSerial(std::move(typeOrSerial)) {}

VirtualCamera::~VirtualCamera() {
    EndStream();
}

bool VirtualCamera::Run(const LibraryCall& call, const std::function<bool()>& work) {
    const std::shared_ptr<Head> head = PresentHead();
    if (!head) {
        return work();
    }
    const bool done = !head->GetFaults().Meet(call.name) && work();
    head->GetJournal().Add(call.name, call.arguments, done ? call.succeeded : call.failed);
    return done;
}

std::shared_ptr<virtual_head::VirtualHead> VirtualCamera::PresentHead() const {
    std::shared_ptr<Head> head = m_head.lock();
    return head == virtual_head::RequestedVirtualHead() ? head : nullptr;
}

std::shared_ptr<VirtualCamera::Stream> VirtualCamera::OpenStream() const {
    os::MutexGuard lock(m_mutex);
    return m_stream;
}

std::optional<VirtualCamera::Reached> VirtualCamera::Reach(const char* call) const {
    Reached reached{PresentHead(), OpenStream()};
    if (!reached.head || !reached.stream ||
        !reached.head->GetFaults().ReachCamera(reached.stream->plug, call)) {
        return std::nullopt;
    }
    return reached;
}

bool VirtualCamera::ReachAny(const char* call) const {
    const std::shared_ptr<Head> head = PresentHead();
    if (!head) {
        return false;
    }
    const std::shared_ptr<Stream> stream = OpenStream();
    virtual_head::Faults& faults = head->GetFaults();
    return stream ? faults.ReachCamera(stream->plug, call) : faults.ReachCamera(call);
}

void VirtualCamera::EndStream() {
    std::shared_ptr<Stream> stream;
    {
        os::MutexGuard lock(m_mutex);
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

bool VirtualCamera::Release() {
    {
        os::MutexGuard lock(m_mutex);
        m_gone = true;
    }
    EndStream();
    m_released.Set();
    return true;
}

bool VirtualCamera::CountDevices(int& total) {
    const std::shared_ptr<Head> head = PresentHead();
    if (!head) {
        return false;
    }
    const auto& description = head->Description();
    const bool meant = description.cameraType.starts_with(m_typeOrSerial) ||
                       description.cameraSerial == m_typeOrSerial;
    total = meant && head->GetFaults().ReachCamera("GetDeviceTotal") ? kSensors : 0;
    return true;
}

bool VirtualCamera::OpenIndex(int index, int width, int height) {
    return Open(index >= 0 && index < kSensors, width, height);
}

bool VirtualCamera::OpenSerial(std::string_view serial, int width, int height) {
    const std::shared_ptr<Head> head = PresentHead();
    return Open(head && serial == head->Description().cameraSerial, width, height);
}

bool VirtualCamera::Open(bool found, int width, int height) {
    const std::shared_ptr<Head> head = PresentHead();
    if (!head) {
        return false;
    }
    const virtual_head::HeadDescription& description = head->Description();
    const bool native =
        (width == 0 && height == 0) || (width == description.width && height == description.height);
    const std::uint64_t plug = head->GetFaults().Camera().Plug();
    if (!head->GetFaults().ReachCamera(plug, "OpenCamera") || !found || !native) {
        return false;
    }
    auto stream = std::make_shared<Stream>();
    stream->plug = plug;
    stream->queue = std::make_shared<virtual_head::ExposureQueue>(
        static_cast<std::size_t>(description.cameraBuffers));
    stream->buffer.resize(std::size_t{2} * static_cast<std::size_t>(description.width) *
                          static_cast<std::size_t>(description.height));
    os::MutexGuard lock(m_mutex);
    if (m_gone || m_stream) {
        return false;
    }
    m_stream = std::move(stream);
    return true;
}

bool VirtualCamera::Close() {
    EndStream();
    return true;
}

bool VirtualCamera::Start() {
    const std::shared_ptr<Head> head = PresentHead();
    if (!head || !OpenStream() || !head->Images().Prepare()) {
        return false;
    }
    os::MutexGuard lock(m_mutex);
    if (!m_stream) {
        return false;
    }
    head->Clock().Attach(m_stream->queue);
    // Checked after attaching, because unplugging detaches only queues that are already attached.
    if (!head->GetFaults().ReachCamera(m_stream->plug, "StartCamera")) {
        head->Clock().Detach(m_stream->queue);
        return false;
    }
    head->GetFaults().Frames().CameraStarted();
    return true;
}

bool VirtualCamera::Snap(Deadline deadline, unsigned char*& image) {
    image = nullptr;
    const std::optional<Reached> reached = Reach("SnapShot");
    if (!reached) {
        m_released.WaitUntil(deadline);
        return false;
    }
    const auto& [head, stream] = *reached;
    stream->misSized = false;
    const std::optional<virtual_head::Exposure> exposure = stream->queue->Pop(deadline);
    if (!exposure) {
        return false;
    }
    {
        os::MutexGuard writing(stream->writing);
        head->Images().WritePacked(*exposure, stream->buffer.data());
        if (exposure->torn) {
            const auto half = static_cast<std::ptrdiff_t>(stream->buffer.size() / 2);
            std::fill(stream->buffer.begin() + half, stream->buffer.end(), std::uint8_t{0});
        }
        stream->misSized = exposure->misSized;
    }
    // The camera was closed meanwhile, so nothing would keep the buffer alive for the caller.
    if (OpenStream() != stream) {
        return false;
    }
    image = stream->buffer.data();
    return !exposure->torn;
}

}  // namespace Korvex3Sync::cameras
