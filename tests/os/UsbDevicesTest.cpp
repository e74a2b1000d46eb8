#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "os/FakeUsb.h"

namespace Korvex3Sync::tests {

namespace {

using ::testing::IsEmpty;

std::vector<os::UsbDevice> FindBoards(const os::UsbMachine& machine) {
    return os::FindUsbDevices(machine, 0x3267, 0x5752);
}

TEST(UsbDevices, AMachineWithoutUsbHasNone) {
    const FakeUsb usb;
    EXPECT_THAT(FindBoards(usb.Machine()), IsEmpty());
}

TEST(UsbDevices, OtherDevicesAreNone) {
    const FakeUsb usb;
    usb.Add("1-1", "3267", "0001", "5000");
    usb.Add("1-2", "046d", "5752", "5000");
    std::filesystem::create_directories(usb.Path() / "sys/bus/usb/devices/usb1");
    EXPECT_THAT(FindBoards(usb.Machine()), IsEmpty());
}

TEST(UsbDevices, IsFoundAtItsPortWithItsHidDevice) {
    const FakeUsb usb;
    usb.Add("2-1.4", "3267", "5752", "5000", "hidraw3");
    const auto boards = FindBoards(usb.Machine());
    ASSERT_EQ(boards.size(), 1U);
    EXPECT_EQ(boards[0].Where(), "USB port 2-1.4, " + (usb.Path() / "dev/hidraw3").string());
    EXPECT_TRUE(boards[0].IsUsb3());
    EXPECT_FALSE(boards[0].openError);
}

TEST(UsbDevices, HasItsWholeSerialOrNone) {
    const FakeUsb usb;
    usb.Add("2-1", "3267", "5752", "5000", "hidraw3", "K3 0007");
    usb.Add("2-2", "3267", "5752", "5000", "hidraw4");
    const auto boards = FindBoards(usb.Machine());
    ASSERT_EQ(boards.size(), 2U);
    EXPECT_EQ(boards[0].serial, "K3 0007");
    EXPECT_EQ(boards[1].serial, "");
}

TEST(UsbDevices, AnIdHasFourDigits) {
    const FakeUsb usb;
    usb.Add("1-1", "046d", "00c2", "480");
    EXPECT_EQ(os::FindUsbDevices(usb.Machine(), 0x046D, 0xC2).size(), 1U);
}

TEST(UsbDevices, WithoutAHidDeviceItIsTheUsbDevice) {
    const FakeUsb usb;
    usb.Add("2-1", "3267", "5752", "480");
    const auto boards = FindBoards(usb.Machine(EACCES));
    ASSERT_EQ(boards.size(), 1U);
    EXPECT_EQ(boards[0].node, usb.Path() / "dev/bus/usb/002/017");
    EXPECT_FALSE(boards[0].IsUsb3());
    EXPECT_EQ(boards[0].openError, std::errc::permission_denied);
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
