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
#include "korvexctl/pictures/Picture.h"
#include "platform/os/Condition.h"
#include "platform/os/CriticalSection.h"

namespace Korvex3Sync::korvexctl {

/// Stores a complete file; throws when it cannot.
using StoreFile =
    std::function<void(const std::filesystem::path& file, std::span<const unsigned char> bytes)>;

/// A set with pictures.
struct WrittenSet {
    int number = 0;
    int key = 0;
    double seconds = 0;
    std::vector<std::string> files;
};

/// Writes kept sets on its own thread while the scan runs: set_000_left.png, set_000_right.png and,
/// with colour, set_000_color.png for those with pictures, left_000000.png and so on for those to
/// record, and at the end contact-sheet.png of those on it. Owns its thread; the destructor joins
/// it after the file that is being written.
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
    /// Waits until the queued sets and the contact sheet, with these lines on top, are written, or
    /// until a file cannot be written; then nothing more may be added.
    void Finish(std::vector<std::string> header);
    /// After Finish: the sets whose pictures are complete, in order.
    const std::vector<WrittenSet>& Pictures() const { return m_pictures; }
    /// After Finish: whether there is a contact sheet.
    bool HasSheet() const { return m_sheetWritten; }
    /// After Finish: how many sets were recorded.
    int Recorded() const { return m_recorded; }
    /// After Finish: throws the error of the file that could not be written, if any.
    void ThrowFailure() const;

private:
    void Run();
    /// The next queued set; null at the end.
    const KeptImageSet* WaitForNext();
    void Write(const KeptImageSet& set);
    void WritePictures(const KeptImageSet& set);
    void Record(const KeptImageSet& set);
    void WriteSheet();
    void Store(const std::string& name, const Picture& picture, Encoding encoding);
    void Join(bool dropWaiting, std::vector<std::string> header);

    const std::filesystem::path m_folder;
    const StoreFile m_store;
    const Listener m_listener;
    os::Mutex m_mutex;
    os::Condition m_changed;
    std::deque<const KeptImageSet*> m_waiting KORVEX_GUARDED_BY(m_mutex);
    bool m_end KORVEX_GUARDED_BY(m_mutex) = false;
    bool m_dropped KORVEX_GUARDED_BY(m_mutex) = false;
    std::vector<std::string> m_header KORVEX_GUARDED_BY(m_mutex);
    // The thread's own until it has ended.
    ContactSheet m_sheet;
    std::vector<WrittenSet> m_pictures;
    bool m_sheetWritten = false;
    int m_recorded = 0;
    std::exception_ptr m_failure;
    std::thread m_thread;
};

}  // namespace Korvex3Sync::korvexctl
