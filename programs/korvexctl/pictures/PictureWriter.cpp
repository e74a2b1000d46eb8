#include "korvexctl/pictures/PictureWriter.h"

#include <system_error>
#include <utility>

#include "korvexctl/pictures/ImageSet.h"
#include "korvexctl/pictures/ScanFiles.h"

namespace Korvex3Sync::korvexctl {

namespace {

std::size_t ImageCount(const KeptImageSet& set) {
    return set.color ? kImagesWithColor : kMonoImages;
}

}  // namespace

PictureWriter::PictureWriter(std::filesystem::path folder, StoreFile store, Listener listener)
    : m_folder(std::move(folder)),
      m_store(std::move(store)),
      m_listener(std::move(listener)),
      m_thread([this] { Run(); }) {}

PictureWriter::~PictureWriter() {
    Join(true, {});
}

void PictureWriter::Add(const KeptImageSet& set) {
    const os::MutexGuard guard(m_mutex);
    m_waiting.push_back(&set);
    m_changed.NotifyAll();
}

void PictureWriter::Finish(std::vector<std::string> header) {
    Join(false, std::move(header));
}

void PictureWriter::ThrowFailure() const {
    if (m_failure) {
        std::rethrow_exception(m_failure);
    }
}

void PictureWriter::Join(bool dropWaiting, std::vector<std::string> header) {
    {
        const os::MutexGuard guard(m_mutex);
        m_end = true;
        m_header = std::move(header);
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
    if (set.purpose.recording) {
        Record(set);
    }
    if (set.purpose.pictures) {
        WritePictures(set);
    }
}

void PictureWriter::WritePictures(const KeptImageSet& set) {
    WrittenSet written{set.number, set.key, set.seconds, {}};
    std::vector<Picture> pictures;
    for (std::size_t i = 0; i < ImageCount(set); ++i) {
        pictures.push_back(i == kMonoImages ? Demosaic(set.images[i].data(), set.width, set.height)
                                            : Picture{set.width, set.height, 1, set.images[i]});
        written.files.push_back(PictureFile(set.number, kImageNames[i]));
        Store(written.files.back(), pictures.back(), Encoding::Small);
    }
    if (set.purpose.sheet) {
        m_sheet.Add(set, pictures);
    }
    m_pictures.push_back(std::move(written));
}

/// A replay refuses a folder where an image of a pair is missing.
void PictureWriter::Record(const KeptImageSet& set) {
    try {
        for (std::size_t i = 0; i < ImageCount(set); ++i) {
            Store(RecordingFile(set.number, kImageNames[i]),
                  Picture{set.width, set.height, 1, set.images[i]}, Encoding::Fast);
        }
    } catch (...) {
        for (const char* image : kImageNames) {
            std::error_code ignored;
            std::filesystem::remove(m_folder / RecordingFile(set.number, image), ignored);
        }
        throw;
    }
    ++m_recorded;
}

void PictureWriter::WriteSheet() {
    std::vector<std::string> header;
    {
        const os::MutexGuard guard(m_mutex);
        if (m_dropped) {
            return;
        }
        header = m_header;
    }
    if (!m_sheet.Empty()) {
        Store(kContactSheetFile, m_sheet.Compose(header), Encoding::Small);
        m_sheetWritten = true;
    }
}

void PictureWriter::Store(const std::string& name, const Picture& picture, Encoding encoding) {
    m_store(m_folder / name, EncodePng(picture, encoding));
}

}  // namespace Korvex3Sync::korvexctl
