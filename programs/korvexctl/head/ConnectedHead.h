#pragma once

#include <vector>

#include "korvexctl/head/Cameras.h"
#include "korvexctl/head/HeadChoice.h"
#include "korvexctl/head/Session.h"

namespace Korvex3Sync::korvexctl {

/// Whether a command accepts a board that does not answer.
enum class MuteBoard { Refused, Taken };

/// The cameras of a head and the connection to it, for as long as it lives.
struct ConnectedHead {
    /// Throws CommandError (NoCamera, NotConnected; also for a board that does not answer).
    explicit ConnectedHead(const HeadChoice& choice, MuteBoard mute = MuteBoard::Refused)
        : ConnectedHead(choice, FindCameras(choice.cameraType), mute) {}
    /// For a command that looks at the cameras before it connects.
    ConnectedHead(const HeadChoice& choice, std::vector<Camera> found,
                  MuteBoard mute = MuteBoard::Refused)
        : cameras(std::move(found)), session(choice.cameraType, choice.board, cameras) {
        if (mute == MuteBoard::Refused) {
            RequireAnswer(session);
        }
    }

    void* const& Handle() const { return session.Handle(); }

    const std::vector<Camera> cameras;
    const Session session;
};

}  // namespace Korvex3Sync::korvexctl
