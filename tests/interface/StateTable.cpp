#include "interface/StateTable.h"

#include <gtest/gtest.h>

#include "interface/EveryExport.h"

namespace Korvex3Sync::tests {
namespace {

using Calls = std::vector<std::string>;

std::function<RETSTATUS(void* const&)> CallOf(const std::string& name) {
    for (const Export& one : EveryExport()) {
        if (one.name == name) {
            return one.call;
        }
    }
    ADD_FAILURE() << "no export " << name;
    return {};
}

/// What asks no camera, which may be as it likes.
Row WithoutCamera(const std::string& name, const Cell& connected, const Cell& noBoard,
                  const Cell& boardLost) {
    return {name, CallOf(name), connected, noBoard, boardLost, connected, connected};
}
/// A board operation that a lost board refuses, and one that is sent all the same.
Row Refused(const std::string& name, const Calls& calls) {
    return WithoutCamera(name, {k7, calls}, {k6, {}}, {k0, {}});
}
Row Sent(const std::string& name, const Calls& calls) {
    return WithoutCamera(name, {k7, calls}, {k6, {}}, {k7, calls});
}
/// What reaches a camera: C1 at connect, C2 after the reconnection that found no board. A camera
/// that fails is asked the same, and never spoils the answer.
Row Camera(const std::string& name, const Calls& one, const Calls& two, const Calls& closed) {
    return {name, CallOf(name), {k7, one}, {k7, two}, {k7, one}, {k7, closed}, {k7, one}};
}
Row Retired(const std::string& name) {
    const Cell cell{k5, {}};
    return {name, CallOf(name), cell, cell, cell, cell, cell, cell};
}

std::string Open(const std::string& serial) {
    return "zr3DInitHidDev(null, 3267, 5752, " + serial + ")";
}

Calls operator+(Calls first, const Calls& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Calls Reopened(const std::string& camera) {
    return {"CloseCamera(" + camera + ")", "OpenCamera(" + camera + ", KV00R1, 8, 4)",
            "GetDeviceType(" + camera + ")", "StartCamera(" + camera + ", 0)"};
}

const Calls kBoardReopened{"zr3DExitHidDev(B1)", Open("BOARD"), "zr3DQueryCurrentStatus(B2)"};

/// The write-back of a connection in which nothing was set.
Calls WrittenBack() {
    return {"zr3DOpenOrCloseStrobeFlicker(B2, 2, 1)",
            "zr3DSetDistanceIndicateState(B2, 0)",
            "zr3DProject(B2, 0)",
            "zr3DSetProjectorBrightness(B2, 10)",
            "zr3DSetWorkTime(B2, 84, 1000)",
            "zr3DSetIRLaserLevel(B2, 1)",
            "zr3DSetLaserEnable(B2, 0, 0)",
            "zr3DSetDutioRatio(B2, 49, 100)",
            "zr3DSetWorkTime(B2, 82, 1000)",
            "zr3DSetIRLaserEnable(B2, 0)",
            "zr3DSetWorkTime(B2, 86, 1000)",
            "zr3DSetDutioRatio(B2, 53, 100)",
            "zr3DSetVideoTrigleMode(B2, 5)",
            "zr3DSetVideoTriggerPeriod(B2, 10)",
            "zr3DSetDutioRatio(B2, 51, 100)",
            "zr3DSetLedDutioRatio(B2, 41, 100, 100, 100)",
            "zr3DSetLedWorkTime(B2, 1, 1000)",
            "zr3DSetLedWorkTime(B2, 0, 1000)",
            "zr3DEnableHeartbeat(B2, 1)"};
}

Calls Reconnected(const std::string& camera) {
    return kBoardReopened + Reopened(camera) + WrittenBack();
}

const Calls kSnapFirst{"zr3DSetVideoTrigleMode(B1, 5)", "zr3DOpenOrCloseStrobeFlicker(B1, 1, 3)",
                       "zr3DSetVideoTrigleMode(B1, 4)"};
/// A snapshot without a board, or with one that refuses, waits and gives up.
const Cell kNoSnap{k0, {}};

Calls SnapSecond(const std::string& word) {
    return {"zr3DSetVideoTrigleMode(B1, 5)", "zr3DOpenOrCloseStrobeFlicker(B1, 1, 1)",
            "SetCameraIntParam(C1, 5, " + word + ")", "ResetCameraState(C1)",
            "zr3DSetVideoTrigleMode(B1, 4)"};
}

std::vector<Row> Cameras() {
    const Calls released{"ReleaseCamera(C1)", "CreateCamera(KV00R1)"};
    const std::string word = "SetCameraIntParam(C1, 5, 1034)";
    return {
        Camera("CloseDeviceCamera", {"ReleaseCamera(C1)"}, {"ReleaseCamera(C2)"}, {}),
        Camera("GetConnectCameraCount", {}, {}, {}),
        Camera("GetScanStatistics", {}, {}, {}),
        Camera("GetCameraSerialNumber", {"GetSerialNo(C1)"}, {"GetSerialNo(C2)"},
               {"GetSerialNo(null)"}),
        Camera("GetCameraResolution", {"GetResolution(C1)"}, {"GetResolution(C2)"}, {}),
        {"SetCameraExposureAndGain",
         CallOf("SetCameraExposureAndGain"),
         {k7, {word}},
         {k7, {"SetCameraIntParam(C2, 5, 1034)"}},
         {k7, {word}},
         {k7, {}},
         {k7, {word, word}}},  // tried a second time
        Camera("GetCameraExposureAndGain",
               {"SetCameraIntParam(C1, 5, 0)", "GetExposureTime(C1)", "SetCameraIntParam(C1, 5, 0)",
                "GetGain(C1)"},
               {"SetCameraIntParam(C2, 5, 0)", "GetExposureTime(C2)", "SetCameraIntParam(C2, 5, 0)",
                "GetGain(C2)"},
               {}),
        Retired("SetCameraExposure"),
        Retired("GetCameraExposure"),
        Retired("SetCameraGain"),
        Retired("GetCameraGain"),
        {"SnapColorImage",
         CallOf("SnapColorImage"),
         {k7, kSnapFirst + SnapSecond("1034")},
         kNoSnap,
         kNoSnap,
         {k0, kSnapFirst},
         {k0, kSnapFirst}},
        {"SnapColorImageForIR",
         CallOf("SnapColorImageForIR"),
         {k7, kSnapFirst + SnapSecond("1034") +
                  Calls{"zr3DSetVideoTrigleMode(B1, 5)", "zr3DOpenOrCloseStrobeFlicker(B1, 1, 3)",
                        "SetCameraIntParam(C1, 5, 2068)", "zr3DSetVideoTrigleMode(B1, 4)"}},
         kNoSnap,
         kNoSnap,
         {k0, kSnapFirst},
         {k0, kSnapFirst}},
        WithoutCamera("SetScanCallBackFunction", {k7, {}}, {k7, {}}, {k7, {}}),
        {"ReconnectDevice",
         CallOf("ReconnectDevice"),
         {k7, released + Reconnected("C2")},
         {k0, {"ReleaseCamera(C2)", "CreateCamera(KV00R1)", Open("BOARD")}},
         {k0, released + Calls{"zr3DExitHidDev(B1)", Open("BOARD"), "zr3DQueryCurrentStatus(B2)",
                               "zr3DResetDevice(B2)", "zr3DExitHidDev(B2)", Open("BOARD"),
                               "zr3DQueryCurrentStatus(B3)"}},
         {k7, Calls{"CreateCamera(KV00R1)"} + Reconnected("C2")},
         {k7, released + kBoardReopened + WrittenBack()}},
    };
}

std::vector<Row> Board() {
    const std::string first = "zr3DSetLedWorkTime(B1, 1, 1)";
    return {
        Refused("WriteUserInfomation", {"zr3DWriteUserInfomation(B1, 0, a, 1)"}),
        Refused("ReadUserInfomation", {"zr3DReadUserInfomation(B1, 0)"}),
        Sent("EnableHeartbeat", {"zr3DEnableHeartbeat(B1, 1)"}),
        Refused("Project", {"zr3DProject(B1, 1)"}),
        Refused("SetProjectorBrightness", {"zr3DSetProjectorBrightness(B1, 1)"}),
        Refused("GetProjectorBrightness", {"zr3DQueryProjectorBrightness(B1)"}),
        Refused("EnableBlueLaser", {"zr3DSetLaserEnable(B1, 1, 1)"}),
        Refused("EnableIRLaser", {"zr3DSetIRLaserEnable(B1, 1)"}),
        Sent("SetIRLaserBrightnessLevel", {"zr3DSetIRLaserLevel(B1, 1)"}),
        Refused("SetStrobeControlledByTrigger", {"zr3DOpenOrCloseStrobeFlicker(B1, 1, 1)"}),
        Refused("SetStrobeDutioRatio", {"zr3DSetLedDutioRatio(B1, 41, 1, 2, 3)"}),
        Refused("GetStrobeDutioRatio", {"zr3DQueryLedDutioRatio(B1, 48)"}),
        Refused("SetLaserLineDutioRatio", {"zr3DSetDutioRatio(B1, 49, 1)"}),
        Refused("GetLaserLineDutioRatio", {"zr3DQueryDutioRatio(B1, 50)"}),
        Refused("SetProjectDutioRatio", {"zr3DSetDutioRatio(B1, 51, 1)"}),
        Refused("GetProjectDutioRatio", {"zr3DQueryDutioRatio(B1, 52)"}),
        Refused("SetIRLaserDutioRatio", {"zr3DSetDutioRatio(B1, 53, 1)"}),
        Refused("GetIRLaserDutioRatio", {"zr3DQueryDutioRatio(B1, 54)"}),
        Sent("SetStrobeWorkTime", {first, "zr3DSetLedWorkTime(B1, 0, 2)"}),
        Refused("GetStrobeWorkTime",
                {"zr3DQueryLedWorkTime(B1, 1)", "zr3DQueryLedWorkTime(B1, 0)"}),
        Sent("SetLaserLineWorkTime", {"zr3DSetWorkTime(B1, 82, 1)"}),
        Refused("GetLaserLineWorkTime", {"zr3DQueryWorkTime(B1, 83)"}),
        Sent("SetProjectWorkTime", {"zr3DSetWorkTime(B1, 84, 1)"}),
        Refused("GetProjectWorkTime", {"zr3DQueryWorkTime(B1, 85)"}),
        Sent("SetIRLaserWorkTime", {"zr3DSetWorkTime(B1, 86, 1)"}),
        Refused("GetIRLaserWorkTime", {"zr3DQueryWorkTime(B1, 87)"}),
        Refused("SetVideoTriggerPeriod", {"zr3DSetVideoTriggerPeriod(B1, 1)"}),
        Refused("GetVideoTriggerPeriod", {"zr3DQueryTriggerPeriod(B1)"}),
        Refused("EnableVideoTrigger", {"zr3DSetVideoTrigleMode(B1, 2)"}),
        Refused("SetDistanceIndicate", {"zr3DSetDistanceIndicateState(B1, 1)"}),
        // The heartbeat never changes the answer.
        WithoutCamera("SetStatusCallBackFunction", {k7, {"zr3DEnableHeartbeat(B1, 1)"}}, {k7, {}},
                      {k7, {"zr3DEnableHeartbeat(B1, 1)"}}),
    };
}

}  // namespace

std::vector<Row> RowsWithBodies() {
    const Calls reset{"zr3DResetDevice(B1)"};
    const Calls version{"zr3DQueryProjectorFirewareVersion(B1)"};
    const Calls boardClosed{"zr3DProject(B1, 0)", "zr3DExitHidDev(B1)"};
    const Calls closed = Calls{"UnlockOthers(C1)", "CloseCamera(C1)", "ReleaseCamera(C1)"};
    const Calls closedReconnected{"UnlockOthers(C2)", "CloseCamera(C2)", "ReleaseCamera(C2)"};
    std::vector<Row> rows{
        {"ReconnectDevice with flags",
         [](void* const& h) { return ReconnectDevice(h, true, true); },
         {k7, reset},
         {k1, {Open("")}},
         {k7, reset},
         {k7, reset},
         {k7, reset},
         {k7, Calls{Open("")} + reset + boardClosed}},  // with a board of its own
        {"GetFirewareVersion of a handle",
         [](void* const& h) {
             std::string text;
             return GetFirewareVersion(h, nullptr, "SN", text);
         },
         {k7, version},
         {k1, Calls{Open("SN")} + closedReconnected},  // a failed query ends the connection
         {k7, version},
         {k7, version},
         {k7, version}},
        {"DisConnectDevice",
         [](void* const& h) {
             void* handle = h;
             return DisConnectDevice(handle);
         },
         {k7, closed + boardClosed},
         {k7, closedReconnected},
         {k7, closed + Calls{"zr3DEnableHeartbeat(B1, 0)"} + boardClosed},
         {k7, Calls{"UnlockOthers(null)"} + boardClosed},
         {k7, closed + boardClosed}},
    };
    rows[1].endsOnFailure = true;
    rows[2].endsAlways = true;
    return rows;
}

std::vector<Row> EveryRow() {
    std::vector<Row> rows;
    for (auto& part : {Cameras(), Board(), RowsWithBodies(), RowsWithoutHandle()}) {
        rows.insert(rows.end(), part.begin(), part.end());
    }
    return rows;
}

}  // namespace Korvex3Sync::tests
