#include "sync/ColorCatch.h"

#include <algorithm>
#include <utility>

namespace Korvex3Sync {

ColorCatch::~ColorCatch() {
    ReleaseAll();
}

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

bool ColorCatch::Catch(unsigned char* image) {
    unsigned char* replaced = nullptr;
    {
        os::MutexGuard lock(m_mutex);
        if (!m_bSingleSnapColor) {
            return false;
        }
        auto slot = std::find(m_pSnapColorImages.begin(), m_pSnapColorImages.end(), nullptr);
        if (slot == m_pSnapColorImages.end()) {
            --slot;
        }
        replaced = std::exchange(*slot, image);
        if (std::count(m_pSnapColorImages.begin(), m_pSnapColorImages.end(), nullptr) == 0) {
            m_bSingleSnapColor = false;
        }
        if (m_hSnapColorEvent) {
            m_hSnapColorEvent->Set();
        }
    }
    if (replaced != nullptr) {
        m_release(replaced);
    }
    return true;
}

std::array<unsigned char*, ColorCatch::kSlots> ColorCatch::TakeAll() {
    os::MutexGuard lock(m_mutex);
    return std::exchange(m_pSnapColorImages, {});
}

bool ColorCatch::HasFirst() const {
    os::MutexGuard lock(m_mutex);
    return m_pSnapColorImages.front() != nullptr;
}

void ColorCatch::ReleaseFirst(std::size_t count) {
    std::array<unsigned char*, kSlots> images{};
    {
        os::MutexGuard lock(m_mutex);
        for (std::size_t i = 0; i < count; ++i) {
            std::swap(images[i], m_pSnapColorImages[i]);
        }
    }
    for (unsigned char* image : images) {
        if (image != nullptr) {
            m_release(image);
        }
    }
}

}  // namespace Korvex3Sync
