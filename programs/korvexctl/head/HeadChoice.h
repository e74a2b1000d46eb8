#pragma once

#include <string>

namespace CLI {
class App;
}

namespace Korvex3Sync::korvexctl {

/// The head that a command uses.
struct HeadChoice {
    std::string cameraType = "KV00";
    std::string board;  // serial; empty: any
};

/// Adds --board to a command. `board` must live until the command line is read.
void AddBoardOption(CLI::App& command, std::string& board);

/// Adds --type and, `withBoard`, --board to a command. `head` must live until the command line is
/// read.
void AddHeadOptions(CLI::App& command, HeadChoice& head, bool withBoard);

}  // namespace Korvex3Sync::korvexctl
