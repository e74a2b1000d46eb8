// A process on one side of an area, which the tests stop and kill.

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "tunnel/Areas.h"

namespace Korvex3Sync::tests {

namespace {

/// Waits until the test ends this process.
[[noreturn]] void WaitForTheEnd() {
    for (;;) {
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }
}

/// Makes an area for segments of this size: 0, or 1 with the reason on standard error.
int Make(const std::string& area, std::size_t segments, std::size_t bytes) {
    std::string reason;
    const auto writer = tunnel::AreaWriter::Make(area, segments, bytes, reason);
    std::cerr << reason << "\n";
    return writer ? 0 : 1;
}

/// Writes sets of three segments until it is ended.
[[noreturn]] void WriteSets(const std::string& area, std::size_t segments, std::size_t bytes) {
    const auto writer = MakeArea(area, segments, bytes);
    for (std::uint64_t number = 1;; ++number) {
        Write(*writer, NamesOf(number), number, bytes);
        if (number == 1) {
            std::cout << "writing" << std::endl;
        }
    }
}

/// Holds a segment until it is ended.
[[noreturn]] void Hold(const std::string& area, const std::string& name) {
    const auto reader = ReadArea(area);
    const auto held = reader->Pin(name);
    std::cout << (held ? "holding" : "not found") << std::endl;
    WaitForTheEnd();
}

int Run(const std::vector<std::string>& words) {
    const auto number = [&](std::size_t place) { return std::stoul(words.at(place)); };
    if (words.at(0) == "make") {
        return Make(words.at(1), number(2), number(3));
    }
    if (words.at(0) == "write") {
        WriteSets(words.at(1), number(2), number(3));
    }
    Hold(words.at(1), words.at(2));
}

}  // namespace

}  // namespace Korvex3Sync::tests

int main(int count, char** words) {
    return Korvex3Sync::tests::Run({words + 1, words + count});
}
