#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "korvexctl/Korvexctl.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {

/// Redirects standard error of this process to a file while it exists.
class ErrorIntoFile {
public:
    explicit ErrorIntoFile(const std::filesystem::path& file)
        : m_file(file), m_former(::dup(STDERR_FILENO)) {
        const int descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        EXPECT_GE(descriptor, 0);
        ::dup2(descriptor, STDERR_FILENO);
        ::close(descriptor);
    }
    ~ErrorIntoFile() {
        ::dup2(m_former, STDERR_FILENO);
        ::close(m_former);
    }
    ErrorIntoFile(const ErrorIntoFile&) = delete;
    ErrorIntoFile& operator=(const ErrorIntoFile&) = delete;

    /// Waits until the program says something: a test compares what it says afterwards.
    bool WaitForMessage() const {
        return support::WaitUntil(
            [this] { return ReadText(m_file).find("korvexctl: ") != std::string::npos; });
    }

private:
    const std::filesystem::path m_file;
    const int m_former;
};

}  // namespace Korvex3Sync::tests
