#include "head/HeadSession.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {
namespace {

constexpr int kWidth = 1280;
constexpr int kHeight = 1024;

/// Whether a delivered image is the picture, centred on black (at an even corner, which keeps a
/// colour mosaic in phase), but for the pixel of the key.
void ExpectLetterboxed(const std::vector<unsigned char>& image, const TestImage& picture,
                       bool carriesKey, std::size_t set) {
    const int left = (kWidth - picture.width) / 4 * 2;
    const int top = (kHeight - picture.height) / 4 * 2;
    std::vector<unsigned char> expected(static_cast<std::size_t>(kWidth) * kHeight, 0);
    for (int row = 0; row < picture.height; ++row) {
        std::copy_n(picture.pixels.begin() + std::ptrdiff_t{row} * picture.width, picture.width,
                    expected.begin() + std::ptrdiff_t{top + row} * kWidth + left);
    }
    if (carriesKey) {
        expected[3] = image[3];
    }
    ASSERT_TRUE(image == expected) << "set " << set;
}

class ReplayScan : public HeadSession {
protected:
    void Replay(int count, bool ownColor) {
        for (int i = 0; i < count; ++i) {
            const auto seed = static_cast<unsigned>(i);
            const std::string number = (i < 9 ? "0" : "") + std::to_string(i + 1);
            m_lefts.push_back(RandomImage(600 + i, 480, 3 * seed));
            m_rights.push_back(RandomImage(600, 480 + i, 3 * seed + 1));
            WriteGrey(m_folder.Path() / ("left" + number + ".png"), m_lefts.back());
            WriteGrey(m_folder.Path() / ("right" + number + ".png"), m_rights.back());
            if (ownColor) {
                m_colors.push_back(RandomImage(kWidth, kHeight, 3 * seed + 2));
                WriteGrey(m_folder.Path() / ("color" + number + ".png"), m_colors.back());
            } else {
                m_colors.push_back(m_lefts.back());
            }
        }
        virtual_head::HeadDescription description;
        description.replayFolder = m_folder.Path();
        description.cameraBuffers = 4096;
        Request(description);
    }
    /// Scans the pairs twice over and compares each set with its own pair.
    void ScanAndCompare() {
        ASSERT_EQ(Connect(), STATUS_SUCCESS);
        const std::size_t pairs = m_lefts.size();
        SetCollector sets([&](const ImageSet& set, std::size_t number) {
            const std::size_t pair = number % pairs;
            ASSERT_EQ(set.images.size(), 3u);
            EXPECT_EQ(set.Key(), number % 256);
            EXPECT_EQ(set.images[2][3], number % 256);
            ExpectLetterboxed(set.images[0], m_lefts[pair], false, number);
            ExpectLetterboxed(set.images[1], m_rights[pair], true, number);
            ExpectLetterboxed(set.images[2], m_colors[pair], true, number);
        });
        const EndedFirst ended(*this);
        SetScanCallBackFunction(m_handle, &SetCollector::Receive, &sets);
        ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 20), STATUS_SUCCESS);
        EXPECT_TRUE(sets.WaitFor(2 * pairs + 1)) << sets.Count();
        TriggerOff();
        DisConnectDevice(m_handle);
    }

    TemporaryFolder m_folder;
    std::vector<TestImage> m_lefts;
    std::vector<TestImage> m_rights;
    std::vector<TestImage> m_colors;
};

TEST_F(ReplayScan, EachPairArrivesUnchangedLeftWithItsOwnRightAndColour) {
    Replay(12, true);
    ScanAndCompare();
}

TEST_F(ReplayScan, WithoutColourFilesTheColourShowsTheLeftPicture) {
    Replay(3, false);
    ScanAndCompare();
}

}  // namespace
}  // namespace Korvex3Sync::tests
