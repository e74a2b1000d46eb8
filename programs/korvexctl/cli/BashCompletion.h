#pragma once

#include <map>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace Korvex3Sync::korvexctl {

/// What can be typed for a type that the help names ("MODE").
using WordsOfType = std::map<std::string, std::vector<std::string>>;

/// The completion of the program for bash, made of what its help is made of. `words`: of types with
/// few values; FILE and HEADFILE are completed as files, DIR as folders.
std::string BashCompletion(const CLI::App& program, const WordsOfType& words);

}  // namespace Korvex3Sync::korvexctl
