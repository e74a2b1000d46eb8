#include "sync/frames/FramePairing.h"

#include <new>
#include <utility>

namespace Korvex3Sync {
namespace {

constexpr std::size_t kMostImages = 3;  // of a set: two mono images and a colour image

bool HasMono(const VideoItem& item) {
    return item.pMonoImage0 && item.pMonoImage1;
}

}  // namespace

FramePairing::FramePairing() {
    m_set.reserve(kMostImages);
    m_setChannels.reserve(kMostImages);
}

void FramePairing::TakeColor(DecodedFrame& frame, Sink& sink) {
    Image color = std::move(frame.images.front());
    const auto found = _mapVideoItems.find(frame.key);
    if (found == _mapVideoItems.end() || !HasMono(found->second)) {
        sink.Lose(PairingLoss::ColorWithoutMono);
        return;
    }
    VideoItem& item = found->second;
    m_set.push_back(std::move(item.pMonoImage0));
    m_set.push_back(std::move(item.pMonoImage1));
    m_set.push_back(std::move(color));
    m_setChannels = {item.nMonoChannels, item.nMonoChannels, frame.channels.front()};
    DeliverSet(frame, sink, false);
    Erase(found);
}

void FramePairing::TakeMono(DecodedFrame& frame, Sink& sink) {
    const auto found = _mapVideoItems.find(frame.key);
    if (found != _mapVideoItems.end() && found->second.pColorImage) {
        VideoItem& item = found->second;
        for (Image& image : frame.images) {
            m_set.push_back(std::move(image));
        }
        m_set.push_back(std::move(item.pColorImage));
        m_setChannels = frame.channels;
        m_setChannels.push_back(item.nColorChannels);
        DeliverSet(frame, sink, false);
        Erase(found);
        return;
    }
    Flush(frame, sink);
    VideoItem item;
    item.pMonoImage0 = std::move(frame.images[0]);
    item.pMonoImage1 = std::move(frame.images[1]);
    item.nMonoHeight = frame.heights.front();
    item.nMonoWidth = frame.width;
    item.nMonoChannels = frame.channels.front();
    item.bColorExpected = frame.colorExpected;
    if (!Store(frame.key, std::move(item))) {
        sink.Lose(PairingLoss::Set);
    }
}

void FramePairing::Flush(const DecodedFrame& newer, Sink& sink) {
    while (!_mapVideoItems.empty()) {
        const auto first = _mapVideoItems.begin();
        VideoItem& item = first->second;
        if (HasMono(item)) {
            m_set.push_back(std::move(item.pMonoImage0));
            m_set.push_back(std::move(item.pMonoImage1));
            m_setChannels = newer.channels;
            const bool hasColor{item.pColorImage};
            if (hasColor) {
                m_set.push_back(std::move(item.pColorImage));
                m_setChannels.push_back(item.nColorChannels);
            }
            DeliverSet(newer, sink, item.bColorExpected && !hasColor);
        }
        Erase(first);
    }
}

void FramePairing::DeliverSet(const DecodedFrame& newer, Sink& sink, bool colorMissing) {
    sink.Deliver(m_set, newer.width, newer.heights.front(), m_setChannels, colorMissing);
    m_set.clear();
}

void FramePairing::Erase(Items::iterator item) {
    m_spare = _mapVideoItems.extract(item);
    VideoItem& erased = m_spare.mapped();
    erased.pMonoImage0.Release();
    erased.pMonoImage1.Release();
    erased.pColorImage.Release();
}

void FramePairing::ForgoColor(unsigned int key) {
    const auto found = _mapVideoItems.find(key);
    if (found != _mapVideoItems.end()) {
        found->second.bColorExpected = false;
    }
}

bool FramePairing::Store(unsigned int key, VideoItem&& item) {
    if (m_spare) {
        m_spare.key() = key;
        m_spare.mapped() = std::move(item);
        _mapVideoItems.insert(std::move(m_spare));
        return true;
    }
    try {
        _mapVideoItems.emplace(key, std::move(item));
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

void FramePairing::DropFirst(Sink& sink) {
    const auto first = _mapVideoItems.begin();
    VideoItem& item = first->second;
    if (HasMono(item)) {
        sink.Lose(PairingLoss::Set);
    }
    item.pColorImage.Release();
    item.pMonoImage0.Release();
    item.pMonoImage1.Release();
    Erase(first);
}

}  // namespace Korvex3Sync
