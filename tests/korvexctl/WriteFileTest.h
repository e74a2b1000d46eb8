#pragma once

#include <gtest/gtest.h>

#include <filesystem>

#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

class WriteFileTest : public ::testing::Test {
protected:
    TemporaryFolder m_folder;
    std::filesystem::path m_file = m_folder.Path() / "file";
};

}  // namespace Korvex3Sync::tests
