#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>

#include "support/WaitUntil.h"
#include "virtual_head/Request.h"
#include "virtual_head/VirtualHead.h"

namespace Korvex3Sync::tests {
namespace {

using namespace virtual_head;

TEST(ForkTest, AChildEndsAlthoughTheThreadsOfTheHeadAreNotInIt) {
    std::string error;
    ASSERT_TRUE(RequestVirtualHead("default", error)) << error;
    const pid_t child = ::fork();
    if (child == 0) {
        std::exit(0);
    }
    ASSERT_GT(child, 0);
    int status = 0;
    const bool ended = support::WaitUntil([&] { return ::waitpid(child, &status, WNOHANG) != 0; });
    if (!ended) {
        ::kill(child, SIGKILL);
        ::waitpid(child, &status, 0);
    }
    EXPECT_TRUE(ended);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_TRUE(RequestedVirtualHead()) << "the head of this process stays";
    WithdrawVirtualHead();
}

}  // namespace
}  // namespace Korvex3Sync::tests
