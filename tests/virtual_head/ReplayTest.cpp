#include <gmock/gmock.h>

#include <fstream>
#include <variant>

#include "virtual_head/TestFiles.h"
#include "virtual_head/Unpacked.h"
#include "virtual_head/images/ImageSource.h"

namespace Korvex3Sync::tests {
namespace {

using namespace virtual_head;
using testing::HasSubstr;
using testing::Not;
using Pixels = std::vector<std::uint8_t>;

constexpr int kWidth = 64;
constexpr int kHeight = 32;
constexpr std::size_t kPicturePixels = std::size_t{kWidth} * kHeight;

class ReplayTest : public testing::Test {
protected:
    ReplayTest() {
        m_description.width = kWidth;
        m_description.height = kHeight;
        m_description.replayFolder = m_folder.Path();
    }

    std::filesystem::path File(const std::string& name) const { return m_folder.Path() / name; }

    void WritePair(const std::string& name, unsigned seed) const {
        WriteGrey(File("left" + name + ".png"), RandomImage(kWidth, kHeight, seed));
        WriteGrey(File("right" + name + ".png"), RandomImage(kWidth, kHeight, seed + 1));
    }

    std::shared_ptr<ImageSource> Make() const {
        auto made = MakeReplay(m_description);
        if (const auto* error = std::get_if<std::string>(&made)) {
            ADD_FAILURE() << *error;
            return nullptr;
        }
        return std::get<std::shared_ptr<ImageSource>>(made);
    }

    std::string Error() const {
        const auto made = MakeReplay(m_description);
        if (!std::holds_alternative<std::string>(made)) {
            ADD_FAILURE() << "the folder was taken";
            return {};
        }
        EXPECT_THAT(std::get<std::string>(made), Not(HasSubstr("\n")));
        return std::get<std::string>(made);
    }

    static Unpacked Frame(ImageSource& source, std::uint64_t trigger, bool color) {
        Exposure exposure;
        exposure.trigger = trigger;
        exposure.key = static_cast<std::uint8_t>(trigger & 0xFFU);
        exposure.color = color;
        Pixels packed(2 * kPicturePixels, 0xEE);
        source.WritePacked(exposure, packed.data());
        return Unpack(packed.data(), kPicturePixels);
    }

    static Pixels WithKey(Pixels image, std::uint64_t trigger) {
        image[3] = static_cast<std::uint8_t>(trigger & 0xFFU);
        return image;
    }

    TemporaryFolder m_folder;
    HeadDescription m_description;
};

TEST_F(ReplayTest, PairsComeInTheOrderOfTheirNamesUnchangedToTheByte) {
    WritePair("02", 30);
    WritePair("01", 10);
    WritePair("10", 50);
    const auto source = Make();
    ASSERT_TRUE(source);
    for (const std::uint64_t trigger : {0, 1, 2, 3, 4, 257}) {
        const unsigned seed = 10 + 20 * static_cast<unsigned>(trigger % 3);
        const auto mono = Frame(*source, trigger, false);
        EXPECT_FALSE(mono.marker);
        EXPECT_EQ(mono.first, RandomImage(kWidth, kHeight, seed).pixels);
        EXPECT_EQ(mono.second, WithKey(RandomImage(kWidth, kHeight, seed + 1).pixels, trigger));
        const auto color = Frame(*source, trigger, true);
        EXPECT_TRUE(color.marker);
        EXPECT_EQ(color.second, WithKey(RandomImage(kWidth, kHeight, seed).pixels, trigger))
            << "without a colour image the left one serves as the mosaic";
    }
}

TEST_F(ReplayTest, ColorImageOfAPairIsItsMosaic) {
    WritePair("01", 10);
    WritePair("02", 20);
    const TestImage mosaic = RandomImage(kWidth, kHeight, 99);
    WriteGrey(File("color02.png"), mosaic);
    const auto source = Make();
    ASSERT_TRUE(source);
    EXPECT_EQ(Frame(*source, 0, true).second, WithKey(RandomImage(kWidth, kHeight, 10).pixels, 0));
    EXPECT_EQ(Frame(*source, 1, true).second, WithKey(mosaic.pixels, 1));
}

TEST_F(ReplayTest, SmallerImageIsCentredOnBlackAtAnEvenCorner) {
    const TestImage left = RandomImage(30, 10, 1);   // 34 columns and 22 rows to spare
    const TestImage right = RandomImage(61, 29, 2);  // 3 columns and 3 rows to spare
    WriteGrey(File("left1.png"), left);
    WriteGrey(File("right1.png"), right);
    const auto place = [](const TestImage& image, int column, int row) {
        Pixels pixels(kPicturePixels, 0);
        for (int y = 0; y < image.height; ++y) {
            for (int x = 0; x < image.width; ++x) {
                pixels[static_cast<std::size_t>((row + y) * kWidth + column + x)] =
                    image.pixels[static_cast<std::size_t>(y * image.width + x)];
            }
        }
        return pixels;
    };
    const auto source = Make();
    ASSERT_TRUE(source);
    const auto frame = Frame(*source, 0, false);
    EXPECT_EQ(frame.first, place(left, 16, 10));
    EXPECT_EQ(frame.second, WithKey(place(right, 0, 0), 0));
}

TEST_F(ReplayTest, OtherFilesOfTheFolderAreLeftAlone) {
    WritePair("01", 10);
    WriteText(File("README.md"), "not an image");
    WriteText(File("left01.txt"), "not an image");
    EXPECT_TRUE(Make());
}

TEST_F(ReplayTest, MissingPartnersAreNamed) {
    WriteGrey(File("left07.png"), RandomImage(kWidth, kHeight, 1));
    EXPECT_EQ(Error(), File("left07.png").string() + ": its partner right07.png is missing");
    std::filesystem::rename(File("left07.png"), File("right07.png"));
    EXPECT_EQ(Error(), File("right07.png").string() + ": its partner left07.png is missing");
    WritePair("01", 1);
    std::filesystem::rename(File("right07.png"), File("color07.png"));
    EXPECT_EQ(Error(), File("color07.png").string() + ": its partner left07.png is missing");
}

TEST_F(ReplayTest, EmptyFolderAndMissingFolderAreRefused) {
    EXPECT_EQ(Error(),
              m_folder.Path().string() + ": the folder has no pair leftNN.png and rightNN.png");
    m_description.replayFolder = File("none");
    EXPECT_THAT(Error(), HasSubstr("none: the folder cannot be read: "));
    WriteText(File("file"), "");
    m_description.replayFolder = File("file");
    EXPECT_THAT(Error(), HasSubstr("file: the folder cannot be read: "));
}

TEST_F(ReplayTest, ImageLargerThanTheSensorIsRefused) {
    WritePair("01", 1);
    WriteGrey(File("right01.png"), RandomImage(kWidth + 1, kHeight, 2));
    EXPECT_EQ(Error(), File("right01.png").string() +
                           ": has 65 x 32 pixels, more than the sensor's 64 x 32");
    WriteGrey(File("right01.png"), RandomImage(kWidth, kHeight + 1, 2));
    EXPECT_THAT(Error(), HasSubstr("has 64 x 33 pixels"));
}

TEST_F(ReplayTest, ImageThatIsNotEightBitGreyIsRefused) {
    WritePair("01", 1);
    WritePng(File("left01.png"), 8, 8, PngKind::Rgb8, Pixels(8 * 8 * 3));
    EXPECT_EQ(Error(), File("left01.png").string() + ": is not an 8-bit grey image");
    WritePng(File("left01.png"), 8, 8, PngKind::Grey16, Pixels(8 * 8 * 2));
    EXPECT_EQ(Error(), File("left01.png").string() + ": is not an 8-bit grey image");
}

TEST_F(ReplayTest, UnreadableImageIsRefused) {
    WritePair("01", 1);
    WriteText(File("right01.png"), "this is no PNG");
    EXPECT_THAT(Error(), HasSubstr("right01.png: is not a readable PNG image: "));
    WriteText(File("right01.png"), "");
    EXPECT_THAT(Error(), HasSubstr("right01.png: is not a readable PNG image: "));
    std::filesystem::remove(File("right01.png"));
    std::filesystem::create_directory(File("right01.png"));
    EXPECT_THAT(Error(), HasSubstr("right01.png: is a folder, not a file"));
}

TEST_F(ReplayTest, CutImageIsRefused) {
    WritePair("01", 1);
    std::filesystem::resize_file(File("left01.png"),
                                 std::filesystem::file_size(File("left01.png")) / 2);
    EXPECT_THAT(Error(), HasSubstr("left01.png: is not a readable PNG image: "));
}

TEST_F(ReplayTest, BrokenColorImageIsRefusedOnlyByAHeadWithColor) {
    WritePair("01", 1);
    WriteText(File("color01.png"), "this is no PNG");
    EXPECT_THAT(Error(), HasSubstr("color01.png: "));
    m_description.color = false;
    EXPECT_TRUE(Make());
}

TEST_F(ReplayTest, MorePairsThanMemoryShouldHoldAreRefusedBeforeTheyAreRead) {
    m_description.width = 2000;
    m_description.height = 2000;
    const auto add = [this](int from, int to) {
        for (int i = from; i < to; ++i) {
            WriteGrey(File("left" + std::to_string(i) + ".png"), RandomImage(16, 16, 1));
            WriteGrey(File("right" + std::to_string(i) + ".png"), RandomImage(16, 16, 2));
        }
    };
    add(0, 268);
    WriteText(File("left100.png"), "none");
    EXPECT_THAT(Error(), HasSubstr("left100.png")) << "268 pairs of 8 MB have room in 2 GiB";
    add(268, 269);
    EXPECT_EQ(Error(), m_folder.Path().string() +
                           ": the folder has 269 pairs, which take 2052 MB of memory, more than "
                           "2048; remove some of them");
}

TEST_F(ReplayTest, ATextThatExpandsFarBeyondTheImageIsRefused) {
    WritePair("01", 1);
    const TestImage image = RandomImage(kWidth, kHeight, 1);
    WriteGrey(File("left01.png"), image, std::string(std::size_t{1} << 20U, 'x'));
    EXPECT_TRUE(Make());
    WriteGrey(File("left01.png"), image, std::string(std::size_t{5} << 20U, 'x'));
    EXPECT_LT(std::filesystem::file_size(File("left01.png")), 50'000U);
    EXPECT_THAT(Error(), HasSubstr("left01.png: is not a readable PNG image: "));
}

}  // namespace
}  // namespace Korvex3Sync::tests
