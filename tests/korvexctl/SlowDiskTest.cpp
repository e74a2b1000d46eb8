#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "korvexctl/Korvexctl.h"
#include "korvexctl/ScanOverHead.h"
#include "korvexctl/files/FileError.h"
#include "support/WaitUntil.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::ExitCode;
using korvexctl::Outcome;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

/// A scan whose files meet a disk that does not keep up, or that is full.
class SlowDisk : public ScanOverHead {
protected:
    SlowDisk() { m_options.folder = m_folder.Path(); }

    /// The trigger goes off when every set was delivered.
    bool WaitForTheEndOfTheScan() {
        return support::WaitUntil([this] {
            const auto modes = Commands({"zr3DSetVideoTrigleMode"});
            return !modes.empty() && modes.back() == "zr3DSetVideoTrigleMode(5) = true";
        });
    }

    /// The first file takes as long as the whole scan does.
    Outcome ScanWithASlowFirstFile() {
        bool first = true;
        return Scan([&](const auto& file, const auto& bytes) {
            if (std::exchange(first, false)) {
                EXPECT_TRUE(WaitForTheEndOfTheScan());
            }
            korvexctl::StoreUnsynced(file, bytes);
        });
    }

    TemporaryFolder m_folder;
};

TEST_F(SlowDisk, TheScanGoesOnAndWhatIsNotKeptIsCounted) {
    constexpr int kSets = 60;
    m_options.end.sets = kSets;
    m_options.keep = kSets;
    m_options.buffers = 3;
    GiveMode(TRIGGER_LASER_LINES);
    const Outcome outcome = ScanWithASlowFirstFile();
    const nlohmann::json& figures = *outcome.figures;
    EXPECT_EQ(figures["sets"]["delivered"], kSets);
    const auto notKept = figures["losses"]["not_kept_disk"].get<int>();
    EXPECT_GT(notKept, 0);
    EXPECT_EQ(outcome.code, ExitCode::NotWritable);
    EXPECT_THAT(outcome.message, StartsWith(std::to_string(notKept) +
                                            " of 60 sets could not be kept because writing was "
                                            "too slow; "));
    // All others were written, two pictures each.
    EXPECT_EQ(figures["pictures"].size(), static_cast<std::size_t>(kSets - notKept));
    EXPECT_LT(figures["callback_us"]["longest"].get<double>(),
              figures["seconds"].get<double>() * 1e6)
        << "a callback waited for the disk";
    nlohmann::json written = ParseJson(ReadText(m_folder.Path() / "scan.json"));
    EXPECT_EQ(written["error"]["exit_code"], static_cast<int>(ExitCode::NotWritable));
    written.erase("error");
    EXPECT_EQ(written, figures);
}

TEST_F(SlowDisk, AsManyBuffersAsSetsToKeepKeepThemAll) {
    constexpr int kSets = 60;
    m_options.end.sets = kSets;
    m_options.keep = kSets;
    GiveMode(TRIGGER_LASER_LINES);
    const Outcome outcome = ScanWithASlowFirstFile();
    EXPECT_EQ(outcome.code, ExitCode::Done) << outcome.message;
    EXPECT_EQ(outcome.figures["pictures"].size(), std::size_t{kSets});
}

TEST_F(SlowDisk, ARecordingGoesOnWithWhatTheDiskTakes) {
    constexpr int kSets = 60;
    m_options.end.sets = kSets;
    m_options.recording = true;
    m_options.keep = 0;
    m_options.buffers = 3;
    const Outcome outcome = ScanWithASlowFirstFile();
    EXPECT_EQ(outcome.code, ExitCode::Done) << outcome.message;
    const auto notRecorded = outcome.figures["losses"]["not_recorded_disk"].get<int>();
    EXPECT_GT(notRecorded, 0);
    EXPECT_EQ(outcome.figures["recorded"], kSets - notRecorded);
}

TEST_F(SlowDisk, ASetThatIsRecordedInPartIsRemoved) {
    m_options.end.sets = 1'000'000;
    m_options.recording = true;
    m_options.keep = 0;
    const Outcome outcome = Scan([](const std::filesystem::path& file, const auto& bytes) {
        if (file.filename() == "color_000002.png") {
            throw korvexctl::FileError("cannot write " + file.string(),
                                       std::make_error_code(std::errc::no_space_on_device));
        }
        korvexctl::StoreUnsynced(file, bytes);
    });
    EXPECT_EQ(outcome.code, ExitCode::DiskFull);
    EXPECT_EQ(outcome.figures["recorded"], 2);
    EXPECT_THAT(FileNames(m_folder.Path()),
                ::testing::ElementsAre("color_000000.png", "color_000001.png", "left_000000.png",
                                       "left_000001.png", "right_000000.png", "right_000001.png"));
}

TEST_F(SlowDisk, AFullDiskIsToldAndTheFiguresAreStillPrinted) {
    m_options.end.sets = 1'000'000;
    m_options.keep = 1;
    ::testing::internal::CaptureStdout();
    const Outcome outcome = Scan(
        [](const std::filesystem::path& file, const auto&) {
            throw korvexctl::FileError("cannot write " + file.string(),
                                       std::make_error_code(std::errc::no_space_on_device));
        },
        false);
    const std::string output = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(outcome.code, ExitCode::DiskFull);
    EXPECT_THAT(outcome.message, AllOf(HasSubstr("disk full: cannot write "), HasSubstr(".png")));
    EXPECT_THAT(output, AllOf(HasSubstr(" of 1000000: "), HasSubstr("wrote 0 files to ")));
    EXPECT_TRUE(outcome.figures->contains("losses"));
    ExpectHeadLeftDark();
}

TEST_F(SlowDisk, AContactSheetThatCannotBeWrittenIsToldAfterAWholeScan) {
    const Outcome outcome = Scan([](const std::filesystem::path& file, const auto& bytes) {
        if (file.filename() == "contact-sheet.png") {
            throw korvexctl::FileError("cannot write " + file.string(),
                                       std::make_error_code(std::errc::read_only_file_system));
        }
        korvexctl::StoreUnsynced(file, bytes);
    });
    EXPECT_EQ(outcome.code, ExitCode::NotWritable);
    EXPECT_THAT(outcome.message, HasSubstr("contact-sheet.png"));
    EXPECT_EQ(outcome.figures["sets"]["delivered"], *m_options.end.sets);
}

}  // namespace

}  // namespace Korvex3Sync::tests
