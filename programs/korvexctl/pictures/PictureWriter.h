#pragma once

#include <condition_variable>
#include <deque>
#include <exception>
#include <filesystem>
#include <functional>
#include <mutex>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "korvexctl/pictures/ContactSheet.h"
#include "korvexctl/pictures/KeptImageSet.h"

namespace Korvex3Sync::korvexctl {

/// Puts a whole file in its place; throws when it cannot.
using StoreFile =
    std::function<void(const std::filesystem::path& file, std::span<const unsigned char> bytes)>;

/// Writes kept sets on a thread of its own, beside the scan: set_000_left.png, set_000_right.png
/// and, with colour, set_000_color.png for those chosen for pictures, and at the end
/// contact-sheet.png of those chosen for it. Owns its thread; the destructor joins it after the
/// file that is being written.
class PictureWriter {
public:
    /// What the writer tells, on its own thread.
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

    /// Puts a set in line; it must stay valid and unchanged until the writer is done with it. Any
    /// thread; does not block for the disk.
    void Add(const KeptImageSet& set);
    /// Waits until everything in line and the contact sheet are written, or until a file could not
    /// be; then nothing more may be added.
    void Finish();
    /// After Finish: the names of the files that are there whole, in order.
    const std::vector<std::string>& Files() const { return m_files; }
    /// After Finish: throws what kept a file from being written, if anything did.
    void ThrowFailure() const;

private:
    void Run();
    /// The next set in line; null when there will be none.
    const KeptImageSet* WaitForNext();
    void Write(const KeptImageSet& set);
    void WriteSheet();
    void Store(const std::string& name, const Picture& picture);
    void Join(bool dropWaiting);

    const std::filesystem::path m_folder;
    const StoreFile m_store;
    const Listener m_listener;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<const KeptImageSet*> m_waiting;
    bool m_end = false;
    bool m_dropped = false;
    ContactSheet m_sheet;
    std::vector<std::string> m_files;
    std::exception_ptr m_failure;
    std::thread m_thread;
};

}  // namespace Korvex3Sync::korvexctl
