#include "virtual_head/VirtualHead.h"

#include <utility>

#include "virtual_head/images/ImageSource.h"

namespace Korvex3Sync::virtual_head {

VirtualHead::VirtualHead(HeadDescription description, std::shared_ptr<ImageSource> images)
    : m_description(std::move(description)),
      m_images(std::move(images)),
      m_faults(&m_journal),
      m_sensors(m_description),
      m_clock(m_description.color, m_faults, &m_sensors),
      m_board(m_description, m_journal, m_faults,
              [this](const BoardState& state, bool modeWritten) {
                  m_clock.Apply(state, modeWritten);
              }) {
    Faults::Hooks hooks;
    hooks.boardVanished = [this] {
        m_clock.SetPower(false);
        m_board.PowerOff();
    };
    hooks.boardReturned = [this] { m_board.PowerOn([this] { m_clock.SetPower(true); }); };
    hooks.cameraVanished = [this] {
        m_clock.DetachAll();
        m_sensors.PowerOff();
    };
    m_faults.Start(std::move(hooks), m_description.faults, m_description.faultSeed);
}

// A timed fault uses all parts, from its own thread or that of the clock, so faults and clock end
// first.
VirtualHead::~VirtualHead() {
    m_faults.End();
    m_clock.End();
}

}  // namespace Korvex3Sync::virtual_head
