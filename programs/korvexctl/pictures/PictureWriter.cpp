#include "korvexctl/pictures/PictureWriter.h"

#include <utility>

#include "korvexctl/pictures/ImageSet.h"
#include "korvexctl/pictures/Picture.h"
#include "korvexctl/pictures/ScanFiles.h"

namespace Korvex3Sync::korvexctl {

PictureWriter::PictureWriter(std::filesystem::path folder, StoreFile store, Listener listener)
    : m_folder(std::move(folder)),
      m_store(std::move(store)),
      m_listener(std::move(listener)),
      m_thread([this] { Run(); }) {}

PictureWriter::~PictureWriter() {
    Join(true);
}

void PictureWriter::Add(const KeptImageSet& set) {
    const os::MutexGuard guard(m_mutex);
    m_waiting.push_back(&set);
    m_changed.NotifyAll();
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
        const os::MutexGuard guard(m_mutex);
        m_end = true;
        if (dropWaiting) {
            m_waiting.clear();
            m_dropped = true;
        }
        m_changed.NotifyAll();
    }
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void PictureWriter::Run() {
    try {
        while (const KeptImageSet* const set = WaitForNext()) {
            Write(*set);
            m_listener.onDone(*set);
        }
        WriteSheet();
    } catch (...) {
        m_failure = std::current_exception();
        m_listener.onFailure();
    }
}

const KeptImageSet* PictureWriter::WaitForNext() {
    const os::MutexGuard guard(m_mutex);
    while (!m_end && m_waiting.empty()) {
        m_changed.Wait(m_mutex);
    }
    if (m_waiting.empty()) {
        return nullptr;
    }
    const KeptImageSet* const set = m_waiting.front();
    m_waiting.pop_front();
    return set;
}

void PictureWriter::Write(const KeptImageSet& set) {
    std::vector<Picture> pictures;
    for (std::size_t i = 0; i < (set.color ? kImagesWithColor : kMonoImages); ++i) {
        pictures.push_back(i == kMonoImages ? Demosaic(set.images[i].data(), set.width, set.height)
                                            : Picture{set.width, set.height, 1, set.images[i]});
        if (set.chosen.pictures) {
            Store(PictureFile(set.chosen.number, kImageNames[i]), pictures.back());
        }
    }
    if (set.chosen.sheet) {
        m_sheet.Add(set, pictures);
    }
}

void PictureWriter::WriteSheet() {
    {
        const os::MutexGuard guard(m_mutex);
        if (m_dropped) {
            return;
        }
    }
    if (!m_sheet.Empty()) {
        Store(kContactSheetFile, m_sheet.Compose());
    }
}

void PictureWriter::Store(const std::string& name, const Picture& picture) {
    m_store(m_folder / name, EncodePng(picture));
    m_files.push_back(name);
}

}  // namespace Korvex3Sync::korvexctl
