#include "platform/os/ActiveWait.h"

#include <algorithm>

namespace Korvex3Sync::os {

void ActiveWait::Count(bool isDone) {
    m_inVain = isDone ? 0 : std::min(2 * m_inVain + 1, kMostLeftOut);
    m_leftOut = 0;
}

}  // namespace Korvex3Sync::os
