#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "korvexctl/CommandOverHead.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

/// The command profile, in this process.
class ProfileOverHead : public ::testing::Test {
protected:
    CommandResult Profile(const std::string& action) {
        return RunHere({"profile", action, m_file.string()});
    }

    void WriteProfileText(const std::string& text) { WriteText(m_file, text); }

    RequestedHead m_head{SmallHeadDescription()};
    TemporaryFolder m_folder;
    std::filesystem::path m_file = m_folder.Path() / "bench.toml";
};

}  // namespace Korvex3Sync::tests
