#include "platform/tunnel/AreaReader.h"

#include <utility>

#include "platform/tunnel/AreaName.h"

namespace Korvex3Sync::tunnel {

PinnedSegment::~PinnedSegment() {
    if (m_area) {
        m_area->Release(m_place.entry);
    }
}

std::unique_ptr<AreaReader> AreaReader::Open(const std::string& area, std::string& reason) {
    const std::string name = SharedNameOf(area, reason);
    return name.empty() ? nullptr : std::unique_ptr<AreaReader>(new AreaReader(name));
}

std::shared_ptr<OpenArea> AreaReader::CurrentArea() {
    os::MutexGuard lock(m_mutex);
    if (!m_area || !m_area->Current()) {
        m_area = OpenArea::Open(m_name);
    }
    return m_area;
}

std::optional<PinnedSegment> AreaReader::Pin(const std::string& name) {
    const std::shared_ptr<OpenArea> area = CurrentArea();
    const std::optional<FoundEntry> place = area ? area->Pin(name) : std::nullopt;
    if (!place) {
        return std::nullopt;
    }
    return std::optional<PinnedSegment>(std::in_place, area, *place);
}

}  // namespace Korvex3Sync::tunnel
