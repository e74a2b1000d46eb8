#pragma once

#include <string>

#include "platform/include/PlatformExport.h"

/// The industrial cameras. An `int` result is 0 for success. A handle is one library instance; one
/// instance opens one camera, and several instances may open the same serial. The first two
/// characters of a camera type or serial name the maker and so the driver ("KV": the virtual
/// head). Every function may be called from any thread; a null, unknown or released handle fails.
/// Releasing while another thread is in a call is safe. Nothing is thrown.
namespace zr3DCamera {

// Only the numbers of these enumerations matter; a number without a name is a legal value.
enum ZR_IMG_FORMAT : int {};
enum CAMPARAM : int {};

/// Fails only for a null text or an unknown maker, not for an absent camera.
KORVEX_PLATFORM_API int CreateCamera(void*& handle, const char* const& cameraTypeOrSerial);
/// Closes the camera first, then nulls `handle`.
KORVEX_PLATFORM_API int ReleaseCamera(void*& handle);
/// Number of attached cameras of the instance's type; the instance need not be open.
KORVEX_PLATFORM_API int GetDeviceTotal(void* handle, int& total);
/// 0 x 0 opens the native size.
KORVEX_PLATFORM_API int OpenCamera(void* handle, const int& index, const int& width,
                                   const int& height);
KORVEX_PLATFORM_API int OpenCamera(void* handle, const char* const& serial, const int& width,
                                   const int& height);
/// Succeeds on an instance that was not opened.
KORVEX_PLATFORM_API int CloseCamera(void* handle);
KORVEX_PLATFORM_API int StartCamera(void* handle, double value);
/// Blocks until a frame arrives, at most 100 ms, then fails with a null image. The buffer belongs
/// to the library, holds at least 2 x width x height bytes of the opened size and stays valid until
/// the next SnapShot, close or release on the same handle.
KORVEX_PLATFORM_API int SnapShot(void* handle, unsigned char*& image);
KORVEX_PLATFORM_API int GetSerialNo(void* handle, std::string& serial);
/// Size of one image in pixels.
KORVEX_PLATFORM_API int GetResolution(void* handle, int& width, int& height);
/// 1: mono head; 16: a head with colour.
KORVEX_PLATFORM_API int GetColorMode(void* handle, ZR_IMG_FORMAT& mode);
KORVEX_PLATFORM_API int GetGainRange(void* handle, int& low, int& high);
/// Exposure in microseconds, of the selected camera order.
KORVEX_PLATFORM_API int SetExposureTime(void* handle, long time);
KORVEX_PLATFORM_API int GetExposureTime(void* handle, long& time);
KORVEX_PLATFORM_API int SetGain(void* handle, int gain);
KORVEX_PLATFORM_API int GetGain(void* handle, int& gain);
/// Parameter 5 takes a word: 0 to 3 selects that camera order; otherwise bits 8-9 are the order,
/// bits 10-15 the gain, bits 0-7 the exposure in tenths of a millisecond, and a low byte of 0 only
/// selects.
KORVEX_PLATFORM_API bool SetCameraIntParam(void* handle, CAMPARAM parameter, int value);
/// A type above 0 means that the camera is present.
KORVEX_PLATFORM_API bool GetDeviceType(void* handle, int& type);
KORVEX_PLATFORM_API bool ResetCameraState(void* handle);
KORVEX_PLATFORM_API bool UnlockOthers(void* handle);

}  // namespace zr3DCamera
