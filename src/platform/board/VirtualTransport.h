#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "platform/board/BoardSelection.h"
#include "platform/board/ByteTransport.h"
#include "platform/board/DeviceThread.h"
#include "platform/os/Condition.h"
#include "platform/os/CriticalSection.h"

namespace Korvex3Sync::board {

/// Why a board is opened.
enum class Purpose {
    Use,            // opening and closing are separate calls to the board
    FirmwareQuery,  // a single query of the firmware version
};

/// The transport to the board of the virtual head that was requested for this process. It stops
/// working when another head is requested, or when the board has been unplugged since. `m_mutex` is
/// not held during a call to the head.
class VirtualTransport final : public ByteTransport {
public:
    /// Null if no head is requested, if the head's board is not selected or not plugged in, or if
    /// opening it fails. Waits for the head's answer up to the reply limit, then for the end of the
    /// call.
    static std::unique_ptr<ByteTransport> Open(const BoardSelection& selection, Purpose purpose);

    ~VirtualTransport() override;
    VirtualTransport(const VirtualTransport&) = delete;
    VirtualTransport& operator=(const VirtualTransport&) = delete;

    bool Send(const Report& report, Deadline deadline) override;
    std::optional<ReceivedBytes> Receive(Deadline deadline) override;
    /// Blocks for at most the reply limit. A command that hangs or is slowed continues at once.
    bool Close() override;
    bool Closed() const override;

private:
    VirtualTransport(const std::shared_ptr<virtual_head::VirtualHead>& head, Purpose purpose);

    /// Executes a report on the device thread, as the board.
    void Serve(virtual_head::VirtualHead& head, const Report& report, const std::string& call,
               Deadline sent);

    const std::weak_ptr<virtual_head::VirtualHead> m_head;
    const std::uint64_t m_plug;  // of the board that was opened
    const Purpose m_purpose;
    mutable os::Mutex m_mutex;
    os::Condition m_changed;
    struct Reply {
        Report report;
        Deadline from;  // not available earlier
    };
    std::deque<Reply> m_replies KORVEX_GUARDED_BY(m_mutex);
    bool m_closed KORVEX_GUARDED_BY(m_mutex) = false;
    DeviceThread m_device;
};

}  // namespace Korvex3Sync::board
