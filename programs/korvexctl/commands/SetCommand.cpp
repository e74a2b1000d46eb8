#include "korvexctl/commands/SetCommand.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>

#include "korvexctl/commands/Commands.h"
#include "korvexctl/head/ConnectedHead.h"

namespace Korvex3Sync::korvexctl {

namespace {

struct SetArguments {
    HeadChoice head;
    std::vector<std::string> words;
};

[[noreturn]] void RefuseUsage(const std::string& what) {
    throw CommandError(ExitCode::Usage, what + " (see --help)");
}

/// What the sent values leave on after the command: named in the document, and in a warning that
/// says how to switch it off.
class StayingOn {
public:
    void Note(const Assignment& assignment) {
        const Setting& setting = *assignment.setting;
        if (setting.staysOn && setting.staysOn(assignment.value)) {
            m_names.emplace_back(setting.leavesOn);
            // The last one first: the trigger before the light that it fires.
            m_off = ' ' + SwitchOffText(setting, assignment.value) + m_off;
        }
    }
    void Tell(Outcome& outcome) const {
        outcome.figures["left_on"] = m_names;
        if (!m_names.empty()) {
            Say("WARNING: on after this command: " + CLI::detail::join(m_names, ", ") +
                "; look away from the head. Switch off with: korvexctl set" + m_off);
        }
    }

private:
    std::vector<std::string> m_names;
    std::string m_off;
};

}  // namespace

std::vector<Assignment> ReadAssignments(std::span<const std::string> words) {
    std::vector<Assignment> assignments;
    while (!words.empty()) {
        const Setting& setting = RequireSetting(words.front());
        words = words.subspan(1);
        const std::size_t count = setting.fields.size();
        if (words.size() < count) {
            RefuseUsage(setting.name + " takes " + std::to_string(count) +
                        (count == 1 ? " value: " : " values: ") + RangeText(setting));
        }
        Assignment assignment{&setting, {}};
        for (std::size_t i = 0; i < count; ++i) {
            const auto read = ReadValueText(setting.fields[i], words[i]);
            if (const auto* wrong = std::get_if<std::string>(&read)) {
                RefuseUsage(setting.name + ": " + *wrong);
            }
            assignment.value.push_back(std::get<double>(read));
        }
        if (std::any_of(
                assignments.begin(), assignments.end(),
                [&setting](const Assignment& other) { return other.setting == &setting; })) {
            RefuseUsage(setting.name + " is given twice");
        }
        assignments.push_back(std::move(assignment));
        words = words.subspan(count);
    }
    return assignments;
}

Outcome SetSettings(const HeadChoice& choice, std::span<const Assignment> assignments,
                    Output& output) {
    std::vector<Camera> cameras = FindCameras(choice.cameraType);
    if (!cameras.empty()) {
        for (const Assignment& assignment : assignments) {
            RequireOnHead(*assignment.setting, cameras.size());
        }
    }
    const ConnectedHead head(choice, std::move(cameras));
    Outcome outcome;
    nlohmann::json& figures = outcome.figures["settings"] = nlohmann::json::object();
    StayingOn stayingOn;
    try {
        Apply(head.Handle(), assignments, [&](const Assignment& sent) { stayingOn.Note(sent); });
        VerifyApplied(
            head.Handle(), assignments, [&](const Assignment& assignment, const Reading& reading) {
                const Setting& setting = *assignment.setting;
                nlohmann::json& figure = figures[setting.name] = DescribeSetting(setting);
                figure["set"] = ValueToJson(setting.fields, assignment.value);
                figure["value"] = reading.ToJson();
                output.Line(setting.name + " " +
                            (reading.NotReadable()
                                 ? "set to " + ValueText(setting.fields, assignment.value) +
                                       ", not readable"
                                 : reading.Text()));
            });
    } catch (const CommandError& error) {
        outcome.code = error.Code();
        outcome.message = error.what();
    }
    stayingOn.Tell(outcome);
    return outcome;
}

RunCommand AddSet(CLI::App& command) {
    const auto asked = std::make_shared<SetArguments>();
    AddHeadOptions(command, asked->head, true);
    command
        .add_option("words", asked->words,
                    "Names of settings, each followed by its value or values")
        ->type_name("NAME VALUE...")
        ->required();
    command.footer(SettingsTable());
    return [asked](Output& output) {
        return SetSettings(asked->head, ReadAssignments(asked->words), output);
    };
}

RunCommand AddDistance(CLI::App& command) {
    const auto asked = std::make_shared<SetArguments>();
    AddHeadOptions(command, asked->head, true);
    asked->words.resize(1);
    command
        .add_option(
            "state", asked->words.front(),
            "State of the distance lights, " + RangeText(*FindSetting("distance")) + ", 0 for off")
        ->type_name("STATE")
        ->required();
    return [asked](Output& output) {
        const std::vector<std::string> words{"distance", asked->words.front()};
        return SetSettings(asked->head, ReadAssignments(words), output);
    };
}

}  // namespace Korvex3Sync::korvexctl
