#include "korvexctl/health/Doctor.h"
#include "korvexctl/cli/ExitCodes.h"

#include <Korvex3Sync/Connection.h>
#include <Korvex3Sync/Discovery.h>
#include <Korvex3Sync/Light.h>

#include <algorithm>
#include <iomanip>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>

#include "korvexctl/UdevRule.h"
#include "korvexctl/head/Boards.h"
#include "korvexctl/head/Drivers.h"
#include "korvexctl/health/Examined.h"
#include "korvexctl/health/TrialScan.h"
#include "platform/include/BoardFacts.h"
#include "platform/os/FileName.h"
#include "virtual_head/Request.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr std::chrono::seconds kShortLimit{10};
constexpr std::chrono::seconds kLongLimit{30};
constexpr std::chrono::seconds kFirstPollLimit{5};

constexpr const char* kHeadCheck = "head";
constexpr const char* kPlugIn =
    "switch the head on, plug it in, and try its cable and another port";
constexpr const char* kNoBoard = "no board";
constexpr const char* kNoHead = "no head";
constexpr const char* kUsb3Advice =
    "use a USB 3 port of the computer itself (often blue, or marked SS) and the cable of the head "
    "or another USB 3 cable, without hubs; then plug the head in again";
constexpr const char* kStopped =
    "the head stopped delivering, or is too slow: check the power and the cable of cameras and "
    "board, and close other programs; if that does not help, switch the head off and on";
constexpr const char* kRestart =
    "switch the head off and on; if that does not help, its board is "
    "faulty or its firmware does not match";

/// What the checks know about the machine, in addition to the head.
struct Patient : Examined {
    explicit Patient(const DoctorOptions& options_) : Examined(options_.head), options(options_) {}

    bool Board() const { return onUsb3.has_value() || !plugged.empty(); }
    bool NoHead() const { return !simulated && !there; }

    const DoctorOptions options;
    bool simulated = false;
    bool there = false;                  // a part of a real head is
    int attached = 0;                    // cameras, by their number
    std::optional<bool> onUsb3;          // nothing: the library finds no board
    std::vector<os::UsbDevice> plugged;  // as the system sees them
};

/// Looks for the head, and sees whether there is anything to check.
Finding CheckHead(Patient& patient) {
    patient.simulated = virtual_head::RequestedVirtualHead() != nullptr;
    const Figures figures(nlohmann::json{{"simulated", patient.simulated}});
    bool onUsb3 = false;
    if (IsConnectedOnU3("", onUsb3) == STATUS_SUCCESS) {
        patient.onUsb3 = onUsb3;
    }
    if (patient.simulated) {
        return {Verdict::Ok, "SIMULATED: nothing below is about a real head", "", figures};
    }
    patient.plugged = os::FindUsbDevices(patient.options.machine, hardware::kBoardVendor,
                                         hardware::kBoardProduct);
    GetCameraCount(patient.choice.cameraType.c_str(), patient.attached);
    if (!patient.Board() && patient.attached == 0) {
        return {Verdict::Fault, std::string("no board is attached; ") + kNoDriver, kNoDriverAdvice,
                figures};
    }
    patient.there = true;
    return {Verdict::Ok, "real devices; nothing is simulated", "", figures};
}

Finding CheckBoard(const Patient& patient) {
    if (patient.NoHead()) {
        return {Verdict::NotRun, kNoHead};
    }
    const std::string serials = SerialsText(FindBoards(patient.options.machine));
    const std::string found = "found" + (serials.empty() ? "" : ", serial " + serials);
    if (patient.simulated) {
        return patient.onUsb3 ? Finding{Verdict::Ok, found + "; it is simulated"}
                              : Finding{Verdict::Fault, "not found on USB", kPlugIn};
    }
    std::string where;
    for (const os::UsbDevice& board : patient.plugged) {
        where += (where.empty() ? "" : "; ") + board.Where();
    }
    if (patient.onUsb3) {
        return {Verdict::Ok, found + (where.empty() ? "" : ", at " + where)};
    }
    if (!where.empty()) {
        return {
            Verdict::Fault,
            "the system lists it at " + where + ", but the library does not find it",
            "plug the head in again; if that does not help, see whether the USB-tree library is "
            "another one than ours (docs/architecture.md)"};
    }
    return {Verdict::Fault, "not found on USB", kPlugIn};
}

Finding CheckSpeed(const Patient& patient) {
    if (!patient.Board()) {
        return {Verdict::NotRun, kNoBoard};
    }
    const bool fast = patient.onUsb3
                          ? *patient.onUsb3
                          : std::all_of(patient.plugged.begin(), patient.plugged.end(),
                                        [](const os::UsbDevice& board) { return board.IsUsb3(); });
    if (fast) {
        return {Verdict::Ok, "USB 3"};
    }
    return {Verdict::Fault, "the head is on USB 2 or slower: images would be lost", kUsb3Advice};
}

std::string UdevAdvice() {
    return std::string("as root, write the following into /etc/udev/rules.d/") + kUdevRuleFile +
           ", run udevadm control --reload-rules and udevadm trigger, and plug the head in "
           "again:\n" +
           kUdevRule;
}

Finding CheckPermissions(const Patient& patient) {
    if (patient.simulated) {
        return {Verdict::NotRun, "the head is simulated"};
    }
    if (patient.plugged.empty()) {
        return {Verdict::NotRun, patient.onUsb3 ? "the system does not list the board" : kNoBoard};
    }
    for (const os::UsbDevice& board : patient.plugged) {
        if (board.openError) {
            return {Verdict::Fault,
                    "this user cannot open " + os::TextOf(board.node) +
                        " for reading and writing: " + board.openError.message(),
                    UdevAdvice()};
        }
    }
    return {Verdict::Ok, "this user can open the board for reading and writing"};
}

Finding CheckFirmware(const Patient& patient) {
    if (!patient.onUsb3) {
        return {Verdict::NotRun, kNoBoard};
    }
    std::string version;
    const RETSTATUS status = GetFirewareVersion(patient.choice.board.c_str(), version);
    if (status != STATUS_SUCCESS) {
        return {Verdict::Fault, "cannot read the firmware version: " + StatusText(status),
                patient.choice.board.empty() ? kRestart : "check that --board names this board"};
    }
    return {Verdict::Ok, version, "", Figures(nlohmann::json{{"firmware", version}})};
}

std::string Described(const std::vector<Camera>& cameras) {
    const Camera& first = cameras.front();
    std::string text = std::to_string(cameras.size()) + ", " + std::to_string(first.width) + " x " +
                       std::to_string(first.height) + (first.color ? ", colour:" : ", mono:");
    for (const Camera& camera : cameras) {
        text += " " + camera.serial;
    }
    return text;
}

Finding CheckCameras(Patient& patient) {
    if (patient.NoHead()) {
        return {Verdict::NotRun, kNoHead};
    }
    patient.cameras = FindCameras(patient.choice.cameraType);
    const Figures figures(ToJson(patient.cameras));
    int& attached = patient.attached;
    GetCameraCount(patient.choice.cameraType.c_str(), attached);
    if (patient.cameras.empty()) {
        return {Verdict::Fault,
                attached == 0 ? "none found (type " + patient.choice.cameraType + ")"
                              : std::to_string(attached) + " attached, and none can be opened",
                attached == 0
                    ? "check that --type names the head's cameras, and check cable and power"
                    : "close other programs that use the head, and plug it in again",
                figures};
    }
    const bool equal =
        std::all_of(patient.cameras.begin(), patient.cameras.end(), [&](const Camera& camera) {
            return camera.width == patient.cameras.front().width &&
                   camera.height == patient.cameras.front().height;
        });
    if (!equal || attached != static_cast<int>(patient.cameras.size())) {
        return {Verdict::Warning,
                Described(patient.cameras) + "; " +
                    (equal ? std::to_string(attached) + " are attached" : "sizes differ"),
                "plug the head in again; a camera that stays missing or different is faulty",
                figures};
    }
    return {Verdict::Ok, Described(patient.cameras), "", figures};
}

Finding CheckConnection(Patient& patient) {
    if (!patient.onUsb3) {
        return {Verdict::NotRun, kNoBoard};
    }
    if (patient.cameras.empty()) {
        return {Verdict::NotRun, "no camera"};
    }
    try {
        patient.head.emplace(patient.choice, patient.cameras, MuteBoard::Taken);
    } catch (const CommandError& error) {
        return {Verdict::Fault, error.what(),
                "close other programs that use the head; see "
                "\"permissions\" and \"cameras\""};
    }
    return {Verdict::Ok, "board and cameras open"};
}

Finding CheckAnswer(Patient& patient) {
    if (!patient.head) {
        return {Verdict::NotRun, "not connected"};
    }
    int period = 0;
    const RETSTATUS status = GetVideoTriggerPeriod(patient.head->Handle(), period);
    if (status != STATUS_SUCCESS) {
        return {Verdict::Fault, "the board opens, but does not answer", kRestart};
    }
    // Watching the status switches the heartbeat on and detects a lost board.
    patient.watch.Watch(patient.head->session);
    patient.answers = patient.WaitForAnswer(kFirstPollLimit);
    if (!patient.answers) {
        return {Verdict::Fault, "the board answers a query, but not its status poll", kRestart};
    }
    patient.found.emplace(patient.head->Handle(), patient.cameras.size());
    return {Verdict::Ok, "the board answers its status poll"};
}

Finding JudgeTrial(const TrialResult& trial, int asked) {
    std::ostringstream text;
    text << trial.counts.sets << " sets";
    if (const auto rate = trial.counts.Rate()) {
        text << ", " << std::fixed << std::setprecision(1) << *rate << " a second";
    }
    const Figures figures(trial.ToJson());
    const std::string lost = trial.LostAny() ? "; lost: " + trial.LossText() : "";
    if (trial.counts.sets == 0) {
        return {Verdict::Fault, "no set arrived" + lost,
                trial.LostAny() ? trial.Cure()
                                : "no frame reached this computer: check the cable between board "
                                  "and cameras, and the cameras' power",
                figures};
    }
    if (trial.counts.odd > 0 || trial.counts.backwards > 0) {
        text << "; " << trial.counts.odd << " of them malformed, " << trial.counts.backwards
             << " out of order";
        return {Verdict::Fault, text.str(), "see the log (-v)", figures};
    }
    if (trial.counts.sets < asked) {
        // Losses on the way are less severe.
        return {Verdict::Fault, text.str() + "; expected " + std::to_string(asked) + lost, kStopped,
                figures};
    }
    if (trial.LostAny()) {
        return {Verdict::Warning, text.str() + lost, trial.Cure(), figures};
    }
    return {Verdict::Ok, text.str() + (trial.lost ? ", nothing lost" : ""), "", figures};
}

Finding CheckTrial(Patient& patient) {
    if (!patient.Answers()) {
        return {Verdict::NotRun, patient.head ? "the board does not answer" : "not connected"};
    }
    TrialOptions options;
    options.sets = patient.options.trialImageSets;
    options.limit = patient.options.trialLimit;
    options.light.mode = GivesColor(patient.cameras, TRIGGER_LASER_LINES_COLOR)
                             ? TRIGGER_LASER_LINES_COLOR
                             : TRIGGER_LASER_LINES;
    try {
        return JudgeTrial(RunTrial(*patient.head, options, patient.leftOn), options.sets);
    } catch (const CommandError& error) {
        return {Verdict::Fault, error.what(), kRestart};
    }
}

}  // namespace

std::vector<Step> DoctorSteps(const DoctorOptions& options) {
    const auto patient = std::make_shared<Patient>(options);
    const auto step = [&](const char* name, std::chrono::milliseconds limit, auto check) {
        return Step{name, limit, [patient, check] { return check(*patient); }};
    };
    return {step(kHeadCheck, kShortLimit, CheckHead),
            step("board", kShortLimit, CheckBoard),
            step("USB speed", kShortLimit, CheckSpeed),
            step("permissions", kShortLimit, CheckPermissions),
            step("firmware", kShortLimit, CheckFirmware),
            step("cameras", kLongLimit, CheckCameras),
            step("connection", kLongLimit, CheckConnection),
            step("answers", kLongLimit, CheckAnswer),
            step("trial scan", kLongLimit, CheckTrial),
            PutBackStep(patient, Verdict::Warning),
            DisconnectStep(patient)};
}

Outcome DoctorOutcome(const std::vector<StepRow>& rows, bool interrupted) {
    Outcome outcome;
    const bool canScan = !interrupted && Count(rows, Verdict::Fault) == 0;
    const bool healthy = canScan && Count(rows, Verdict::Warning) == 0;
    *outcome.figures = {{"simulated", nullptr}, {"healthy", healthy}, {"can_scan", canScan}};
    nlohmann::json& checks = outcome.figures["checks"] = nlohmann::json::array();
    for (const StepRow& row : rows) {
        checks.push_back(ToJson(row, kDoctorWords));
        if (row.name == kHeadCheck && row.finding.figures->is_object()) {
            outcome.figures["simulated"] = row.finding.figures["simulated"];
        }
    }
    if (interrupted) {
        outcome.code = ExitCode::Interrupted;
        outcome.message = "interrupted";
    } else if (!canScan) {
        outcome.code = ExitCode::NotHealthy;
        outcome.message = "cannot scan: " + Names(rows, Verdict::Fault);
    } else if (!healthy) {
        outcome.code = ExitCode::Warnings;
        outcome.message = "can scan, with warnings: " + Names(rows, Verdict::Warning);
    }
    return outcome;
}

}  // namespace Korvex3Sync::korvexctl
