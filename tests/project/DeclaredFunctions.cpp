#include "project/DeclaredFunctions.h"

#include "project/SourceTree.h"

namespace Korvex3Sync::tests {

std::multiset<std::string> DeclaredFunctions() {
    const std::string mark = "KORVEX3SYNC_API ";
    std::multiset<std::string> names;
    for (const auto& [file, text] : ReadSourceTree({"include/Korvex3Sync"})) {
        for (auto at = text.find(mark); at != std::string::npos; at = text.find(mark, at + 1)) {
            const auto end = text.find('(', at);
            // Not where the mark itself is defined.
            if (text.substr(text.rfind('\n', at) + 1, 1) != "#" && end != std::string::npos) {
                const auto start = text.find_last_of(" \n", end) + 1;
                names.insert(text.substr(start, end - start));
            }
        }
    }
    return names;
}

}  // namespace Korvex3Sync::tests
