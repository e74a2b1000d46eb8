#include "Korvex3Sync/Connection.h"

#include <memory>

#include "interface/CallFrame.h"
#include "platform/include/zr3DHandiDLPdev.h"
#include "platform/os/Print.h"

namespace Korvex3Sync {
namespace {

void LogDisconnect(const void* handle) {
    KORVEX_LOG(kInterfaceLog) << "DisConnectDevice hSync=" << handle;
}

void SayDisconnected() {
    ResetConnectionMarker();
    os::Print("End Disconnect\n");
    KORVEX_LOG_FORMATTED(kInterfaceLog, "End Function DisConnectDevice\n");
}

/// Ends a connection that the application never received.
void EndTemporary(std::unique_ptr<Connection> connection) {
    LogDisconnect(HandleOf(*connection));
    connection.reset();
    SayDisconnected();
}

RETSTATUS QueryFirmware(void* handle, const char* projectorId, std::string& version) {
    if (handle == nullptr) {
        return IManagerSync().Board().GetFirewareVersion(projectorId, version);
    }
    return DirectCall(&BoardSession::GetFirewareVersion, handle, projectorId, version);
}

}  // namespace

RETSTATUS SwitchOnDeviceService(bool on) {
    const os::CancellationOff cancellation;
    SetServiceMode(on);
    if (!on) {
        return STATUS_SUCCESS;
    }
    if (ServiceClient() != nullptr) {
        return STATUS_NOT_SUPPORTED;
    }
    return NoThrow([] {
        // Exists until the process ends, also after a start that failed.
        auto* const client = new zr3DHandiSyncQT;
        SetServiceClient(client);
        if (!client->Init()) {
            KORVEX_LOG(kInterfaceLog) << "SwitchOnDeviceService: zr3DHandiSyncQT init failed!";
        }
        return STATUS_SUCCESS;
    });
}

RETSTATUS ConnectDevice(const char* const& deviceType, const char* const& projectorId,
                        const std::vector<char*>& cameraNames, const std::vector<int>& cameraParamA,
                        const std::vector<int>& cameraParamB, void*& handle) {
    const os::CancellationOff cancellation;
    LogEnter("ConnectDevice");
    if (ServiceMode()) {
        return ServiceCall(&zr3DHandiSyncQT::ConnectDevice, deviceType, handle);
    }
    std::unique_ptr<Connection> connection;
    void* address = nullptr;
    const RETSTATUS status = NoThrow([&] {
        connection = std::make_unique<Connection>();
        address = HandleOf(*connection);
        const RETSTATUS connected = connection->manager.Connect(
            deviceType, projectorId, cameraNames, cameraParamA, cameraParamB);
        if (connected == STATUS_SUCCESS) {
            AddConnection(connection);
        }
        return connected;
    });
    if (status == STATUS_SUCCESS) {
        handle = address;
        KORVEX_LOG(kInterfaceLog) << "Success Connnect Device hSync=" << handle;
    } else {
        KORVEX_LOG(kInterfaceLog) << "Connect Device Failed!";
        if (connection != nullptr) {
            EndTemporary(std::move(connection));
        }
    }
    KORVEX_LOG(kInterfaceLog) << "ConnectDevice leave";
    return status;
}

RETSTATUS DisConnectDevice(void*& handle) {
    const os::CancellationOff cancellation;
    LogDisconnect(handle);
    if (handle == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    if (ServiceMode()) {
        return ServiceCall(&zr3DHandiSyncQT::DisConnectDevice, handle);
    }
    auto connection = TakeConnection(handle);
    if (connection == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    connection.reset();
    handle = nullptr;
    SayDisconnected();
    return STATUS_SUCCESS;
}

RETSTATUS CloseDeviceCamera(void* const& handle) {
    return ExportCall(Standard{&CameraSet::ReleaseCamera, &zr3DHandiSyncQT::CloseDeviceCamera},
                      "CloseDeviceCamera", handle);
}

RETSTATUS ReconnectDevice(void* const& handle) {
    const auto reconnect = [](IManagerSync& manager) {
        return manager.ReConnectDeviceEx() == 0 ? STATUS_SUCCESS : STATUS_FAILED;
    };
    return ExportCall(Standard{reconnect, &zr3DHandiSyncQT::ReconnectDevice}, "ReconnectDevice",
                      handle);
}

RETSTATUS ReconnectDevice(void* const& handle, const bool& first, const bool& second) {
    const os::CancellationOff cancellation;
    LogEnter("ReconnectDevice");
    if (handle != nullptr) {
        return DirectCall(&BoardSession::ResetBoard, handle, first, second);
    }
    return NoThrow([&] {
        auto temporary = std::make_unique<Connection>();
        const RETSTATUS status = temporary->manager.Board().ResetBoard(first, second);
        EndTemporary(std::move(temporary));
        return status;
    });
}

RETSTATUS GetFirewareVersion(const char* projectorId, std::string& version) {
    const os::CancellationOff cancellation;
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
    const os::CancellationOff cancellation;
    LogEnter("GetFirewareVersion");
    if (handle == nullptr && deviceType == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    if (ServiceMode()) {
        return ServiceCall(&zr3DHandiSyncQT::GetFirewareVersion, handle, deviceType, projectorId,
                           version);
    }
    if (handle != nullptr && !CallInside(handle)) {
        return STATUS_NOT_CONNECTED;
    }
    // A query that runs out of memory counts as failed and ends the connection, too.
    const RETSTATUS status = NoThrow([&] { return QueryFirmware(handle, projectorId, version); });
    if (status == STATUS_SUCCESS) {
        KORVEX_LOG(kInterfaceLog) << "versionString=" << version;
    } else {
        KORVEX_LOG(kInterfaceLog) << "Get FWVersion Failed";
        void* failed = handle;
        DisConnectDevice(failed);
    }
    KORVEX_LOG(kInterfaceLog) << "GetFirewareVersion leave";
    return status;
}

RETSTATUS WriteUserInfomation(void* const& handle, const int& address, const char* data,
                              const int& length) {
    return ExportCall(
        Standard{&BoardSession::WriteUserInfomation, &zr3DHandiSyncQT::WriteUserInfomation},
        "WriteUserInfomation", handle, address, data, length);
}

RETSTATUS ReadUserInfomation(void* const& handle, const int& address, char*& data) {
    return ExportCall(
        Standard{&BoardSession::ReadUserInfomation, &zr3DHandiSyncQT::ReadUserInfomation},
        "ReadUserInfomation", handle, address, data);
}

RETSTATUS EnableHeartbeat(void* const& handle, bool& enable) {
    return ExportCall(Standard{&BoardSession::EnableHeartbeat, &zr3DHandiSyncQT::EnableHeartbeat},
                      "EnableHeartbeat", handle, enable);
}

}  // namespace Korvex3Sync
