#include "korvexctl/commands/SnapCommand.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <atomic>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>

#include "korvexctl/cli/Interrupt.h"
#include "korvexctl/cli/NumberOption.h"
#include "korvexctl/cli/PathOption.h"
#include "korvexctl/commands/Commands.h"
#include "korvexctl/files/WriteFile.h"
#include "korvexctl/head/ConnectedHead.h"
#include "korvexctl/head/LeftOn.h"
#include "korvexctl/pictures/Picture.h"
#include "platform/os/FileName.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr double kExposureMs = 5;
constexpr int kGain = 0;
constexpr const char* kNothingWritten = "interrupted: no image was written";

const Setting& CameraSetting(CameraPart part, int order) {
    const auto all = AllSettings();
    return *std::find_if(all.begin(), all.end(), [&](const Setting& setting) {
        return setting.part == part && setting.cameraOrder == order;
    });
}

/// Without colour frames the snapshot would wait for its full limit.
void RequireColor(const std::vector<Camera>& cameras) {
    if (std::none_of(cameras.begin(), cameras.end(), [](const Camera& c) { return c.color; })) {
        throw CommandError(ExitCode::DeviceRefused, "the head has no colour camera");
    }
}

/// Takes the images. After an interrupt they are dropped, and CommandError(Interrupted) is thrown.
Snapshot Take(const ConnectedHead& head, const SnapshotOptions& options, const Interrupt& interrupt,
              LeftOn& leftOn) {
    interrupt.ThrowIfCame(kNothingWritten);
    Snapshot snapshot;
    try {
        snapshot = TakeSnapshot(head, options, leftOn);
    } catch (const CommandError&) {
        interrupt.ThrowIfCame(kNothingWritten);
        throw;
    }
    return snapshot;
}

/// Writes the images that arrived, each whole, until an interrupt.
Outcome Write(const SnapChoice& asked, const Camera& camera, const Snapshot& snapshot,
              const Interrupt& interrupt, const StoreFile& store, Output& output) {
    Outcome outcome;
    nlohmann::json& images = outcome.figures["images"] = nlohmann::json::array();
    std::size_t written = 0;
    for (std::size_t i = 0; i < snapshot.images.size(); ++i) {
        const std::filesystem::path file = asked.folder / ("snap_" + std::to_string(i) + ".png");
        nlohmann::json image{{"file", nullptr}, {"exposure_ms", nullptr}, {"gain", nullptr}};
        if (i > 0) {
            image["exposure_ms"] = asked.snapshot.exposures.at(i - 1);
            image["gain"] = asked.snapshot.gains.at(i - 1);
        }
        const Mosaic& mosaic = snapshot.images[i];
        if (!mosaic) {
            outcome.code = ExitCode::DeviceRefused;
            outcome.message = "image " + std::to_string(i) + " did not arrive";
        } else if (!interrupt.Came()) {
            store(file, EncodePng(Demosaic(mosaic.get(), camera.width, camera.height)));
            image["file"] = os::TextOf(file);
            output.Line(os::TextOf(file));
            ++written;
        }
        images.push_back(std::move(image));
    }
    if (interrupt.Came()) {
        outcome.code = ExitCode::Interrupted;
        outcome.message = "interrupted: " + std::to_string(written) + " of " +
                          std::to_string(snapshot.images.size()) + " images written";
    } else if (outcome.code == ExitCode::Done && !snapshot.notTaken.empty()) {
        outcome.code = ExitCode::DeviceRefused;
        outcome.message = snapshot.notTaken;
    }
    return outcome;
}

Outcome TakeAndWrite(const SnapChoice& asked, LeftOn& leftOn, Output& output,
                     const StoreFile& store) {
    std::vector<Camera> cameras = FindCameras(asked.head.cameraType);
    if (!cameras.empty()) {
        RequireOnHead(CameraSetting(CameraPart::Exposure, asked.snapshot.camera), cameras.size());
        RequireColor(cameras);
        PrepareFolder(asked.folder);
    }
    std::atomic<bool> taken{false};
    // The library cannot cut a snapshot short.
    const Interrupt interrupt([&taken] {
        return std::string(taken ? "finishing the file that is being written"
                                 : "trigger and strobe are put back when the snapshot ends, which "
                                   "takes up to 100 s for an image that does not arrive");
    });
    return interrupt.OutcomeOf([&] {
        const ConnectedHead head(asked.head, std::move(cameras));
        const Snapshot snapshot = Take(head, asked.snapshot, interrupt, leftOn);
        taken = true;
        interrupt.ThrowIfCame(kNothingWritten);
        Outcome outcome = Write(asked, head.cameras.front(), snapshot, interrupt, store, output);
        leftOn.Judge(!leftOn.Any() || BoardAnswers(head.session), outcome);
        return outcome;
    });
}

/// An option with one value for each image after the first, checked as the setting is.
template <typename Number>
void AddPerImage(CLI::App& command, const char* name, std::vector<Number>& values,
                 const Setting& setting, const std::string& help) {
    const Field field = setting.fields.front();
    const auto count = static_cast<int>(values.size());
    std::ostringstream text;
    text << help << ", " << RangeText(setting) << " (default " << values.front() << ")";
    CLI::Option& option = *command.add_option(name, values, text.str())
                               ->type_name(count == 1 ? "VALUE" : "VALUE VALUE")
                               ->type_size(1)
                               ->expected(count);
    TakeNumber(option, [field](const std::string& typed) { return ReadValueText(field, typed); });
}

RunCommand AddSnapCommand(CLI::App& command, bool infrared) {
    const auto asked = std::make_shared<SnapChoice>();
    SnapshotOptions& snapshot = asked->snapshot;
    snapshot.infrared = infrared;
    snapshot.exposures.assign(infrared ? 2 : 1, kExposureMs);
    snapshot.gains.assign(snapshot.exposures.size(), kGain);
    AddHeadOptions(command, asked->head, true);
    AddNumber(command, "--camera", snapshot.camera, "N", 0, kCameraOrders - 1,
              "Camera order that exposure and gain are set for");
    const std::string which = infrared ? "the second and the third image" : "the second image";
    AddPerImage(command, "--exposure", snapshot.exposures, CameraSetting(CameraPart::Exposure, 0),
                "Exposure for " + which);
    AddPerImage(command, "--gain", snapshot.gains, CameraSetting(CameraPart::Gain, 0),
                "Gain for " + which);
    const Field& route = RequireSetting("strobe").fields.front();
    AddNumber(command, "--route", snapshot.route, "N", static_cast<int>(route.low),
              static_cast<int>(route.high), "Strobe output, a number");
    AddPathOption(command, "--out", asked->folder, "DIR",
                  "Folder for snap_0.png, snap_1.png and so on; created if missing (default: the "
                  "current folder)");
    command.footer(
        "Waits up to 100 s for each image. Afterwards the trigger is off, the strobe is in state "
        "1, "
        "and exposure and gain are restored if the camera reports them. Ctrl-C waits for this too "
        "and writes no further image; a second Ctrl-C quits at once.");
    return [asked](Output& output) { return RunSnap(*asked, output); };
}

}  // namespace

Outcome RunSnap(const SnapChoice& asked, Output& output, const StoreFile& store) {
    return TellingLeftOn(
        [&](LeftOn& leftOn) { return TakeAndWrite(asked, leftOn, output, store); });
}

RunCommand AddSnap(CLI::App& command) {
    return AddSnapCommand(command, false);
}

RunCommand AddSnapIr(CLI::App& command) {
    return AddSnapCommand(command, true);
}

}  // namespace Korvex3Sync::korvexctl
