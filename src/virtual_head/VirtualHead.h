#pragma once

#include <memory>

#include "virtual_head/TriggerClock.h"
#include "virtual_head/base/Export.h"
#include "virtual_head/base/Journal.h"
#include "virtual_head/board/VirtualBoard.h"
#include "virtual_head/cameras/SensorSettings.h"
#include "virtual_head/config/HeadDescription.h"
#include "virtual_head/faults/Faults.h"

namespace Korvex3Sync::virtual_head {

class ImageSource;

/// One simulated head: board, trigger clock, sensors, journal and faults that belong together.
/// Thread-safe. Users hold a shared pointer, so withdrawing the request never destroys the head
/// during a call.
class KORVEX_VIRTUAL_HEAD_API VirtualHead {
public:
    /// `images` is not null and fits the description. Throws std::runtime_error if a thread for the
    /// trigger clock or the timed faults cannot be started.
    VirtualHead(HeadDescription description, std::shared_ptr<ImageSource> images);
    ~VirtualHead();
    VirtualHead(const VirtualHead&) = delete;
    VirtualHead& operator=(const VirtualHead&) = delete;

    const HeadDescription& Description() const { return m_description; }
    Journal& GetJournal() { return m_journal; }
    Faults& GetFaults() { return m_faults; }
    VirtualBoard& Board() { return m_board; }
    TriggerClock& Clock() { return m_clock; }
    HeadCounts Counts() const { return m_clock.Counts(); }
    SensorSettings& Sensors() { return m_sensors; }
    ImageSource& Images() { return *m_images; }

private:
    const HeadDescription m_description;
    std::shared_ptr<ImageSource> m_images;
    Journal m_journal;
    Faults m_faults;
    SensorSettings m_sensors;
    TriggerClock m_clock;
    VirtualBoard m_board;
};

}  // namespace Korvex3Sync::virtual_head
