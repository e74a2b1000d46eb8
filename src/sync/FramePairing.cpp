#include "sync/FramePairing.h"

#include <new>

namespace Korvex3Sync {
namespace {

constexpr std::size_t kMostImages = 3;  // of a set: two mono images and a colour image

bool HasMono(const VideoItem& item) {
    return item.pMonoImage0 != nullptr && item.pMonoImage1 != nullptr;
}

/// Releases the images of an item that are set, in the given order.
void ReleaseImages(std::initializer_list<unsigned char*> images, FramePairing::Sink& sink) {
    for (unsigned char* image : images) {
        if (image != nullptr) {
            sink.Release(image);
        }
    }
}

}  // namespace

FramePairing::FramePairing() {
    m_set.reserve(kMostImages);
    m_setChannels.reserve(kMostImages);
}

void FramePairing::TakeColor(const DecodedFrame& frame, Sink& sink) {
    unsigned char* const color = frame.images.front();
    const auto found = _mapVideoItems.find(frame.key);
    if (found == _mapVideoItems.end() || !HasMono(found->second)) {
        sink.Lose(PairingLoss::ColorWithoutMono);
        sink.Release(color);
        return;
    }
    const VideoItem item = found->second;
    m_set = {item.pMonoImage0, item.pMonoImage1, color};
    m_setChannels = {item.nMonoChannels, item.nMonoChannels, frame.channels.front()};
    sink.Deliver(m_set, frame.width, frame.heights.front(), m_setChannels, false);
    _mapVideoItems.erase(found);
    ReleaseSet(m_set, sink);
    ReleaseImages({item.pColorImage}, sink);
}

void FramePairing::TakeMono(const DecodedFrame& frame, Sink& sink) {
    const auto found = _mapVideoItems.find(frame.key);
    if (found != _mapVideoItems.end() && found->second.pColorImage != nullptr) {
        const VideoItem item = found->second;
        m_set = frame.images;
        m_set.push_back(item.pColorImage);
        m_setChannels = frame.channels;
        m_setChannels.push_back(item.nColorChannels);
        sink.Deliver(m_set, frame.width, frame.heights.front(), m_setChannels, false);
        _mapVideoItems.erase(found);
        ReleaseSet(m_set, sink);
        ReleaseImages({item.pMonoImage0, item.pMonoImage1}, sink);
        return;
    }
    Flush(frame, sink);
    VideoItem item;
    item.pMonoImage0 = frame.images[0];
    item.pMonoImage1 = frame.images[1];
    item.nMonoHeight = frame.heights.front();
    item.nMonoWidth = frame.width;
    item.nMonoChannels = frame.channels.front();
    item.bColorExpected = frame.colorExpected;
    if (!Store(frame.key, item)) {
        sink.Lose(PairingLoss::Set);
        ReleaseSet(frame.images, sink);
    }
}

void FramePairing::Flush(const DecodedFrame& newer, Sink& sink) {
    for (const auto& [key, item] : _mapVideoItems) {
        if (HasMono(item)) {
            m_set = {item.pMonoImage0, item.pMonoImage1};
            m_setChannels = newer.channels;
            if (item.pColorImage != nullptr) {
                m_set.push_back(item.pColorImage);
                m_setChannels.push_back(item.nColorChannels);
            }
            sink.Deliver(m_set, newer.width, newer.heights.front(), m_setChannels,
                         item.bColorExpected && item.pColorImage == nullptr);
        }
        ReleaseImages({item.pMonoImage0, item.pMonoImage1, item.pColorImage}, sink);
    }
    _mapVideoItems.clear();
}

void FramePairing::ForgoColor(unsigned int key) {
    const auto found = _mapVideoItems.find(key);
    if (found != _mapVideoItems.end()) {
        found->second.bColorExpected = false;
    }
}

bool FramePairing::Store(unsigned int key, const VideoItem& item) {
    try {
        _mapVideoItems.emplace(key, item);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

void FramePairing::DropFirst(Sink& sink) {
    const auto first = _mapVideoItems.begin();
    const VideoItem& item = first->second;
    if (HasMono(item)) {
        sink.Lose(PairingLoss::Set);
    }
    ReleaseImages({item.pColorImage, item.pMonoImage0, item.pMonoImage1}, sink);
    _mapVideoItems.erase(first);
}

void FramePairing::Clear(Sink& sink) {
    while (Size() > 0) {
        DropFirst(sink);
    }
}

void FramePairing::ReleaseSet(const std::vector<unsigned char*>& images, Sink& sink) {
    for (unsigned char* image : images) {
        sink.Release(image);
    }
}

}  // namespace Korvex3Sync
