#include <Korvex3Sync/Connection.h>
#include <CLI/CLI.hpp>

#include <array>
#include <memory>
#include <nlohmann/json.hpp>

#include "korvexctl/cli/NumberOption.h"
#include "korvexctl/commands/Commands.h"
#include "korvexctl/head/ConnectedHead.h"
#include "korvexctl/head/UserInfoText.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr int kLastPage = 15;

struct Asked {
    HeadChoice head;
    int page = 0;
    bool hex = false;
    std::string data;
    bool write = false;
};

std::string ReadPage(const ConnectedHead& head, int page) {
    std::array<char, kUserInfoBytes> bytes{};
    char* data = bytes.data();
    Require(ReadUserInfomation(head.Handle(), page, data),
            "read page " + std::to_string(page) + " of the user memory");
    return {bytes.data(), bytes.size()};
}

Outcome Show(const Asked& asked, const std::string& page, Output& output) {
    const std::optional<std::string> text = PageText(page);
    const std::string_view data = WithoutPadding(page);
    const std::string shown = text && !asked.hex ? *text : ToHex(data);
    output.Line("page " + std::to_string(asked.page) + (data.empty() ? " is empty" : ": " + shown));
    Outcome outcome;
    outcome.figures = {{"page", asked.page}, {"hex", ToHex(page)}, {"text", nullptr}};
    if (text) {
        outcome.figures["text"] = *text;
    }
    return outcome;
}

/// The bytes to write; throws CommandError(Usage) for those that no page takes.
std::string DataOf(const Asked& asked) {
    const std::optional<std::string> bytes =
        asked.hex ? FromHex(asked.data) : std::optional(asked.data);
    if (!bytes) {
        throw CommandError(ExitCode::Usage,
                           "data: pairs of hexadecimal digits are expected (see --help)");
    }
    if (bytes->size() > kUserInfoBytes) {
        throw CommandError(ExitCode::Usage, "data: a page takes " + std::to_string(kUserInfoBytes) +
                                                " bytes, not " + std::to_string(bytes->size()) +
                                                " (see --help)");
    }
    return *bytes;
}

Outcome WriteUserInfo(const Asked& asked, Output& output) {
    const std::string data = DataOf(asked);
    const ConnectedHead head(asked.head);
    Require(
        WriteUserInfomation(head.Handle(), asked.page, data.data(), static_cast<int>(data.size())),
        "write page " + std::to_string(asked.page) + " of the user memory");
    const std::string page = ReadPage(head, asked.page);
    Outcome outcome = Show(asked, page, output);
    if (WithoutPadding(page) != WithoutPadding(data)) {
        outcome.code = ExitCode::DeviceRefused;
        outcome.message =
            "page " + std::to_string(asked.page) + " reads back as something else than was written";
    }
    return outcome;
}

Outcome RunUserInfo(const Asked& asked, Output& output) {
    if (asked.write) {
        return WriteUserInfo(asked, output);
    }
    const ConnectedHead head(asked.head);
    return Show(asked, ReadPage(head, asked.page), output);
}

void AddCommonOptions(CLI::App& command, Asked& asked) {
    AddHeadOptions(command, asked.head, true);
    AddNumberOption(command, "page", asked.page, "PAGE", 0, kLastPage, "Page of the user memory",
                    "")
        .required();
}

}  // namespace

RunCommand AddUserInfo(CLI::App& command) {
    const auto asked = std::make_shared<Asked>();
    command.require_subcommand(1);
    command.footer("The user memory has 16 pages (0 to 15) of 256 bytes.");
    CLI::App& read = *command.add_subcommand("read", "Show one page");
    AddCommonOptions(read, *asked);
    read.add_flag("--hex", asked->hex, "Show the bytes as hexadecimal digits, text or not");
    CLI::App& write = *command.add_subcommand(
        "write", "Write one page and read it back; what the data leaves of it becomes zero");
    AddCommonOptions(write, *asked);
    write.add_option("data", asked->data, "Text of 0 to 256 bytes")->type_name("DATA")->required();
    write.add_flag("--hex", asked->hex, "DATA is hexadecimal digits, two for each byte");
    write.callback([asked] { asked->write = true; });
    return [asked](Output& output) { return RunUserInfo(*asked, output); };
}

}  // namespace Korvex3Sync::korvexctl
