#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <system_error>

#include "platform/os/Process.h"
#include "platform/os/SharedFile.h"

namespace Korvex3Sync::tests {

using os::SharedFile;

inline constexpr std::uint64_t kSharedSize = 8192;

class SharedFiles : public ::testing::Test {
protected:
    /// On some systems a name stays until it is dropped.
    ~SharedFiles() override {
        const SharedFile last = CreateNamed();
        last.DropName(m_name);
    }
    static SharedFile Create() {
        std::error_code error;
        SharedFile file = SharedFile::Create(kSharedSize, error);
        EXPECT_FALSE(error) << error.message();
        EXPECT_TRUE(file);
        return file;
    }
    SharedFile CreateNamed() const {
        SharedFile file = Create();
        EXPECT_FALSE(file.TakeName(m_name));
        return file;
    }
    SharedFile Open() const {
        std::error_code error;
        SharedFile file = SharedFile::Open(m_name, error);
        EXPECT_EQ(static_cast<bool>(file), !error);
        return file;
    }
    std::error_code OpenError() const {
        std::error_code error;
        SharedFile::Open(m_name, error);
        return error;
    }

    const std::string m_name = "test-" + std::to_string(os::CurrentProcess());
};

}  // namespace Korvex3Sync::tests
