#include "korvexctl/cli/BashCompletion.h"

#include "korvexctl/cli/HelpFormatter.h"

namespace Korvex3Sync::korvexctl {

namespace {

// Finds the command that is typed, and the option before the cursor, also before an equals sign.
constexpr const char* kBegin =
    R"(# Completion of korvexctl for bash. Made by "korvexctl help --bash-completion".
_korvexctl() {
    local word=${COMP_WORDS[COMP_CWORD]} option=${COMP_WORDS[COMP_CWORD-1]} command='' kind='' i
    if [[ $option == = ]]; then
        option=${COMP_WORDS[COMP_CWORD-2]}
    elif [[ $word == = ]]; then
        word=''
    elif [[ $option == --virtual ]]; then
        option=''
    fi
    for ((i = 1; i < COMP_CWORD; ++i)); do
        case "$command ${COMP_WORDS[i]}" in
)";

constexpr const char* kKinds = R"(                command="$command ${COMP_WORDS[i]}" ;;
        esac
    done
    case "$command $option" in
)";

constexpr const char* kEnd = R"(    esac
    case $kind in
        FILE) mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
        DIR) mapfile -t COMPREPLY < <(compgen -d -- "$word") ;;
        *) mapfile -t COMPREPLY < <(compgen -W "$kind" -- "$word") ;;
    esac
}
complete -o filenames -F _korvexctl korvexctl
)";

std::string Joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

class Script {
public:
    Script(const CLI::App& program, const WordsOfType& words) : m_words(words) { Add(program, ""); }

    std::string Text() const {
        return kBegin + ("            " + m_commands + ")\n") + kKinds + m_kinds + kEnd;
    }

private:
    /// What completes a value of this type; empty for one that a person makes up.
    std::string KindOf(const CLI::Option& option) const {
        const std::string type = option.get_type_name();
        for (const auto& [known, words] : m_words) {
            if (type.starts_with(known)) {
                return Joined(words);
            }
        }
        return type.find("FILE") != std::string::npos ? "FILE" : type == "DIR" ? "DIR" : "";
    }

    /// `path`: the words of the command, each after a blank.
    void Add(const CLI::App& command, const std::string& path) {
        std::vector<std::string> all;
        for (const CLI::App* below : CommandsOf(command)) {
            const std::string name = path + ' ' + below->get_name();
            m_commands += (m_commands.empty() ? "" : " | ") + ('"' + name + '"');
            all.push_back(below->get_name());
            Add(*below, name);
        }
        bool files = false;
        for (const CLI::Option* argument : ArgumentsOf(command)) {
            const std::string kind = KindOf(*argument);
            files = files || kind == "FILE";
            if (kind != "FILE" && !kind.empty()) {
                all.push_back(kind);
            }
        }
        for (const auto& options : {OptionsOf(command), GlobalOptions(command)}) {
            for (const CLI::Option* option : options) {
                AddOption(*option, path, all);
            }
        }
        const std::string words = Joined(all);
        m_kinds += "        \"" + path + " \"*) kind='" + words + "'" +
                   (files ? "; [[ $word == -* ]] || kind=FILE" : "") + " ;;\n";
    }

    /// Adds the names of an option to `all`, and what completes its value.
    void AddOption(const CLI::Option& option, const std::string& path,
                   std::vector<std::string>& all) {
        for (const std::string& name : option.get_lnames()) {
            all.push_back("--" + name);
            if (!option.get_type_name().empty()) {
                m_kinds.append("        \"").append(path).append(" --").append(name);
                m_kinds.append("\") kind='").append(KindOf(option)).append("' ;;\n");
            }
        }
    }

    const WordsOfType& m_words;
    std::string m_commands;
    std::string m_kinds;
};

}  // namespace

std::string BashCompletion(const CLI::App& program, const WordsOfType& words) {
    return Script(program, words).Text();
}

}  // namespace Korvex3Sync::korvexctl
