#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <system_error>

#include "korvexctl/Korvexctl.h"
#include "platform/os/Descriptors.h"
#include "platform/os/File.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {

/// Redirects standard error of this process to a file while it exists.
class ErrorIntoFile {
public:
    explicit ErrorIntoFile(const std::filesystem::path& file)
        : m_file(file), m_former(os::DuplicateDescriptor(kStandardError)) {
        std::error_code error;
        const os::File opened = os::OpenForAppending(file, error);
        EXPECT_FALSE(error) << error.message();
        EXPECT_TRUE(os::RedirectDescriptor(opened.Descriptor(), kStandardError));
    }
    ~ErrorIntoFile() {
        os::RedirectDescriptor(m_former, kStandardError);
        os::CloseDescriptor(m_former);
    }
    ErrorIntoFile(const ErrorIntoFile&) = delete;
    ErrorIntoFile& operator=(const ErrorIntoFile&) = delete;

    /// Waits until the program says something: a test compares what it says afterwards.
    bool WaitForMessage() const {
        return support::WaitUntil(
            [this] { return ReadText(m_file).find("korvexctl: ") != std::string::npos; });
    }

private:
    static constexpr int kStandardError = 2;

    const std::filesystem::path m_file;
    const int m_former;
};

}  // namespace Korvex3Sync::tests
