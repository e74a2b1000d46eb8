// Linked into a build of the service: keeps a file with what the board and the cameras of its
// virtual head were told, so that a test can read it at any moment, also after SIGKILL.

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "virtual_head/Request.h"
#include "virtual_head/VirtualHead.h"

namespace Korvex3Sync::tests::survival {
namespace {

namespace fs = std::filesystem;

class JournalFile {
public:
    JournalFile() : m_head(virtual_head::RequestedVirtualHead()) {
        const char* const folder = std::getenv("XDG_STATE_HOME");
        if (m_head != nullptr && folder != nullptr) {
            fs::create_directories(folder);
            m_file = fs::path(folder) / ("journal." + std::to_string(::getpid()));
            m_writer = std::thread([this] { Keep(); });
        }
    }
    ~JournalFile() {
        m_end = true;
        if (m_writer.joinable()) {
            m_writer.join();
        }
    }
    JournalFile(const JournalFile&) = delete;
    JournalFile& operator=(const JournalFile&) = delete;

private:
    void Keep() {
        while (!m_end) {
            Write();
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        Write();
    }
    /// Replaces the file as a whole.
    void Write() {
        const std::vector<std::string> calls{
            "SetCameraIntParam",          "zr3DOpenOrCloseStrobeFlicker",
            "zr3DSetLaserEnable",         "zr3DSetIRLaserEnable",
            "zr3DSetVideoTriggerPeriod",  "zr3DSetLedDutioRatio",
            "zr3DSetProjectorBrightness", "zr3DProject",
            "zr3DSetDutioRatio",          "zr3DSetDistanceIndicateState",
            "zr3DSetVideoTrigleMode"};
        const std::vector<std::string> texts = m_head->GetJournal().Texts(calls);
        if (texts == m_written) {
            return;
        }
        const fs::path next = m_file.string() + ".next";
        {
            std::ofstream stream(next);
            for (const std::string& text : texts) {
                stream << text << '\n';
            }
        }
        fs::rename(next, m_file);
        m_written = texts;
    }

    const std::shared_ptr<virtual_head::VirtualHead> m_head;
    fs::path m_file;
    std::vector<std::string> m_written;
    std::atomic<bool> m_end{false};
    std::thread m_writer;
};

JournalFile g_journalFile;

}  // namespace
}  // namespace Korvex3Sync::tests::survival
