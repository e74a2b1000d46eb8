#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace Korvex3Sync::os {

/// The folder for sockets and lock files of this user: `$XDG_RUNTIME_DIR/korvex3sync`, or
/// `/tmp/korvex3sync-UID` without that variable; on Windows `%LOCALAPPDATA%\korvex3sync\run`. It is
/// created, only for this user, if it is missing. Empty, with a reason, if it cannot be created, is
/// a link, belongs to another user, or lets other users in.
std::filesystem::path RuntimeFolder(std::string& reason);

/// The path of a socket in the runtime folder; on Windows of a named pipe that belongs to it.
/// Empty, with a reason, if there is no such folder or the path is too long for a socket.
std::filesystem::path SocketPath(std::string_view name, std::string& reason);

/// Whether the socket of a server that listens can still be reached by its path.
bool SocketInPlace(const std::filesystem::path& path);

/// The folder for log files of this user: `$XDG_STATE_HOME/korvex3sync`, or
/// `~/.local/state/korvex3sync` without that variable; on Windows `%LOCALAPPDATA%\korvex3sync\log`.
/// It is created if it is missing. The runtime
/// folder if it cannot be created or written; empty, with a reason, if there is none either.
std::filesystem::path LogFolder(std::string& reason);

}  // namespace Korvex3Sync::os
