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

/// What a board is opened for.
enum class Purpose {
    Use,            // opening and closing are calls of their own to the board
    FirmwareQuery,  // one short look at the firmware version
};

/// The way to the board of the virtual head that was requested for this process. It ends with that
/// head: after another request nothing passes any more; nor does it when the board was gone since.
/// `m_mutex` is not held during a call to the head.
class VirtualTransport final : public ByteTransport {
public:
    /// Null when no head is requested, when the head's board is not the one that is meant or gone,
    /// or when opening it fails. Waits for the head's answer for the reply limit, and then for its
    /// end.
    static std::unique_ptr<ByteTransport> Open(const BoardSelection& selection, Purpose purpose);

    ~VirtualTransport() override;
    VirtualTransport(const VirtualTransport&) = delete;
    VirtualTransport& operator=(const VirtualTransport&) = delete;

    bool Send(const Report& report, Deadline deadline) override;
    std::optional<ReceivedBytes> Receive(Deadline deadline) override;
    /// Blocks for the reply limit at most, or as long as the running command is slowed.
    bool Close() override;
    bool Closed() const override;

private:
    VirtualTransport(const std::shared_ptr<virtual_head::VirtualHead>& head, Purpose purpose);

    /// The board's side of a report, on the device thread.
    void Serve(virtual_head::VirtualHead& head, const Report& report, const std::string& call,
               Deadline sent);

    const std::weak_ptr<virtual_head::VirtualHead> m_head;
    const std::uint64_t m_plug;  // of the board that was opened
    const Purpose m_purpose;
    mutable os::Mutex m_mutex;
    os::Condition m_changed;
    struct Reply {
        Report report;
        Deadline from;  // not given out before
    };
    std::deque<Reply> m_replies KORVEX_GUARDED_BY(m_mutex);
    bool m_closed KORVEX_GUARDED_BY(m_mutex) = false;
    DeviceThread m_device;
};

}  // namespace Korvex3Sync::board
