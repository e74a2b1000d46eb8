// A process that does nothing until the test ends it. With an argument it holds that instance lock.

#include <chrono>
#include <system_error>
#include <thread>

#include "platform/os/FileName.h"
#include "platform/os/InstanceLock.h"

namespace Korvex3Sync::tests {

namespace {

/// Returns only if the lock cannot be taken.
int HoldLock(const std::filesystem::path& file) {
    std::error_code error;
    const os::File lock = file.empty() ? os::File() : os::TakeInstanceLock(file, error);
    while (!error) {
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }
    return 1;
}

}  // namespace

}  // namespace Korvex3Sync::tests

int main(int count, char** words) {
    return Korvex3Sync::tests::HoldLock(Korvex3Sync::os::PathOf(count > 1 ? words[1] : ""));
}
