#pragma once

#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/ChildProcess.h"

namespace Korvex3Sync::tests {

/// The command that runs the built korvexctl with these arguments.
std::vector<std::string> KorvexctlCommand(const std::vector<std::string>& arguments);

/// `options` without a virtual head asked for by the environment.
ChildOptions WithoutHead(ChildOptions options = {});

/// Runs korvexctl to its end, in an environment that asks for no virtual head.
ChildResult RunKorvexctl(const std::vector<std::string>& arguments, ChildOptions options = {});

/// Parses the whole text as one JSON document; fails the test when it is none.
nlohmann::json ParseJson(const std::string& text);

std::string ReadText(const std::filesystem::path& file);

/// The names of the files in a folder, sorted.
std::vector<std::string> FileNames(const std::filesystem::path& folder);

struct DecodedPng {
    int width = 0;
    int height = 0;
    int channels = 0;
    std::vector<std::uint8_t> bytes;
};
/// Fails the test, and gives an empty picture, for anything but an 8-bit grey or RGB PNG.
DecodedPng DecodePng(const std::string& png);

/// Writes a head file with small images, so that a test costs little.
std::filesystem::path WriteSmallHead(const std::filesystem::path& folder,
                                     const std::string& more = "");
inline constexpr int kSmallWidth = 64;
inline constexpr int kSmallHeight = 48;

}  // namespace Korvex3Sync::tests
