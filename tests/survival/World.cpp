#include "survival/World.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <thread>

#include "Korvex3Sync/Status.h"
#include "platform/link/Operations.h"
#include "platform/os/InstanceLock.h"
#include "platform/os/Process.h"
#include "support/Deadline.h"
#include "support/Seed.h"
#include "support/WaitUntil.h"
#include "survival/Processes.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests::survival {

namespace {

namespace fs = std::filesystem;

constexpr double kNanosecondsOfMillisecond = 1e6;

/// The recovery times of all scenarios, in milliseconds, by test.
std::map<std::string, std::vector<double>>& RecoveryTimes() {
    static std::map<std::string, std::vector<double>> times;
    return times;
}

void WriteLine(const char* file, const std::string& text) {
    std::ofstream stream(file);
    stream << text;
    EXPECT_TRUE(stream.flush()) << file;
}

/// Gives this program and its children a /dev/shm of their own: a full one disturbs nobody, and
/// what is left behind is seen.
void OwnSharedMemory() {
    const uid_t user = ::geteuid();
    const gid_t group = ::getegid();
    ASSERT_EQ(::unshare(user == 0 ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER), 0);
    if (user != 0) {
        const auto same = [](auto id) {
            return std::to_string(id) + ' ' + std::to_string(id) + " 1";
        };
        WriteLine("/proc/self/setgroups", "deny");
        WriteLine("/proc/self/uid_map", same(user));
        WriteLine("/proc/self/gid_map", same(group));
    }
    // Not "/", which is no mount point in a changed root.
    ASSERT_EQ(::mount(nullptr, "/dev/shm", nullptr, MS_PRIVATE, nullptr), 0);
    ASSERT_EQ(::mount("tmpfs", "/dev/shm", "tmpfs", MS_NOSUID | MS_NODEV, "size=256m,mode=1777"),
              0);
}

/// A head file whose images come from files: a scene would be drawn for most of a second.
class HeadOfFiles {
public:
    HeadOfFiles() {
        constexpr int kWidth = 1280;
        constexpr int kHeight = 1024;
        for (const char* name : {"left0.png", "right0.png", "color0.png"}) {
            TestImage image{kWidth, kHeight, std::vector<std::uint8_t>(kWidth * kHeight, 0)};
            for (std::size_t i = 0; i < image.pixels.size(); ++i) {
                image.pixels[i] = static_cast<std::uint8_t>(i / kWidth + (name[0] == 'l' ? 1 : 0));
            }
            WriteGrey(m_folder.Path() / name, image);
        }
        WriteText(m_folder.Path() / "head.toml", "[replay]\nfolder = \".\"\n");
    }
    std::string File() const { return (m_folder.Path() / "head.toml").string(); }

private:
    TemporaryFolder m_folder;
};

std::unique_ptr<HeadOfFiles> s_head;

/// What holds for the whole program.
class Everything : public ::testing::Environment {
public:
    void SetUp() override {
        OwnSharedMemory();
        s_head = std::make_unique<HeadOfFiles>();
    }
    void TearDown() override {
        s_head.reset();
        for (auto& [name, times] : RecoveryTimes()) {
            std::sort(times.begin(), times.end());
            std::printf("recovery of %-34s %3zu rounds  p50 %7.1f ms  longest %7.1f ms\n",
                        name.c_str(), times.size(), times[times.size() / 2], times.back());
        }
    }
};

const auto* const kEverything = ::testing::AddGlobalTestEnvironment(new Everything);

int Rounds() {
    const char* const asked = std::getenv("KORVEX_SURVIVAL_ROUNDS");
    return asked == nullptr ? 3 : std::atoi(asked);
}

}  // namespace

Dice::Dice() : m_engine(support::Seed()) {}

void Dice::Pause(int most) {
    std::this_thread::sleep_for(std::chrono::microseconds(From(0, most * 1000)));
}

Surroundings::Surroundings() : m_head(s_head->File()) {}

std::string Surroundings::HeadFolder() {
    return fs::path(s_head->File()).parent_path().string();
}

std::vector<std::pair<std::string, std::string>> Surroundings::Environment() const {
    auto environment = m_folders.Environment();
    environment.emplace_back("KORVEX_VIRTUAL_HEAD", m_head);
    return environment;
}

pid_t Surroundings::HolderOf(const char* lock) const {
    return static_cast<pid_t>(os::InstanceLockHolder(Socket(lock)));
}

void Surroundings::Kill(pid_t number, const std::string& program) {
    ASSERT_GT(number, 0);
    const os::OtherProcess process(number);
    EXPECT_TRUE(process.Is(program));
    EXPECT_TRUE(process.Kill());
    EXPECT_TRUE(process.WaitForEnd(kDeadline));
}

void Surroundings::EndHub() const {
    if (const pid_t hub = Hub(); hub > 0) {
        ::kill(hub, SIGTERM);
    }
}

void Surroundings::ExpectNothingLeft() const {
    EXPECT_TRUE(support::WaitUntil([this] { return m_folders.Processes().empty(); }));
    EXPECT_TRUE(SharedMemoryObjects().empty()) << SharedMemoryObjects().front();
    for (const auto& entry : fs::directory_iterator(m_folders.Runtime())) {
        EXPECT_FALSE(entry.is_socket()) << entry.path() << " was left";
    }
}

World::World() : m_firstHub(StartHere("hub.exe")) {
    StartService();
}

World::~World() {
    // What still runs ends with the folders; here only the ends of children are fetched.
    for (const pid_t child : {m_service, m_firstHub}) {
        if (child > 0) {
            KillProcess(child);
        }
    }
}

pid_t World::StartHere(const std::string& program) const {
    return StartProcess({(fs::path(KORVEX_PROGRAMS) / program).string()}, Environment());
}

pid_t World::StartAnotherService() const {
    return StartHere("ZrSyncService.exe");
}

Moment World::StartService() {
    const Moment start = Now();
    m_service = StartAnotherService();
    return start;
}

void World::KillService() {
    KillProcess(m_service);
    m_service = -1;
}

void World::End() {
    if (m_service > 0) {
        ::kill(m_service, SIGTERM);
        EXPECT_EQ(WaitForEnd(m_service), 0) << "the service ends in the orderly way";
        m_service = -1;
    }
    EndHub();
    if (m_firstHub > 0) {
        WaitForEnd(m_firstHub);
        m_firstHub = -1;
    }
    ExpectNothingLeft();
}

std::filesystem::path AreaOfSets() {
    for (const std::string& name : SharedMemoryObjects()) {
        if (name.ends_with("-ZrSyncService_SharedMemory")) {
            return "/dev/shm/" + name;
        }
    }
    ADD_FAILURE() << "no area of image sets";
    return {};
}

std::optional<Moment> SteadySetsAfter(ApplicationProcess& application, Moment after) {
    constexpr int kSets = 10;
    constexpr double kLongestPause = 250 * kNanosecondsOfMillisecond;
    Moment first = 0;
    Moment last = 0;
    int count = 0;
    const auto fits = [&](const Event& event) {
        if (event.kind != "set") {
            return false;
        }
        if (count == 0 || static_cast<double>(event.time - last) > kLongestPause) {
            first = event.time;
            count = 0;
        }
        last = event.time;
        return ++count == kSets;
    };
    const std::optional<Event> tenth = application.WaitFor(after, fits);
    EXPECT_TRUE(tenth) << "no image sets";
    return tenth ? std::optional(first) : std::nullopt;
}

void ExpectDocumentedCalls(const ApplicationProcess& application) {
    constexpr double kLate = 2000;
    for (const Event& event : application.Events()) {
        EXPECT_NE(event.kind, "bad") << event.word;
        if (event.kind == "call") {
            EXPECT_TRUE(event.number == STATUS_SUCCESS || event.number == STATUS_FAILED ||
                        event.number == STATUS_NOT_CONNECTED)
                << event.word << " gave " << event.number;
            const auto limit = event.word.find("onnectDevice") != std::string::npos
                                   ? link::ConnectDevice::kLimit
                                   : link::GetVideoTriggerPeriod::kLimit;
            EXPECT_LT(event.milliseconds, static_cast<double>(limit.count()) + kLate) << event.word;
        }
    }
}

void RunRounds(const std::function<Recovery(int round, Dice& dice)>& round) {
    Dice dice;
    for (int i = 0; i < Rounds() && !::testing::Test::HasFailure(); ++i) {
        const Recovery recovery = round(i, dice);
        if (recovery.recovered) {
            const ::testing::TestInfo& test =
                *::testing::UnitTest::GetInstance()->current_test_info();
            RecoveryTimes()[test.name()].push_back(
                static_cast<double>(*recovery.recovered - recovery.returned) /
                kNanosecondsOfMillisecond);
        }
    }
}

}  // namespace Korvex3Sync::tests::survival
