#include "support/ChildProcess.h"

#include <regex>

namespace Korvex3Sync::tests {

bool ChildProcess::WaitFor(const std::string& collected, const std::string& text) {
    while (collected.find(text) == std::string::npos) {
        if (!ReadSome()) {
            return false;
        }
    }
    return true;
}

bool ChildProcess::WaitForOutputMatching(const std::string& expression) {
    const std::regex wanted(expression);
    while (!std::regex_search(m_result.output, wanted)) {
        if (!ReadSome()) {
            return false;
        }
    }
    return true;
}

ChildResult RunChild(const std::vector<std::string>& command, ChildOptions options) {
    return ChildProcess(command, std::move(options)).Wait();
}

}  // namespace Korvex3Sync::tests
