#pragma once

#include <vector>

#include "korvexctl/Cameras.h"
#include "korvexctl/HeadChoice.h"
#include "korvexctl/Session.h"

namespace Korvex3Sync::korvexctl {

/// The cameras of a head and the connection to it, for as long as it lives.
struct ConnectedHead {
    /// Throws CommandError (NoCamera, NotConnected).
    explicit ConnectedHead(const HeadChoice& choice)
        : ConnectedHead(choice, FindCameras(choice.cameraType)) {}
    /// For a command that looks at the cameras before it connects.
    ConnectedHead(const HeadChoice& choice, std::vector<Camera> found)
        : cameras(std::move(found)), session(choice.cameraType, choice.board, cameras) {}

    void* const& Handle() const { return session.Handle(); }

    const std::vector<Camera> cameras;
    const Session session;
};

}  // namespace Korvex3Sync::korvexctl
