#pragma once

#include "Korvex3Sync/Export.h"

namespace Korvex3Sync {

/// Result of every operation. The numbers never change; only 7 means success.
///
/// Any operation that allocates memory returns 0 if memory runs out, even where its comment does
/// not mention 0. Outputs and settings may then be partly written.
enum RETSTATUS : int {
    STATUS_FAILED = 0,            ///< the device or the call failed, or memory ran out
    STATUS_PROJECTOR = 1,         ///< the board is not connected or could not be opened
    STATUS_CAMERA = 2,            ///< a camera is not connected or could not be opened
    STATUS_PARAMETER = 3,         ///< bad parameter, such as a null pointer
    STATUS_SYNCHRONISM_TYPE = 4,  ///< not available in service mode
    STATUS_NOT_SUPPORTED = 5,     ///< the operation is not supported
    STATUS_NOT_CONNECTED = 6,     ///< no live connection, no open board, or no service client
    STATUS_SUCCESS = 7            ///< success
};

/// Gets the text for a status.
///
/// `text` must not be null on entry; otherwise the function does nothing. On return it points to a
/// new zero-terminated buffer, which the caller frees with `delete[]`, or is null if memory ran
/// out. The function neither reads nor frees what `text` pointed to before. The text is empty for a
/// status outside 0 to 7.
///
/// Any thread, including both callbacks. Does not block.
///
///     char none = 0;
///     char* text = &none;
///     Korvex3Sync::GetStatusDescriptionString(status, text);
///     std::puts(text);
///     delete[] text;
KORVEX3SYNC_API void GetStatusDescriptionString(const RETSTATUS& status, char*& text);

}  // namespace Korvex3Sync
