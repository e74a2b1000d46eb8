#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "korvexctl/settings/SettingsAccess.h"

namespace Korvex3Sync::korvexctl {

/// The settings that a profile gives, in the order of AllSettings, each at most once.
struct Profile {
    std::vector<Assignment> settings;
};

/// The first error in the text.
struct ProfileError {
    int line = 0;         // from 1
    std::string message;  // one line
};

/// Reads a profile: TOML, one key for each setting. Unknown keys, wrong types, values out of range
/// and settings given twice are errors, so that nothing misspelt is ignored. Throws only
/// std::bad_alloc.
std::variant<Profile, ProfileError> ParseProfile(std::string_view text);

/// The profile as text, each setting with a comment; an unknown value becomes a comment only.
std::string WriteProfile(std::span<const Reading> readings);

/// Reads a profile file of at most 1 MiB. Throws CommandError(ProfileRefused): "FILE:LINE: what is
/// wrong", or without a line when the file cannot be read.
Profile ReadProfileFile(const std::filesystem::path& file);

}  // namespace Korvex3Sync::korvexctl
