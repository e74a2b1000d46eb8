#pragma once

#include <initializer_list>
#include <string>

#include "platform/board/BoardLink.h"

namespace Korvex3Sync::board {

// The kinds of calls on a board. Each returns true for success, leaves its outputs unchanged
// otherwise, and blocks like BoardLink::Exchange.

/// Sends values and expects none back.
bool Set(BoardLink& board, Command command, std::initializer_list<int> values);
/// Sends values and reads one value for each output.
bool Query(BoardLink& board, Command command, std::initializer_list<int> values,
           std::initializer_list<int*> outputs);
/// The same for the command that `selector` names for a platform function; false if the function
/// has no such selector.
bool SetSelected(BoardLink& board, const char* function, int selector,
                 std::initializer_list<int> values);
bool QuerySelected(BoardLink& board, const char* function, int selector,
                   std::initializer_list<int*> outputs);

/// Sends a text, truncated to fit a report, and reads one.
bool QueryText(BoardLink& board, Command command, const std::string& sent, std::string& text);

/// Writes a page of the user memory; the rest of the page becomes zero. The length is 0 to
/// kUserPageSize.
bool WriteUserPage(BoardLink& board, int page, const char* data, int length);
/// Reads a page, kUserPageSize bytes, into `buffer`.
bool ReadUserPage(BoardLink& board, int page, char* buffer);

}  // namespace Korvex3Sync::board
