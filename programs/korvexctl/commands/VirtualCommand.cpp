#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <system_error>

#include "korvexctl/cli/PathOption.h"
#include "korvexctl/commands/Commands.h"
#include "korvexctl/files/Place.h"
#include "korvexctl/files/WriteFile.h"
#include "platform/os/FileName.h"
#include "virtual_head/Request.h"

namespace Korvex3Sync::korvexctl {

namespace {

namespace fs = std::filesystem;

constexpr const char* kStandardOutput = "-";

struct NewHeadFile {
    fs::path file;
    bool force = false;
};

Outcome PrintNew(Output& output) {
    Outcome outcome;
    const std::string text = virtual_head::HeadFileText();
    outcome.figures["text"] = text;
    output.Lines(text);
    return outcome;
}

Outcome RunNew(const NewHeadFile& asked, Output& output) {
    if (asked.file == kStandardOutput) {
        return PrintNew(output);
    }
    const std::string name = os::TextOf(asked.file);
    const bool stream = FindPlace(asked.file, "cannot write " + name).kind == Place::Kind::Stream;
    std::error_code unknown;
    if (!asked.force && (stream || fs::exists(fs::symlink_status(asked.file, unknown)))) {
        throw CommandError(ExitCode::NotWritable,
                           name + (stream ? " is not a regular file; --force writes to it, and "
                                            "- is standard output"
                                          : " already exists; --force replaces it"));
    }
    WriteFile(asked.file, virtual_head::HeadFileText(),
              asked.force ? Existing::Replaced : Existing::Kept);
    Outcome outcome;
    outcome.figures["file"] = name;
    // A stream cannot be read again, and may be standard output itself.
    if (!stream) {
        output.Line("wrote " + name + "; use it with --virtual=" + name);
    }
    return outcome;
}

}  // namespace

RunCommand AddVirtual(CLI::App& command) {
    command.require_subcommand(1);
    CLI::App& create = *command.add_subcommand(
        "new", "Write a head file with every key at its default, each explained");
    const auto asked = std::make_shared<NewHeadFile>();
    AddPathOption(create, "FILE", asked->file, "FILE", "Where to write it; - is standard output")
        .required();
    create.add_flag("--force", asked->force, "Replace an existing file");
    return [asked](Output& output) { return RunNew(*asked, output); };
}

}  // namespace Korvex3Sync::korvexctl
