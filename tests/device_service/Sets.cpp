#include "device_service/Sets.h"

#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {
namespace {

constexpr std::size_t kImageBytes = std::size_t{1280} * 1024;
/// The key replaces this pixel of the right image.
constexpr std::size_t kKeyPixel = 3;

void AddImage(SetPixels& set, const char* bytes) {
    if (set.images.size() == 1) {
        set.key = static_cast<unsigned char>(bytes[kKeyPixel]);
    }
    set.images.push_back(std::hash<std::string_view>()({bytes, kImageBytes}));
}

}  // namespace

SetReader::SetReader() {
    std::string reason;
    m_area = tunnel::AreaReader::Open("ZrSyncService_SharedMemory", reason);
    EXPECT_NE(m_area, nullptr) << reason;
}

std::optional<SetPixels> SetReader::Read(const Notice& notice) {
    SetPixels set;
    for (const QString& name : notice.segments) {
        const auto segment = m_area->Pin(name.toStdString());
        if (!segment) {
            return std::nullopt;
        }
        const auto bytes = segment->Bytes();
        EXPECT_EQ(bytes.size(), kImageBytes);
        AddImage(set, reinterpret_cast<const char*>(bytes.data()));
    }
    return set;
}

void SetReader::Hold(const Notice& notice) {
    for (const QString& name : notice.segments) {
        if (auto segment = m_area->Pin(name.toStdString())) {
            m_held.push_back(std::move(*segment));
        }
    }
}

DirectWitness::DirectWitness() {
    EXPECT_EQ(SetScanCallBackFunction(m_device.Handle(), &OnSet, this), STATUS_SUCCESS);
}

std::vector<SetPixels> DirectWitness::Sets() const {
    const std::lock_guard lock(m_mutex);
    return m_sets;
}

bool DirectWitness::WaitForSets(std::size_t count) const {
    return support::WaitUntil([&] {
        const std::lock_guard lock(m_mutex);
        return m_sets.size() >= count;
    });
}

void DirectWitness::OnSet(const void* const& context, std::vector<unsigned char*>& images,
                          const int& /*width*/, const int& /*height*/,
                          std::vector<int>& /*imageInfo*/) {
    auto* const witness = static_cast<DirectWitness*>(const_cast<void*>(context));
    SetPixels set;
    for (const unsigned char* image : images) {
        AddImage(set, reinterpret_cast<const char*>(image));
    }
    const std::lock_guard lock(witness->m_mutex);
    witness->m_sets.push_back(std::move(set));
}

}  // namespace Korvex3Sync::tests
