#include "korvexctl/commands/GetCommand.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

#include "korvexctl/commands/Commands.h"
#include "korvexctl/head/ConnectedHead.h"
#include "korvexctl/settings/SettingsAccess.h"

namespace Korvex3Sync::korvexctl {

namespace {

struct GetArguments {
    HeadChoice head;
    std::vector<std::string> names;
};

Outcome RunGet(const GetArguments& asked, Output& output) {
    std::vector<const Setting*> settings;
    for (const std::string& name : asked.names) {
        settings.push_back(&RequireSetting(name));
    }
    std::vector<Camera> cameras = FindCameras(asked.head.cameraType);
    const std::size_t count = cameras.size();
    const ConnectedHead head(asked.head, std::move(cameras));
    if (settings.empty()) {
        settings = SettingsOf(count);
    }
    for (const Setting* setting : settings) {
        RequireOnHead(*setting, count);
    }

    Outcome outcome;
    ShowSettings(head.Handle(), settings, outcome, output);
    return outcome;
}

}  // namespace

void ShowSettings(void* const& handle, std::span<const Setting* const> settings, Outcome& outcome,
                  Output& output) {
    nlohmann::json& figures = outcome.figures["settings"] = nlohmann::json::object();
    for (const Setting* setting : settings) {
        const Reading reading = ReadSetting(handle, *setting);
        output.Line(setting->name + " " + reading.Text());
        nlohmann::json& figure = figures[setting->name] = DescribeSetting(*setting);
        figure["value"] = reading.ToJson();
        if (!reading.Known() && !reading.NotReadable()) {
            outcome.code = ExitCode::DeviceRefused;
            outcome.message = "get " + setting->name + ": " + StatusText(reading.status);
        }
    }
}

RunCommand AddGet(CLI::App& command) {
    const auto asked = std::make_shared<GetArguments>();
    AddHeadOptions(command, asked->head, true);
    command.add_option("name", asked->names, "The settings to show (default: all)")
        ->type_name("NAME");
    command.footer(SettingsTable());
    return [asked](Output& output) { return RunGet(*asked, output); };
}

}  // namespace Korvex3Sync::korvexctl
