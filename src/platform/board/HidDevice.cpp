#include "platform/board/HidDevice.h"

#include <glog/logging.h>
#include <hidapi/hidapi.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <utility>

#include "platform/os/CriticalSection.h"

namespace Korvex3Sync::board {
namespace {

// hidapi's list of devices and its last error belong to the process and have no lock.
os::Mutex& HidLibrary() {
    // Never destroyed: other threads may still be in a call while the process ends.
    static auto* const mutex = new os::Mutex;
    return *mutex;
}

bool Started() KORVEX_REQUIRES(HidLibrary()) {
    static std::atomic_flag said;
    const bool started = hid_init() == 0;
    if (!started && !said.test_and_set()) {
        LOG(WARNING) << "hidapi does not start on this system: attached synchronization boards are "
                        "not found.";
    }
    return started;
}

// A text of hidapi; empty for null. Serials on the USB are ASCII.
std::string Narrow(const wchar_t* wide) {
    constexpr wchar_t kAsciiEnd = 0x80;
    std::string text;
    for (; wide && *wide; ++wide) {
        text.push_back(*wide < kAsciiEnd ? static_cast<char>(*wide) : '?');
    }
    return text;
}

}  // namespace

std::vector<AttachedBoard> AttachedBoards(const BoardSelection& selection) {
    os::MutexGuard lock(HidLibrary());
    std::vector<AttachedBoard> boards;
    if (!Started()) {
        return boards;
    }
    const std::unique_ptr<hid_device_info, decltype(&hid_free_enumeration)> listed(
        hid_enumerate(selection.vendor, selection.product), hid_free_enumeration);
    for (const hid_device_info* device = listed.get(); device; device = device->next) {
        // From the list, because not every system tells the serial of an open device.
        AttachedBoard board{device->path, Narrow(device->serial_number)};
        if (Selects(selection, device->vendor_id, device->product_id, board.serial)) {
            boards.push_back(std::move(board));
        }
    }
    return boards;
}

std::unique_ptr<HidDevice> HidDevice::Open(const std::string& path, std::string& reason) {
    os::MutexGuard lock(HidLibrary());
    hid_device* const device = hid_open_path(path.c_str());
    if (!device) {
        reason = Narrow(hid_error(nullptr));
        return nullptr;
    }
    return std::unique_ptr<HidDevice>(new HidDevice(device));
}

HidDevice::~HidDevice() {
    hid_close(m_device);
}

bool HidDevice::Write(const Report& report) {
    // The reports of the board have no numbers; for them hidapi wants a 0 in front.
    std::array<std::uint8_t, kReportSize + 1> numbered{};
    std::copy(report.begin(), report.end(), numbered.begin() + 1);
    return hid_write(m_device, numbered.data(), numbered.size()) >= 0;
}

std::optional<ReceivedBytes> HidDevice::Read(std::chrono::milliseconds limit) {
    ReceivedBytes received;
    errno = 0;
    const int size = hid_read_timeout(m_device, received.bytes.data(), received.bytes.size(),
                                      static_cast<int>(limit.count()));
    // A signal to this process may end the wait early.
    if (size < 0 && errno != EINTR) {
        return std::nullopt;
    }
    received.size = static_cast<std::size_t>(std::max(size, 0));
    return received;
}

}  // namespace Korvex3Sync::board
