#include "sync/frames/ColorCatch.h"

#include <algorithm>
#include <utility>

namespace Korvex3Sync {

bool ColorCatch::Armed() const {
    os::MutexGuard lock(m_mutex);
    return m_bSingleSnapColor;
}

void ColorCatch::Begin() {
    os::MutexGuard lock(m_mutex);
    m_hSnapColorEvent = std::make_shared<os::Event>();
}

void ColorCatch::Arm() {
    os::MutexGuard lock(m_mutex);
    m_bSingleSnapColor = true;
}

void ColorCatch::End() {
    os::MutexGuard lock(m_mutex);
    m_hSnapColorEvent.reset();
    m_bSingleSnapColor = false;
}

std::shared_ptr<os::Event> ColorCatch::CaughtEvent() const {
    os::MutexGuard lock(m_mutex);
    return m_hSnapColorEvent;
}

bool ColorCatch::Catch(Image& image) {
    os::MutexGuard lock(m_mutex);
    if (!m_bSingleSnapColor) {
        return false;
    }
    const auto empty = [](const Image& slot) { return !slot; };
    auto slot = std::find_if(m_pSnapColorImages.begin(), m_pSnapColorImages.end(), empty);
    if (slot == m_pSnapColorImages.end()) {
        --slot;
    }
    *slot = std::move(image);
    if (std::none_of(m_pSnapColorImages.begin(), m_pSnapColorImages.end(), empty)) {
        m_bSingleSnapColor = false;
    }
    if (m_hSnapColorEvent) {
        m_hSnapColorEvent->Set();
    }
    return true;
}

std::array<Image, ColorCatch::kSlots> ColorCatch::TakeAll() {
    os::MutexGuard lock(m_mutex);
    return std::exchange(m_pSnapColorImages, {});
}

bool ColorCatch::HasFirst() const {
    os::MutexGuard lock(m_mutex);
    return static_cast<bool>(m_pSnapColorImages.front());
}

void ColorCatch::ReleaseFirst(std::size_t count) {
    os::MutexGuard lock(m_mutex);
    for (std::size_t i = 0; i < count; ++i) {
        m_pSnapColorImages[i].Release();
    }
}

}  // namespace Korvex3Sync
