#include "support/Terminal.h"

namespace Korvex3Sync::tests {

std::vector<std::string> OnTerminal(const std::vector<std::string>& command) {
    std::vector<std::string> words{KORVEX_ON_TERMINAL};
    words.insert(words.end(), command.begin(), command.end());
    return words;
}

}  // namespace Korvex3Sync::tests
