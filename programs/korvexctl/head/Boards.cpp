#include "korvexctl/head/Boards.h"

#include <nlohmann/json.hpp>

#include "korvexctl/files/Output.h"
#include "platform/include/BoardFacts.h"
#include "virtual_head/Request.h"

namespace Korvex3Sync::korvexctl {

namespace {

/// The text; null for an empty one.
nlohmann::json OrNull(const std::string& text) {
    return text.empty() ? nlohmann::json() : nlohmann::json(text);
}

}  // namespace

std::vector<Board> FindBoards(const os::UsbMachine& machine) {
    std::vector<Board> boards;
    if (const auto simulated = virtual_head::SimulatedBoards()) {
        for (const std::string& serial : *simulated) {
            boards.push_back({serial, ""});
        }
        return boards;
    }
    for (const os::UsbDevice& device :
         os::FindUsbDevices(machine, hardware::kBoardVendor, hardware::kBoardProduct)) {
        boards.push_back({device.serial, device.Where()});
    }
    return boards;
}

nlohmann::json ToJson(const std::vector<Board>& boards) {
    nlohmann::json list = nlohmann::json::array();
    for (const Board& board : boards) {
        list.push_back({{"serial", OrNull(board.serial)}, {"where", OrNull(board.where)}});
    }
    return list;
}

void Print(const std::vector<Board>& boards, Output& output) {
    for (const Board& board : boards) {
        output.Line("board " + (board.serial.empty() ? "without a serial" : board.serial) +
                    (board.where.empty() ? "" : "  " + board.where));
    }
}

std::string SerialsText(const std::vector<Board>& boards) {
    std::string text;
    for (const Board& board : boards) {
        if (!board.serial.empty()) {
            text += (text.empty() ? "" : ", ") + board.serial;
        }
    }
    return text;
}

}  // namespace Korvex3Sync::korvexctl
