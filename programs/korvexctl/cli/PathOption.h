#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <string>

#include "platform/os/FileName.h"

namespace Korvex3Sync::korvexctl {

/// Adds an option for a file or folder. Its name must not be empty, as it is for example from an
/// unset script variable.
inline CLI::Option& AddPathOption(CLI::App& command, const char* option,
                                  std::filesystem::path& path, const char* type,
                                  const std::string& help) {
    return *command
                .add_option_function<std::string>(
                    option, [&path](const std::string& text) { path = os::PathOf(text); }, help)
                ->type_name(type)
                ->check([](const std::string& text) {
                    return text.empty() ? std::string("the name is empty") : std::string();
                });
}

}  // namespace Korvex3Sync::korvexctl
