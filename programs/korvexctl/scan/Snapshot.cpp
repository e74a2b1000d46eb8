#include "korvexctl/scan/Snapshot.h"

#include <Korvex3Sync/Images.h>
#include <Korvex3Sync/Light.h>

#include "korvexctl/cli/ExitCodes.h"
#include "korvexctl/head/ConnectedHead.h"
#include "korvexctl/head/LeftOn.h"

namespace Korvex3Sync::korvexctl {

namespace {

/// Remembers what a snapshot changes, as far as it can be read, and restores it.
class SnapshotSettings {
public:
    SnapshotSettings(void* const& handle, const SnapshotOptions& options, LeftOn& leftOn)
        : m_handle(handle), m_options(options), m_leftOn(leftOn) {
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
        m_leftOn.Note("trigger", EnableVideoTrigger(m_handle, TRIGGER_SINGLE_COLOR, false));
        m_leftOn.Note("strobe",
                      SetStrobeControlledByTrigger(
                          m_handle, static_cast<CONTROLROUTE>(m_options.route), STROBE_STATE_1));
        if (m_options.infrared) {
            // The third image switches this output, whichever was requested.
            m_leftOn.Note("infrared strobe",
                          SetStrobeControlledByTrigger(m_handle, CONTROL_ROUTE_1, STROBE_STATE_1));
        }
        try {
            Apply(m_handle, m_camera);
        } catch (const std::exception&) {
            // The head is failing; the command reports that by itself.
        }
    }
    SnapshotSettings(const SnapshotSettings&) = delete;
    SnapshotSettings& operator=(const SnapshotSettings&) = delete;

private:
    void* const& m_handle;
    const SnapshotOptions& m_options;
    LeftOn& m_leftOn;
    std::vector<Assignment> m_camera;
};

/// The library does not report a camera that did not accept them.
std::string NotTaken(void* const& handle, const SnapshotOptions& options) {
    std::vector<Assignment> asked;
    for (const Setting& setting : AllSettings()) {
        if (setting.cameraOrder == options.camera) {
            const bool exposure = setting.part == CameraPart::Exposure;
            asked.push_back({&setting,
                             {exposure ? options.exposures.back()
                                       : static_cast<double>(options.gains.back())}});
        }
    }
    try {
        VerifyApplied(handle, asked, [](const Assignment&, const Reading&) {});
    } catch (const CommandError& error) {
        return error.what();
    }
    return "";
}

}  // namespace

Snapshot TakeSnapshot(const ConnectedHead& head, SnapshotOptions options, LeftOn& leftOn) {
    const SnapshotSettings settings(head.Handle(), options, leftOn);
    std::vector<unsigned char*> images;
    // The reported size is not that of these images.
    int width = 0;
    int height = 0;
    const auto route = static_cast<CONTROLROUTE>(options.route);
    const RETSTATUS status =
        options.infrared ? SnapColorImageForIR(head.Handle(), images, width, height, options.camera,
                                               options.exposures, options.gains, route)
                         : SnapColorImage(head.Handle(), images, width, height, options.camera,
                                          options.exposures.at(0), options.gains.at(0), route);
    Snapshot snapshot;
    snapshot.images.reserve(images.size());
    for (unsigned char* image : images) {
        snapshot.images.emplace_back(image);
    }
    Require(status, "take colour images");
    snapshot.notTaken = NotTaken(head.Handle(), options);
    return snapshot;
}

}  // namespace Korvex3Sync::korvexctl
