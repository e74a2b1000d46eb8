#include "korvexctl/PictureWriter.h"

#include <array>
#include <cstdio>
#include <utility>

#include "korvexctl/AtomicFile.h"
#include "korvexctl/Picture.h"
#include "korvexctl/ScanRecorder.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr std::array kNames{"left", "right", "color"};
constexpr std::size_t kColor = 2;

std::string FileName(int number, const char* image) {
    std::array<char, 64> name{};
    std::snprintf(name.data(), name.size(), "set_%03d_%s.png", number, image);
    return name.data();
}

}  // namespace

PictureWriter::PictureWriter(std::filesystem::path folder, std::function<void()> onFailure)
    : m_folder(std::move(folder)), m_onFailure(std::move(onFailure)), m_thread([this] { Run(); }) {}

PictureWriter::~PictureWriter() {
    Join(true);
}

void PictureWriter::Add(const KeptSet& set) {
    const std::lock_guard lock(m_mutex);
    m_waiting.push_back(&set);
    m_changed.notify_all();
}

void PictureWriter::Finish() {
    Join(false);
}

void PictureWriter::ThrowFailure() const {
    if (m_failure) {
        std::rethrow_exception(m_failure);
    }
}

void PictureWriter::Join(bool dropWaiting) {
    {
        const std::lock_guard lock(m_mutex);
        m_end = true;
        if (dropWaiting) {
            m_waiting.clear();
        }
        m_changed.notify_all();
    }
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void PictureWriter::Run() {
    std::unique_lock lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] { return m_end || !m_waiting.empty(); });
        if (m_waiting.empty()) {
            return;
        }
        const KeptSet& set = *m_waiting.front();
        m_waiting.pop_front();
        lock.unlock();
        try {
            Write(set);
        } catch (...) {
            m_failure = std::current_exception();
            m_onFailure();
            return;
        }
        lock.lock();
    }
}

void PictureWriter::Write(const KeptSet& set) {
    for (std::size_t i = 0; i < (set.color ? kNames.size() : kColor); ++i) {
        const std::string name = FileName(set.number, kNames[i]);
        const Picture picture = i == kColor ? Demosaic(set.images[i].data(), set.width, set.height)
                                            : Picture{set.width, set.height, 1, set.images[i]};
        WriteFile(m_folder / name, EncodePng(picture));
        m_files.push_back(name);
    }
}

}  // namespace Korvex3Sync::korvexctl
