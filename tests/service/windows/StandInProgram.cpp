// Stands in for the hub or the service: does what the file says that lies beside it (StandIn.cpp).
// With two arguments, as the scripts call it, it only appends the second one to the file of the
// first.

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "platform/os/Descriptors.h"
#include "platform/os/InstanceLock.h"
#include "platform/os/Process.h"

namespace Korvex3Sync::tests {

namespace {

namespace fs = std::filesystem;

constexpr int kInput = 0;
constexpr int kOutput = 1;
constexpr int kError = 2;

std::string NextLine(std::ifstream& file) {
    std::string line;
    std::getline(file, line);
    return line;
}

void Print(int descriptor, const std::string& text) {
    for (std::size_t done = 0; done < text.size();) {
        const std::ptrdiff_t count =
            os::WriteDescriptor(descriptor, text.data() + done, text.size() - done);
        if (count <= 0) {
            return;
        }
        done += static_cast<std::size_t>(count);
    }
}

// To append is to seek and then to write: of two programs that do so at once, one can overwrite the
// line of the other.
void Append(const fs::path& journal, const std::string& line) {
    os::File lock;
    std::error_code error;
    do {
        lock = os::TakeInstanceLock(fs::path(journal).concat(".lock"), error);
    } while (error == std::errc::resource_unavailable_try_again);
    std::ofstream(journal, std::ios::app) << line << '\n';
}

int Do(const fs::path& program, int arguments) {
    std::ifstream file(fs::path(program).replace_extension(".txt"));
    const std::string journal = NextLine(file);
    Print(kOutput, std::string(std::stoul(NextLine(file)), '\0'));
    Print(kError, std::string(std::stoul(NextLine(file)), '\0'));
    if (const std::string line = NextLine(file); !line.empty()) {
        Print(kOutput, line + '\n');
    }
    std::string entry = NextLine(file);
    if (entry.empty()) {
        entry = program.filename().string() + ' ' + std::to_string(os::CurrentProcess()) + ' ' +
                std::to_string(arguments) + ' ' + fs::current_path().string();
    }
    Append(journal, entry);
    const bool waits = NextLine(file) == "1";
    char byte = 0;
    while (waits && os::ReadDescriptor(kInput, &byte, 1) > 0) {
    }
    return 0;
}

}  // namespace

}  // namespace Korvex3Sync::tests

int main(int count, char** words) {
    if (count == 3) {
        Korvex3Sync::tests::Append(words[1], words[2]);
        return 0;
    }
    return Korvex3Sync::tests::Do(words[0], count - 1);
}
