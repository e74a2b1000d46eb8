#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <system_error>

#include "platform/os/File.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {
namespace {

using namespace os;

TEST(Fifo, IsReadWithoutWaitingForAWriter) {
    const TemporaryFolder folder;
    const auto fifo = folder.Path() / "fifo";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    std::error_code error;
    EXPECT_EQ(ReadWithoutWaiting(fifo, 10, error), "");
    EXPECT_FALSE(error) << "nobody has it open";
    const File writer(::open(fifo.c_str(), O_RDWR | O_CLOEXEC));
    ReadWithoutWaiting(fifo, 10, error);
    EXPECT_EQ(error, std::errc::resource_unavailable_try_again);
    EXPECT_FALSE(writer.Write("abc"));
    ReadWithoutWaiting(fifo, 10, error);
    EXPECT_EQ(error, std::errc::resource_unavailable_try_again) << "more could come";
}

}  // namespace
}  // namespace Korvex3Sync::tests
