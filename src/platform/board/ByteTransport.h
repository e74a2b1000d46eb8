#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "platform/board/protocol/Report.h"

namespace Korvex3Sync::board {

/// What came in, as it came: a device may send less than a report.
struct ReceivedBytes {
    std::array<std::uint8_t, kReportSize> bytes{};
    std::size_t size = 0;

    std::span<const std::uint8_t> Bytes() const { return {bytes.data(), size}; }
};

/// A way to one open board that moves reports and knows nothing of what they mean. Thread-safe;
/// Close may come while other threads are inside.
class ByteTransport {
public:
    using Deadline = std::chrono::steady_clock::time_point;

    virtual ~ByteTransport() = default;

    /// Hands a report to the board. Blocks until the board has taken it, at most until the
    /// deadline; false when it has not, or when the transport is closed.
    virtual bool Send(const Report& report, Deadline deadline) = 0;
    /// The next report of the board. Blocks until the deadline at most; nothing when it passes or
    /// when the transport is closed.
    virtual std::optional<ReceivedBytes> Receive(Deadline deadline) = 0;
    /// Ends every call that is inside, and closes the way for good. False when the board failed to
    /// close; it is closed all the same. A second call does nothing and gives true.
    virtual bool Close() = 0;
    virtual bool Closed() const = 0;
};

}  // namespace Korvex3Sync::board
