#include <CLI/CLI.hpp>

#include <memory>
#include <nlohmann/json.hpp>

#include "korvexctl/cli/NumberOption.h"
#include "korvexctl/commands/Commands.h"
#include "korvexctl/head/ConnectedHead.h"
#include "korvexctl/head/UserMemory.h"

namespace Korvex3Sync::korvexctl {

namespace {

struct UserInfoArguments {
    HeadChoice head;
    int page = 0;
    bool hex = false;
    std::string data;
    bool write = false;
};

Outcome Show(const UserInfoArguments& asked, const std::string& page, Output& output) {
    const std::optional<std::string> text = PageText(page);
    const std::string_view data = WithoutPadding(page);
    const std::string shown = text && !asked.hex ? *text : ToHex(data);
    output.Line("page " + std::to_string(asked.page) + (data.empty() ? " is empty" : ": " + shown));
    Outcome outcome;
    *outcome.figures = {{"page", asked.page}, {"hex", ToHex(page)}, {"text", nullptr}};
    if (text) {
        outcome.figures["text"] = *text;
    }
    return outcome;
}

/// The bytes to write; throws CommandError(Usage) for those that no page takes.
std::string DataOf(const UserInfoArguments& asked) {
    const std::optional<std::string> bytes =
        asked.hex ? FromHex(asked.data) : std::optional(asked.data);
    if (!bytes) {
        throw CommandError(ExitCode::Usage,
                           "data: expected pairs of hexadecimal digits (see --help)");
    }
    if (bytes->size() > kUserMemoryPageBytes) {
        throw CommandError(ExitCode::Usage,
                           "data: a page takes " + std::to_string(kUserMemoryPageBytes) +
                               " bytes, not " + std::to_string(bytes->size()) + " (see --help)");
    }
    return *bytes;
}

Outcome WriteUserInfo(const UserInfoArguments& asked, Output& output) {
    const std::string data = DataOf(asked);
    const ConnectedHead head(asked.head);
    WriteUserMemory(head.Handle(), asked.page, data);
    const std::string page = ReadUserMemory(head.Handle(), asked.page);
    Outcome outcome = Show(asked, page, output);
    if (WithoutPadding(page) != WithoutPadding(data)) {
        outcome.code = ExitCode::DeviceRefused;
        outcome.message =
            "page " + std::to_string(asked.page) + " reads back differently than written";
    }
    return outcome;
}

Outcome RunUserInfo(const UserInfoArguments& asked, Output& output) {
    if (asked.write) {
        return WriteUserInfo(asked, output);
    }
    const ConnectedHead head(asked.head);
    return Show(asked, ReadUserMemory(head.Handle(), asked.page), output);
}

void AddCommonOptions(CLI::App& command, UserInfoArguments& asked) {
    AddHeadOptions(command, asked.head, true);
    AddNumberOption(command, "page", asked.page, "PAGE", 0, kUserMemoryPages - 1,
                    "Page of the user memory", "")
        .required();
}

}  // namespace

RunCommand AddUserInfo(CLI::App& command) {
    const auto asked = std::make_shared<UserInfoArguments>();
    command.require_subcommand(1);
    command.footer("The user memory has 16 pages (0 to 15) of 256 bytes.");
    CLI::App& read = *command.add_subcommand("read", "Show one page");
    AddCommonOptions(read, *asked);
    read.add_flag("--hex", asked->hex,
                  "Show the bytes as hexadecimal digits, even if they are text");
    CLI::App& write = *command.add_subcommand(
        "write", "Write one page and read it back; the rest of the page is filled with zeros");
    AddCommonOptions(write, *asked);
    write.add_option("data", asked->data, "Text of 0 to 256 bytes")->type_name("DATA")->required();
    write.add_flag("--hex", asked->hex, "DATA is hexadecimal digits, two for each byte");
    write.callback([asked] { asked->write = true; });
    return [asked](Output& output) { return RunUserInfo(*asked, output); };
}

}  // namespace Korvex3Sync::korvexctl
