#pragma once

#include <string>
#include <vector>

#include "Korvex3Sync/Export.h"
#include "Korvex3Sync/Status.h"

namespace Korvex3Sync {

// A device handle stands for one connected head. It comes from ConnectDevice and ends with
// DisConnectDevice. Every function looks a handle up before it uses it: null, a closed handle and
// any other value that is not a live connection is answered with 6, and outputs stay untouched. A
// later connection may get the value of a closed one, so forget a handle when it is closed. A
// handle is used in the mode (direct or service) in which it was made.

/// Chooses the mode: false is direct mode (the library drives board and cameras in this process),
/// true is service mode (a device service does). To be called before any other operation, and not
/// beside one.
///
/// Returns 7 for false. In this version true stores the mode and returns 5: there is no service
/// client yet, and every operation that would go to it answers 6.
KORVEX3SYNC_API RETSTATUS SwitchOnDeviceService(bool on);

/// Connects a head: opens the board with the serial `projectorId` ("" takes any board), then the
/// cameras, and starts grabbing.
///
/// `cameraNames` holds the camera serials, `cameraParamA` and `cameraParamB` the image width and
/// height in pixels of each, as GetCamerasInformation gives them. Equal serials that stand next to
/// each other share one camera, and only frames of a shared camera are paired into image sets.
/// A camera opened with 0 x 0 takes its native size, but no sets are made of its frames.
/// `deviceType` must not be null and is otherwise unused. What is given is needed during the call
/// only. No settings are sent: the board goes on with those that it has.
///
/// Returns 7 with the new handle in `handle`, also when a camera opens but does not start: no
/// frames come from it then. Otherwise `handle` keeps its value: 3 for `deviceType` or
/// `projectorId` null, an empty list or lists of unequal length; 1 when the board does not open; 2
/// when a camera does not, for a null entry in `cameraNames`, and for more than 16 cameras or more
/// than 16 equal serials side by side; 6 in service mode without a client. Any thread; blocks while
/// the devices are opened.
KORVEX3SYNC_API RETSTATUS ConnectDevice(const char* const& deviceType,
                                        const char* const& projectorId,
                                        const std::vector<char*>& cameraNames,
                                        const std::vector<int>& cameraParamA,
                                        const std::vector<int>& cameraParamB, void*& handle);

/// Ends a connection: stops its threads, closes cameras and board, frees everything, sets `handle`
/// to null. No callback runs once it has returned. Other threads may be inside calls on the handle:
/// new calls answer 6 from the start, calls that are inside are waited for, and a snapshot that
/// waits for its frames fails at once.
///
/// An open board is told to switch the projection off, and the heartbeat when EnableHeartbeat or
/// SetStatusCallBackFunction last asked for it to be on. Lasers, strobe, distance LEDs and trigger
/// stay as they are: switch them off before.
///
/// Returns 7; 6 for a handle that is not live: of two calls at the same time one returns 7 and the
/// other 6. Blocks for the calls that are inside, a running callback, at most one snap (100 ms) per
/// camera, and the board's answers when it is switched off and closed. Any thread, but never from a
/// callback. While the cameras are being stopped, the status
/// callback goes on as before; between the closing of the board and the end of the status thread it
/// may be told 255 and 255.
KORVEX3SYNC_API RETSTATUS DisConnectDevice(void*& handle);

/// Closes and releases the cameras but keeps the connection: board operations go on as before, no
/// frames come. ReconnectDevice brings the cameras back; DisConnectDevice ends the connection, from
/// any thread.
///
/// Returns 7; 6 for a null handle. Any thread, but not from a callback; blocks for the running
/// iteration of each camera (one snap of at most 100 ms and a running scan callback) and for
/// operations of other threads.
KORVEX3SYNC_API RETSTATUS CloseDeviceCamera(void* const& handle);

/// Brings a head back whose board or cameras dropped out, or whose cameras were closed: closes and
/// opens the board with the serial of ConnectDevice, reopens every camera, and writes back every
/// light, trigger, exposure and gain setting that was made, also those that a lost board or a
/// camera refused (but none that was answered 6). A board that opens and does not answer is
/// restarted, and tried once more 7 s later. A running scan goes on; its callbacks stay set. The
/// heartbeat is on afterwards.
///
/// Light and trigger settings that were never made are written too, with the library's first values
/// (docs/guide.md lists them). The laser line work time is not restored: SetLaserLineWorkTime says
/// what happens. A head that was connected with the serial "" may get another board.
///
/// A camera that does not open gives no frames and changes no result: compare what arrives with
/// what was connected, and reconnect again. A board that was marked lost stays marked until the
/// next good status poll, so board operations may answer 0 until then; that needs a status
/// callback.
///
/// Returns 7; 6 for a null handle; 0 when the board does not open or does not answer. The
/// connection stays then, without a board (operations answer 6) or with a silent one, and can be
/// reconnected again; the cameras are closed too, until a later reconnection succeeds. Any thread,
/// but not from a callback. Blocks for the running iteration of each camera, for opening the
/// devices and about twenty-five answers of the board, and for the 7 s of a restart; operations of
/// other threads wait meanwhile.
KORVEX3SYNC_API RETSTATUS ReconnectDevice(void* const& handle);

/// Resets the board: the whole device when `second` is true, else only its FPGA when `first` is
/// true, else nothing. Cameras are not touched. Runs in direct mode always.
///
/// A reset of the device loses the board's settings, and either reset stops the trigger; nothing is
/// written back. A null handle takes any board, perhaps one that another connection uses, opened
/// for this call only: at its end the projection is switched off and the board closed. A handle
/// without an open board opens **any** board, perhaps another head's, and keeps it. Both open the
/// board also when both flags are false.
///
/// Returns 7 when the board accepted the reset or none was asked for, 0 when it did not, 1 when no
/// board opens. Any thread, but not from a callback; blocks for the board's answer and, where a
/// board has to be opened, for that and for operations of other threads.
KORVEX3SYNC_API RETSTATUS ReconnectDevice(void* const& handle, const bool& first,
                                          const bool& second);

/// Firmware version of the board with serial `projectorId` ("" takes any), without a connection.
///
/// Returns 7 with the text in `version`, 3 for a null serial, 0 when the board does not answer. Any
/// thread, but not from a callback; blocks for the board's answer.
KORVEX3SYNC_API RETSTATUS GetFirewareVersion(const char* projectorId, std::string& version);

/// Firmware version through a connection, or, with a null `handle` and a non-null `deviceType`,
/// of the board with serial `projectorId`, opened for this call only. The end of such a call
/// switches the projection off, also on a board that another connection uses.
///
/// Returns 7 with the text in `version`; 6 when both `handle` and `deviceType` are null, and in
/// service mode without a client; 3 for a null serial where the board has to be opened; 1 when it
/// does not open; 0 when it does not answer.
///
/// **A query through a handle that fails ends the connection**, as DisConnectDevice does: the
/// handle is unknown from then on, and answers 6. Any thread, but not from a callback. Blocks for
/// the board's answer, and for a failed query as DisConnectDevice.
KORVEX3SYNC_API RETSTATUS GetFirewareVersion(void* handle, const char* deviceType,
                                             const char* projectorId, std::string& version);

/// Writes `length` bytes of `data` into the board's user memory. Address and length go to the board
/// as they are; our board takes a page number 0..15 and 0..256 bytes. The rest of the 256-byte page
/// is cleared to zeros. A write that fails half-way loses what the page had.
///
/// Returns 7; 6 not connected; 0 when the board is lost or refuses. Any thread, also from a status
/// callback, but not from a scan callback; blocks for the board's answers.
KORVEX3SYNC_API RETSTATUS WriteUserInfomation(void* const& handle, const int& address,
                                              const char* data, const int& length);

/// Reads one page (256 bytes) of the board's user memory into the buffer that `data` points to. The
/// buffer is the caller's and must hold at least 256 bytes; it stays as it is on failure.
///
/// Returns 7; 6 not connected; 0 when the board is lost or refuses. Thread and blocking as for
/// WriteUserInfomation.
KORVEX3SYNC_API RETSTATUS ReadUserInfomation(void* const& handle, const int& address, char*& data);

/// Switches the board's heartbeat. `enable` is only read. It is sent to a board that is marked lost
/// too, and remembered, also when it failed: DisConnectDevice switches the heartbeat off only where
/// it was last asked for. ReconnectDevice switches it on whatever was asked for.
///
/// Returns 7; 6 not connected; 0 when the board refuses. Thread and blocking as for
/// WriteUserInfomation.
KORVEX3SYNC_API RETSTATUS EnableHeartbeat(void* const& handle, bool& enable);

}  // namespace Korvex3Sync
