#pragma once

#include <umockdev.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/board/protocol/Report.h"

namespace Korvex3Sync::tests {

/// The devices of a machine that has none of its own. One at a time; the process runs with
/// umockdev's preloaded library.
class MockMachine {
public:
    MockMachine();
    ~MockMachine();
    MockMachine(const MockMachine&) = delete;
    MockMachine& operator=(const MockMachine&) = delete;

    UMockdevTestbed* Testbed() const { return m_testbed; }
    /// The folder that stands for the root of the file system.
    std::string Root() const;
    /// Lets every user use what is attached so far.
    void OpenToAll() const;
    /// A number that no HID device has had.
    int NextNumber() { return m_next++; }

private:
    UMockdevTestbed* const m_testbed;
    int m_next = 0;
};

/// What a mock board does with a report that was sent to it: the reports that come back. It runs on
/// a thread of the test bed, which is the board's processor. A board without one refuses reports.
using Firmware = std::function<std::vector<board::Report>(const board::Report&)>;

/// The firmware of the virtual head's board, of a head that nobody requested.
Firmware VirtualFirmware();

/// A synchronization board at a USB port of the machine, as Linux shows it. The destructor unplugs
/// it.
class MockBoard {
public:
    struct Place {
        std::string port = "2-1.4";
        std::string speed = "5000";
        std::string serial = "K3-0007";
        bool hid = true;
    };

    MockBoard(MockMachine& machine, const Place& place, Firmware firmware = VirtualFirmware());
    ~MockBoard();
    MockBoard(const MockBoard&) = delete;
    MockBoard& operator=(const MockBoard&) = delete;

    /// "/dev/hidraw0"
    const std::string& Node() const { return m_node; }
    /// Sends a report that nobody asked for.
    void Give(const board::Report& report) const;
    void Unplug();

private:
    static gboolean OnIoctl(UMockdevIoctlBase* base, UMockdevIoctlClient* client, void* self);
    static gboolean OnWrite(UMockdevIoctlBase* base, UMockdevIoctlClient* client, void* self);

    /// A report that was sent. False if the board refuses it.
    bool Take(const guint8* bytes, int count) const;

    MockMachine& m_machine;
    const Firmware m_firmware;
    const std::string m_node;
    std::vector<std::string> m_folders;  // in /sys, each below the one before
    UMockdevIoctlBase* m_handler = nullptr;
    int m_terminal = -1;  // the board's end of the line
    bool m_plugged = true;
};

}  // namespace Korvex3Sync::tests
