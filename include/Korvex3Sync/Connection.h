#pragma once

#include <string>
#include <vector>

#include "Korvex3Sync/Export.h"
#include "Korvex3Sync/Status.h"

namespace Korvex3Sync {

// A device handle represents one connected head. ConnectDevice creates it, DisConnectDevice ends
// it. Every function checks its handle: null, a closed handle and any other value that is not a
// live connection returns 6 and leaves the outputs unchanged. A later connection may get the same
// handle value, so do not keep copies of a closed handle. Use a handle only in the mode (direct or
// service) in which it was created.
//
// "The board's answer" takes at most 500 ms per command with the included board library. "The
// running iteration" of a camera is one snap, at most 100 ms with the included camera library, and
// a scan callback. docs/threads.md describes the threads, the locks and what each call waits for.

/// Selects the mode: false is direct mode (the library drives board and cameras in this process),
/// true is service mode (a device service drives them). Call it before any other function, and not
/// at the same time as another one.
///
/// The first switch to service mode starts `hub.exe` and `ZrSyncService.exe` of the application
/// directory, after it has ended running ones of this user, and waits for the service to find
/// cameras. Before that it runs the scripts that restart the USB hubs of the head, from the current
/// directory of the process. It needs a QCoreApplication. It returns 7 even if the start fails;
/// only the log says so, and operations then return 6. docs/service-mode.md describes the
/// application directory, and what the application sees when a process dies. Every later switch to
/// service mode returns 5 and uses the same client. Switching back to direct mode returns 7; hub
/// and service go on.
///
/// The first switch to service mode blocks for about 14 s, the others do not block.
KORVEX3SYNC_API RETSTATUS SwitchOnDeviceService(bool on);

/// Connects a head: opens the board, then the cameras, and starts grabbing.
///
/// - `deviceType`: must not be null; otherwise unused.
/// - `projectorId`: serial of the board; "" takes any board.
/// - `cameraNames`, `cameraParamA`, `cameraParamB`: serial, image width and image height (pixels)
///   of each camera, as GetCamerasInformation returns them. Entries with equal serials next to each
///   other share one camera. Only a shared camera delivers image sets. A camera with the size 0 x 0
///   opens with its native size, but its frames give no image sets.
///
/// The arguments are used only during the call. No settings are sent: the board keeps its own.
///
/// Returns 7 and sets `handle`, even if a camera opens but does not start; that camera then gives
/// no frames. Otherwise `handle` stays unchanged and everything is closed again:
///
/// - 1: the board does not open.
/// - 2: a camera does not open, an entry of `cameraNames` is null, or there are more than 16
///   cameras or more than 16 equal serials in a row.
/// - 3: `deviceType` or `projectorId` is null, the lists are empty, or their lengths differ.
/// - 6: service mode without a client.
///
/// Any thread, but not from a callback. Blocks while the devices open and for one answer of the
/// board.
KORVEX3SYNC_API RETSTATUS ConnectDevice(const char* const& deviceType,
                                        const char* const& projectorId,
                                        const std::vector<char*>& cameraNames,
                                        const std::vector<int>& cameraParamA,
                                        const std::vector<int>& cameraParamB, void*& handle);

/// Ends a connection: stops its threads, closes cameras and board, frees everything and sets
/// `handle` to null. After it has returned, no callback runs. Other threads may be in calls on the
/// same handle: new calls return 6 at once, running calls are waited for, and a snapshot that waits
/// for its frames fails at once.
///
/// Switches the projection off, and the heartbeat if EnableHeartbeat or SetStatusCallBackFunction
/// last switched it on. Lasers, strobe, distance LEDs and trigger stay as they are: switch them off
/// first.
///
/// Until the board is closed, the status callback runs as usual. Then it may receive 255 and 255
/// once before the status thread ends.
///
/// In service mode the status callback is not removed: after the disconnect it still receives 255
/// and 255 a few times. Remove it first, with SetStatusCallBackFunction. Without a connected device
/// the function returns 3 there.
///
/// Returns 7; 6 for a handle that is not a live connection. Of two calls at the same time one
/// returns 7 and the other 6. Any thread, but never from a callback. Blocks for running calls of
/// other threads, the running iteration of each camera, a running status callback and up to three
/// answers of the board.
KORVEX3SYNC_API RETSTATUS DisConnectDevice(void*& handle);

/// Closes the cameras but keeps the connection: board operations still work, but no frames arrive.
/// ReconnectDevice opens the cameras again.
///
/// Returns 7; 6 for a handle that is not a live connection. Any thread, but not from a callback.
/// Blocks for operations of other threads and for the running iteration of each camera.
KORVEX3SYNC_API RETSTATUS CloseDeviceCamera(void* const& handle);

/// Reconnects a head whose board or cameras dropped out, or whose cameras were closed. It closes
/// and reopens the board with the serial given to ConnectDevice, reopens every camera and writes
/// back all light, trigger, exposure and gain settings. If the board opens but does not answer, the
/// library restarts it and tries once more, 7 s later. A running scan continues, the callbacks stay
/// set, and the heartbeat is on afterwards.
///
/// - A setting is written back as last requested, even if the board or the camera refused it, but
///   not if the call returned 6.
/// - Light and trigger settings that were never made get the library's initial values, which
///   docs/guide.md lists.
/// - The laser line work time is not written back: see SetLaserLineWorkTime.
/// - A head that was connected with the serial "" may come back with another board.
/// - A camera that does not reopen gives no frames but does not change the result. Check that image
///   sets arrive, and reconnect again if they do not.
/// - A board that is marked lost stays marked until the next good status poll, which needs a status
///   callback. Until then board operations return 0.
///
/// Returns 7; 6 for a handle that is not a live connection; 0 if the board does not open or does
/// not answer. After a 0 the connection still exists and can be reconnected again. Until then its
/// cameras are closed, and board operations return 6 if the board did not open.
///
/// Any thread, but not from a callback. Blocks for the running iteration of each camera, while the
/// devices open, for about 25 answers of the board and, if the board is restarted, for 7 s and all
/// of this once more. Operations of other threads wait, but not during the 7 s.
KORVEX3SYNC_API RETSTATUS ReconnectDevice(void* const& handle);

/// Resets the board: the whole device if `second` is true, otherwise only its FPGA if `first` is
/// true, otherwise nothing. Does not affect the cameras. Always runs in direct mode.
///
/// Both resets stop the trigger, and a reset of the device also loses the board's settings. Nothing
/// is written back.
///
/// The board is opened if necessary, even if both flags are false:
///
/// - With a null handle the function opens **any** board, possibly one that another connection
///   uses. At the end it switches the projection off and closes the board.
/// - With the handle of a connection whose board is not open, it opens **any** board, possibly that
///   of another head, and the connection keeps it.
///
/// Returns 7 if the board accepted the reset or no flag was set; 0 if it refused; 1 if no board
/// opens; 6 for a handle that is neither null nor a live connection. Any thread, but not from a
/// callback. Blocks for the board's answer. If the board must be opened, also blocks while it opens
/// and for operations of other threads.
KORVEX3SYNC_API RETSTATUS ReconnectDevice(void* const& handle, const bool& first,
                                          const bool& second);

/// Gets the firmware version of the board with the serial `projectorId` ("" takes any board),
/// without a connection. Works in both modes.
///
/// Returns 7 and sets `version`; 3 if the serial is null; 0 if no such board answers. Any thread,
/// but not from a callback. Blocks while the board opens and for its answer.
KORVEX3SYNC_API RETSTATUS GetFirewareVersion(const char* projectorId, std::string& version);

/// Gets the firmware version of a board.
///
/// - With the handle of a connection: of its board, which is opened first if it is not open. **If
///   the query fails, the connection ends** as with DisConnectDevice, and its handle returns 6 from
///   then on.
/// - With a null `handle` and a `deviceType` that is not null: of the board with the serial
///   `projectorId` ("" takes any board), which is opened for this call only. At the end the
///   projection is switched off, even if another connection uses that board.
///
/// Returns 7 and sets `version`; 6 if both `handle` and `deviceType` are null, if `handle` is
/// neither null nor a live connection, and in service mode without a client; 3 if the board must be
/// opened and `projectorId` is null; 1 if it does not open; 0 if it does not answer.
///
/// Any thread, but not from a callback. Blocks for operations of other threads and for the board's
/// answer; a failed query also blocks like DisConnectDevice.
KORVEX3SYNC_API RETSTATUS GetFirewareVersion(void* handle, const char* deviceType,
                                             const char* projectorId, std::string& version);

/// Writes `length` bytes of `data` to one page of the board's user memory and fills the rest of the
/// page with zeros. The library passes `address` and `length` to the board library unchecked; the
/// included one takes the page number 0 to 15 and 0 to 256 bytes. A write that fails half-way loses
/// the old content of the page. `data` is only read, during the call.
///
/// Returns 7; 6 for a handle that is not a live connection or a board that is not open; 0 if the
/// board is marked lost or refuses. Any thread, including a status callback, but not from a scan
/// callback. Blocks for operations of other threads and for up to eight answers of the board.
KORVEX3SYNC_API RETSTATUS WriteUserInfomation(void* const& handle, const int& address,
                                              const char* data, const int& length);

/// Reads one page (256 bytes) of the board's user memory into the buffer that `data` points to. The
/// caller owns the buffer, which must hold at least 256 bytes. `address` is the page number, as for
/// WriteUserInfomation. On failure the buffer stays unchanged.
///
/// In service mode the function does not look at `data`: it sets it to a new zero-terminated
/// buffer, which the caller frees with `delete[]`.
///
/// Results, threads and blocking time are those of WriteUserInfomation.
KORVEX3SYNC_API RETSTATUS ReadUserInfomation(void* const& handle, const int& address, char*& data);

/// Switches the board's heartbeat on or off. `enable` is only read. The command is sent even if the
/// board is marked lost. The library remembers the value, even if the call fails: DisConnectDevice
/// switches the heartbeat off only if it was last switched on. A successful ReconnectDevice always
/// switches it on.
///
/// Returns 7; 6 for a handle that is not a live connection or a board that is not open; 0 if the
/// board refuses. Any thread, including a status callback, but not from a scan callback. Blocks for
/// operations of other threads and for the board's answer.
KORVEX3SYNC_API RETSTATUS EnableHeartbeat(void* const& handle, bool& enable);

}  // namespace Korvex3Sync
