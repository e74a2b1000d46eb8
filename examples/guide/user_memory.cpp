// Stores a text in the memory of the board.

#include <algorithm>
#include <array>
#include <exception>
#include <iostream>
#include <string_view>

#include "Head.h"

using namespace guide;

namespace {

constexpr std::size_t kPageSize = 256;

void WriteText(void* const& head, int page, std::string_view text) {
    std::array<char, kPageSize> bytes{};
    std::copy_n(text.begin(), std::min(text.size(), bytes.size() - 1), bytes.begin());
    Require(WriteUserInfomation(head, page, bytes.data(), static_cast<int>(bytes.size())),
            "write the user memory");
}

std::string ReadText(void* const& head, int page) {
    std::array<char, kPageSize + 1> bytes{};  // one more byte, so that a zero ends the text
    char* buffer = bytes.data();              // receives a whole page
    Require(ReadUserInfomation(head, page, buffer), "read the user memory");
    return bytes.data();
}

}  // namespace

int main() {
    try {
        const Cameras cameras("KV00");
        const Head head(cameras);
        WriteText(head.Handle(), 3, "calibrated by bench 7");
        std::cout << ReadText(head.Handle(), 3) << '\n';
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
    return 0;
}
