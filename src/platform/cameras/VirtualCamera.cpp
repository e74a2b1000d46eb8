#include "platform/cameras/VirtualCamera.h"

#include <algorithm>
#include <locale>
#include <sstream>
#include <utility>

#include "virtual_head/ImageSource.h"
#include "virtual_head/Request.h"
#include "virtual_head/VirtualHead.h"

namespace Korvex3Sync::cameras {
namespace {

constexpr int kSensors = 2;
constexpr int kPresentType = 1;
// More than any image has.
constexpr int kImpossibleSize = 5000;
constexpr std::size_t kLongestArgument = 80;

std::string Text(bool result) {
    return result ? "true" : "false";
}
std::string Text(int result) {
    return std::to_string(result);
}

/// The arguments as the journal shows them.
template <class... Values>
std::string Arguments(const Values&... values) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    const char* separator = "";
    ((text << std::exchange(separator, ", ") << values), ...);
    return text.str();
}

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

/// `work` gets the head and gives the result; `gone` is the result without the head.
template <class Result, class Work>
Result VirtualCamera::Call(const char* name, const std::string& arguments, Result failed, Work work,
                           std::type_identity_t<Result> gone) {
    const std::shared_ptr<Head> head = PresentHead();
    if (!head) {
        return gone;
    }
    const Result result = head->GetFaults().Meet(name) ? failed : work(*head);
    head->GetJournal().Add(name, arguments, Text(result));
    return result;
}

template <class Result, class Work>
Result VirtualCamera::Call(const char* name, const std::string& arguments, Result failed,
                           Work work) {
    return Call(name, arguments, failed, work, failed);
}

/// The same for what needs an open camera.
template <class Result, class Work>
Result VirtualCamera::CallOpen(const char* name, const std::string& arguments, Result failed,
                               Work work) {
    return Call(name, arguments, failed, [&](Head& head) {
        return OpenStream() && Reaches(head, name) ? work(head) : failed;
    });
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

int VirtualCamera::Serial(std::string& serial) {
    return CallOpen("GetSerialNo", "", kFailed, [&serial](Head& head) {
        serial = head.Description().cameraSerial;
        return kOk;
    });
}

int VirtualCamera::Resolution(int& width, int& height) {
    return CallOpen("GetResolution", "", kFailed, [&](Head& head) {
        const std::shared_ptr<Stream> stream = OpenStream();
        const bool misSized = stream && stream->misSized;
        width = misSized ? kImpossibleSize : head.Description().width;
        height = misSized ? kImpossibleSize : head.Description().height;
        return kOk;
    });
}

int VirtualCamera::ColorMode(int& mode) {
    return CallOpen("GetColorMode", "", kFailed, [&mode](Head& head) {
        mode = head.Description().color ? kColorMode : kMonoMode;
        return kOk;
    });
}

int VirtualCamera::GainRange(int& low, int& high) {
    return CallOpen("GetGainRange", "", kFailed, [&](Head& head) {
        low = head.Description().gainLow;
        high = head.Description().gainHigh;
        return kOk;
    });
}

int VirtualCamera::SetExposure(long microseconds) {
    return CallOpen("SetExposureTime", Arguments(microseconds), kFailed, [=](Head& head) {
        return head.Sensors().SetExposure(microseconds) ? kOk : kFailed;
    });
}

int VirtualCamera::Exposure(long& microseconds) {
    return CallOpen("GetExposureTime", "", kFailed, [&microseconds](Head& head) {
        microseconds = head.Sensors().Exposure();
        return kOk;
    });
}

int VirtualCamera::SetGain(int gain) {
    return CallOpen("SetGain", Arguments(gain), kFailed,
                    [gain](Head& head) { return head.Sensors().SetGain(gain) ? kOk : kFailed; });
}

int VirtualCamera::Gain(int& gain) {
    return CallOpen("GetGain", "", kFailed, [&gain](Head& head) {
        gain = head.Sensors().Gain();
        return kOk;
    });
}

bool VirtualCamera::SetIntParameter(int parameter, int value) {
    return CallOpen("SetCameraIntParam", Arguments(parameter, value), false, [=](Head& head) {
        return parameter == kOrderParameter && head.Sensors().ApplyWord(value);
    });
}

bool VirtualCamera::DeviceType(int& type) {
    return Call("GetDeviceType", "", false, [this, &type](Head& head) {
        if (!Reaches(head, "GetDeviceType")) {
            return false;
        }
        type = kPresentType;
        return true;
    });
}

bool VirtualCamera::ResetState() {
    return Call("ResetCameraState", "", false, [this](Head& head) {
        const std::shared_ptr<Stream> stream = OpenStream();
        if (!stream || !head.GetFaults().ReachCamera(stream->plug, "ResetCameraState")) {
            return false;
        }
        stream->queue->Clear();
        return true;
    });
}

bool VirtualCamera::UnlockOthers() {
    // Instances of the virtual head never lock each other out.
    return Call("UnlockOthers", "", false,
                [this](Head& head) { return Reaches(head, "UnlockOthers"); });
}

}  // namespace Korvex3Sync::cameras
