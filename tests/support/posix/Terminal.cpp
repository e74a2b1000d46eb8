#include "support/Terminal.h"

#include <gtest/gtest.h>

#include "support/ChildProcess.h"

namespace Korvex3Sync::tests {

std::vector<std::string> OnTerminal(const std::vector<std::string>& command) {
    std::vector<std::string> script{"script",    "--quiet", "--return",
                                    "--command", "true",    "/dev/null"};
    EXPECT_EQ(RunChild(script).exitCode, 0)
        << "script cannot make a pseudo terminal here (is /dev/pts mounted?)";
    std::string line;
    for (const std::string& word : command) {
        line += "'" + word + "' ";
    }
    script[4] = line;
    return script;
}

}  // namespace Korvex3Sync::tests
