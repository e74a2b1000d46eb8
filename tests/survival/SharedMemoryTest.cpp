// What happens to image sets when the shared memory is damaged or full.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>

#include "platform/os/File.h"
#include "platform/tunnel/AreaLayout.h"
#include "support/WaitUntil.h"
#include "survival/World.h"

namespace Korvex3Sync::tests::survival {

namespace {

/// Writes random bytes over the header of the area, all of it or a part.
void DamageHeader(const std::filesystem::path& file, Dice& dice) {
    constexpr int kHeaderBytes = 72;
    const os::File area(::open(file.c_str(), O_WRONLY | O_CLOEXEC));
    const int begin = dice.From(0, kHeaderBytes - 1);
    std::string garbage(static_cast<std::size_t>(dice.From(1, kHeaderBytes - begin)), '\0');
    for (char& byte : garbage) {
        byte = static_cast<char>(dice.From(1, 255));
    }
    ASSERT_EQ(::pwrite(area.Descriptor(), garbage.data(), garbage.size(), begin),
              static_cast<ssize_t>(garbage.size()));
}

/// Whether a client that opens the area now can use it.
bool HeaderIsWhole(const std::filesystem::path& file) {
    const os::File area(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    tunnel::HeaderWords words{};
    std::error_code gone;
    return area &&
           ::pread(area.Descriptor(), words.data(), sizeof(words), 0) ==
               static_cast<ssize_t>(sizeof(words)) &&
           tunnel::DecodeHeader(words, std::filesystem::file_size(file, gone));
}

TEST(Survival, HeaderOverwritten) {
    World world;
    const auto application = world.Application("scan");
    ASSERT_TRUE(SteadySetsAfter(*application, 0));
    const std::filesystem::path area = AreaOfSets();
    RunRounds([&](int, Dice& dice) {
        dice.Pause(kLongPauseMs);
        DamageHeader(area, dice);
        const Moment damaged = Now();
        EXPECT_TRUE(support::WaitUntil([&area] { return HeaderIsWhole(area); }));
        const auto recovered = SteadySetsAfter(*application, Now());
        for (const Event& event : application->Events()) {
            EXPECT_FALSE(event.kind == "down" && event.time > damaged) << "the service repairs it";
        }
        return Recovery{damaged, recovered};
    });
    ExpectDocumentedCalls(*application);
    application->End();
    world.End();
}

/// Takes all room of the file system, and gives it back at its end.
class NoRoom {
public:
    NoRoom() {
        const os::File file(
            ::open(kFile, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, S_IRUSR | S_IWUSR));
        const std::string block(1 << 20, 'x');
        while (!file.Write(block)) {
        }
        // And the rest, smaller than a block.
        while (::write(file.Descriptor(), block.data(), 1) == 1) {
        }
        EXPECT_EQ(errno, ENOSPC);
    }
    ~NoRoom() { std::filesystem::remove(kFile); }
    NoRoom(const NoRoom&) = delete;
    NoRoom& operator=(const NoRoom&) = delete;

private:
    static constexpr const char* kFile = "/dev/shm/full";
};

TEST(Survival, SharedMemoryFull) {
    World world;
    auto application = world.Application("scan");
    ASSERT_TRUE(SteadySetsAfter(*application, 0));
    RunRounds([&](int, Dice& dice) {
        Moment returned = 0;
        {
            const NoRoom full;
            // A scan that runs has its room.
            EXPECT_TRUE(SteadySetsAfter(*application, Now()));
            application->End();
            ExpectDocumentedCalls(*application);
            const NoRoom fuller;
            const Moment started = Now();
            application = world.Application("scan");
            const auto refused = application->WaitFor(started, [](const Event& event) {
                return event.kind == "call" && event.word == "connectDevice";
            });
            EXPECT_TRUE(refused && refused->number == 0) << "no room for image sets";
            dice.Pause(kLongPauseMs);
            returned = Now();
        }
        return Recovery{returned, SteadySetsAfter(*application, returned)};
    });
    ExpectDocumentedCalls(*application);
    application->End();
    world.End();
}

}  // namespace

}  // namespace Korvex3Sync::tests::survival
