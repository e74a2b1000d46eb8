#include "platform/include/zr3DHandiDLPdev.h"

#include "platform/board/BoardCalls.h"
#include "platform/board/OpenBoards.h"

namespace zr3DHandiDLPdev {
namespace {

using namespace Korvex3Sync::board;

// No exception may cross the interface: a call that throws (no memory) fails.
template <typename Call>
bool Guarded(Call call) {
    try {
        return call();
    } catch (...) {
        return false;
    }
}

template <typename Call>
bool WithBoard(void* handle, Call call) {
    return Guarded([&] {
        const auto board = OpenBoards().Find(handle);
        return board && call(*board);
    });
}

bool Send(void* handle, Command command, std::initializer_list<int> values) {
    return WithBoard(handle, [&](BoardLink& board) { return Set(board, command, values); });
}

bool Ask(void* handle, Command command, std::initializer_list<int> values,
         std::initializer_list<int*> outputs) {
    return WithBoard(handle,
                     [&](BoardLink& board) { return Query(board, command, values, outputs); });
}

// `function` is the name of the exported function, whose selectors are in the table of commands.
bool SendSelected(void* handle, const char* function, int selector,
                  std::initializer_list<int> values) {
    return WithBoard(
        handle, [&](BoardLink& board) { return SetSelected(board, function, selector, values); });
}

bool AskSelected(void* handle, const char* function, int selector,
                 std::initializer_list<int*> outputs) {
    return WithBoard(handle, [&](BoardLink& board) {
        return QuerySelected(board, function, selector, outputs);
    });
}

}  // namespace

bool zr3DInitHidDev(void*& handle, const char* vendorId, const char* productId,
                    const char* pcbSerial) {
    handle = nullptr;
    return Guarded([&] {
        const auto selection = ParseSelection(vendorId, productId, pcbSerial);
        const auto board = selection ? OpenBoard(*selection, Purpose::Use) : nullptr;
        if (board) {
            handle = OpenBoards().Add(board);
        }
        return board != nullptr;
    });
}

bool zr3DExitHidDev(void*& handle) {
    return Guarded([&] {
        const auto board = OpenBoards().Take(handle);
        if (board) {
            handle = nullptr;
        }
        return board && board->Close();
    });
}

bool zr3DQueryFirmwareVersionFast(const char* pcbSerial, std::string& version) {
    return Guarded([&] {
        const auto board =
            pcbSerial ? OpenBoard(BoardOfSerial(pcbSerial), Purpose::FirmwareQuery) : nullptr;
        return board && QueryText(*board, Command::QueryFirmwareVersionFast, pcbSerial, version);
    });
}

bool zr3DQueryProjectorFirewareVersion(void* handle, std::string& version) {
    return WithBoard(handle, [&](BoardLink& board) {
        return QueryText(board, Command::QueryFirmwareVersion, "", version);
    });
}

bool zr3DResetDevice(void* handle) {
    return Send(handle, Command::ResetDevice, {});
}

bool zr3DResetFPGA(void* handle) {
    return Send(handle, Command::ResetFpga, {});
}

bool zr3DQueryCurrentStatus(void* handle, unsigned char& first, unsigned char& second) {
    int firstValue = 0;
    int secondValue = 0;
    if (!Ask(handle, Command::QueryCurrentStatus, {}, {&firstValue, &secondValue})) {
        return false;
    }
    first = static_cast<unsigned char>(firstValue);
    second = static_cast<unsigned char>(secondValue);
    return true;
}

bool zr3DEnableHeartbeat(void* handle, bool enable) {
    return Send(handle, Command::EnableHeartbeat, {enable});
}

bool zr3DOpenOrCloseStrobeFlicker(void* handle, TRIGGERROUTE route, MASK_STROBE_STATE state) {
    return Send(handle, Command::OpenOrCloseStrobeFlicker, {route, state});
}

bool zr3DSetLaserEnable(void* handle, bool enable, LASERWORKMODE mode) {
    return Send(handle, Command::SetLaserEnable, {enable, mode});
}

bool zr3DSetIRLaserEnable(void* handle, bool enable) {
    return Send(handle, Command::SetIrLaserEnable, {enable});
}

bool zr3DSetIRLaserLevel(void* handle, int level) {
    return Send(handle, Command::SetIrLaserLevel, {level});
}

bool zr3DSetVideoTriggerPeriod(void* handle, int period) {
    return Send(handle, Command::SetTriggerPeriod, {period});
}

bool zr3DQueryTriggerPeriod(void* handle, int& period) {
    return Ask(handle, Command::QueryTriggerPeriod, {}, {&period});
}

bool zr3DSetProjectorBrightness(void* handle, int brightness) {
    return Send(handle, Command::SetProjectorBrightness, {brightness});
}

bool zr3DQueryProjectorBrightness(void* handle, int& brightness) {
    return Ask(handle, Command::QueryProjectorBrightness, {}, {&brightness});
}

bool zr3DSetVideoTrigleMode(void* handle, MASK_TRIGGER_MODE mode) {
    return Send(handle, Command::SetTriggerMode, {mode});
}

bool zr3DProject(void* handle, PROJECTTYPE type) {
    return Send(handle, Command::Project, {type});
}

bool zr3DSetLedDutioRatio(void* handle, int selector, int texture, int ratio,
                          int ratioWithTexture) {
    return SendSelected(handle, "zr3DSetLedDutioRatio", selector,
                        {texture, ratio, ratioWithTexture});
}

bool zr3DQueryLedDutioRatio(void* handle, int selector, int& texture, int& ratio,
                            int& ratioWithTexture) {
    return AskSelected(handle, "zr3DQueryLedDutioRatio", selector,
                       {&texture, &ratio, &ratioWithTexture});
}

bool zr3DSetDutioRatio(void* handle, int selector, int ratio) {
    return SendSelected(handle, "zr3DSetDutioRatio", selector, {ratio});
}

bool zr3DQueryDutioRatio(void* handle, int selector, int& ratio) {
    return AskSelected(handle, "zr3DQueryDutioRatio", selector, {&ratio});
}

bool zr3DSetLedWorkTime(void* handle, bool withTexture, int time) {
    return Send(handle, Command::SetLedWorkTime, {withTexture, time});
}

bool zr3DQueryLedWorkTime(void* handle, bool withTexture, int& time) {
    return Ask(handle, Command::QueryLedWorkTime, {withTexture}, {&time});
}

bool zr3DSetWorkTime(void* handle, int selector, int time) {
    return SendSelected(handle, "zr3DSetWorkTime", selector, {time});
}

bool zr3DQueryWorkTime(void* handle, int selector, int& time) {
    return AskSelected(handle, "zr3DQueryWorkTime", selector, {&time});
}

bool zr3DSetDistanceIndicateState(void* handle, DISTANCEINDICATE state) {
    return Send(handle, Command::SetDistanceIndicateState, {state});
}

bool zr3DWriteUserInfomation(void* handle, int address, const char* data, int length) {
    return WithBoard(handle,
                     [&](BoardLink& board) { return WriteUserPage(board, address, data, length); });
}

bool zr3DReadUserInfomation(void* handle, int address, char*& buffer) {
    return WithBoard(
        handle, [&](BoardLink& board) { return buffer && ReadUserPage(board, address, buffer); });
}

}  // namespace zr3DHandiDLPdev
