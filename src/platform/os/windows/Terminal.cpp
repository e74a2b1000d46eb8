#include "platform/os/StandardOutput.h"
#include "platform/os/windows/System.h"

#include <cstdio>

namespace Korvex3Sync::os {

std::optional<std::size_t> TerminalColumns() {
    CONSOLE_SCREEN_BUFFER_INFO screen{};
    if (::GetConsoleScreenBufferInfo(::GetStdHandle(STD_OUTPUT_HANDLE), &screen) == 0) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(screen.srWindow.Right - screen.srWindow.Left + 1);
}

bool StandardErrorTakesEscapes() {
    const HANDLE error = ::GetStdHandle(STD_ERROR_HANDLE);
    DWORD mode = 0;
    // To a console, the C runtime writes each character by itself unless it is told not to buffer.
    return ::GetConsoleMode(error, &mode) != 0 && std::setvbuf(stderr, nullptr, _IONBF, 0) == 0 &&
           ::SetConsoleMode(error, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

}  // namespace Korvex3Sync::os
