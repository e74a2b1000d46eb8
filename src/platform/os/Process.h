#pragma once

namespace Korvex3Sync::os {

/// The number of this process. A forked child has another one than its parent.
long CurrentProcess();

}  // namespace Korvex3Sync::os
