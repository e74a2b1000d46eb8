#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <random>

#include "soak/Soak.h"
#include "support/ProcessNamespace.h"

namespace Korvex3Sync::tests::soak {
namespace {

/// What the command line asks for.
struct Command {
    Options options;
    bool service = false;
    int exitCode = -1;  // of a command that ends here
};

Command Read(int count, char** arguments) {
    Command command;
    command.options.seed = std::random_device()();
    CLI::App app("Scans, random calls and random faults at once.", "korvex_soak");
    app.add_option("--seconds", command.options.seconds, "How long, in seconds")
        ->check(CLI::Range(1, 1'000'000))
        ->capture_default_str();
    app.add_option("--seed", command.options.seed, "Of an earlier run, to throw its dice again");
    app.add_flag("--service", command.service,
                 "In service mode; the faults are killed and stopped services and hubs");
    try {
        app.parse(count, arguments);
    } catch (const CLI::ParseError& error) {
        command.exitCode = app.exit(error);
    }
    return command;
}

int RunServiceMode(int count, char** arguments) {
    QCoreApplication application(count, arguments);
    return SoakServiceMode(Read(count, arguments).options);
}

}  // namespace
}  // namespace Korvex3Sync::tests::soak

int main(int count, char** arguments) {
    using namespace Korvex3Sync::tests;
    const soak::Command command = soak::Read(count, arguments);
    if (command.exitCode >= 0) {
        return command.exitCode;
    }
    return command.service ? RunInProcessNamespace(count, arguments, soak::RunServiceMode)
                           : soak::SoakDirectMode(command.options);
}
