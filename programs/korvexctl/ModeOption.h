#pragma once

#include <CLI/CLI.hpp>
#include <map>
#include <string>

#include "korvexctl/TriggerModes.h"

namespace Korvex3Sync::korvexctl {

/// Adds --mode, which takes the name of a trigger mode that gives image sets. The help is `help`,
/// the names, `more`. `mode`, a CAMERA_TRIGGER_MODE or an optional one, must live until the command
/// line is read.
template <typename Mode>
void AddModeOption(CLI::App& command, Mode& mode, const std::string& help,
                   const std::string& more = "") {
    std::map<std::string, CAMERA_TRIGGER_MODE> modes;
    std::string names;
    for (const TriggerMode& known : kTriggerModes) {
        modes[known.name] = known.mode;
        names += (names.empty() ? "" : ", ") + std::string(known.name);
    }
    command.add_option("--mode", mode, help + names + more)
        ->type_name("MODE")
        ->transform(CLI::CheckedTransformer(modes).description(""));
}

}  // namespace Korvex3Sync::korvexctl
