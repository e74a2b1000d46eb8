#pragma once

namespace Korvex3Sync {

/// Looks the scanner board up in the USB tree. True when one was found; then `superSpeed` tells
/// whether the first one negotiated USB 3 speed. Otherwise `superSpeed` is untouched.
bool FindBoardUsbSpeed(bool& superSpeed);

}  // namespace Korvex3Sync
