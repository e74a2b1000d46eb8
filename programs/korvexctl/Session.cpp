#include "korvexctl/Session.h"

#include <Korvex3Sync/Connection.h>

#include <memory>

#include "korvexctl/ExitCodes.h"

namespace Korvex3Sync::korvexctl {

std::string StatusText(RETSTATUS status) {
    char none = 0;
    char* text = &none;
    GetStatusDescriptionString(status, text);
    const std::unique_ptr<char[]> owned(text);
    return owned ? owned.get() : "";  // null: no memory
}

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
        throw CommandError(ExitCode::NotConnected, "cannot connect: " + StatusText(status));
    }
}

Session::~Session() {
    DisConnectDevice(m_handle);
}

void Require(RETSTATUS status, const std::string& operation) {
    if (status != STATUS_SUCCESS) {
        throw CommandError(ExitCode::DeviceRefused, operation + ": " + StatusText(status));
    }
}

}  // namespace Korvex3Sync::korvexctl
