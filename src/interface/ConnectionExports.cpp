#include "Korvex3Sync/Connection.h"

#include <memory>

#include "interface/CallFrame.h"
#include "platform/include/zr3DHandiDLPdev.h"
#include "platform/os/Print.h"

namespace Korvex3Sync {
namespace {

/// Ends a direct connection, whatever the mode, and nulls the handle.
RETSTATUS DisconnectDirect(void*& handle) {
    delete static_cast<IManagerSync*>(handle);
    handle = nullptr;
    ResetConnectionMarker();
    os::Print("End Disconnect\n");
    KORVEX_LOG_FORMATTED(kInterfaceLog, "End Function DisConnectDevice\n");
    return STATUS_SUCCESS;
}

void LogDisconnect(const void* handle) {
    KORVEX_LOG(kInterfaceLog) << "DisConnectDevice hSync=" << handle;
}

/// Ends a connection that never reached the application.
void DisconnectTemporary(IManagerSync* manager) {
    void* handle = manager;
    LogDisconnect(handle);
    DisconnectDirect(handle);
}

}  // namespace

RETSTATUS SwitchOnDeviceService(bool on) {
    SetServiceMode(on);
    return on ? STATUS_NOT_SUPPORTED : STATUS_SUCCESS;
}

RETSTATUS ConnectDevice(const char* const& deviceType, const char* const& projectorId,
                        const std::vector<char*>& cameraNames, const std::vector<int>& cameraParamA,
                        const std::vector<int>& cameraParamB, void*& handle) {
    LogEnter("ConnectDevice");
    if (ServiceMode()) {
        return ServiceCall();
    }
    return NoThrow([&] {
        auto manager = std::make_unique<IManagerSync>();
        const RETSTATUS status = NoThrow([&] {
            return manager->Connect(deviceType, projectorId, cameraNames, cameraParamA,
                                    cameraParamB);
        });
        if (status == STATUS_SUCCESS) {
            handle = manager.release();
            KORVEX_LOG(kInterfaceLog) << "Success Connnect Device hSync=" << handle;
        } else {
            KORVEX_LOG(kInterfaceLog) << "Connect Device Failed!";
            DisconnectTemporary(manager.release());
        }
        KORVEX_LOG(kInterfaceLog) << "ConnectDevice leave";
        return status;
    });
}

RETSTATUS DisConnectDevice(void*& handle) {
    LogDisconnect(handle);
    if (handle == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    if (ServiceMode()) {
        return ServiceCall();
    }
    return DisconnectDirect(handle);
}

RETSTATUS CloseDeviceCamera(void* const& handle) {
    return ExportCall(Variant::Standard, "CloseDeviceCamera", handle, &IManagerSync::ReleaseCamera);
}

RETSTATUS ReconnectDevice(void* const& handle) {
    return ExportCall(Variant::Standard, "ReconnectDevice", handle, [](IManagerSync& manager) {
        return manager.ReConnectDeviceEx() == 0 ? STATUS_SUCCESS : STATUS_FAILED;
    });
}

RETSTATUS ReconnectDevice(void* const& handle, const bool& first, const bool& second) {
    LogEnter("ReconnectDevice");
    return NoThrow([&] {
        if (handle != nullptr) {
            return ManagerOf(handle).ResetBoard(first, second);
        }
        auto temporary = std::make_unique<IManagerSync>();
        const RETSTATUS status = temporary->ResetBoard(first, second);
        DisconnectTemporary(temporary.release());
        return status;
    });
}

RETSTATUS GetFirewareVersion(const char* projectorId, std::string& version) {
    if (projectorId == nullptr) {
        return STATUS_PARAMETER;
    }
    return NoThrow([&] {
        if (!zr3DHandiDLPdev::zr3DQueryFirmwareVersionFast(projectorId, version)) {
            KORVEX_LOG(kInterfaceLog) << "zr3DQueryFirmwareVersionFast Failed";
            return STATUS_FAILED;
        }
        KORVEX_LOG(kInterfaceLog) << "Firmware version: " << version;
        return STATUS_SUCCESS;
    });
}

RETSTATUS GetFirewareVersion(void* handle, const char* deviceType, const char* projectorId,
                             std::string& version) {
    LogEnter("GetFirewareVersion");
    if (handle == nullptr && deviceType == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    if (ServiceMode()) {
        return ServiceCall();
    }
    return NoThrow([&] {
        // A query that runs out of memory is a failed one, and ends the connection as any does.
        const RETSTATUS status = NoThrow([&] {
            return handle != nullptr ? ManagerOf(handle).GetFirewareVersion(projectorId, version)
                                     : IManagerSync().GetFirewareVersion(projectorId, version);
        });
        if (status == STATUS_SUCCESS) {
            KORVEX_LOG(kInterfaceLog) << "versionString=" << version;
        } else {
            KORVEX_LOG(kInterfaceLog) << "Get FWVersion Failed";
            void* failed = handle;
            DisConnectDevice(failed);
        }
        KORVEX_LOG(kInterfaceLog) << "GetFirewareVersion leave";
        return status;
    });
}

RETSTATUS WriteUserInfomation(void* const& handle, const int& address, const char* data,
                              const int& length) {
    return ExportCall(Variant::Standard, "WriteUserInfomation", handle,
                      &IManagerSync::WriteUserInfomation, address, data, length);
}

RETSTATUS ReadUserInfomation(void* const& handle, const int& address, char*& data) {
    return ExportCall(Variant::Standard, "ReadUserInfomation", handle,
                      &IManagerSync::ReadUserInfomation, address, data);
}

RETSTATUS EnableHeartbeat(void* const& handle, bool& enable) {
    return ExportCall(Variant::Standard, "EnableHeartbeat", handle, &IManagerSync::EnableHeartbeat,
                      enable);
}

}  // namespace Korvex3Sync
