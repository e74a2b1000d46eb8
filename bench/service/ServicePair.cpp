#include "service/ServicePair.h"

#include <chrono>
#include <cstdlib>
#include <thread>

#include "Report.h"
#include "platform/include/SyncInterface.h"

namespace bench {

using Korvex3Sync::tests::ChildOptions;
using Korvex3Sync::tests::OwnFolders;

ChildOptions UseFolders(const OwnFolders& folders) {
    ChildOptions options;
    options.environment = folders.Environment();
    for (const auto& [name, value] : options.environment) {
        ::setenv(name.c_str(), value.c_str(), 1);
    }
    options.environment.emplace_back("KORVEX_VIRTUAL_HEAD", "default");
    options.deadline = std::chrono::minutes(30);
    return options;
}

ServicePair::ServicePair()
    : m_hub({KORVEX_PROGRAMS "/hub.exe"}, UseFolders(m_folders)),
      m_service({KORVEX_PROGRAMS "/ZrSyncService.exe"}, UseFolders(m_folders)) {}

qint64 ServicePair::Connect(SyncInterface& client) {
    qint64 id = 0;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (client.connectDevice("KV00", id) != Korvex3Sync::STATUS_SUCCESS) {
        if (std::chrono::steady_clock::now() > end) {
            Fail("the service does not connect the head");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return id;
}

}  // namespace bench
