#include "service/StandIn.h"

#include <fstream>

namespace Korvex3Sync::tests {

namespace {

namespace fs = std::filesystem;

void WriteShellScript(const fs::path& path, const std::string& body) {
    fs::remove(path);  // a running script keeps its file
    std::ofstream(path) << "#!/bin/sh\n" << body << "\n";
    fs::permissions(path, fs::perms::owner_all);
}

std::string Zeros(std::size_t count) {
    return count == 0 ? "true" : "head -c " + std::to_string(count) + " /dev/zero";
}

}  // namespace

void WriteStandIn(const fs::path& program, const fs::path& journal, const StandIn& does) {
    const std::string line =
        does.journal.empty() ? program.filename().string() + " $$ $# $PWD" : does.journal;
    WriteShellScript(program, Zeros(does.outputBytes) + "; " + Zeros(does.errorBytes) + " >&2; " +
                                  (does.line.empty() ? "true" : "echo " + does.line) + "; echo " +
                                  line + " >> " + journal.string() +
                                  (does.waits ? "; read x" : ""));
}

void WriteScript(const fs::path& script, const fs::path& journal) {
    WriteShellScript(script, "echo " + script.filename().string() + " $# $PWD >> " +
                                 journal.string() + "\nexit 3");
}

}  // namespace Korvex3Sync::tests
