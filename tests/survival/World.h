#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>

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

/// Hub, service and the folders of one scenario.
class World {
public:
    /// Starts both.
    World();
    ~World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    const OwnFolders& Folders() const { return m_folders; }
    std::filesystem::path Socket(const std::string& name) const {
        return m_folders.Runtime() / name;
    }
    std::unique_ptr<ApplicationProcess> Application(const std::string& use) const {
        return std::make_unique<ApplicationProcess>(m_folders, use);
    }

    pid_t Service() const { return m_service; }
    /// Starts another process of the service and returns its number.
    pid_t StartAnotherService() const;
    /// Starts the service; its work is not waited for. Returns the moment.
    Moment StartService();
    void KillService();
    /// The process that holds the hub's lock; 0 without one.
    pid_t Hub() const;
    void KillHub() const;

    /// Ends service and hub in the orderly way, and expects that nothing is left: no process, no
    /// socket, no shared memory.
    void End();

private:
    pid_t StartHere(const std::string& program) const;

    OwnFolders m_folders;
    std::string m_head;
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
