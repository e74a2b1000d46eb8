#pragma once

#include <condition_variable>
#include <deque>
#include <exception>
#include <filesystem>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Korvex3Sync::korvexctl {

struct KeptSet;

/// Writes kept sets as PNG files on a thread of its own, beside the scan: set_000_left.png,
/// set_000_right.png and, with colour, set_000_color.png. Owns its thread; the destructor joins it
/// after the file that is being written.
class PictureWriter {
public:
    /// `onFailure` is called once, on the writer's thread, when a file cannot be written; nothing
    /// is written after that.
    PictureWriter(std::filesystem::path folder, std::function<void()> onFailure);
    ~PictureWriter();
    PictureWriter(const PictureWriter&) = delete;
    PictureWriter& operator=(const PictureWriter&) = delete;

    /// Puts a set in line; it must stay valid and unchanged as long as the writer lives. Any
    /// thread; does not block for the disk.
    void Add(const KeptSet& set);
    /// Waits until everything in line is written, or until a file could not be; then nothing more
    /// may be added.
    void Finish();
    /// After Finish: the names of the files that are there whole, in order.
    const std::vector<std::string>& Files() const { return m_files; }
    /// After Finish: throws what kept a file from being written, if anything did.
    void ThrowFailure() const;

private:
    void Run();
    void Write(const KeptSet& set);
    void Join(bool dropWaiting);

    const std::filesystem::path m_folder;
    const std::function<void()> m_onFailure;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<const KeptSet*> m_waiting;
    bool m_end = false;
    std::vector<std::string> m_files;
    std::exception_ptr m_failure;
    std::thread m_thread;
};

}  // namespace Korvex3Sync::korvexctl
