#pragma once

#include <Korvex3Sync/Status.h>

#include <string>
#include <vector>

#include "korvexctl/head/Cameras.h"

namespace Korvex3Sync::korvexctl {

/// The text of a status.
std::string StatusText(RETSTATUS status);

/// A connected head: the constructor connects it, the destructor disconnects it. After that no
/// callback runs.
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

/// Whether the board of a connection answers a query. Takes up to half a second.
bool BoardAnswers(const Session& session);
/// Throws CommandError(NotConnected) unless it does. A board that does not answer can still be
/// opened.
void RequireAnswer(const Session& session);

/// Throws CommandError(DeviceRefused), which names the operation, unless the status is success.
/// Throws CommandError(Interrupted) after an interrupt (see EndIfInterrupted).
void Require(RETSTATUS status, const std::string& operation);

}  // namespace Korvex3Sync::korvexctl
