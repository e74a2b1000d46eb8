#include "korvexctl/commands/Commands.h"

#include <array>

namespace Korvex3Sync::korvexctl {

namespace {

constexpr std::array kCommands{
    Command{"list", "List the attached cameras and boards", AddList},
    Command{"info", "Connect, and show cameras, boards, firmware and settings", AddInfo},
    Command{"scan", "Connect, set light and trigger, take image sets", AddScan},
    Command{"status", "Watch the board's status and the losses, a line for each change", AddStatus},
    Command{"get", "Show settings of the head by name", AddGet},
    Command{"set", "Change settings of the head by name", AddSet},
    Command{"profile", "Save, load or compare all settings as a text file", AddProfile},
    Command{"snap", "Take two colour images", AddSnap},
    Command{"snap-ir", "Take three colour images, with two exposures", AddSnapIr, Uses::Head,
            "infrared snapshots run in direct mode only"},
    Command{"firmware", "Show the firmware version of the board", AddFirmware, Uses::HeadDirectly},
    Command{"reset", "Reset the board or its FPGA", AddReset, Uses::Head,
            "resets run in direct mode only"},
    Command{"reconnect", "Connect, reopen the devices, and wait for the board", AddReconnect},
    Command{"user-info", "Read or write the board's user memory", AddUserInfo},
    Command{"distance", "Set the distance lights", AddDistance},
    Command{"usb", "Show whether the head has a USB 3 connection", AddUsb, Uses::HeadDirectly},
    Command{"doctor", "Check whether this machine and this head can scan, and what to do if not",
            AddDoctor},
    Command{"selftest", "Test everything that a head can do, step by step", AddSelftest},
    Command{"service", "Start, show or stop the device service", AddService, Uses::Nothing},
    Command{"virtual", "Write a description of a virtual head", AddVirtual, Uses::Nothing},
    Command{"help", "Show the help of a command", AddHelp, Uses::Nothing},
};

}  // namespace

std::span<const Command> Commands() {
    return kCommands;
}

}  // namespace Korvex3Sync::korvexctl
