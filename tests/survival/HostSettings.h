#pragma once

#include "Korvex3Sync/Types.h"

namespace Korvex3Sync::tests::survival {

/// All settings that the host program makes with the command "settings N".
struct HostSettings {
    explicit HostSettings(int n)
        : route(static_cast<CONTROLROUTE>(n % 3)),
          state(static_cast<STROBE_STATE>(1 + n % 4)),
          laserMode(static_cast<LASERWORKMODE>(n % 4)),
          laser(n % 2 == 0),
          infrared(n % 2 == 1),
          period(10 + n % 5),
          brightness(20 + n),
          project(static_cast<PROJECTWORKTYPES>(n % 3)),
          texture(30 + n),
          ratio(31 + n),
          ratioWithTexture(32 + n),
          laserRatio(40 + n),
          projectRatio(41 + n),
          infraredRatio(42 + n),
          exposures{1.5 + n % 10, 2.5 + n % 10},
          gains{1 + n % 5, 2 + n % 5},
          distance(static_cast<DISTANCESTATUS>(n % 4)) {}

    CONTROLROUTE route;
    STROBE_STATE state;
    LASERWORKMODE laserMode;
    bool laser;
    bool infrared;
    int period;
    int brightness;
    PROJECTWORKTYPES project;
    int texture;
    int ratio;
    int ratioWithTexture;
    int laserRatio;
    int projectRatio;
    int infraredRatio;
    double exposures[2];  // by camera order
    int gains[2];
    DISTANCESTATUS distance;
};

}  // namespace Korvex3Sync::tests::survival
