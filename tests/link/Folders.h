#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/Environment.h"

namespace Korvex3Sync::tests {

/// Gives this process folders of its own for sockets, lock files and logs while it exists. Their
/// path is short, because a socket path is.
class Folders {
public:
    Folders() : m_base(NewFolder("k3ж")) {
        std::filesystem::create_directories(Runtime().parent_path());
        Use();
    }
    ~Folders() { RemoveFolder(m_base); }
    Folders(const Folders&) = delete;
    Folders& operator=(const Folders&) = delete;

    /// From now on this process uses them, again if others came in between.
    void Use() const {
        for (const auto& [name, value] : FoldersIn(m_base)) {
            SetVariable(name, value);
        }
    }

    const std::filesystem::path& Base() const { return m_base; }
    std::filesystem::path Runtime() const { return RuntimeFolderIn(m_base); }
    std::filesystem::path Logs() const { return LogFolderIn(m_base); }

private:
    std::filesystem::path m_base;
};

}  // namespace Korvex3Sync::tests
