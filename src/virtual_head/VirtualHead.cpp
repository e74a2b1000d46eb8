#include "virtual_head/VirtualHead.h"

#include <utility>

#include "virtual_head/ImageSource.h"

namespace Korvex3Sync::virtual_head {

VirtualHead::VirtualHead(HeadDescription description, std::shared_ptr<ImageSource> images)
    : m_description(std::move(description)),
      m_images(std::move(images)),
      m_sensors(m_description),
      m_clock(m_description.color, &m_sensors),
      m_board(m_description, m_journal, m_faults,
              [this](const BoardState& state, bool modeWritten) {
                  m_clock.Apply(state, modeWritten);
              }) {}

VirtualHead::~VirtualHead() = default;

}  // namespace Korvex3Sync::virtual_head
