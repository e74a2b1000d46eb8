#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <array>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>

#include "korvexctl/cli/NumberOption.h"
#include "korvexctl/commands/Commands.h"
#include "korvexctl/service/ServicePrograms.h"
#include "korvexctl/service/ServiceStart.h"
#include "korvexctl/service/ServiceStatus.h"
#include "platform/os/FileName.h"
#include "virtual_head/Request.h"

namespace Korvex3Sync::korvexctl {

namespace {

struct ServiceArguments {
    std::string virtualHead;
    int lines = 20;
};

Outcome WithStatus(const ServiceStatus& status) {
    Outcome outcome;
    *outcome.figures = ToJson(status);
    return outcome;
}

Outcome RunServiceStart(const ServiceArguments& asked, Output& output) {
    std::string error;
    // The service would find no head, and only its log would say why.
    const bool fine = asked.virtualHead.empty()
                          ? virtual_head::RequestHeadOfEnvironment(error)
                          : virtual_head::RequestVirtualHead(asked.virtualHead, error);
    if (!fine) {
        throw CommandError(ExitCode::HeadRefused, error);
    }
    StartService(asked.virtualHead, output);
    return WithStatus(AskServiceStatus());
}

Outcome RunServiceStop(const ServiceArguments&, Output& output) {
    StopService(output);
    return {};
}

Outcome RunServiceStatus(const ServiceArguments&, Output& output) {
    const ServiceStatus status = AskServiceStatus();
    Print(status, output);
    Outcome outcome = WithStatus(status);
    if (!status.Works()) {
        outcome.code = ExitCode::ServiceNotRunning;
        outcome.message = NotWorkingText(status);
    }
    return outcome;
}

Outcome RunServiceLog(const ServiceArguments& asked, Output& output) {
    Outcome outcome;
    for (const ServiceProgram* program : {&kHub, &kService}) {
        const std::filesystem::path file = NewestLogOf(*program);
        nlohmann::json& figures = outcome.figures[program->word];
        figures = {{"file", nullptr}, {"lines", nlohmann::json::array()}};
        if (file.empty()) {
            output.Line(std::string(program->word) + ": no log file in " +
                        os::TextOf(ServiceLogFolder()));
            continue;
        }
        figures["file"] = os::TextOf(file);
        output.Line(std::string(program->word) + ": " + os::TextOf(file));
        for (const std::string& line : LastLines(file, static_cast<std::size_t>(asked.lines))) {
            figures["lines"].push_back(line);
            output.Line("  " + line);
        }
    }
    return outcome;
}

/// Qt needs an application object for sockets and processes.
Outcome WithQt(const std::function<Outcome()>& run) {
    int count = 1;
    char name[] = "korvexctl";
    char* arguments[] = {name, nullptr};
    const QCoreApplication application(count, arguments);
    return run();
}

/// The value of --virtual; empty without it.
std::string VirtualHeadOf(const CLI::App& program) {
    const CLI::Option* const option = program.get_option("--virtual");
    const std::string head = option->count() > 0 ? option->as<std::string>() : "";
    return head == "true" ? "default" : head;  // what CLI11 gives for a flag without a value
}

}  // namespace

RunCommand AddService(CLI::App& command) {
    using Run = Outcome (*)(const ServiceArguments&, Output&);
    struct Action {
        const char* name;
        const char* help;
        Run run;
        const char* footer;
    };
    static constexpr std::array kActions{
        Action{"start", "Start hub and service, and wait until both answer", RunServiceStart,
               "They run in the background until service stop, and do not end with the terminal. "
               "With --virtual the service gets a simulated head."},
        Action{"status", "Show hub and service, the client, the device, its rate and its losses",
               RunServiceStatus, ""},
        Action{"stop", "End the service, then the hub", RunServiceStop,
               "A program that does not end within ten seconds after it was asked is killed, after "
               "a check that the process is that program of this user."},
        Action{"log", "Show the newest log file of hub and service, and its last lines",
               RunServiceLog, ""}};

    constexpr int kMostLines = 10000;
    const auto asked = std::make_shared<ServiceArguments>();
    const auto chosen = std::make_shared<Run>(nullptr);
    command.require_subcommand(1);
    for (const Action& action : kActions) {
        CLI::App& subcommand = *command.add_subcommand(action.name, action.help);
        subcommand.footer(action.footer);
        if (action.run == RunServiceLog) {
            AddNumber(subcommand, "--lines", asked->lines, "N", 0, kMostLines,
                      "How many lines of each");
        }
        subcommand.callback([asked, chosen, run = action.run, &command] {
            asked->virtualHead = VirtualHeadOf(*command.get_parent());
            *chosen = run;
        });
    }
    return [asked, chosen](Output& output) {
        return WithQt([&] { return (*chosen)(*asked, output); });
    };
}

}  // namespace Korvex3Sync::korvexctl
