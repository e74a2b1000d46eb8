#include "virtual_head/config/HeadFile.h"

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>

#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {
namespace {

using namespace virtual_head;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class HeadFileTest : public testing::Test {
protected:
    std::variant<HeadDescription, HeadFileError> Read(const std::string& text) {
        WriteText(m_file, text);
        return ReadHeadFile(m_file);
    }

    HeadDescription Good(const std::string& text) {
        const auto read = Read(text);
        if (const auto* error = std::get_if<HeadFileError>(&read)) {
            ADD_FAILURE() << error->message;
            return {};
        }
        return std::get<HeadDescription>(read);
    }

    /// Expects the text to be refused for this line; gives what is wrong, without file and line.
    std::string Wrong(const std::string& text, int line) {
        const auto read = Read(text);
        const auto* error = std::get_if<HeadFileError>(&read);
        if (error == nullptr) {
            ADD_FAILURE() << "was taken: " << text;
            return {};
        }
        EXPECT_EQ(error->file, m_file);
        EXPECT_EQ(error->line, line) << error->message;
        const std::string place = m_file.string() + ":" + std::to_string(line) + ": ";
        EXPECT_THAT(error->message, StartsWith(place));
        EXPECT_THAT(error->message, Not(HasSubstr("\n")));
        return error->message.substr(std::min(place.size(), error->message.size()));
    }

    /// Expects the file as a whole to be refused.
    static void ExpectRefused(const std::filesystem::path& file, const std::string& what) {
        const auto read = ReadHeadFile(file);
        ASSERT_TRUE(std::holds_alternative<HeadFileError>(read));
        const auto& error = std::get<HeadFileError>(read);
        EXPECT_EQ(error.line, 0);
        EXPECT_EQ(error.message, file.string() + ": " + what);
    }

    TemporaryFolder m_folder;
    std::filesystem::path m_file = m_folder.Path() / "head.toml";
};

TEST_F(HeadFileTest, EmptyFileGivesTheDefaults) {
    const HeadDescription head = Good("");
    EXPECT_EQ(head.cameraType, "KV00");
    EXPECT_EQ(head.cameraSerial, "KV00A1001");
    EXPECT_EQ(head.boardSerial, "VH3267-0001");
    EXPECT_EQ(head.firmware, "1.4.0");
    EXPECT_EQ(head.width, 1280);
    EXPECT_EQ(head.height, 1024);
    EXPECT_TRUE(head.color);
    EXPECT_EQ(head.gainLow, 0);
    EXPECT_EQ(head.gainHigh, 16);
    EXPECT_EQ(head.usbSpeed, 4);
    EXPECT_EQ(head.cameraBuffers, 64);
    EXPECT_EQ(head.userMemory, (std::array<std::uint8_t, 4096>{}));
    EXPECT_TRUE(head.replayFolder.empty());
}

TEST_F(HeadFileTest, EveryKeyIsTakenOver) {
    const HeadDescription head = Good(R"(
[camera]
type = "KV10"
serial = "KV10B0007"
width = 640
height = 480
color = false
gain_low = 1
gain_high = 12
buffers = 8

[board]
serial = "B-1"
firmware = "2.0"
usb_speed = 3

[[board.user_memory]]
page = 0
text = "bench"

[[board.user_memory]]
page = 15
bytes = [255, 0, 1]

[replay]
folder = "pairs"
)");
    EXPECT_EQ(head.cameraType, "KV10");
    EXPECT_EQ(head.cameraSerial, "KV10B0007");
    EXPECT_EQ(head.width, 640);
    EXPECT_EQ(head.height, 480);
    EXPECT_FALSE(head.color);
    EXPECT_EQ(head.gainLow, 1);
    EXPECT_EQ(head.gainHigh, 12);
    EXPECT_EQ(head.cameraBuffers, 8);
    EXPECT_EQ(head.boardSerial, "B-1");
    EXPECT_EQ(head.firmware, "2.0");
    EXPECT_EQ(head.usbSpeed, 3);
    EXPECT_EQ(head.replayFolder, m_folder.Path() / "pairs");
    std::array<std::uint8_t, 4096> memory{};
    const std::string text = "bench";
    std::copy(text.begin(), text.end(), memory.begin());
    memory[15 * 256] = 255;
    memory[15 * 256 + 2] = 1;
    EXPECT_EQ(head.userMemory, memory);
}

TEST_F(HeadFileTest, ExampleOfTheDocumentationIsTakenAndShowsTheDefaults) {
    std::ifstream stream(KORVEX_SOURCE_DIR "/docs/virtual-head.md");
    const std::string page{std::istreambuf_iterator<char>(stream), {}};
    const std::string opening = "```toml\n";
    const std::size_t begin = page.find(opening);
    ASSERT_NE(begin, std::string::npos);
    const std::size_t text = begin + opening.size();
    const HeadDescription shown = Good(page.substr(text, page.find("```", text) - text));
    const HeadDescription defaults;
    EXPECT_EQ(shown.cameraType, defaults.cameraType);
    EXPECT_EQ(shown.cameraSerial, defaults.cameraSerial);
    EXPECT_EQ(shown.width, defaults.width);
    EXPECT_EQ(shown.height, defaults.height);
    EXPECT_EQ(shown.color, defaults.color);
    EXPECT_EQ(shown.gainLow, defaults.gainLow);
    EXPECT_EQ(shown.gainHigh, defaults.gainHigh);
    EXPECT_EQ(shown.cameraBuffers, defaults.cameraBuffers);
    EXPECT_EQ(shown.boardSerial, defaults.boardSerial);
    EXPECT_EQ(shown.firmware, defaults.firmware);
    EXPECT_EQ(shown.usbSpeed, defaults.usbSpeed);
    EXPECT_EQ(shown.scene, defaults.scene);
    EXPECT_EQ(shown.userMemory[15 * 256], 0xFF);
    EXPECT_EQ(shown.replayFolder, m_folder.Path() / "pairs");
}

TEST_F(HeadFileTest, AbsoluteReplayFolderStaysAsItIs) {
    EXPECT_EQ(Good("[replay]\nfolder = \"/a/b\"\n").replayFolder, "/a/b");
}

TEST_F(HeadFileTest, LimitsThemselvesAreAllowed) {
    EXPECT_EQ(Good("[camera]\nwidth = 16\nheight = 16\n").width, 16);
    EXPECT_EQ(Good("[camera]\nwidth = 2000\nheight = 2000\n").height, 2000);
}

TEST_F(HeadFileTest, UnknownKeyNamesItsLine) {
    EXPECT_EQ(Wrong("[camera]\nwidth = 640\nheigth = 480\n", 3),
              "unknown key \"heigth\" in [camera]; did you mean height");
}

TEST_F(HeadFileTest, UnknownTableNamesItsLine) {
    EXPECT_EQ(Wrong("\n[cameras]\nwidth = 640\n", 2),
              "unknown key \"cameras\"; did you mean camera");
}

TEST_F(HeadFileTest, KeyOutsideATableIsUnknown) {
    EXPECT_EQ(Wrong("width = 640\n", 1), "unknown key \"width\"");
}

TEST_F(HeadFileTest, TableThatIsAValueIsRefused) {
    EXPECT_EQ(Wrong("camera = 5\n", 1), "\"camera\" is not a table");
}

TEST_F(HeadFileTest, WrongTypesNameTheirLine) {
    EXPECT_EQ(Wrong("[camera]\nwidth = \"640\"\n", 2),
              "[camera] width: a whole number is expected");
    EXPECT_EQ(Wrong("[camera]\nwidth = 640.0\n", 2), "[camera] width: a whole number is expected");
    EXPECT_EQ(Wrong("[camera]\n\ntype = 5\n", 3), "[camera] type: a text is expected");
    EXPECT_EQ(Wrong("[camera]\ncolor = 1\n", 2), "[camera] color: true or false is expected");
    EXPECT_EQ(Wrong("[replay]\nfolder = 1\n", 2), "[replay] folder: a non-empty text is expected");
    EXPECT_EQ(Wrong("[replay]\nfolder = \"\"\n", 2),
              "[replay] folder: a non-empty text is expected");
}

TEST_F(HeadFileTest, ValuesOutOfRangeNameTheirLineAndTheRange) {
    EXPECT_EQ(Wrong("[camera]\nwidth = 2001\n", 2),
              "[camera] width: 2001 is out of range, 16 to 2000");
    EXPECT_EQ(Wrong("[camera]\nheight = 15\n", 2),
              "[camera] height: 15 is out of range, 16 to 2000");
    EXPECT_EQ(Wrong("[camera]\nbuffers = 0\n", 2),
              "[camera] buffers: 0 is out of range, 1 to 4096");
    EXPECT_EQ(Wrong("[camera]\ngain_high = 64\n", 2),
              "[camera] gain_high: 64 is out of range, 0 to 63");
    EXPECT_EQ(Wrong("[board]\nusb_speed = 5\n", 2), "[board] usb_speed: 5 is out of range, 1 to 4");
    EXPECT_THAT(Wrong("[camera]\nwidth = 4294967296\n", 2), HasSubstr("out of range"))
        << "a number that would fit when cut to 32 bits";
}

TEST_F(HeadFileTest, TextsThatCannotBeNameTheirLine) {
    EXPECT_EQ(Wrong("[camera]\ntype = \"GC00\"\n", 2),
              "[camera] type: \"GC00\" does not begin with KV");
    EXPECT_EQ(Wrong("[camera]\nserial = \"KV\"\n", 2),
              "[camera] serial: the text has 2 characters, not 3 to 64");
    EXPECT_THAT(Wrong("[camera]\nserial = \"KV" + std::string(10000, 'x') + "\"\n", 2),
                HasSubstr("10002 characters"));
    EXPECT_EQ(Wrong("[board]\nfirmware = \"1\\n2\"\n", 2),
              "[board] firmware: the text has a character that is not printable ASCII");
}

TEST_F(HeadFileTest, ContradictionsNameALine) {
    EXPECT_EQ(Wrong("[camera]\ngain_high = 3\ngain_low = 4\n", 3),
              "[camera] gain_low: it is above gain_high");
    EXPECT_EQ(Wrong("[camera]\nheight = 17\nwidth = 17\n", 3),
              "[camera] width: width x height is not a multiple of 4");
}

TEST_F(HeadFileTest, SyntaxErrorNamesItsLine) {
    EXPECT_THAT(Wrong("[camera]\nwidth = 640\nheight = = 480\n", 3), Not(testing::IsEmpty()));
    EXPECT_THAT(Wrong("[camera]\nwidth = 640\nwidth = 480\n", 3), HasSubstr("width"))
        << "a key that is given twice";
    EXPECT_THAT(Wrong(std::string("[camera]\ntype = \"\xFF\xFE\"\n"), 2), Not(testing::IsEmpty()))
        << "bytes that are no text";
}

TEST_F(HeadFileTest, FirstErrorOfTheFileIsTheOneThatIsNamed) {
    EXPECT_EQ(Wrong("[replay]\nfile = 1\n[board]\nname = 2\n[camera]\nwidth = 1\n", 2),
              "unknown key \"file\" in [replay]");
}

TEST_F(HeadFileTest, UserMemoryErrorsNameTheirLine) {
    const std::string page = "[[board.user_memory]]\n";
    EXPECT_THAT(Wrong("[board]\nuser_memory = 5\n", 2), HasSubstr("array of tables"));
    EXPECT_THAT(Wrong("[board]\nuser_memory = [5]\n", 2), HasSubstr("array of tables"));
    EXPECT_THAT(Wrong(page + "page = 16\ntext = \"\"\n", 2), HasSubstr("0 to 15"));
    EXPECT_THAT(Wrong(page + "page = -1\ntext = \"\"\n", 2), HasSubstr("0 to 15"));
    EXPECT_THAT(Wrong(page + "page = \"1\"\ntext = \"\"\n", 2), HasSubstr("0 to 15"));
    EXPECT_THAT(Wrong(page + "page = 1\nbytes = [1,\n256]\n", 4), HasSubstr("0 to 255"));
    EXPECT_THAT(Wrong(page + "page = 1\nbytes = \"1\"\n", 3), HasSubstr("array of numbers"));
    EXPECT_THAT(Wrong(page + "page = 1\ntext = 1\n", 3), HasSubstr("a text is expected"));
    EXPECT_THAT(Wrong(page + "page = 1\nname = 1\n", 3), HasSubstr("unknown key \"name\""));
    EXPECT_THAT(Wrong(page + "page = 1\ntxet = 1\n", 3), HasSubstr("; did you mean text"));
    EXPECT_THAT(Wrong("[board]\nuser_memroy = 1\n", 2), HasSubstr("; did you mean user_memory"));
    EXPECT_THAT(Wrong(page + "page = 1\n", 1), HasSubstr("missing key"));
    EXPECT_THAT(Wrong(page + "text = \"a\"\n", 1), HasSubstr("missing key"));
    EXPECT_THAT(Wrong(page + "page = 1\nbytes = []\ntext = \"a\"\n", 4), HasSubstr("exclude"));
    EXPECT_THAT(Wrong(page + "page = 1\ntext = \"" + std::string(257, 'x') + "\"\n", 1),
                HasSubstr("more than 256"));
    EXPECT_THAT(Wrong(page + "page = 1\ntext = \"\"\n" + page + "page = 1\ntext = \"\"\n", 4),
                HasSubstr("page 1 is given twice"));
}

TEST_F(HeadFileTest, MissingFileFolderAndUnreadableFileAreRefused) {
    ExpectRefused(m_folder.Path() / "none.toml", "no such file");
    ExpectRefused(m_folder.Path() / "none" / "head.toml", "no such file");
    ExpectRefused(m_folder.Path(), "is a folder, not a file");
    ExpectRefused("", "no such file");
    ExpectRefused("/dev/zero", "is not a regular file");
    // A file that everybody may open, also an administrator, and whose first byte nobody can read.
    ExpectRefused("/proc/self/mem", "cannot be read");
}

TEST_F(HeadFileTest, FileThatCannotBeAHeadFileIsTooLarge) {
    WriteText(m_file, std::string((1U << 20U) + 1, '#'));
    ExpectRefused(m_file, "is too large");
    // A file of the system says that it is empty, and gives megabytes.
    ExpectRefused("/proc/kallsyms", "is too large");
}

TEST_F(HeadFileTest, DeeplyNestedFileIsRefusedWithoutACrash) {
    const auto read = Read("a = " + std::string(200000, '['));
    EXPECT_TRUE(std::holds_alternative<HeadFileError>(read));
}

TEST_F(HeadFileTest, KeyOfManyPartsIsRefusedWithoutACrash) {
    std::string key = "\na";
    for (int part = 1; part < 40000; ++part) {
        key += ".a";
    }
    const auto read = Read(key + " = 1");
    ASSERT_TRUE(std::holds_alternative<HeadFileError>(read));
    EXPECT_THAT(std::get<HeadFileError>(read).message,
                EndsWith(":2: a key has more than 8 dotted parts"));
}

}  // namespace
}  // namespace Korvex3Sync::tests
