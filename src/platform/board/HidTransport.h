#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "platform/board/BoardSelection.h"
#include "platform/board/ByteTransport.h"
#include "platform/board/HidDevice.h"
#include "platform/os/Condition.h"
#include "platform/os/CriticalSection.h"
#include "platform/os/Thread.h"

namespace Korvex3Sync::board {

/// The transport to an attached board. It fails for good when the board is unplugged.
///
/// One thread of its own owns the device: it alone writes, reads and, at its end, closes. So a
/// caller leaves at its deadline although the system may hold a report for seconds, and nothing is
/// closed under a running call. It reads in short slices, and only while somebody waits for a
/// report. `m_mutex` is not held during a call to the device.
class HidTransport final : public ByteTransport {
public:
    /// Opens the first selected board that the system lets this user open. Null if there is none;
    /// a warning in the log names what is missing, or each board that is refused.
    static std::unique_ptr<ByteTransport> Open(const BoardSelection& selection);

    ~HidTransport() override;
    HidTransport(const HidTransport&) = delete;
    HidTransport& operator=(const HidTransport&) = delete;

    /// Drops what has been received and not been asked for. A report that the system still holds at
    /// the deadline may reach the board later; the next one waits for it.
    bool Send(const Report& report, Deadline deadline) override;
    std::optional<ReceivedBytes> Receive(Deadline deadline) override;
    /// Running calls end at once. Blocks until the system lets go of a report that it holds: 5 s at
    /// most on Linux, 1 s on Windows.
    bool Close() override;
    bool Closed() const override;

private:
    explicit HidTransport(std::unique_ptr<HidDevice> device);

    void Run(std::unique_ptr<HidDevice> device);
    void WriteOne(HidDevice& device) KORVEX_REQUIRES(m_mutex);
    void ReadSlice(HidDevice& device) KORVEX_REQUIRES(m_mutex);
    bool Usable() const KORVEX_REQUIRES(m_mutex) { return !m_closed && !m_gone; }

    enum class Write { None, Wanted, Running };

    std::unique_ptr<HidDevice> m_device;  // until the thread has it
    mutable os::Mutex m_mutex;
    os::Condition m_changed;
    Write m_write KORVEX_GUARDED_BY(m_mutex) = Write::None;
    Report m_report KORVEX_GUARDED_BY(m_mutex){};          // the one to write
    std::uint64_t m_given KORVEX_GUARDED_BY(m_mutex) = 0;  // the number of that report
    std::uint64_t m_taken KORVEX_GUARDED_BY(m_mutex) = 0;  // the number of the last one taken
    int m_receivers KORVEX_GUARDED_BY(m_mutex) = 0;
    std::optional<ReceivedBytes> m_received KORVEX_GUARDED_BY(m_mutex);
    bool m_gone KORVEX_GUARDED_BY(m_mutex) = false;
    bool m_closed KORVEX_GUARDED_BY(m_mutex) = false;
    os::Thread m_thread;
};

}  // namespace Korvex3Sync::board
