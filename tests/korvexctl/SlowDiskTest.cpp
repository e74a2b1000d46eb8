#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <system_error>
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

    TemporaryFolder m_folder;
};

TEST_F(SlowDisk, TheScanGoesOnAndWhatIsNotKeptIsCounted) {
    constexpr int kSets = 60;
    m_options.sets = kSets;
    m_options.keep = kSets;
    m_options.buffers = 3;
    m_options.light.mode = TRIGGER_LASER_LINES;
    // The first file takes as long as the whole scan does.
    bool first = true;
    const Outcome outcome = Scan([&](const auto& file, const auto& bytes) {
        if (first) {
            first = false;
            EXPECT_TRUE(WaitForTheEndOfTheScan());
        }
        korvexctl::StoreWhole(file, bytes);
    });
    EXPECT_EQ(outcome.code, ExitCode::Done) << outcome.message;
    const nlohmann::json& figures = *outcome.figures;
    EXPECT_EQ(figures["sets"]["delivered"], kSets);
    const auto notKept = figures["losses"]["not_kept_disk"].get<int>();
    EXPECT_GT(notKept, 0);
    // All others were written: two pictures each, and the contact sheet.
    EXPECT_EQ(figures["files"].size(), static_cast<std::size_t>(2 * (kSets - notKept) + 1));
    EXPECT_LT(figures["callback_us"]["longest"].get<double>(),
              figures["seconds"].get<double>() * 1e6)
        << "a callback waited for the disk";
    EXPECT_EQ(ParseJson(ReadText(m_folder.Path() / "scan.json")), figures);
}

TEST_F(SlowDisk, AFullDiskIsToldAndTheFiguresAreStillPrinted) {
    m_options.sets = 1'000'000;
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
    EXPECT_THAT(output, AllOf(HasSubstr(" of 1000000: "), HasSubstr("wrote 0 pictures to ")));
    EXPECT_TRUE(outcome.figures->contains("losses"));
    ExpectHeadLeftDark();
}

TEST_F(SlowDisk, AContactSheetThatCannotBeWrittenIsToldAfterAWholeScan) {
    m_options.keep = 0;
    const Outcome outcome = Scan([](const std::filesystem::path& file, const auto&) {
        throw korvexctl::FileError("cannot write " + file.string(),
                                   std::make_error_code(std::errc::read_only_file_system));
    });
    EXPECT_EQ(outcome.code, ExitCode::NotWritable);
    EXPECT_THAT(outcome.message, HasSubstr("contact-sheet.png"));
    EXPECT_EQ(outcome.figures["sets"]["delivered"], m_options.sets);
}

}  // namespace

}  // namespace Korvex3Sync::tests
