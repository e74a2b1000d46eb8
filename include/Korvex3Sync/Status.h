#pragma once

#include "Korvex3Sync/Export.h"

namespace Korvex3Sync {

/// Result of every operation. Callers compare the numbers; they never change.
///
/// Every operation that takes memory answers 0 too when there was none, also one whose comment
/// names no 0; so no 7 is promised without it. Outputs and settings may be half done then.
enum RETSTATUS : int {
    STATUS_FAILED = 0,            ///< the device or the library call failed, or memory ran out
    STATUS_PROJECTOR = 1,         ///< the board is not connected or could not be opened
    STATUS_CAMERA = 2,            ///< a camera is not connected or could not be opened
    STATUS_PARAMETER = 3,         ///< bad parameter: null pointer, vectors of unequal length
    STATUS_SYNCHRONISM_TYPE = 4,  ///< not available in the present mode (service mode)
    STATUS_NOT_SUPPORTED = 5,     ///< operation not supported
    STATUS_NOT_CONNECTED = 6,     ///< null handle, no board, or service mode without a client
    STATUS_SUCCESS = 7            ///< done
};

/// Describes a status in words.
///
/// Does nothing when `text` is null on entry: pass any non-null pointer to receive a text. On
/// return `text` points to a new zero-terminated buffer, which the caller frees with `delete[]`.
/// The buffer that `text` pointed to before is neither read nor freed; it stays the caller's. A
/// status outside 0..7 gives the empty text; `text` is null when memory ran out.
///
/// Any thread; never blocks.
///
///     char none = 0;
///     char* text = &none;
///     Korvex3Sync::GetStatusDescriptionString(status, text);
///     std::puts(text);
///     delete[] text;
KORVEX3SYNC_API void GetStatusDescriptionString(const RETSTATUS& status, char*& text);

}  // namespace Korvex3Sync
