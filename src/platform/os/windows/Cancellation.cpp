#include "platform/os/Cancellation.h"

namespace Korvex3Sync::os {

CancellationOff::CancellationOff() = default;

CancellationOff::~CancellationOff() = default;

}  // namespace Korvex3Sync::os
