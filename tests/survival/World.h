#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support/OwnFolders.h"
#include "survival/ApplicationProcess.h"

namespace Korvex3Sync::tests::survival {

/// How the second start of a program ends.
inline constexpr int kAlreadyRunning = 3;

/// The longest random pause in most places.
inline constexpr int kLongPauseMs = 300;

/// Random moments and choices. The seed is printed (KORVEX_TEST_SEED).
class Dice {
public:
    Dice();
    int From(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_engine); }
    /// Lets a random time pass, up to so many milliseconds.
    void Pause(int most);

private:
    std::mt19937 m_engine;
};

/// The folders of one scenario, and the hub and the service that run there.
class Surroundings {
public:
    Surroundings();
    Surroundings(const Surroundings&) = delete;
    Surroundings& operator=(const Surroundings&) = delete;

    const OwnFolders& Folders() const { return m_folders; }
    std::filesystem::path Socket(const std::string& name) const {
        return m_folders.Runtime() / name;
    }
    /// With the images of the head.
    static std::string HeadFolder();
    /// Of the processes: the folders, and the head.
    std::vector<std::pair<std::string, std::string>> Environment() const;
    /// The process that holds the hub's lock; 0 without one.
    pid_t Hub() const { return HolderOf("hub.lock"); }
    /// The same for the service.
    pid_t RunningService() const { return HolderOf("service.lock"); }
    void KillHub() const { Kill(Hub(), "hub.exe"); }

protected:
    /// Kills a process of this program.
    static void Kill(pid_t number, const std::string& program);
    /// Asks the hub to end.
    void EndHub() const;
    /// Hub and service have been asked to end: no process, no socket, no shared memory is left.
    void ExpectNothingLeft() const;

private:
    pid_t HolderOf(const char* lock) const;

    OwnFolders m_folders;
    std::string m_head;
};

/// Hub and service as children of this process.
class World : public Surroundings {
public:
    /// Starts both.
    World();
    ~World();

    std::unique_ptr<ApplicationProcess> Application(const std::string& use) const {
        return std::make_unique<ApplicationProcess>(Folders(), use);
    }

    pid_t Service() const { return m_service; }
    /// Starts another process of the service and returns its number.
    pid_t StartAnotherService() const;
    /// Starts the service; its work is not waited for. Returns the moment.
    Moment StartService();
    void KillService();

    /// Ends service and hub in the orderly way, and expects that nothing is left.
    void End();

private:
    pid_t StartHere(const std::string& program) const;

    pid_t m_service = -1;
    pid_t m_firstHub = -1;
};

/// The shared file of the image sets. Fails the test if there is none.
std::filesystem::path AreaOfSets();

/// When ten image sets without a pause between them began to arrive after a moment; waits for them.
/// Fails the test, and returns nothing, at the deadline.
std::optional<Moment> SteadySetsAfter(ApplicationProcess& application, Moment after);

/// Every call so far ended within the limit of its operation, with a documented status; no image
/// was torn.
void ExpectDocumentedCalls(const ApplicationProcess& application);

/// Runs a scenario's rounds, three or KORVEX_SURVIVAL_ROUNDS. Each returns the moments of the
/// piece's return and of recovery; the times between them are printed at the end of the program.
struct Recovery {
    Moment returned = 0;
    std::optional<Moment> recovered;
};
void RunRounds(const std::function<Recovery(int round, Dice& dice)>& round);

}  // namespace Korvex3Sync::tests::survival
