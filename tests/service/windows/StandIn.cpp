#include "service/StandIn.h"

#include <fstream>

#include "platform/os/Process.h"

namespace Korvex3Sync::tests {

namespace fs = std::filesystem;

// The program reads what it does from a file of its own name (StandInProgram.cpp).
void WriteStandIn(const fs::path& program, const fs::path& journal, const StandIn& does) {
    // The file of a program that runs cannot be replaced.
    os::EndProcesses(program.filename().string());
    // Removed first: the C++ library takes any two files for the same one, and does not overwrite.
    fs::remove(program);
    fs::copy_file(KORVEX_STAND_IN, program);
    std::ofstream(fs::path(program).replace_extension(".txt")) << journal.string() << '\n'
                                                               << does.outputBytes << '\n'
                                                               << does.errorBytes << '\n'
                                                               << does.line << '\n'
                                                               << does.journal << '\n'
                                                               << does.waits << '\n';
}

// The script calls the stand-in to write, which takes the lock: `echo` and a program that is
// starting could overwrite each other's lines.
void WriteScript(const fs::path& script, const fs::path& journal) {
    const fs::path append = script.parent_path() / "append.exe";
    if (!fs::exists(append)) {
        fs::copy_file(KORVEX_STAND_IN, append);
    }
    std::ofstream(script) << "@echo off\nset arguments=0\nif not \"%~1\"==\"\" set arguments=1\n\""
                          << append.string() << "\" \"" << journal.string() << "\" \""
                          << script.filename().string() << " %arguments% %CD%\"\nexit 3\n";
}

}  // namespace Korvex3Sync::tests
