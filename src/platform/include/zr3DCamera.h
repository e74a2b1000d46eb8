#pragma once

#include <string>

#include "platform/include/PlatformExport.h"

/// The industrial cameras. An `int` result is 0 for success. A handle is one library instance,
/// which opens one camera; several instances may open the same serial. The first two characters of
/// a camera type or serial name the maker and select the driver ("KV": the virtual head). Any
/// thread may call the functions; they fail for a null, unknown or released handle. Releasing a
/// handle while another thread is in a call on it is safe. The functions do not throw.
namespace zr3DCamera {

// Only the numbers of these enumerations matter; a number without a name is a legal value.
enum ZR_IMG_FORMAT : int {};
enum CAMPARAM : int {};

/// Creates an instance. Fails for a null text or an unknown maker, but not for an absent camera.
KORVEX_PLATFORM_API int CreateCamera(void*& handle, const char* const& cameraTypeOrSerial);
/// Closes the camera, releases the instance and sets `handle` to null.
KORVEX_PLATFORM_API int ReleaseCamera(void*& handle);
/// Number of attached cameras of the instance's type; the instance need not be open.
KORVEX_PLATFORM_API int GetDeviceTotal(void* handle, int& total);
/// Opens the camera with the size of one image; 0 x 0 means its native size.
KORVEX_PLATFORM_API int OpenCamera(void* handle, const int& index, const int& width,
                                   const int& height);
KORVEX_PLATFORM_API int OpenCamera(void* handle, const char* const& serial, const int& width,
                                   const int& height);
/// Succeeds on an instance that was not opened.
KORVEX_PLATFORM_API int CloseCamera(void* handle);
KORVEX_PLATFORM_API int StartCamera(void* handle, double value);
/// Gets the next frame. Blocks for at most 100 ms; without a frame it fails with a null image. The
/// library owns the buffer, which has at least 2 x width x height bytes of the opened size and
/// stays valid until the next SnapShot, close or release on the same handle.
KORVEX_PLATFORM_API int SnapShot(void* handle, unsigned char*& image);
KORVEX_PLATFORM_API int GetSerialNo(void* handle, std::string& serial);
/// Size of one image in pixels.
KORVEX_PLATFORM_API int GetResolution(void* handle, int& width, int& height);
/// 1: a mono head; 16: a head with colour.
KORVEX_PLATFORM_API int GetColorMode(void* handle, ZR_IMG_FORMAT& mode);
KORVEX_PLATFORM_API int GetGainRange(void* handle, int& low, int& high);
/// Exposure of the selected camera order, in microseconds.
KORVEX_PLATFORM_API int SetExposureTime(void* handle, long time);
KORVEX_PLATFORM_API int GetExposureTime(void* handle, long& time);
KORVEX_PLATFORM_API int SetGain(void* handle, int gain);
KORVEX_PLATFORM_API int GetGain(void* handle, int& gain);
/// Parameter 5 takes a word. A word of 0 to 3 selects that camera order. Otherwise bits 8-9 are the
/// order, bits 10-15 the gain and bits 0-7 the exposure in tenths of a millisecond; an exposure of
/// 0 only selects the order.
KORVEX_PLATFORM_API bool SetCameraIntParam(void* handle, CAMPARAM parameter, int value);
/// A type above 0 means that the camera is present.
KORVEX_PLATFORM_API bool GetDeviceType(void* handle, int& type);
KORVEX_PLATFORM_API bool ResetCameraState(void* handle);
KORVEX_PLATFORM_API bool UnlockOthers(void* handle);

}  // namespace zr3DCamera
