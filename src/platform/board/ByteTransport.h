#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "platform/board/protocol/Report.h"

namespace Korvex3Sync::board {

/// Received bytes. A device may send less than a report.
struct ReceivedBytes {
    std::array<std::uint8_t, kReportSize> bytes{};
    std::size_t size = 0;

    std::span<const std::uint8_t> Bytes() const { return {bytes.data(), size}; }
};

/// A connection to one open board. It transfers reports without interpreting them. Thread-safe:
/// Close may be called while other threads are in a call.
class ByteTransport {
public:
    using Deadline = std::chrono::steady_clock::time_point;

    virtual ~ByteTransport() = default;

    /// Sends a report. Blocks until the board has taken it, at most until the deadline. False if
    /// the board did not take it or the transport is closed.
    virtual bool Send(const Report& report, Deadline deadline) = 0;
    /// Receives the next report. Blocks at most until the deadline. Returns nothing if there is
    /// none or the transport is closed.
    virtual std::optional<ReceivedBytes> Receive(Deadline deadline) = 0;
    /// Ends all running calls and closes the transport for good. False if the board failed to
    /// close; the transport is closed anyway. A second call does nothing and returns true.
    virtual bool Close() = 0;
    virtual bool Closed() const = 0;
};

}  // namespace Korvex3Sync::board
