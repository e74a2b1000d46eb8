#include "platform/os/StandardOutput.h"
#include "platform/os/windows/System.h"

namespace Korvex3Sync::os {

std::optional<std::size_t> TerminalColumns() {
    CONSOLE_SCREEN_BUFFER_INFO screen{};
    if (::GetConsoleScreenBufferInfo(::GetStdHandle(STD_OUTPUT_HANDLE), &screen) == 0) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(screen.srWindow.Right - screen.srWindow.Left + 1);
}

bool StandardErrorIsTerminal() {
    DWORD mode = 0;
    return ::GetConsoleMode(::GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

}  // namespace Korvex3Sync::os
