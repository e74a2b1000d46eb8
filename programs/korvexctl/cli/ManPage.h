#pragma once

#include <string>

namespace CLI {
class App;
}

namespace Korvex3Sync::korvexctl {

/// The manual page of the program (roff, section 1), made of the texts of its help.
std::string ManPage(const CLI::App& program, const std::string& version);

}  // namespace Korvex3Sync::korvexctl
