#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace Korvex3Sync::tests {

/// Gives this process folders of its own for sockets, lock files and logs while it exists. Their
/// path is short, because a socket path is.
class Folders {
public:
    Folders() {
        char name[] = "/tmp/k3linkXXXXXX";
        EXPECT_NE(::mkdtemp(name), nullptr);
        m_base = name;
        ::setenv("XDG_RUNTIME_DIR", name, 1);
        ::setenv("XDG_STATE_HOME", name, 1);
    }
    ~Folders() {
        std::error_code ignored;
        std::filesystem::remove_all(m_base, ignored);
    }
    Folders(const Folders&) = delete;
    Folders& operator=(const Folders&) = delete;

    const std::filesystem::path& Base() const { return m_base; }
    std::filesystem::path Runtime() const { return m_base / "korvex3sync"; }

private:
    std::filesystem::path m_base;
};

}  // namespace Korvex3Sync::tests
