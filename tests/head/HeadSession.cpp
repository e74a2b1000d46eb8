#include "head/HeadSession.h"

#include "support/Deadline.h"
#include "virtual_head/Request.h"

namespace Korvex3Sync::tests {
namespace {}  // namespace

void SetCollector::Receive(const void* const& context, std::vector<unsigned char*>& images,
                           const int& width, const int& height, std::vector<int>& imageInfo) {
    auto* const collector = static_cast<SetCollector*>(const_cast<void*>(context));
    ImageSet set{{}, width, height, imageInfo};
    const auto pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    for (unsigned char* image : images) {
        set.images.emplace_back(image, image + pixels);
    }
    std::lock_guard lock(collector->m_mutex);
    if (collector->m_check) {
        collector->m_check(set, collector->m_count);
    } else {
        collector->m_sets.push_back(std::move(set));
    }
    ++collector->m_count;
    collector->m_changed.notify_all();
}

bool SetCollector::WaitFor(std::size_t count) {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, kDeadline, [&] { return m_count >= count; });
}

std::size_t SetCollector::Count() const {
    std::lock_guard lock(m_mutex);
    return m_count;
}

std::vector<ImageSet> SetCollector::Sets() const {
    std::lock_guard lock(m_mutex);
    return m_sets;
}

HeadSession::~HeadSession() {
    DisConnectDevice(m_handle);
    if (m_head) {
        EXPECT_TRUE(m_head->GetFaults().Unused().empty())
            << "never met: " << m_head->GetFaults().Unused().front();
    }
    virtual_head::WithdrawVirtualHead();
}

void HeadSession::Request(const virtual_head::HeadDescription& description) {
    std::string error;
    ASSERT_TRUE(virtual_head::RequestVirtualHead(description, error)) << error;
    m_head = virtual_head::RequestedVirtualHead();
}

virtual_head::HeadDescription HeadSession::SmallHead() {
    virtual_head::HeadDescription description;
    description.width = 64;
    description.height = 32;
    description.cameraBuffers = 4096;
    return description;
}

RETSTATUS HeadSession::Connect() {
    std::vector<char*> serials;
    std::vector<int> widths;
    std::vector<int> heights;
    std::vector<bool> colors;
    int count = 0;
    GetCamerasInformation("KV00", serials, widths, heights, colors, count);
    const RETSTATUS status = ConnectDevice("KV00", "", serials, widths, heights, m_handle);
    for (char* serial : serials) {
        delete[] serial;
    }
    return status;
}

RETSTATUS HeadSession::Trigger(CAMERA_TRIGGER_MODE mode, int periodMs) {
    const RETSTATUS period = SetVideoTriggerPeriod(m_handle, periodMs);
    return period == STATUS_SUCCESS ? EnableVideoTrigger(m_handle, mode, true) : period;
}

RETSTATUS HeadSession::TriggerOff() {
    return EnableVideoTrigger(m_handle, TRIGGER_LASER_LINES, false);
}

}  // namespace Korvex3Sync::tests
