#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "korvexctl/head/TriggerModes.h"
#include "platform/text/NearNames.h"

namespace Korvex3Sync::korvexctl {

/// Adds --mode, which takes the name of a trigger mode that gives image sets. The help is `help`,
/// the names, `more`. `mode`, a CAMERA_TRIGGER_MODE or an optional one, must live until the command
/// line is read.
template <typename Mode>
void AddModeOption(CLI::App& command, Mode& mode, const std::string& help,
                   const std::string& more = "") {
    std::vector<std::string> names;
    names.reserve(std::size(kTriggerModes));
    for (const TriggerMode& known : kTriggerModes) {
        names.emplace_back(known.name);
    }
    const std::string list = CLI::detail::join(names, ", ");
    const auto read = [names, list](std::string& text) {
        for (const TriggerMode& known : kTriggerModes) {
            if (text == known.name) {
                text = std::to_string(known.mode);
                return std::string();
            }
        }
        return "\"" + text + "\" is not one of " + list + text::DidYouMean(text, names);
    };
    command.add_option("--mode", mode, help + list + more)
        ->type_name("MODE")
        ->transform(CLI::Validator(read, ""));
}

}  // namespace Korvex3Sync::korvexctl
