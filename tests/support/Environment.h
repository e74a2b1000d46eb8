#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace Korvex3Sync::tests {

/// Changes the environment of this process. An empty value is a value.
void SetVariable(const std::string& name, const std::string& value);
void RemoveVariable(const std::string& name);

/// GoogleTest's CaptureStdout; nothing is put before line ends.
void CaptureLines();

/// Makes a folder in the folder for temporary files. Its path is short, because a socket path is.
std::filesystem::path NewFolder(const std::string& beginning);
/// Removes a folder and what is in it, as far as the system lets it: a file that is in use may
/// stay.
void RemoveFolder(const std::filesystem::path& folder);

/// The path of a device that takes everything and keeps nothing.
std::string NothingFile();

/// Gives a program a second name, under which it finds the same libraries.
void LinkProgram(const std::filesystem::path& program, const std::filesystem::path& name);

/// The variables that make a process keep its sockets, lock files and logs in this folder.
std::vector<std::pair<std::string, std::string>> FoldersIn(const std::filesystem::path& home);
/// Where sockets and lock files then are, and where logs are.
std::filesystem::path RuntimeFolderIn(const std::filesystem::path& home);
std::filesystem::path LogFolderIn(const std::filesystem::path& home);

/// The file of a shared-memory object of this user; empty on a system that has no file for it.
std::filesystem::path SharedMemoryFile(const std::string& name);

}  // namespace Korvex3Sync::tests
