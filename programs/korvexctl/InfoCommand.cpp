#include <memory>
#include <nlohmann/json.hpp>

#include "korvexctl/Commands.h"
#include "korvexctl/ConnectedHead.h"
#include "korvexctl/GetCommand.h"
#include "korvexctl/Head.h"
#include "korvexctl/SettingsAccess.h"

namespace Korvex3Sync::korvexctl {

namespace {

Outcome RunInfo(const HeadChoice& choice, Output& output) {
    std::vector<Camera> cameras = FindCameras(choice.cameraType);
    const Head head = AskHead(choice.board);
    const ConnectedHead connected(choice, std::move(cameras));

    Outcome outcome;
    outcome.figures["cameras"] = ToJson(connected.cameras);
    AddToJson(head, outcome.figures);
    Print(connected.cameras, output);
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
