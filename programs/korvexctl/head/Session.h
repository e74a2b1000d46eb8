#pragma once

#include <Korvex3Sync/Status.h>

#include <string>
#include <vector>

#include "korvexctl/head/Cameras.h"

namespace Korvex3Sync::korvexctl {

/// A status in words.
std::string StatusText(RETSTATUS status);

/// One connected head: connected by the constructor, disconnected by the destructor, whatever
/// happens between. No callback of it runs once it is gone.
class Session {
public:
    /// `board` is the serial of the board, "" for any. Throws CommandError (NoCamera,
    /// NotConnected).
    Session(const std::string& type, const std::string& board, const std::vector<Camera>& cameras);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    void* const& Handle() const { return m_handle; }

private:
    void* m_handle = nullptr;
};

inline constexpr const char* kMuteBoard = "the board does not answer";

/// Whether the board of a connection answers a question. Up to half a second.
bool BoardAnswers(const Session& session);
/// Throws CommandError(NotConnected) unless it does. A board that is mute opens all the same.
void RequireAnswer(const Session& session);

/// Throws CommandError(DeviceRefused), which names the operation, unless the status is success.
/// Throws CommandError(Interrupted) once the command was told to end (see EndIfInterrupted).
void Require(RETSTATUS status, const std::string& operation);

}  // namespace Korvex3Sync::korvexctl
