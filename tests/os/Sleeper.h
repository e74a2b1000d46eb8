#pragma once

#include <gtest/gtest.h>

#include <filesystem>

#include "platform/os/Process.h"
#include "support/ChildProcess.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {

/// A program of this user that does nothing until it is ended.
class Sleeper {
public:
    explicit Sleeper(const std::filesystem::path& program) : m_child({program.string()}) {
        EXPECT_TRUE(support::WaitUntil(
            [&] { return os::OtherProcess(Number()).Is(program.filename().string()); }));
    }
    long Number() const { return m_child.Number(); }
    ChildProcess& Child() { return m_child; }

private:
    ChildProcess m_child;
};

/// The program of OsPeer.cpp under another name.
inline std::filesystem::path SleeperAs(const std::filesystem::path& file) {
    std::filesystem::copy_file(KORVEX_OS_PEER, file);
    return file;
}

}  // namespace Korvex3Sync::tests
