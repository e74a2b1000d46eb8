#include "korvexctl/cli/ManPage.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <sstream>

#include "korvexctl/cli/ExitCodes.h"
#include "korvexctl/cli/HelpFormatter.h"

namespace Korvex3Sync::korvexctl {

namespace {

/// The text as roff shows it: no character of it is a request or an escape, and each hyphen is the
/// one that is typed.
std::string Roff(const std::string& text) {
    std::string roff = text.starts_with('.') || text.starts_with('\'') ? "\\&" : "";
    for (const char c : text) {
        if (c == '\\' || c == '-') {
            roff += '\\';
        }
        roff += c == '\\' ? 'e' : c;
    }
    return roff;
}

std::string Upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

std::string Term(const std::string& term, const std::string& text) {
    return ".TP\n.B " + Roff(term) + '\n' + Roff(text) + '\n';
}

std::string Options(const std::vector<const CLI::Option*>& options) {
    std::string text;
    for (const CLI::Option* option : options) {
        text += Term(OptionTerm(*option), OptionText(*option));
    }
    return text;
}

/// A footer: a line that is set in is a term, one that is set in further its text.
std::string Footer(const std::string& footer) {
    std::istringstream lines(footer);
    std::string text;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t begin = std::min(line.find_first_not_of(' '), line.size());
        const char* const request = begin == 0 ? ".PP\n" : begin == 2 ? ".TP\n.B " : "";
        text += line.empty() ? "" : request + Roff(line.substr(begin)) + '\n';
    }
    return text;
}

class CommandPages {
public:
    /// The commands below `app`, and those below them.
    void Add(const CLI::App& app) {
        for (const CLI::App* command : CommandsOf(app)) {
            m_text += ".SS " + Roff(UsageText(*command)) + '\n' + Roff(command->get_description()) +
                      ".\n" + Options(ArgumentsOf(*command)) + Options(OptionsOf(*command));
            AddFooter(*command);
            Add(*command);
        }
    }
    const std::string& Text() const { return m_text; }

private:
    /// What several commands say is said once.
    void AddFooter(const CLI::App& command) {
        const std::string footer = command.get_footer();
        if (footer.empty()) {
            return;
        }
        const auto [place, isNew] = m_footers.emplace(footer, CommandPath(command));
        const std::string title = footer.substr(0, footer.find_first_of(" \n"));
        m_text +=
            isNew ? Footer(footer) : ".PP\n" + Roff(title) + ": see " + Roff(place->second) + ".\n";
    }

    std::string m_text;
    std::map<std::string, std::string> m_footers;  // text, and the command that has it
};

}  // namespace

std::string ManPage(const CLI::App& program, const std::string& version) {
    const std::string& name = program.get_name();
    std::string text = ".\\\" Made by \"" + name + " help --man\".\n";
    text += ".TH " + Upper(name) + " 1 \"\" \"" + Roff(name + ' ' + version) +
            "\" \"User Commands\"\n.SH NAME\n" + Roff(name) + " \\- " +
            Roff(program.get_description()) + "\n.SH SYNOPSIS\n.B " + Roff(UsageText(program)) +
            "\n.SH OPTIONS\n" + Options(OptionsOf(program)) + ".SH " + Upper(Roff(kGlobalOptions)) +
            '\n' + Options(GlobalOptions(program));
    CommandPages commands;
    commands.Add(program);
    text += ".SH COMMANDS\n" + commands.Text() + ".SH NOTES\n" + Footer(program.get_footer()) +
            ".SH EXIT STATUS\n";
    for (const ExitCodeMeaning& row : ExitCodeMeanings()) {
        text += Term(std::to_string(static_cast<int>(row.code)), std::string(row.meaning));
    }
    return text;
}

}  // namespace Korvex3Sync::korvexctl
