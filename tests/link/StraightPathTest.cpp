#include <gtest/gtest.h>

#include <QCoreApplication>

#include "link/Folders.h"
#include "platform/link/Client.h"
#include "platform/link/Server.h"
#include "platform/link/hub/HubLink.h"
#include "platform/link/hub/HubServer.h"
#include "platform/os/UserFolders.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {
namespace {

using namespace Korvex3Sync::link;

TEST(Link, CarriesACallToTheServiceAndItsAnswerBack) {
    int argc = 1;
    char name[] = "link_tests";
    char* argv[] = {name, nullptr};
    const QCoreApplication application(argc, argv);
    const Folders folders;
    HubServer hub("1", [] {});
    std::string reason;
    ASSERT_TRUE(hub.Listen(reason)) << reason;
    const std::string path = os::SocketPath(kServiceSocket, reason).string();
    Server service(path, Role::Service);
    service.On<GetCameraCount>(
        [](ClientId, const GetCameraCount::In& in, GetCameraCount::Out& out) {
            std::get<0>(out) = std::get<0>(in).size();
            return STATUS_SUCCESS;
        });
    ASSERT_TRUE(service.Listen(reason)) << reason;
    const HubLink registered(HubLink::RegistrationOf(kServiceName, QString::fromStdString(path)),
                             [] {});
    Client client;
    GetCameraCount::Out out;
    ASSERT_TRUE(support::WaitUntil(
        [&] { return client.Call<GetCameraCount>({"KV00"}, out) == STATUS_SUCCESS; }));
    EXPECT_EQ(std::get<0>(out), 4);
}

}  // namespace
}  // namespace Korvex3Sync::tests
