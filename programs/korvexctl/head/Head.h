#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

namespace Korvex3Sync::korvexctl {

class Output;

/// What can be read from a head without a connection; empty where it fails.
struct Head {
    std::optional<std::string> firmware;
    std::optional<bool> usb3;
};

/// Queries the board with the serial `board`, "" for any. Call it before a session exists.
Head AskHead(const std::string& board);

/// Adds "firmware" and "usb3", null where unknown.
void AddToJson(const Head& head, nlohmann::json& figures);
void Print(const Head& head, Output& output);

}  // namespace Korvex3Sync::korvexctl
