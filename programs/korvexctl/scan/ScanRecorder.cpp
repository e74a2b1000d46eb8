#include "korvexctl/scan/ScanRecorder.h"

#include <algorithm>
#include <utility>

namespace Korvex3Sync::korvexctl {

namespace {

constexpr int kKeys = 256;
// Minutes of sets between two fetches, so that the grab thread allocates nothing.
constexpr std::size_t kRecords = 16'384;

std::size_t BufferCount(const ScanPlan& plan) {
    return static_cast<std::size_t>(plan.recording ? plan.buffers
                                                   : std::min(plan.choice.Keep(), plan.buffers));
}

}  // namespace

ScanRecorder::ScanRecorder(const ScanPlan& plan) : m_plan(plan), m_buffers(BufferCount(plan)) {
    m_free.reserve(m_buffers.size());
    for (KeptImageSet& buffer : m_buffers) {
        m_free.push_back(&buffer);
    }
}

void ScanRecorder::Prepare(int width, int height, std::function<void(const KeptImageSet&)> onKept) {
    m_onKept = std::move(onKept);
    m_width = width;
    m_height = height;
    for (KeptImageSet& buffer : m_buffers) {
        buffer.width = width;
        buffer.height = height;
        for (auto& image : buffer.images) {
            // Written once here, so that the grab thread takes no page faults.
            image.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0);
        }
    }
    const os::MutexGuard guard(m_mutex);
    m_records.reserve(kRecords);
}

void ScanRecorder::GiveBack(const KeptImageSet& set) {
    const os::MutexGuard guard(m_mutex);
    m_free.push_back(&m_buffers[static_cast<std::size_t>(&set - m_buffers.data())]);
}

std::size_t ScanRecorder::Waiting() {
    const os::MutexGuard guard(m_mutex);
    return m_buffers.size() - m_free.size();
}

void ScanRecorder::OnImageSet(const void* const& context, std::vector<unsigned char*>& images,
                              const int& width, const int& height,
                              std::vector<int>& /*imageInfo*/) {
    CallbackContext<ScanRecorder>::With(
        context, [&](ScanRecorder& recorder) { recorder.Take(images, width, height); });
}

void ScanRecorder::Take(const std::vector<unsigned char*>& images, int width, int height) {
    const Clock::time_point arrival = Clock::now();
    const bool whole = IsWhole(images) && width == m_width && height == m_height;
    KeptImageSet* buffer = nullptr;
    SetRecord record;
    {
        const os::MutexGuard guard(m_mutex);
        if (Over()) {
            return;
        }
        if (!whole) {
            ++m_counts.odd;
            return;
        }
        m_counts.last = arrival;
        if (m_counts.delivered == 0) {
            m_counts.first = arrival;
        }
        record.number = m_counts.delivered;
        record.key = static_cast<int>(KeyOf(images, width, height));
        record.color = images.size() > kMonoImages;
        record.seconds = m_counts.Time().count();
        record.lostBefore = LostBefore(record.key);
        buffer = BufferFor(record);
    }
    if (buffer != nullptr) {
        for (std::size_t i = 0; i < images.size(); ++i) {
            std::copy_n(images[i], buffer->images[i].size(), buffer->images[i].begin());
        }
        m_onKept(*buffer);
    }
    const os::MutexGuard guard(m_mutex);
    ++m_counts.delivered;
    m_counts.withColor += record.color ? 1 : 0;
    record.callbackUs = std::chrono::duration<double, std::micro>(Clock::now() - arrival).count();
    m_records.push_back(record);
    if (Over()) {
        m_changed.NotifyAll();
    }
}

KeptImageSet* ScanRecorder::BufferFor(SetRecord& record) {
    const int due = m_plan.choice.Due(record.number, record.seconds);
    const bool pictures = m_kept < due;
    if (!pictures && !m_plan.recording) {
        return nullptr;
    }
    if (m_free.empty()) {
        m_counts.notKept = due - m_kept;
        m_counts.notRecorded += m_plan.recording ? 1 : 0;
        return nullptr;
    }
    KeptImageSet* const buffer = m_free.back();
    m_free.pop_back();
    buffer->purpose = {pictures, pictures && m_plan.choice.OnSheet(m_kept), m_plan.recording};
    buffer->number = record.number;
    buffer->key = record.key;
    buffer->color = record.color;
    buffer->seconds = record.seconds;
    buffer->lost = m_lost;
    record.kept = pictures;
    record.recorded = m_plan.recording;
    m_kept += pictures ? 1 : 0;
    m_counts.notKept = due - m_kept;
    return buffer;
}

int ScanRecorder::LostBefore(int key) {
    const bool mayRestart = m_newKeys || std::exchange(m_keyUnknown, false);
    const int step = (key - m_nextKey + kKeys) % kKeys;
    // A step of more than half the keys is a step back: a frame that came late, or twice.
    if (step >= kKeys / 2 && !mayRestart) {
        return 0;
    }
    const int lost = mayRestart ? 0 : step;
    m_nextKey = (key + 1) % kKeys;
    m_lost += lost;
    return lost;
}

void ScanRecorder::ExpectNewKeys(bool expected) {
    const os::MutexGuard guard(m_mutex);
    m_newKeys = expected;
    m_keyUnknown = !expected;
}

void ScanRecorder::Stop() {
    const os::MutexGuard guard(m_mutex);
    m_counts.stopped = true;
    m_changed.NotifyAll();
}

ScanRecorder::Counts ScanRecorder::Wait(std::chrono::milliseconds limit) {
    const auto end = Clock::now() + limit;
    const os::MutexGuard guard(m_mutex);
    while (!Over() && m_changed.WaitUntil(m_mutex, end)) {
    }
    return m_counts;
}

std::vector<SetRecord> ScanRecorder::FetchRecords() {
    std::vector<SetRecord> records;
    records.reserve(kRecords);
    const os::MutexGuard guard(m_mutex);
    records.swap(m_records);
    return records;
}

}  // namespace Korvex3Sync::korvexctl
