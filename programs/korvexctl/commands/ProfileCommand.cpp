#include <CLI/CLI.hpp>
#include <array>
#include <memory>
#include <nlohmann/json.hpp>

#include "korvexctl/cli/PathOption.h"
#include "korvexctl/commands/Commands.h"
#include "korvexctl/commands/SetCommand.h"
#include "korvexctl/files/WriteFile.h"
#include "korvexctl/head/ConnectedHead.h"
#include "korvexctl/settings/ProfileFile.h"
#include "platform/os/FileName.h"

namespace Korvex3Sync::korvexctl {

namespace {

struct ProfileArguments {
    HeadChoice head;
    std::filesystem::path file;
};

/// Throws when a readable setting cannot be read.
std::vector<Reading> ReadAll(const ConnectedHead& head) {
    std::vector<Reading> readings;
    for (const Setting* setting : SettingsOf(head.cameras.size())) {
        readings.push_back(ReadSetting(head.Handle(), *setting));
        if (!readings.back().NotReadable()) {
            Require(readings.back().status, "get " + setting->name);
        }
    }
    return readings;
}

Outcome SaveProfile(const ProfileArguments& asked, Output& output) {
    RequireWritable(asked.file);
    // Disconnected before the file is written, because writing to a FIFO may block.
    const std::vector<Reading> readings = ReadAll(ConnectedHead(asked.head));
    WriteFile(asked.file, WriteProfile(readings));
    Outcome outcome;
    nlohmann::json saved = nlohmann::json::object();
    nlohmann::json unknown = nlohmann::json::array();
    for (const Reading& reading : readings) {
        if (reading.Known()) {
            saved[reading.setting->name] = reading.ToJson();
        } else {
            unknown.push_back(reading.setting->name);
        }
    }
    output.Line(os::TextOf(asked.file) + ": " + std::to_string(saved.size()) + " settings, " +
                std::to_string(unknown.size()) + " that the head does not report");
    *outcome.figures = {
        {"file", os::TextOf(asked.file)}, {"settings", saved}, {"not_readable", unknown}};
    return outcome;
}

Outcome LoadProfile(const ProfileArguments& asked, Output& output) {
    const Profile profile = ReadProfileFile(asked.file);
    Outcome outcome = SetSettings(asked.head, profile.settings, output);
    outcome.figures["file"] = os::TextOf(asked.file);
    return outcome;
}

Outcome DiffProfile(const ProfileArguments& asked, Output& output) {
    const Profile profile = ReadProfileFile(asked.file);
    const ConnectedHead head(asked.head);
    for (const Assignment& assignment : profile.settings) {
        RequireOnHead(*assignment.setting, head.cameras.size());
    }
    Outcome outcome;
    std::size_t different = 0;
    nlohmann::json figures = nlohmann::json::object();
    for (const auto& [setting, value] : profile.settings) {
        const Reading reading = ReadSetting(head.Handle(), *setting);
        if (!reading.NotReadable()) {
            Require(reading.status, "get " + setting->name);
        }
        const bool equal = reading.Known() && SameValue(reading.value, value);
        figures[setting->name] = {{"file", ValueToJson(setting->fields, value)},
                                  {"head", reading.ToJson()},
                                  {"equal", nullptr}};
        if (reading.Known()) {
            figures[setting->name]["equal"] = equal;
            different += equal ? 0 : 1;
        }
        if (!equal) {
            const Reading inFile{setting, STATUS_SUCCESS, value};
            output.Line(setting->name + ": file " + inFile.Text() + ", head " + reading.Text());
        }
    }
    *outcome.figures = {
        {"file", os::TextOf(asked.file)}, {"equal", different == 0}, {"settings", figures}};
    if (different > 0) {
        outcome.code = ExitCode::Different;
        outcome.message = std::to_string(different) + " of " +
                          std::to_string(profile.settings.size()) + " settings of " +
                          os::TextOf(asked.file) + " differ from the head";
    }
    return outcome;
}

}  // namespace

RunCommand AddProfile(CLI::App& command) {
    using Run = Outcome (*)(const ProfileArguments&, Output&);
    struct Action {
        const char* name;
        const char* help;
        Run run;
    };
    static constexpr std::array kActions{
        Action{"save", "Write the settings that the head reports to FILE", SaveProfile},
        Action{"load", "Check FILE, then send its settings to the head", LoadProfile},
        Action{"diff", "Show where FILE and the head differ", DiffProfile}};

    const auto asked = std::make_shared<ProfileArguments>();
    const auto chosen = std::make_shared<Run>(nullptr);
    command.require_subcommand(1);
    command.footer(SettingsTable(Notation::Profile));
    for (const Action& action : kActions) {
        CLI::App& subcommand = *command.add_subcommand(action.name, action.help);
        AddHeadOptions(subcommand, asked->head, true);
        AddPathOption(subcommand, "file", asked->file, "FILE", "The profile (TOML)").required();
        subcommand.callback([chosen, run = action.run] { *chosen = run; });
    }
    return [asked, chosen](Output& output) { return (*chosen)(*asked, output); };
}

}  // namespace Korvex3Sync::korvexctl
