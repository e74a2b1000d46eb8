#pragma once

#include <initializer_list>
#include <string>

#include "platform/board/BoardLink.h"

namespace Korvex3Sync::board {

// The shapes that the calls of a board have. Each is true for success, leaves its outputs untouched
// otherwise, and blocks as BoardLink::Exchange does.

/// Sends values and expects none.
bool Set(BoardLink& board, Command command, std::initializer_list<int> values);
/// Sends values and reads as many as there are outputs.
bool Query(BoardLink& board, Command command, std::initializer_list<int> values,
           std::initializer_list<int*> outputs);
/// The same for the command that `selector` names for a platform function; false for a selector
/// that is not one of the function's.
bool SetSelected(BoardLink& board, const char* function, int selector,
                 std::initializer_list<int> values);
bool QuerySelected(BoardLink& board, const char* function, int selector,
                   std::initializer_list<int*> outputs);

/// Sends a text, cut to what a report holds, and reads one.
bool QueryText(BoardLink& board, Command command, const std::string& sent, std::string& text);

/// Writes a page of the user memory; what the data leaves of the page becomes zero. The length is 0
/// to kUserPageSize.
bool WriteUserPage(BoardLink& board, int page, const char* data, int length);
/// Reads a page: kUserPageSize bytes into `buffer`.
bool ReadUserPage(BoardLink& board, int page, char* buffer);

}  // namespace Korvex3Sync::board
