#include "korvexctl/head/Head.h"

#include <Korvex3Sync/Connection.h>
#include <Korvex3Sync/Discovery.h>

#include <nlohmann/json.hpp>

#include "korvexctl/files/Output.h"

namespace Korvex3Sync::korvexctl {

Head AskHead(const std::string& board) {
    Head head;
    std::string firmware;
    if (GetFirewareVersion(board.c_str(), firmware) == STATUS_SUCCESS) {
        head.firmware = firmware;
    }
    bool onU3 = false;
    if (IsConnectedOnU3("", onU3) == STATUS_SUCCESS) {
        head.usb3 = onU3;
    }
    return head;
}

void AddToJson(const Head& head, nlohmann::json& figures) {
    figures["firmware"] = nullptr;
    if (head.firmware) {
        figures["firmware"] = *head.firmware;
    }
    figures["usb3"] = nullptr;
    if (head.usb3) {
        figures["usb3"] = *head.usb3;
    }
}

void Print(const Head& head, Output& output) {
    output.Line("firmware " + head.firmware.value_or("unknown"));
    output.Line(std::string("USB 3 ") + (!head.usb3 ? "unknown" : *head.usb3 ? "yes" : "no"));
}

}  // namespace Korvex3Sync::korvexctl
