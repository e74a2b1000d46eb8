#pragma once

#include <QtGlobal>

#include "support/ChildProcess.h"
#include "support/OwnFolders.h"

class SyncInterface;

namespace bench {

/// Hub and service as processes of their own, with a virtual head, for clients in this process.
/// One for each program.
class ServicePair {
public:
    ServicePair();

    const Korvex3Sync::tests::OwnFolders& Folders() const { return m_folders; }
    long Service() const { return m_service.Number(); }

    /// Connects the head, as soon as the service is there. Ends the program if that fails.
    static qint64 Connect(SyncInterface& client);

private:
    const Korvex3Sync::tests::OwnFolders m_folders;
    const Korvex3Sync::tests::ChildProcess m_hub;
    const Korvex3Sync::tests::ChildProcess m_service;
};

/// Makes the clients of this process use these folders, and gives them to a child.
Korvex3Sync::tests::ChildOptions UseFolders(const Korvex3Sync::tests::OwnFolders& folders);

}  // namespace bench
