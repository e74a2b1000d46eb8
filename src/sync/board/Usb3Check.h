#pragma once

namespace Korvex3Sync {

/// Looks for the board in the USB tree. If at least one is found, returns true and sets
/// `superSpeed` to whether the first one negotiated USB 3 speed. Otherwise leaves `superSpeed`
/// unchanged.
bool FindBoardUsbSpeed(bool& superSpeed);

}  // namespace Korvex3Sync
