#include <memory>
#include <nlohmann/json.hpp>

#include "korvexctl/commands/Commands.h"
#include "korvexctl/commands/GetCommand.h"
#include "korvexctl/head/Boards.h"
#include "korvexctl/head/ConnectedHead.h"
#include "korvexctl/head/Head.h"
#include "korvexctl/settings/SettingsAccess.h"

namespace Korvex3Sync::korvexctl {

namespace {

Outcome RunInfo(const HeadChoice& choice, Output& output) {
    std::vector<Camera> cameras = FindCameras(choice.cameraType);
    const std::vector<Board> boards = FindBoards();
    const Head head = AskHead(choice.board);
    const ConnectedHead connected(choice, std::move(cameras));

    Outcome outcome;
    outcome.figures["cameras"] = ToJson(connected.cameras);
    outcome.figures["boards"] = ToJson(boards);
    AddToJson(head, *outcome.figures);
    Print(connected.cameras, output);
    Print(boards, output);
    Print(head, output);

    std::vector<const Setting*> settings = SettingsOf(connected.cameras.size());
    std::erase_if(settings, [](const Setting* setting) { return !setting->read; });
    ShowSettings(connected.Handle(), settings, outcome, output);
    return outcome;
}

}  // namespace

RunCommand AddInfo(CLI::App& command) {
    const auto head = std::make_shared<HeadChoice>();
    AddHeadOptions(command, *head, true);
    return [head](Output& output) { return RunInfo(*head, output); };
}

}  // namespace Korvex3Sync::korvexctl
