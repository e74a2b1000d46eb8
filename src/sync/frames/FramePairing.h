#pragma once

#include <cstddef>
#include <map>
#include <vector>

#include "camera/images/Image.h"
#include "camera/images/SplitPackedFrame.h"

namespace Korvex3Sync {

/// A frame that was split: one image is a colour frame, two are a mono frame.
struct DecodedFrame : SplitFrame {
    unsigned int key = 0;        // 0..255
    int width = 0;               // the width that came with the frame
    bool colorExpected = false;  // for a mono frame: a colour frame with the same key should follow
};

/// A pending image set.
struct VideoItem {
    Image pMonoImage0;
    Image pMonoImage1;
    Image pColorImage;
    int nColorChannels = 0;
    int nMonoChannels = 0;
    int nMonoWidth = 0;
    int nMonoHeight = 0;
    bool bColorExpected = false;
};

/// What the pairing does not deliver.
enum class PairingLoss { ColorWithoutMono, Set };

/// Pairs mono frames with the colour frames of the same key.
///
/// A mono set waits for its colour frame until the next mono frame arrives. Then every waiting set
/// is delivered, in ascending order of keys and with the size and channels of the newer frame. A
/// colour frame never waits. The images are released after each delivery. The class has no lock:
/// the owner's lock guards it.
class FramePairing {
public:
    /// Receives sets and losses.
    class Sink {
    public:
        virtual ~Sink() = default;
        /// One complete set: the images, the size and the channels of each image. The images are
        /// released when this returns. `colorMissing`: a colour frame was expected but did not
        /// arrive.
        virtual void Deliver(const std::vector<Image>& images, int width, int height,
                             const std::vector<int>& channels, bool colorMissing) = 0;
        /// A colour frame without a mono set, or a waiting mono set, is not delivered.
        virtual void Lose(PairingLoss loss) = 0;
    };

    /// The highest number of items that may wait after a frame.
    static constexpr std::size_t kMostItems = 4;

    FramePairing();

    /// Takes the one image of a colour frame.
    void TakeColor(DecodedFrame& frame, Sink& sink);
    /// Takes the two images of a mono frame.
    void TakeMono(DecodedFrame& frame, Sink& sink);
    /// The colour frame of this key went to a snapshot: its set no longer expects it.
    void ForgoColor(unsigned int key);
    /// Stores an item under a key that is not in use; false if memory runs out.
    bool Store(unsigned int key, VideoItem&& item);
    /// Releases the item with the smallest key; there must be one.
    void DropFirst(Sink& sink);

    std::size_t Size() const { return _mapVideoItems.size(); }

private:
    using Items = std::map<unsigned int, VideoItem>;

    void Flush(const DecodedFrame& newer, Sink& sink);
    /// Delivers m_set and releases it.
    void DeliverSet(const DecodedFrame& newer, Sink& sink, bool colorMissing);
    void Erase(Items::iterator item);

    Items _mapVideoItems;
    Items::node_type
        m_spare;  // of the last erased item; with it a running stream allocates nothing
    std::vector<Image> m_set;
    std::vector<int> m_setChannels;
};

}  // namespace Korvex3Sync
