// What others can do to the sockets.

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <string>

#include "platform/os/File.h"
#include "support/WaitUntil.h"
#include "survival/Processes.h"
#include "survival/World.h"

namespace Korvex3Sync::tests::survival {

namespace {

namespace fs = std::filesystem;
TEST(Survival, SocketPathOfAnotherUser) {
    constexpr uid_t kNobody = 65534;
    World world;
    const auto application = world.Application("scan");
    ASSERT_TRUE(SteadySetsAfter(*application, 0));
    const fs::path folder = world.Folders().Runtime();
    const fs::path away = folder.string() + ".away";
    RunRounds([&](int, Dice& dice) {
        world.KillHub();
        world.KillService();
        fs::rename(folder, away);
        fs::create_directory(folder);
        EXPECT_EQ(::chown(folder.c_str(), kNobody, kNobody), 0);
        constexpr int kNotStarted = 1;
        EXPECT_EQ(WaitForEnd(world.StartAnotherService()), kNotStarted);
        const Moment refused = Now();
        EXPECT_TRUE(application->WaitFor(refused, [](const Event& event) {
            return event.kind == "call" && event.number == 0;
        })) << "nothing is asked of another user";
        dice.Pause(kLongPauseMs);
        fs::remove(folder);
        fs::rename(away, folder);
        const Moment returned = world.StartService();
        return Recovery{returned, SteadySetsAfter(*application, returned)};
    });
    ExpectDocumentedCalls(*application);
    application->End();
    world.End();
}

/// A connection to a socket; -1 if nobody listens.
os::File ConnectTo(const fs::path& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
    os::File socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const bool connected =
        ::connect(socket.Descriptor(), reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
    return connected ? std::move(socket) : os::File();
}

std::ptrdiff_t Descriptors(pid_t process) {
    const fs::directory_iterator open("/proc/" + std::to_string(process) + "/fd");
    return std::distance(begin(open), end(open));
}

TEST(Survival, TenThousandConnects) {
    constexpr int kConnects = 10000;
    World world;
    const auto application = world.Application("scan");
    ASSERT_TRUE(SteadySetsAfter(*application, 0));
    const std::ptrdiff_t before = Descriptors(world.Service());
    RunRounds([&](int, Dice& dice) {
        const Moment began = Now();
        for (int i = 0; i < kConnects; ++i) {
            const char* const name = i % 2 == 0 ? "service" : "hub";
            const os::File socket = ConnectTo(world.Socket(name));
            EXPECT_TRUE(socket) << "connection " << i << " to the " << name << " was refused";
            if (dice.From(0, 3) == 0) {
                static_cast<void>(::send(socket.Descriptor(), "K3", 2, MSG_NOSIGNAL));
            }
        }
        const Moment ended = Now();
        EXPECT_TRUE(support::WaitUntil([&] { return Descriptors(world.Service()) <= before; }));
        const Moment recovered = Now();
        EXPECT_TRUE(SteadySetsAfter(*application, ended));
        for (const Event& event : application->Events()) {
            EXPECT_FALSE(event.kind == "down" && event.time > began) << "the scan was disturbed";
        }
        return Recovery{ended, recovered};
    });
    ExpectDocumentedCalls(*application);
    application->End();
    world.End();
}

/// Sends random bytes for so long, over a new connection each time that one is closed.
int SendRandomBytes(const fs::path& path, Dice& dice, std::chrono::milliseconds howLong) {
    int connections = 0;
    std::array<char, 512> bytes{};
    os::File socket;
    for (const auto end = std::chrono::steady_clock::now() + howLong;
         std::chrono::steady_clock::now() < end;) {
        if (!socket) {
            socket = ConnectTo(path);
            EXPECT_TRUE(socket);
            ++connections;
        }
        std::generate(bytes.begin(), bytes.end(),
                      [&dice] { return static_cast<char>(dice.From(0, 255)); });
        const auto size = static_cast<std::size_t>(dice.From(1, static_cast<int>(bytes.size())));
        if (::send(socket.Descriptor(), bytes.data(), size, MSG_NOSIGNAL) < 0) {
            socket = os::File();
        }
    }
    return connections;
}

TEST(Survival, RandomBytes) {
    constexpr std::chrono::seconds kSending{10};
    World world;
    const auto application = world.Application("scan");
    ASSERT_TRUE(SteadySetsAfter(*application, 0));
    const std::ptrdiff_t before = Descriptors(world.Service());
    RunRounds([&](int round, Dice& dice) {
        const Moment began = Now();
        EXPECT_GT(SendRandomBytes(world.Socket(round % 2 == 0 ? "service" : "hub"), dice, kSending),
                  1)
            << "random bytes are refused";
        const Moment ended = Now();
        EXPECT_TRUE(support::WaitUntil([&] { return Descriptors(world.Service()) <= before; }));
        const Moment recovered = Now();
        EXPECT_TRUE(SteadySetsAfter(*application, ended));
        for (const Event& event : application->Events()) {
            EXPECT_FALSE(event.kind == "down" && event.time > began) << "the scan was disturbed";
        }
        return Recovery{ended, recovered};
    });
    ExpectDocumentedCalls(*application);
    application->End();
    world.End();
}

}  // namespace

}  // namespace Korvex3Sync::tests::survival
