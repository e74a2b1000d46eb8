#include "korvexctl/Commands.h"

#include <array>

namespace Korvex3Sync::korvexctl {

namespace {

constexpr std::array kCommands{
    Command{"list", "List the attached cameras", AddList},
    Command{"info", "Connect, and show cameras, firmware and settings", AddInfo},
    Command{"scan", "Connect, set light and trigger, take image sets", AddScan},
    Command{"virtual", "Describe a virtual head of your own", AddVirtual},
};

}  // namespace

std::span<const Command> Commands() {
    return kCommands;
}

}  // namespace Korvex3Sync::korvexctl
