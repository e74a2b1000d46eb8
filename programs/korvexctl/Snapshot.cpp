#include "korvexctl/Snapshot.h"

#include <Korvex3Sync/Images.h>
#include <Korvex3Sync/Light.h>

#include "korvexctl/ConnectedHead.h"
#include "korvexctl/ExitCodes.h"

namespace Korvex3Sync::korvexctl {

namespace {

/// Remembers what a snapshot changes and the head tells, and puts it back.
class SnapshotSettings {
public:
    SnapshotSettings(void* const& handle, const SnapshotOptions& options)
        : m_handle(handle), m_options(options) {
        for (const Setting& setting : AllSettings()) {
            if (setting.cameraOrder == options.camera) {
                Reading reading = ReadSetting(handle, setting);
                if (reading.Known()) {
                    m_camera.push_back({&setting, std::move(reading.value)});
                }
            }
        }
    }
    ~SnapshotSettings() {
        EnableVideoTrigger(m_handle, TRIGGER_SINGLE_COLOR, false);
        SetStrobeControlledByTrigger(m_handle, static_cast<CONTROLROUTE>(m_options.route),
                                     STROBE_STATE_1);
        if (m_options.infrared) {
            // The third image switches this output, whichever was asked for.
            SetStrobeControlledByTrigger(m_handle, CONTROL_ROUTE_1, STROBE_STATE_1);
        }
        try {
            Apply(m_handle, m_camera);
        } catch (const std::exception&) {
            // A head that is going away; the command says so for what it came for.
        }
    }
    SnapshotSettings(const SnapshotSettings&) = delete;
    SnapshotSettings& operator=(const SnapshotSettings&) = delete;

private:
    void* const& m_handle;
    const SnapshotOptions& m_options;
    std::vector<Assignment> m_camera;
};

}  // namespace

std::vector<Mosaic> TakeSnapshot(const ConnectedHead& head, SnapshotOptions options) {
    const SnapshotSettings settings(head.Handle(), options);
    std::vector<unsigned char*> images;
    // What is reported there is no size of these images.
    int width = 0;
    int height = 0;
    const auto route = static_cast<CONTROLROUTE>(options.route);
    const RETSTATUS status =
        options.infrared ? SnapColorImageForIR(head.Handle(), images, width, height, options.camera,
                                               options.exposures, options.gains, route)
                         : SnapColorImage(head.Handle(), images, width, height, options.camera,
                                          options.exposures.at(0), options.gains.at(0), route);
    std::vector<Mosaic> mosaics;
    mosaics.reserve(images.size());
    for (unsigned char* image : images) {
        mosaics.emplace_back(image);
    }
    Require(status, "take colour images");
    return mosaics;
}

}  // namespace Korvex3Sync::korvexctl
