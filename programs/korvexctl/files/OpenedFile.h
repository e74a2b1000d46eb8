#pragma once

#include <string_view>

namespace Korvex3Sync::korvexctl {

/// Writes all of it to a descriptor. False, with errno, when it cannot.
bool WriteAll(int descriptor, std::string_view text) noexcept;

/// A descriptor for writing, or none; closed by the destructor.
class OpenedFile {
public:
    explicit OpenedFile(int descriptor = -1) : m_descriptor(descriptor) {}
    ~OpenedFile() { Close(); }
    OpenedFile(const OpenedFile&) = delete;
    OpenedFile& operator=(const OpenedFile&) = delete;
    OpenedFile(OpenedFile&& other) noexcept : m_descriptor(other.Release()) {}
    OpenedFile& operator=(OpenedFile&& other) noexcept;

    explicit operator bool() const { return m_descriptor >= 0; }
    int Get() const { return m_descriptor; }
    /// Leaves closing it to the caller.
    int Release() noexcept;
    /// False, with errno, when what was written did not get there.
    bool Close() noexcept;

private:
    int m_descriptor;
};

}  // namespace Korvex3Sync::korvexctl
