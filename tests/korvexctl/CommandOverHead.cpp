#include "korvexctl/CommandOverHead.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "korvexctl/CommandLine.h"
#include "korvexctl/files/StandardOutput.h"

namespace Korvex3Sync::tests {

virtual_head::HeadDescription SmallHeadDescription() {
    virtual_head::HeadDescription description;
    description.width = kSmallWidth;
    description.height = kSmallHeight;
    return description;
}

CommandResult RunHere(const std::vector<std::string>& arguments) {
    std::vector<const char*> words{"korvexctl"};
    std::transform(arguments.begin(), arguments.end(), std::back_inserter(words),
                   [](const std::string& word) { return word.c_str(); });
    const korvexctl::CommandLineResult asked =
        korvexctl::ReadCommandLine(static_cast<int>(words.size()), words.data());
    EXPECT_TRUE(asked.run) << asked.text;

    CommandResult result;
    ::testing::internal::CaptureStdout();
    try {
        korvexctl::StandardOutput standardOutput(false);
        korvexctl::Output output(standardOutput, asked.commandLine.json);
        const korvexctl::Outcome outcome = asked.commandLine.run(output);
        result = {outcome.code, outcome.message, *outcome.figures, {}};
    } catch (const korvexctl::CommandError& error) {
        result.code = error.Code();
        result.message = error.what();
    }
    result.output = ::testing::internal::GetCapturedStdout();
    return result;
}

std::vector<std::string> BoardChanges(virtual_head::VirtualHead& head) {
    std::vector<std::string> changes;
    for (const std::string& text : head.GetJournal().Texts()) {
        // What connecting and disconnecting does by itself is no change that was asked for.
        if ((text.starts_with("zr3DSet") || text.starts_with("zr3DOpen") ||
             text.starts_with("zr3DProject") || text.starts_with("zr3DWrite") ||
             text.starts_with("zr3DReset")) &&
            text != "zr3DProject(0) = true") {
            changes.push_back(text);
        }
    }
    return changes;
}

}  // namespace Korvex3Sync::tests
