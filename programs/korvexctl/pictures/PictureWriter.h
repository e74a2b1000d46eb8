#pragma once

#include <deque>
#include <exception>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "korvexctl/pictures/ContactSheet.h"
#include "korvexctl/pictures/KeptImageSet.h"
#include "platform/os/Condition.h"
#include "platform/os/CriticalSection.h"

namespace Korvex3Sync::korvexctl {

/// Stores a complete file; throws when it cannot.
using StoreFile =
    std::function<void(const std::filesystem::path& file, std::span<const unsigned char> bytes)>;

/// Writes kept sets on its own thread while the scan runs: set_000_left.png, set_000_right.png and,
/// with colour, set_000_color.png for those chosen for pictures, and at the end contact-sheet.png
/// of those chosen for it. Owns its thread; the destructor joins it after the file that is being
/// written.
class PictureWriter {
public:
    /// What the writer reports, on its own thread.
    struct Listener {
        /// A set is no longer needed. Not called for those that wait when writing fails.
        std::function<void(const KeptImageSet&)> onDone;
        /// Once, when a file cannot be written; nothing is written after that.
        std::function<void()> onFailure;
    };

    PictureWriter(std::filesystem::path folder, StoreFile store, Listener listener);
    ~PictureWriter();
    PictureWriter(const PictureWriter&) = delete;
    PictureWriter& operator=(const PictureWriter&) = delete;

    /// Queues a set, which must stay valid and unchanged until onDone. Any thread; does not wait
    /// for the disk.
    void Add(const KeptImageSet& set);
    /// Waits until the queued sets and the contact sheet are written, or until a file cannot be
    /// written; then nothing more may be added.
    void Finish();
    /// After Finish: the names of the complete files, in order.
    const std::vector<std::string>& Files() const { return m_files; }
    /// After Finish: throws the error of the file that could not be written, if any.
    void ThrowFailure() const;

private:
    void Run();
    /// The next queued set; null at the end.
    const KeptImageSet* WaitForNext();
    void Write(const KeptImageSet& set);
    void WriteSheet();
    void Store(const std::string& name, const Picture& picture);
    void Join(bool dropWaiting);

    const std::filesystem::path m_folder;
    const StoreFile m_store;
    const Listener m_listener;
    os::Mutex m_mutex;
    os::Condition m_changed;
    std::deque<const KeptImageSet*> m_waiting KORVEX_GUARDED_BY(m_mutex);
    bool m_end KORVEX_GUARDED_BY(m_mutex) = false;
    bool m_dropped KORVEX_GUARDED_BY(m_mutex) = false;
    // The thread's own until it has ended.
    ContactSheet m_sheet;
    std::vector<std::string> m_files;
    std::exception_ptr m_failure;
    std::thread m_thread;
};

}  // namespace Korvex3Sync::korvexctl
