#include "Connection.h"

#include <string>

#include "Report.h"

namespace bench {
namespace {

constexpr int kPeriodMs = 5;

void Require(Korvex3Sync::RETSTATUS status, const char* operation) {
    if (status != Korvex3Sync::STATUS_SUCCESS) {
        Fail(std::string(operation) + " answered " + std::to_string(status));
    }
}

}  // namespace

Connection::Connection(int width, int height) {
    std::string serial = "KV00A1001";
    Require(Korvex3Sync::ConnectDevice("KV00", "", {serial.data(), serial.data()}, {width, width},
                                       {height, height}, m_handle),
            "ConnectDevice");
}

Connection::~Connection() {
    Require(Korvex3Sync::DisConnectDevice(m_handle), "DisConnectDevice");
}

void Connection::StartScan(Korvex3Sync::ScanCallBackFunction callback, void* context) {
    Require(Korvex3Sync::SetScanCallBackFunction(m_handle, callback, context),
            "SetScanCallBackFunction");
    Require(Korvex3Sync::SetVideoTriggerPeriod(m_handle, kPeriodMs), "SetVideoTriggerPeriod");
    Require(Korvex3Sync::EnableVideoTrigger(m_handle, Korvex3Sync::TRIGGER_LASER_LINES, true),
            "EnableVideoTrigger");
}

}  // namespace bench
