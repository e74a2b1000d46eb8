#include <memory>
#include <nlohmann/json.hpp>

#include "korvexctl/commands/Commands.h"
#include "korvexctl/head/Boards.h"
#include "korvexctl/head/Cameras.h"
#include "korvexctl/head/HeadChoice.h"

namespace Korvex3Sync::korvexctl {

namespace {

Outcome RunList(const HeadChoice& choice, Output& output) {
    const std::vector<Camera> cameras = FindCameras(choice.cameraType);
    const std::vector<Board> boards = FindBoards();
    Outcome outcome;
    outcome.figures["cameras"] = ToJson(cameras);
    outcome.figures["boards"] = ToJson(boards);
    if (cameras.empty()) {
        outcome.code = ExitCode::NoCamera;
        outcome.message = NoCameraMessage(choice.cameraType);
    }
    Print(cameras, output);
    Print(boards, output);
    return outcome;
}

}  // namespace

RunCommand AddList(CLI::App& command) {
    const auto head = std::make_shared<HeadChoice>();
    AddHeadOptions(command, *head, false);
    return [head](Output& output) { return RunList(*head, output); };
}

}  // namespace Korvex3Sync::korvexctl
