#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "korvexctl/FakeUsb.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::FindUsbBoards;
using ::testing::IsEmpty;

TEST(UsbBoards, AMachineWithoutUsbHasNone) {
    const FakeUsb usb;
    EXPECT_THAT(FindUsbBoards(usb.Machine()), IsEmpty());
}

TEST(UsbBoards, OtherDevicesAreNone) {
    const FakeUsb usb;
    usb.Add("1-1", "3267", "0001", "5000");
    usb.Add("1-2", "046d", "5752", "5000");
    std::filesystem::create_directories(usb.Path() / "sys/bus/usb/devices/usb1");
    EXPECT_THAT(FindUsbBoards(usb.Machine()), IsEmpty());
}

TEST(UsbBoards, ABoardIsFoundAtItsPortWithItsHidDevice) {
    const FakeUsb usb;
    usb.Add("2-1.4", "3267", "5752", "5000", "hidraw3");
    const auto boards = FindUsbBoards(usb.Machine());
    ASSERT_EQ(boards.size(), 1U);
    EXPECT_EQ(boards[0].Where(), "USB port 2-1.4, " + (usb.Path() / "dev/hidraw3").string());
    EXPECT_TRUE(boards[0].IsUsb3());
    EXPECT_FALSE(boards[0].openError);
}

TEST(UsbBoards, WithoutAHidDeviceItIsTheUsbDevice) {
    const FakeUsb usb;
    usb.Add("2-1", "3267", "5752", "480");
    const auto boards = FindUsbBoards(usb.Machine(EACCES));
    ASSERT_EQ(boards.size(), 1U);
    EXPECT_EQ(boards[0].node, usb.Path() / "dev/bus/usb/002/017");
    EXPECT_FALSE(boards[0].IsUsb3());
    EXPECT_EQ(boards[0].openError, std::errc::permission_denied);
}

TEST(UsbBoards, ThisMachineOpensWhatIsThere) {
    const TemporaryFolder folder;
    const auto machine = korvexctl::UsbMachine::This();
    WriteText(folder.Path() / "node", "");
    EXPECT_FALSE(machine.tryOpen(folder.Path() / "node"));
    EXPECT_EQ(machine.tryOpen(folder.Path() / "no-node"), std::errc::no_such_file_or_directory);
    EXPECT_EQ(machine.tryOpen(folder.Path()), std::errc::is_a_directory);
}

}  // namespace

}  // namespace Korvex3Sync::tests
