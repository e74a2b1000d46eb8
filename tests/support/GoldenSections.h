#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace Korvex3Sync::tests::support {

/// The environment variable that names the file where test programs note the sections of golden
/// files that they compared with. Several programs may write it at once.
inline constexpr char kGoldenUsedVariable[] = "KORVEX_GOLDEN_USED";

/// The name of the section that this line of a golden file begins; empty for any other line.
std::optional<std::string> GoldenSection(const std::string& line);

/// Notes that a section was compared with. Does nothing without the environment variable.
void NoteGoldenUsed(const std::string& operation, const std::string& section);

/// What stands in the golden files of a folder and is not noted as used: "<operation> [<section>]",
/// also for the second of two sections with one name, and "<operation>" for a file without
/// sections.
std::vector<std::string> UnusedGolden(const std::filesystem::path& folder,
                                      const std::filesystem::path& used);

}  // namespace Korvex3Sync::tests::support
