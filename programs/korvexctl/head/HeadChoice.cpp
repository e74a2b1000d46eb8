#include "korvexctl/head/HeadChoice.h"

#include <CLI/CLI.hpp>

namespace Korvex3Sync::korvexctl {

void AddBoardOption(CLI::App& command, std::string& board) {
    command
        .add_option("--board", board,
                    "Serial of the board, as korvexctl list shows it (default: any board)")
        ->type_name("SERIAL");
}

void AddHeadOptions(CLI::App& command, HeadChoice& head, bool withBoard) {
    command
        .add_option("--type", head.cameraType,
                    "Camera type; its first two characters name the maker")
        ->type_name("TYPE")
        ->capture_default_str();
    if (withBoard) {
        AddBoardOption(command, head.board);
    }
}

}  // namespace Korvex3Sync::korvexctl
