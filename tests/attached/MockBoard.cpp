#include "attached/MockBoard.h"

#include <gtest/gtest.h>
#include <linux/hidraw.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <mutex>

#include "virtual_head/VirtualHead.h"
#include "virtual_head/images/ImageSource.h"

namespace Korvex3Sync::tests {
namespace {

// One report of 64 bytes each way, without numbers.
constexpr std::array<std::uint8_t, 28> kDescriptor{
    0x06, 0x00, 0xFF, 0x09, 0x01, 0xA1, 0x01, 0x15, 0x00, 0x26, 0xFF, 0x00, 0x75, 0x08,
    0x95, 0x40, 0x09, 0x02, 0x81, 0x02, 0x09, 0x03, 0x95, 0x40, 0x91, 0x02, 0xC0, 0x00};
constexpr int kDescriptorSize = 27;

std::string Hex(const std::uint8_t* bytes, int count) {
    constexpr const char* kDigits = "0123456789ABCDEF";
    constexpr int kHalf = 4;
    std::string text;
    for (int number = 0; number < count; ++number) {
        text.push_back(kDigits[bytes[number] >> kHalf]);
        text.push_back(kDigits[bytes[number] & 0xF]);
    }
    return text;
}

/// Between the test and the thread of the test bed, whose own locks the thread sanitizer does not
/// see.
void HandOver() {
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
}

/// What umockdev reads of each part, which is below the one before.
std::vector<std::string> Parts(const MockBoard::Place& place, const std::string& node) {
    std::vector<std::string> parts{
        "E: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\nA: idVendor=3267\\n\nA: idProduct=5752\\n\n"
        "A: busnum=2\\n\nA: devnum=17\\n\nA: speed=" +
        place.speed + "\\n\nA: bcdDevice=0100\\n\n" +
        (place.serial.empty() ? "" : "A: serial=" + place.serial + "\\n\n")};
    if (place.hid) {
        parts.push_back("E: SUBSYSTEM=usb\nE: DEVTYPE=usb_interface\nA: bInterfaceNumber=00\\n\n");
        parts.push_back(
            "E: SUBSYSTEM=hid\nE: HID_ID=0003:00003267:00005752\n"
            "E: HID_NAME=Synchronization board\nE: HID_UNIQ=" +
            place.serial + "\nH: report_descriptor=" + Hex(kDescriptor.data(), kDescriptorSize) +
            "\n");
        parts.push_back("N: " + node + "\nE: SUBSYSTEM=hidraw\nE: DEVNAME=/dev/" + node +
                        "\nA: dev=240:" + node.substr(node.find_last_not_of("0123456789") + 1) +
                        "\\n\nL: device=../..\n");
    }
    return parts;
}

/// Their folders, each below the one before.
std::vector<std::string> Folders(const MockBoard::Place& place, const std::string& node) {
    std::vector<std::string> folders{"/devices/usb2/" + place.port};
    if (place.hid) {
        for (const std::string& part :
             {place.port + ":1.0", "0003:3267:5752." + node, "hidraw/" + node}) {
            folders.push_back(folders.back() + "/" + part);
        }
    }
    return folders;
}

/// Bytes as they are, and a report of 64 bytes whole or not at all.
void MakeRaw(int terminal) {
    termios state{};
    EXPECT_EQ(::tcgetattr(terminal, &state), 0);
    ::cfmakeraw(&state);
    state.c_cc[VMIN] = board::kReportSize;
    state.c_cc[VTIME] = 0;
    EXPECT_EQ(::tcsetattr(terminal, TCSANOW, &state), 0);
}

}  // namespace

MockMachine::MockMachine() : m_testbed(umockdev_testbed_new()) {}

MockMachine::~MockMachine() {
    g_object_unref(m_testbed);
}

std::string MockMachine::Root() const {
    gchar* const root = umockdev_testbed_get_root_dir(m_testbed);
    std::string text = root;
    g_free(root);
    return text;
}

void MockMachine::OpenToAll() const {
    for (const auto& each : std::filesystem::recursive_directory_iterator(Root())) {
        // Some of the links are notes that lead nowhere.
        std::error_code nowhere;
        std::filesystem::permissions(each, std::filesystem::perms(0777), nowhere);
    }
    std::filesystem::permissions(Root(), std::filesystem::perms(0777));
}

Firmware VirtualFirmware() {
    virtual_head::HeadDescription description;
    const auto head = std::make_shared<virtual_head::VirtualHead>(
        description, virtual_head::MakeScene(description));
    return [head](const board::Report& report) {
        const auto reply = head->Board().Execute(report);
        return reply ? std::vector<board::Report>{*reply} : std::vector<board::Report>{};
    };
}

MockBoard::MockBoard(MockMachine& machine, const Place& place, Firmware firmware)
    : m_machine(machine),
      m_firmware(std::move(firmware)),
      m_node("/dev/hidraw" + std::to_string(machine.NextNumber())) {
    GError* error = nullptr;
    const std::string node = std::filesystem::path(m_node).filename();
    m_folders = Folders(place, node);
    const std::vector<std::string> parts = Parts(place, node);
    for (std::size_t part = 0; part < parts.size(); ++part) {
        const std::string text = "P: " + m_folders[part] + "\n" + parts[part] + "\n";
        EXPECT_TRUE(umockdev_testbed_add_from_string(machine.Testbed(), text.c_str(), &error))
            << error->message;
    }
    if (!place.hid) {
        return;
    }
    m_terminal = umockdev_testbed_get_dev_fd(machine.Testbed(), m_node.c_str());
    MakeRaw(m_terminal);
    m_handler = umockdev_ioctl_base_new();
    g_signal_connect(m_handler, "handle-ioctl", G_CALLBACK(OnIoctl), this);
    g_signal_connect(m_handler, "handle-write", G_CALLBACK(OnWrite), this);
    HandOver();
    EXPECT_TRUE(umockdev_testbed_attach_ioctl(machine.Testbed(), m_node.c_str(), m_handler, &error))
        << error->message;
}

MockBoard::~MockBoard() {
    Unplug();
}

void MockBoard::Unplug() {
    if (!m_plugged) {
        return;
    }
    m_plugged = false;
    if (m_handler) {
        umockdev_testbed_detach_ioctl(m_machine.Testbed(), m_node.c_str(), nullptr);
        g_object_unref(m_handler);
        HandOver();
        // umockdev keeps this note, although the next board can get the same terminal.
        std::string terminal = ::ptsname(m_terminal);
        std::replace(terminal.begin(), terminal.end(), '/', '_');
        EXPECT_TRUE(std::filesystem::remove(m_machine.Root() + "/dev/.ptymap/" + terminal));
        ::close(m_terminal);
    }
    for (; !m_folders.empty(); m_folders.pop_back()) {
        umockdev_testbed_remove_device(m_machine.Testbed(), ("/sys" + m_folders.back()).c_str());
    }
    std::filesystem::remove(m_machine.Root() + m_node);
}

void MockBoard::Give(const board::Report& report) const {
    EXPECT_EQ(::write(m_terminal, report.data(), report.size()),
              static_cast<ssize_t>(report.size()));
}

gboolean MockBoard::OnIoctl(UMockdevIoctlBase*, UMockdevIoctlClient* client, void*) {
    UMockdevIoctlData* const argument = umockdev_ioctl_client_get_arg(client);
    const auto answer = [&](std::size_t size, std::size_t at, auto* bytes, int count) {
        UMockdevIoctlData* const data = umockdev_ioctl_data_resolve(argument, 0, size, nullptr);
        umockdev_ioctl_data_update(data, at, bytes, count);
        umockdev_ioctl_client_complete(client, 0, 0);
        g_object_unref(data);
    };
    switch (umockdev_ioctl_client_get_request(client)) {
        case HIDIOCGRDESCSIZE: {
            int size = kDescriptorSize;
            answer(sizeof(size), 0, reinterpret_cast<guint8*>(&size), sizeof(size));
            return TRUE;
        }
        case HIDIOCGRDESC: {
            auto bytes = kDescriptor;
            answer(sizeof(hidraw_report_descriptor), sizeof(__u32), bytes.data(), kDescriptorSize);
            return TRUE;
        }
        default:
            return FALSE;
    }
}

bool MockBoard::Take(const guint8* bytes, int count) const {
    board::Report report{};
    // The number of the report, which is 0, is not for the board.
    if (count != static_cast<int>(report.size()) + 1 || bytes[0] != 0 || !m_firmware) {
        return false;
    }
    std::copy_n(bytes + 1, report.size(), report.begin());
    for (const board::Report& reply : m_firmware(report)) {
        Give(reply);
    }
    return true;
}

gboolean MockBoard::OnWrite(UMockdevIoctlBase*, UMockdevIoctlClient* client, void* self) {
    const UMockdevIoctlData* const sent = umockdev_ioctl_client_get_arg(client);
    HandOver();
    const bool taken = static_cast<MockBoard*>(self)->Take(sent->data, sent->data_len);
    HandOver();
    umockdev_ioctl_client_complete(client, taken ? sent->data_len : -1, taken ? 0 : EPIPE);
    return TRUE;
}

}  // namespace Korvex3Sync::tests
