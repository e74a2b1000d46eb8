#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "os/FakeUsb.h"
#include "platform/os/posix/Sysfs.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::IsEmpty;

/// A system's USB devices as files in a temporary folder.
class SysfsUsb {
public:
    void Add(const std::string& port, const std::string& vendor, const std::string& product,
             const std::string& megabits, const std::string& hidNode = "",
             const std::string& serial = "") const {
        const auto device = m_folder.Path() / "sys/bus/usb/devices" / port;
        std::filesystem::create_directories(device);
        WriteText(device / "idVendor", vendor + "\n");
        WriteText(device / "idProduct", product + "\n");
        WriteText(device / "speed", megabits + "\n");
        WriteText(device / "busnum", "2\n");
        WriteText(device / "devnum", "17\n");
        if (!serial.empty()) {
            WriteText(device / "serial", serial + "\n");
        }
        if (!hidNode.empty()) {
            std::filesystem::create_directories(device / (port + ":1.0") /
                                                "0003:3267:5752.0001/hidraw" / hidNode);
        }
    }

    std::vector<os::UsbDevice> List() const {
        return os::UsbDevicesOf(m_folder.Path() / "sys", m_folder.Path() / "dev");
    }
    const std::filesystem::path& Path() const { return m_folder.Path(); }

private:
    TemporaryFolder m_folder;
};

TEST(UsbDevices, AMachineWithoutUsbHasNone) {
    const SysfsUsb usb;
    EXPECT_THAT(usb.List(), IsEmpty());
}

TEST(UsbDevices, ABusAndWhatHasNoIdentifiersAreNone) {
    const SysfsUsb usb;
    usb.Add("usb1", "1d6b", "0003", "5000");
    usb.Add("1-1", "3267", "", "480");
    usb.Add("1-2", "12345", "5752", "480");
    usb.Add("1-3", "32 67", "x", "480");
    std::filesystem::create_directories(usb.Path() / "sys/bus/usb/devices/1-4:1.0");
    EXPECT_THAT(usb.List(), IsEmpty());
}

TEST(UsbDevices, AreListedInTheOrderOfTheirPortsWithTheirIdentifiers) {
    const SysfsUsb usb;
    usb.Add("1-2", "046d", "00c2", "1.5");
    usb.Add("1-1", "3267", "5752", "480");
    const auto devices = usb.List();
    ASSERT_EQ(devices.size(), 2U);
    EXPECT_EQ(devices[0].port, "1-1");
    EXPECT_EQ(devices[0].vendor, 0x3267);
    EXPECT_EQ(devices[0].product, 0x5752);
    EXPECT_EQ(devices[1].vendor, 0x046D);
    EXPECT_EQ(devices[1].product, 0xC2);
    EXPECT_EQ(devices[1].megabits, 1.5);
}

TEST(UsbDevices, IsFoundAtItsPortWithItsHidDevice) {
    const SysfsUsb usb;
    usb.Add("2-1.4", "3267", "5752", "5000", "hidraw3");
    const auto boards = usb.List();
    ASSERT_EQ(boards.size(), 1U);
    EXPECT_EQ(boards[0].Where(), "USB port 2-1.4, " + (usb.Path() / "dev/hidraw3").string());
    EXPECT_TRUE(boards[0].IsUsb3());
}

TEST(UsbDevices, HasItsWholeSerialOrNone) {
    const SysfsUsb usb;
    usb.Add("2-1", "3267", "5752", "5000", "hidraw3", "K3 0007");
    usb.Add("2-2", "3267", "5752", "5000", "hidraw4");
    EXPECT_THAT(usb.List(), ElementsAre(Field(&os::UsbDevice::serial, "K3 0007"),
                                        Field(&os::UsbDevice::serial, "")));
}

TEST(UsbDevices, WithoutAHidDeviceItIsTheUsbDevice) {
    const SysfsUsb usb;
    usb.Add("2-1", "3267", "5752", "480");
    const auto boards = usb.List();
    ASSERT_EQ(boards.size(), 1U);
    EXPECT_EQ(boards[0].node, usb.Path() / "dev/bus/usb/002/017");
    EXPECT_FALSE(boards[0].IsUsb3());
}

TEST(UsbDevices, AreFoundByVendorAndProductAndTriedToOpen) {
    FakeUsb usb;
    usb.AddBoard("2-1", 5000, "/dev/hidraw3");
    EXPECT_THAT(os::FindUsbDevices(usb.Machine(EACCES), 0x3267, 0x5753), IsEmpty());
    EXPECT_THAT(os::FindUsbDevices(usb.Machine(EACCES), 0x3266, 0x5752), IsEmpty());
    const auto refused = os::FindUsbDevices(usb.Machine(EACCES), 0x3267, 0x5752);
    ASSERT_EQ(refused.size(), 1U);
    EXPECT_EQ(refused[0].openError, std::errc::permission_denied);
    EXPECT_FALSE(os::FindUsbDevices(usb.Machine(), 0x3267, 0x5752).at(0).openError);
}

TEST(UsbDevices, ThisMachineOpensWhatIsThere) {
    const TemporaryFolder folder;
    const auto machine = os::UsbMachine::This();
    WriteText(folder.Path() / "node", "");
    EXPECT_FALSE(machine.tryOpen(folder.Path() / "node"));
    EXPECT_EQ(machine.tryOpen(folder.Path() / "no-node"), std::errc::no_such_file_or_directory);
    EXPECT_EQ(machine.tryOpen(folder.Path()), std::errc::is_a_directory);
}

}  // namespace

}  // namespace Korvex3Sync::tests
