#include "platform/os/StandardOutput.h"
#include "platform/os/windows/System.h"

#include <cstdlib>

namespace Korvex3Sync::os {

std::optional<std::size_t> TerminalColumns() {
    CONSOLE_SCREEN_BUFFER_INFO screen{};
    if (::GetConsoleScreenBufferInfo(::GetStdHandle(STD_OUTPUT_HANDLE), &screen) == 0) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(screen.srWindow.Right - screen.srWindow.Left + 1);
}

void ShowUtf8() {
    static const UINT before = ::GetConsoleOutputCP();
    if (before != 0 && before != CP_UTF8 && ::SetConsoleOutputCP(CP_UTF8) != 0) {
        std::atexit([] { ::SetConsoleOutputCP(before); });
    }
}

bool StandardErrorTakesEscapes() {
    const HANDLE error = ::GetStdHandle(STD_ERROR_HANDLE);
    DWORD mode = 0;
    return ::GetConsoleMode(error, &mode) != 0 &&
           ::SetConsoleMode(error, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

}  // namespace Korvex3Sync::os
