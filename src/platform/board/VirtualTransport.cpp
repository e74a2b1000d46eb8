#include "platform/board/VirtualTransport.h"

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <variant>

#include "platform/board/BoardLink.h"
#include "platform/board/protocol/Codec.h"
#include "platform/include/BoardFacts.h"
#include "platform/os/Clock.h"
#include "virtual_head/Request.h"
#include "virtual_head/VirtualHead.h"

namespace Korvex3Sync::board {
namespace {

using virtual_head::VirtualHead;

std::chrono::steady_clock::time_point ReplyDeadline() {
    return std::chrono::steady_clock::now() + os::Scaled(kReplyLimit);
}

// Passes a call to the head that is not a report: applies the faults that are ordered for it and
// enters it in the journal. False if it fails or takes longer than the reply limit.
bool Announce(const std::shared_ptr<VirtualHead>& head, const std::string& call,
              const std::string& arguments, const std::function<bool(VirtualHead&)>& possible) {
    bool done = false;
    DeviceThread device(head);
    const bool given =
        device.Start() && device.Give(
                              call,
                              [&](VirtualHead& met) {
                                  done = !met.GetFaults().Meet(call) && possible(met);
                                  met.GetJournal().Add(call, arguments, done ? "true" : "false");
                              },
                              ReplyDeadline());
    const bool inTime = given && device.WaitIdle(ReplyDeadline());
    device.End();
    return inTime && done;
}

std::string FunctionOf(const Report& report) {
    const auto decoded = DecodeCommand(report);
    const auto* const message = std::get_if<CommandMessage>(&decoded);
    const CommandInfo* const info = message ? FindCommand(message->command) : nullptr;
    return info ? info->function : "";
}

}  // namespace

std::unique_ptr<ByteTransport> VirtualTransport::Open(const BoardSelection& selection,
                                                      Purpose purpose) {
    const auto head = virtual_head::RequestedVirtualHead();
    if (!head) {
        return nullptr;
    }
    const bool meant = Selects(selection, hardware::kBoardVendor, hardware::kBoardProduct,
                               head->Description().boardSerial);
    const bool use = purpose == Purpose::Use;
    const std::string call =
        use ? "zr3DInitHidDev" : FindCommand(Command::QueryFirmwareVersionFast)->function;
    const auto found = [&](VirtualHead& met) {
        return meant &&
               (use ? met.GetFaults().Board().Open(call) : met.GetFaults().Board().Reach(call));
    };
    // If a firmware query finds the board, the board itself applies the faults of the call.
    if (use || !meant || !head->GetFaults().Board().Plugged().Here()) {
        if (!Announce(head, call, use ? SelectionText(selection) : selection.serial, found) ||
            !use) {
            return nullptr;
        }
    }
    std::unique_ptr<VirtualTransport> transport(new VirtualTransport(head, purpose));
    return transport->m_device.Start() ? std::move(transport) : nullptr;
}

VirtualTransport::VirtualTransport(const std::shared_ptr<VirtualHead>& head, Purpose purpose)
    : m_head(head),
      m_plug(head->GetFaults().Board().Plugged().Plug()),
      m_purpose(purpose),
      m_device(head) {}

VirtualTransport::~VirtualTransport() {
    VirtualTransport::Close();
}

bool VirtualTransport::Send(const Report& report, Deadline deadline) {
    const auto head = m_head.lock();
    if (Closed() || !head || virtual_head::RequestedVirtualHead() != head) {
        return false;
    }
    const std::string call = FunctionOf(report);
    if (!head->GetFaults().Board().Reach(m_plug, call)) {
        return false;
    }
    return m_device.Give(
        call,
        [this, report, call, sent = std::chrono::steady_clock::now()](VirtualHead& met) {
            Serve(met, report, call, sent);
        },
        deadline);
}

void VirtualTransport::Serve(VirtualHead& head, const Report& report, const std::string& call,
                             Deadline sent) {
    virtual_head::BoardFaults& faults = head.GetFaults().Board();
    if (!faults.Reach(m_plug, call)) {
        return;
    }
    const auto reply = head.Board().Execute(report);
    if (!reply || !faults.Reach(m_plug, call)) {
        return;
    }
    // Counted from sending: the time that this thread waited for a processor is not the board's
    // delay.
    const auto from = sent + os::Scaled(faults.Lateness(call));
    os::MutexGuard lock(m_mutex);
    m_replies.push_back({*reply, from});
    m_changed.NotifyAll();
}

std::optional<ReceivedBytes> VirtualTransport::Receive(Deadline deadline) {
    os::MutexGuard lock(m_mutex);
    while (m_replies.empty() && !m_closed) {
        if (!m_changed.WaitUntil(m_mutex, deadline)) {
            os::MutexRelease unlocked(m_mutex);
            m_device.WaitIdle(deadline);
            break;
        }
    }
    if (!m_replies.empty()) {
        const Deadline from = m_replies.front().from;
        while (!m_closed && m_changed.WaitUntil(m_mutex, std::min(from, deadline))) {
        }
        if (from > deadline) {
            return std::nullopt;
        }
    }
    if (m_replies.empty() || m_closed) {
        return std::nullopt;
    }
    const ReceivedBytes received{m_replies.front().report, kReportSize};
    m_replies.pop_front();
    return received;
}

bool VirtualTransport::Close() {
    {
        os::MutexGuard lock(m_mutex);
        if (std::exchange(m_closed, true)) {
            return true;
        }
        m_changed.NotifyAll();
    }
    m_device.End();
    const auto head = m_head.lock();
    return !head || m_purpose != Purpose::Use ||
           Announce(head, "zr3DExitHidDev", "", [](VirtualHead&) { return true; });
}

bool VirtualTransport::Closed() const {
    os::MutexGuard lock(m_mutex);
    return m_closed;
}

}  // namespace Korvex3Sync::board
