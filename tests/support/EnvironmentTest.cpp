#include "support/Environment.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <future>
#include <optional>
#include <system_error>

#include "platform/os/InstanceLock.h"

namespace Korvex3Sync::tests {
namespace {

namespace fs = std::filesystem;

TEST(RemoveFolder, DoesNotWaitForAFileThatIsInUse) {
    const fs::path folder = NewFolder("k3r");
    fs::create_directories(folder / "in" / "it");
    std::error_code error;
    // Others can remove this file while it is open.
    std::optional<os::File> file = os::TakeInstanceLock(folder / "in" / "it" / "lock", error);
    ASSERT_FALSE(error) << error.message();
    const auto removal = std::async(std::launch::async, [&folder] { RemoveFolder(folder); });
    // Under Wine, an endless attempt ends when its server has no descriptors left, after 10 s.
    EXPECT_EQ(removal.wait_for(std::chrono::seconds(5)), std::future_status::ready);
    file.reset();
    removal.wait();
    RemoveFolder(folder);
    EXPECT_FALSE(fs::exists(folder));
}

}  // namespace
}  // namespace Korvex3Sync::tests
