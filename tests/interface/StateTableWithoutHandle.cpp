#include <array>
#include <string_view>

#include "interface/Mode.h"
#include "interface/StateTable.h"
#include "service/zr3DHandiSyncQT.h"

namespace Korvex3Sync::tests {
namespace {

using Calls = std::vector<std::string>;

/// Two cameras listed by instances of their own; those of a connection came before them.
Calls Listed(const std::string& first, const std::string& second) {
    Calls calls{"CreateCamera(KV00)", "GetDeviceTotal(" + first + ")", "CreateCamera(KV00)"};
    int index = 0;
    for (const std::string& camera : {first, second}) {
        calls.insert(calls.end(),
                     {"OpenCamera(" + camera + ", " + std::to_string(index++) + ", 0, 0)",
                      "GetSerialNo(" + camera + ")", "GetResolution(" + camera + ")",
                      "GetColorMode(" + camera + ")", "GetGainRange(" + camera + ")"});
    }
    for (const std::string& camera : {first, second}) {
        calls.insert(calls.end(), {"CloseCamera(" + camera + ")", "ReleaseCamera(" + camera + ")"});
    }
    return calls;
}

const std::string kOpened = "zr3DInitHidDev(null, 3267, 5752, OTHER)";

/// A second head is connected, and disconnected again.
Calls SecondHeadConnected(const std::string& board, const std::string& camera) {
    return {kOpened,
            "CreateCamera(KV00R1)",
            "GetDeviceTotal(" + camera + ")",
            "OpenCamera(" + camera + ", KV00R1, 8, 4)",
            "GetColorMode(" + camera + ")",
            "StartCamera(" + camera + ", 0)",
            "zr3DQueryCurrentStatus(" + board + ")",
            "UnlockOthers(" + camera + ")",
            "CloseCamera(" + camera + ")",
            "ReleaseCamera(" + camera + ")",
            "zr3DProject(" + board + ", 0)",
            "zr3DExitHidDev(" + board + ")"};
}

RETSTATUS ConnectAnother() {
    std::array<char, 7> serial{"KV00R1"};
    void* handle = nullptr;
    const RETSTATUS status =
        ConnectDevice("any", "OTHER", {serial.data(), serial.data()}, {8, 8}, {4, 4}, handle);
    DisConnectDevice(handle);
    return status;
}

RETSTATUS ListCameras() {
    std::vector<char*> serials;
    std::vector<int> widths;
    std::vector<int> heights;
    std::vector<bool> isColor;
    int count = 0;
    const RETSTATUS status =
        GetCamerasInformation("KV00", serials, widths, heights, isColor, count);
    for (const char* serial : serials) {
        delete[] serial;
    }
    return status;
}

/// It gives no result: success, when the text is the one of success.
RETSTATUS DescribeSuccess() {
    char before = 0;
    char* text = &before;
    GetStatusDescriptionString(STATUS_SUCCESS, text);
    const bool right = text != &before && std::string_view(text) == "Operate success";
    if (text != &before) {
        delete[] text;
    }
    return right ? STATUS_SUCCESS : STATUS_FAILED;
}

/// Its client does not start, because the program has no QCoreApplication.
RETSTATUS SwitchServiceModeOnAndOff() {
    const RETSTATUS status = SwitchOnDeviceService(true);
    SwitchOnDeviceService(false);
    delete ServiceClient();
    SetServiceClient(nullptr);
    return status;
}

/// The same in every state.
Row Everywhere(const std::string& name, RETSTATUS (*call)(), const Cell& cell) {
    return {name, [call](void* const&) { return call(); }, cell, cell, cell, cell, cell, cell};
}

}  // namespace

std::vector<Row> RowsWithoutHandle() {
    const Calls version{"zr3DQueryFirmwareVersionFast(SN)"};
    const Calls tree{"EnumAllHCD()", "GetSpecifyDeviceTreePath(12903, 22354)", "EraseList()"};
    const Cell found{k7, tree};
    const Cell read{k7, version};
    return {
        Everywhere("SwitchOnDeviceService", SwitchServiceModeOnAndOff, {k7, {}}),
        Everywhere("GetStatusDescriptionString", DescribeSuccess, {k7, {}}),
        {"GetCamerasInformation",
         [](void* const&) { return ListCameras(); },
         {k7, Listed("C2", "C3")},
         {k7, Listed("C3", "C4")},
         {k7, Listed("C2", "C3")},
         {k7, Listed("C2", "C3")},
         {k7, {"CreateCamera(KV00)", "ReleaseCamera(null)"}},
         {k7, Listed("C1", "C2")}},
        {"GetCameraCount",
         [](void* const&) {
             int count = 0;
             return GetCameraCount("KV00", count);
         },
         {k7, {"CreateCamera(KV00)", "GetDeviceTotal(C2)"}},
         {k7, {"CreateCamera(KV00)", "GetDeviceTotal(C3)"}},
         {k7, {"CreateCamera(KV00)", "GetDeviceTotal(C2)"}},
         {k7, {"CreateCamera(KV00)", "GetDeviceTotal(C2)"}},
         {k7, {"CreateCamera(KV00)"}},
         {k7, {"CreateCamera(KV00)", "GetDeviceTotal(C1)"}}},
        {"IsConnectedOnU3",
         [](void* const&) {
             bool onU3 = false;
             return IsConnectedOnU3("", onU3);
         },
         found,
         {k0, tree},  // no board on the bus
         found,
         found,
         found,
         found},
        {"ConnectDevice",
         [](void* const&) { return ConnectAnother(); },
         {k7, SecondHeadConnected("B2", "C2")},
         {k1, {kOpened}},
         {k7, SecondHeadConnected("B2", "C2")},  // its first status may fail
         {k7, SecondHeadConnected("B2", "C2")},
         {k2, {kOpened, "CreateCamera(KV00R1)", "zr3DExitHidDev(B2)"}},
         {k7, SecondHeadConnected("B1", "C1")}},
        {"GetFirewareVersion without a handle",
         [](void* const&) {
             std::string text;
             return GetFirewareVersion("SN", text);
         },
         read,
         {k0, version},
         {k0, version},
         read,
         read,
         read},
    };
}

}  // namespace Korvex3Sync::tests
