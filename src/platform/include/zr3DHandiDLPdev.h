#pragma once

#include <string>

#include "platform/include/PlatformExport.h"

/// The synchronization board. The functions return true for success, and false for a null, unknown
/// or closed handle. Any thread may call them. A call blocks for other callers of the same handle
/// and then for the board's answer, at most for the reply limit in docs/board-protocol.md; a call
/// on the user memory needs several answers. The functions do not throw.
namespace zr3DHandiDLPdev {

// Only the numbers of these enumerations matter; a number without a name is a legal value.
enum LASERWORKMODE : int {};
enum MASK_TRIGGER_MODE : int {};
enum PROJECTTYPE : int {};
enum TRIGGERROUTE : int {};
enum MASK_STROBE_STATE : int {};
enum DISTANCEINDICATE : int {};

/// Opens the board. The identifiers are hexadecimal text; an empty serial takes any board. A failed
/// open sets `handle` to null. A process may open the same board more than once.
KORVEX_PLATFORM_API bool zr3DInitHidDev(void*& handle, const char* vendorId, const char* productId,
                                        const char* pcbSerial);
/// Closes the board and sets `handle` to null. Safe while another thread is in a call on it; ends
/// that call. Returns false for a handle that is not open, which stays unchanged, and if the board
/// fails to close; the handle is closed anyway.
KORVEX_PLATFORM_API bool zr3DExitHidDev(void*& handle);
/// Gets the firmware version of the board with this serial (empty: any board), which need not be
/// open.
KORVEX_PLATFORM_API bool zr3DQueryFirmwareVersionFast(const char* pcbSerial, std::string& version);
KORVEX_PLATFORM_API bool zr3DQueryProjectorFirewareVersion(void* handle, std::string& version);
KORVEX_PLATFORM_API bool zr3DResetDevice(void* handle);
KORVEX_PLATFORM_API bool zr3DResetFPGA(void* handle);
KORVEX_PLATFORM_API bool zr3DQueryCurrentStatus(void* handle, unsigned char& first,
                                                unsigned char& second);
KORVEX_PLATFORM_API bool zr3DEnableHeartbeat(void* handle, bool enable);
KORVEX_PLATFORM_API bool zr3DOpenOrCloseStrobeFlicker(void* handle, TRIGGERROUTE route,
                                                      MASK_STROBE_STATE state);
KORVEX_PLATFORM_API bool zr3DSetLaserEnable(void* handle, bool enable, LASERWORKMODE mode);
KORVEX_PLATFORM_API bool zr3DSetIRLaserEnable(void* handle, bool enable);
/// IR laser level, 1 to 10.
KORVEX_PLATFORM_API bool zr3DSetIRLaserLevel(void* handle, int level);
/// Trigger period in milliseconds.
KORVEX_PLATFORM_API bool zr3DSetVideoTriggerPeriod(void* handle, int period);
KORVEX_PLATFORM_API bool zr3DQueryTriggerPeriod(void* handle, int& period);
/// Projector brightness in percent.
KORVEX_PLATFORM_API bool zr3DSetProjectorBrightness(void* handle, int brightness);
KORVEX_PLATFORM_API bool zr3DQueryProjectorBrightness(void* handle, int& brightness);
/// Trigger mode: 1 mono under the laser lines; 2 mono under the pattern; 3 mono under the pattern,
/// then colour; 4 one colour frame each time the mode is written; 6 mono under the laser lines,
/// then colour; 5 and any other number off.
KORVEX_PLATFORM_API bool zr3DSetVideoTrigleMode(void* handle, MASK_TRIGGER_MODE mode);
KORVEX_PLATFORM_API bool zr3DProject(void* handle, PROJECTTYPE type);
/// Strobe duty ratios in percent; `selector` is the command code of the board's protocol.
KORVEX_PLATFORM_API bool zr3DSetLedDutioRatio(void* handle, int selector, int texture, int ratio,
                                              int ratioWithTexture);
KORVEX_PLATFORM_API bool zr3DQueryLedDutioRatio(void* handle, int selector, int& texture,
                                                int& ratio, int& ratioWithTexture);
/// Duty ratio of the light source that `selector` names, in percent.
KORVEX_PLATFORM_API bool zr3DSetDutioRatio(void* handle, int selector, int ratio);
KORVEX_PLATFORM_API bool zr3DQueryDutioRatio(void* handle, int selector, int& ratio);
/// Strobe work time in microseconds, with or without texture.
KORVEX_PLATFORM_API bool zr3DSetLedWorkTime(void* handle, bool withTexture, int time);
KORVEX_PLATFORM_API bool zr3DQueryLedWorkTime(void* handle, bool withTexture, int& time);
/// Work time of the light source that `selector` names, in microseconds.
KORVEX_PLATFORM_API bool zr3DSetWorkTime(void* handle, int selector, int time);
KORVEX_PLATFORM_API bool zr3DQueryWorkTime(void* handle, int selector, int& time);
KORVEX_PLATFORM_API bool zr3DSetDistanceIndicateState(void* handle, DISTANCEINDICATE state);
/// Writes page `address` (0 to 15) of the user memory: `length` bytes (0 to 256), then zeros to the
/// end of the page.
KORVEX_PLATFORM_API bool zr3DWriteUserInfomation(void* handle, int address, const char* data,
                                                 int length);
/// Reads page `address` (0 to 15): writes exactly 256 bytes to the caller's buffer, or nothing if
/// it fails.
KORVEX_PLATFORM_API bool zr3DReadUserInfomation(void* handle, int address, char*& buffer);

}  // namespace zr3DHandiDLPdev
