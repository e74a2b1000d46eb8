#include "korvexctl/head/Session.h"

#include <Korvex3Sync/Connection.h>
#include <Korvex3Sync/Images.h>
#include <Korvex3Sync/Light.h>

#include <memory>

#include "korvexctl/cli/ExitCodes.h"
#include "korvexctl/cli/Interrupt.h"
#include "korvexctl/head/Boards.h"
#include "korvexctl/head/ServiceUse.h"

namespace Korvex3Sync::korvexctl {

std::string StatusText(RETSTATUS status) {
    char none = 0;
    char* text = &none;
    GetStatusDescriptionString(status, text);
    const std::unique_ptr<char[]> owned(text);
    return owned ? owned.get() : "";  // null: no memory
}

namespace {

/// What to check about the serial that was asked for, which may be none.
std::string SerialAdvice(const std::string& board) {
    if (board.empty()) {
        return "";
    }
    const std::string attached = SerialsText(FindBoards());
    return "the serial given with --board" +
           (attached.empty() ? "" : " (attached: " + attached + ")") + ", ";
}

}  // namespace

Session::Session(const std::string& type, const std::string& board,
                 const std::vector<Camera>& cameras) {
    if (cameras.empty()) {
        throw CommandError(ExitCode::NoCamera, NoCameraMessage(type));
    }
    std::vector<std::string> serials;
    std::vector<int> widths;
    std::vector<int> heights;
    for (const Camera& camera : cameras) {
        serials.push_back(camera.serial);
        widths.push_back(camera.width);
        heights.push_back(camera.height);
    }
    std::vector<char*> names;
    names.reserve(serials.size());
    for (std::string& serial : serials) {
        names.push_back(serial.data());
    }
    const RETSTATUS status =
        ConnectDevice(type.c_str(), board.c_str(), names, widths, heights, m_handle);
    if (status != STATUS_SUCCESS) {
        throw CommandError(ExitCode::NotConnected, "cannot connect: " + StatusText(status) +
                                                       "; check " + SerialAdvice(board) +
                                                       "cable, power and this user's permissions, "
                                                       "close other programs that use the head, or "
                                                       "run korvexctl doctor");
    }
}

Session::~Session() {
    if (ThroughService()) {
        // Disconnecting does not end it there.
        SetStatusCallBackFunction(m_handle, nullptr, nullptr);
    }
    DisConnectDevice(m_handle);
}

bool BoardAnswers(const Session& session) {
    int brightness = 0;
    return GetProjectorBrightness(session.Handle(), brightness) == STATUS_SUCCESS;
}

void RequireAnswer(const Session& session) {
    const bool answers = BoardAnswers(session);
    EndIfInterrupted();
    if (!answers) {
        throw CommandError(ExitCode::NotConnected, kMuteBoard);
    }
}

void Require(RETSTATUS status, const std::string& operation) {
    EndIfInterrupted();
    if (status != STATUS_SUCCESS) {
        throw CommandError(ExitCode::DeviceRefused, operation + ": " + StatusText(status));
    }
}

}  // namespace Korvex3Sync::korvexctl
