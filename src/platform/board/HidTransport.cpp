#include "platform/board/HidTransport.h"

#include <glog/logging.h>

#include <atomic>
#include <string>
#include <utility>
#include <vector>

#include "platform/os/Device.h"

namespace Korvex3Sync::board {
namespace {

// A report that is sent while somebody waits for one, and closing, wait for the end of a slice.
constexpr std::chrono::milliseconds kReadSlice{10};
// More than any system keeps for a device.
constexpr int kMostKept = 1024;

void SayNoneOnce() {
    static std::atomic_flag said;
    if (!said.test_and_set()) {
        LOG(WARNING)
            << "No synchronization board: no matching one is attached and no virtual head "
               "was requested. Set KORVEX_VIRTUAL_HEAD to \"default\" or to a head file to "
               "work with a simulated one.";
    }
}

void SayRefused(const AttachedBoard& board, const std::string& reason) {
    const std::error_code access = os::CheckDeviceAccess(board.path);
    LOG(WARNING) << "Synchronization board "
                 << (board.serial.empty() ? "without a serial" : board.serial) << " at "
                 << board.path << " cannot be opened: " << (access ? access.message() : reason)
                 << (access == std::errc::permission_denied
                         ? ". On Linux the udev rule 70-korvex3sync.rules gives access; korvexctl "
                           "doctor prints it."
                         : "");
}

// Takes out what the system has kept. What came before a command is no answer to it, and a full
// queue, which the replies to another process can fill, would lose the answer. False if the device
// is gone.
bool Discard(HidDevice& device) {
    for (int number = 0; number < kMostKept; ++number) {
        const auto kept = device.Read(std::chrono::milliseconds(0));
        if (!kept || kept->size == 0) {
            return kept.has_value();
        }
    }
    return true;
}

}  // namespace

std::unique_ptr<ByteTransport> HidTransport::Open(const BoardSelection& selection) {
    const std::vector<AttachedBoard> boards = AttachedBoards(selection);
    if (boards.empty()) {
        SayNoneOnce();
    }
    for (const AttachedBoard& board : boards) {
        std::string reason;
        auto device = HidDevice::Open(board.path, reason);
        if (!device) {
            SayRefused(board, reason);
            continue;
        }
        std::unique_ptr<HidTransport> transport(new HidTransport(std::move(device)));
        return transport->m_thread.Started() ? std::move(transport) : nullptr;
    }
    return nullptr;
}

HidTransport::HidTransport(std::unique_ptr<HidDevice> device) : m_device(std::move(device)) {
    m_thread.Start([this] { Run(std::move(m_device)); });
}

HidTransport::~HidTransport() {
    HidTransport::Close();
}

bool HidTransport::Send(const Report& report, Deadline deadline) {
    os::MutexGuard lock(m_mutex);
    while (Usable() && m_write != Write::None) {
        if (!m_changed.WaitUntil(m_mutex, deadline)) {
            return false;
        }
    }
    if (!Usable()) {
        return false;
    }
    const std::uint64_t number = ++m_given;
    m_report = report;
    m_write = Write::Wanted;
    m_changed.NotifyAll();
    while (Usable() && m_taken < number && m_changed.WaitUntil(m_mutex, deadline)) {
    }
    if (m_write == Write::Wanted && m_given == number) {
        m_write = Write::None;
        m_changed.NotifyAll();
    }
    return Usable() && m_taken >= number;
}

std::optional<ReceivedBytes> HidTransport::Receive(Deadline deadline) {
    os::MutexGuard lock(m_mutex);
    ++m_receivers;
    m_changed.NotifyAll();
    while (Usable() && !m_received && m_changed.WaitUntil(m_mutex, deadline)) {
    }
    --m_receivers;
    return m_closed ? std::nullopt : std::exchange(m_received, std::nullopt);
}

bool HidTransport::Close() {
    {
        os::MutexGuard lock(m_mutex);
        if (std::exchange(m_closed, true)) {
            return true;
        }
        m_changed.NotifyAll();
    }
    m_thread.Join();
    return true;
}

bool HidTransport::Closed() const {
    os::MutexGuard lock(m_mutex);
    return m_closed;
}

void HidTransport::Run(std::unique_ptr<HidDevice> device) {
    os::MutexGuard lock(m_mutex);
    while (Usable()) {
        if (m_write == Write::Wanted) {
            WriteOne(*device);
        } else if (m_receivers > 0 && !m_received) {
            ReadSlice(*device);
        } else {
            m_changed.Wait(m_mutex);
        }
    }
    os::MutexRelease unlocked(m_mutex);
    device.reset();
}

void HidTransport::WriteOne(HidDevice& device) {
    m_write = Write::Running;
    m_received.reset();
    const Report report = m_report;
    bool taken = false;
    {
        os::MutexRelease unlocked(m_mutex);
        taken = Discard(device) && device.Write(report);
    }
    m_write = Write::None;
    if (taken) {
        m_taken = m_given;
    } else {
        m_gone = true;
    }
    m_changed.NotifyAll();
}

void HidTransport::ReadSlice(HidDevice& device) {
    std::optional<ReceivedBytes> received;
    {
        os::MutexRelease unlocked(m_mutex);
        received = device.Read(kReadSlice);
    }
    if (!received) {
        m_gone = true;
    } else if (received->size > 0) {
        m_received = received;
    }
    m_changed.NotifyAll();
}

}  // namespace Korvex3Sync::board
