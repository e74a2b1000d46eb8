#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "korvexctl/CommandOverHead.h"
#include "korvexctl/ErrorIntoFile.h"
#include "korvexctl/commands/SnapCommand.h"
#include "korvexctl/files/StandardOutput.h"
#include "support/Signals.h"
#include "support/WaitUntil.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::ExitCode;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class KorvexctlSnap : public ::testing::Test {
protected:
    void ExpectColourImages(const std::vector<std::string>& names) const {
        EXPECT_EQ(FileNames(m_out), names);
        for (const std::string& name : names) {
            const DecodedPng image = DecodePng(ReadText(m_out / name));
            EXPECT_EQ(image.width, kSmallWidth);
            EXPECT_EQ(image.height, kSmallHeight);
            EXPECT_EQ(image.channels, 3);
        }
    }

    TemporaryFolder m_folder;
    std::filesystem::path m_out = m_folder.Path() / "snaps";
};

TEST_F(KorvexctlSnap, WritesTwoColourImagesAndPutsTheHeadBack) {
    const RequestedHead head(SmallHeadDescription());
    const CommandResult result = RunHere(
        {"snap", "--exposure", "8.5", "--gain", "3", "--route", "1", "--out", m_out.string()});
    ASSERT_EQ(result.code, ExitCode::Done) << result.message;
    EXPECT_EQ(result.figures["images"],
              (nlohmann::json{
                  {{"file", (m_out / "snap_0.png").string()},
                   {"exposure_ms", nullptr},
                   {"gain", nullptr}},
                  {{"file", (m_out / "snap_1.png").string()}, {"exposure_ms", 8.5}, {"gain", 3}}}));
    ExpectColourImages({"snap_0.png", "snap_1.png"});
    EXPECT_EQ(head->GetJournal().Texts({"zr3DSetVideoTrigleMode"}).back(),
              "zr3DSetVideoTrigleMode(5) = true");
    EXPECT_EQ(head->GetJournal().Texts({"zr3DOpenOrCloseStrobeFlicker"}).back(),
              "zr3DOpenOrCloseStrobeFlicker(1, 1) = true");
    EXPECT_EQ(RunHere({"get", "exposure.0", "gain.0"}).output, "exposure.0 5 ms\ngain.0 0\n");
}

TEST_F(KorvexctlSnap, InfraredWritesThreeImagesAndPutsBothStrobesBack) {
    const RequestedHead head(SmallHeadDescription());
    const CommandResult result = RunHere({"snap-ir", "--camera", "1", "--exposure", "8.5", "2",
                                          "--gain", "3", "4", "--out", m_out.string()});
    ASSERT_EQ(result.code, ExitCode::Done) << result.message;
    ExpectColourImages({"snap_0.png", "snap_1.png", "snap_2.png"});
    EXPECT_EQ(result.figures["images"][2]["exposure_ms"], 2);
    EXPECT_EQ(result.figures["images"][2]["gain"], 4);
    const auto strobes = head->GetJournal().Texts({"zr3DOpenOrCloseStrobeFlicker"});
    ASSERT_GE(strobes.size(), 2U);
    EXPECT_EQ(strobes[strobes.size() - 2], "zr3DOpenOrCloseStrobeFlicker(2, 1) = true");
    EXPECT_EQ(strobes.back(), "zr3DOpenOrCloseStrobeFlicker(1, 1) = true");
}

TEST_F(KorvexctlSnap, AHeadWithoutColourIsRefusedBeforeItIsConnected) {
    virtual_head::HeadDescription description = SmallHeadDescription();
    description.color = false;
    const RequestedHead head(description);
    for (const char* command : {"snap", "snap-ir"}) {
        const CommandResult result = RunHere({command, "--out", m_out.string()});
        EXPECT_EQ(result.code, ExitCode::DeviceRefused);
        EXPECT_THAT(result.message, HasSubstr("no colour camera"));
    }
    EXPECT_THAT(head->GetJournal().Texts({"zr3DInitHidDev"}), IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(m_out));
}

TEST_F(KorvexctlSnap, ExposureAndGainThatTheCameraDoesNotTakeAreNamed) {
    const RequestedHead head(SmallHeadDescription());
    // Of the range that the command takes, the camera takes a part only.
    const CommandResult result =
        RunHere({"snap", "--exposure", "0.1", "--gain", "17", "--out", m_out.string()});
    EXPECT_EQ(result.code, ExitCode::DeviceRefused);
    EXPECT_EQ(result.message,
              "exposure.0 was set to 0.1 ms and reads back as 5 ms; "
              "gain.0 was set to 17 and reads back as 0 (the camera takes no gain above 16)");
    ExpectColourImages({"snap_0.png", "snap_1.png"});
}

TEST_F(KorvexctlSnap, AStrobeThatIsNotPutBackIsNamed) {
    const RequestedHead head(SmallHeadDescription());
    ASSERT_TRUE(head->GetFaults().Fail("zr3DOpenOrCloseStrobeFlicker", 1'000));
    const CommandResult result = RunHere({"snap", "--out", m_out.string()});
    head->GetFaults().Clear();
    EXPECT_EQ(result.code, ExitCode::DeviceRefused);
    EXPECT_EQ(result.message, "not switched off: strobe");
    EXPECT_EQ(result.figures["left_on"], nlohmann::json{"strobe"});
}

TEST_F(KorvexctlSnap, ACameraThatTheHeadDoesNotHaveIsRefused) {
    const RequestedHead head(SmallHeadDescription());
    const CommandResult result = RunHere({"snap", "--camera", "2", "--out", m_out.string()});
    EXPECT_EQ(result.code, ExitCode::DeviceRefused);
    EXPECT_THAT(result.message, HasSubstr("the head has 2 cameras"));
}

TEST_F(KorvexctlSnap, AFolderThatCannotBeMadeIsToldBeforeAnythingIsTaken) {
    const RequestedHead head(SmallHeadDescription());
    WriteText(m_out, "a file in the way");
    EXPECT_EQ(RunHere({"snap", "--out", m_out.string()}).code, ExitCode::NotWritable);
    EXPECT_THAT(head->GetJournal().Texts({"zr3DInitHidDev"}), IsEmpty());
}

/// Snapshots that are interrupted.
class KorvexctlSnapInterrupt : public KorvexctlSnap, public ::testing::WithParamInterface<int> {};

TEST_P(KorvexctlSnapInterrupt, PutsTheHeadBackAndWritesNothing) {
    const RequestedHead head(SmallHeadDescription());
    EXPECT_TRUE(head->GetFaults().Hang("SnapShot"));
    const auto errorFile = m_folder.Path() / "error";
    const ErrorIntoFile errorIntoFile(errorFile);
    std::size_t before = 0;
    // No image comes until the interruption was noticed.
    std::thread person([&] {
        EXPECT_TRUE(head->GetFaults().WaitForHang("SnapShot", std::chrono::minutes(1)));
        EXPECT_TRUE(support::WaitUntil([&head] {
            return !head->GetJournal().Texts({"zr3DOpenOrCloseStrobeFlicker"}).empty();
        }));
        before = head->GetJournal().Texts({"zr3DOpenOrCloseStrobeFlicker"}).size();
        RaiseSignal(GetParam());
        EXPECT_TRUE(errorIntoFile.WaitForMessage());
        head->GetFaults().ReleaseHangs("SnapShot");
    });
    const CommandResult result = RunHere({"snap", "--route", "1", "--out", m_out.string()});
    person.join();
    EXPECT_EQ(result.code, ExitCode::Interrupted);
    EXPECT_EQ(result.message, "interrupted: no image was written");
    EXPECT_THAT(ReadText(errorFile), HasSubstr("korvexctl: interrupted; trigger and strobe"));
    EXPECT_THAT(FileNames(m_out), IsEmpty());
    const auto strobes = head->GetJournal().Texts({"zr3DOpenOrCloseStrobeFlicker"});
    EXPECT_GT(strobes.size(), before);
    EXPECT_EQ(strobes.back(), "zr3DOpenOrCloseStrobeFlicker(1, 1) = true");
    EXPECT_EQ(head->GetJournal().Texts({"zr3DSetVideoTrigleMode"}).back(),
              "zr3DSetVideoTrigleMode(5) = true");
    EXPECT_THAT(head->GetJournal().Texts({"zr3DExitHidDev"}), ::testing::Not(IsEmpty()));
}

TEST_P(KorvexctlSnapInterrupt, WhileImagesAreWrittenTellsHowMany) {
    const RequestedHead head(SmallHeadDescription());
    const auto errorFile = m_folder.Path() / "error";
    const ErrorIntoFile errorIntoFile(errorFile);
    korvexctl::SnapChoice choice;
    choice.folder = m_out;
    choice.snapshot.exposures = {5};
    choice.snapshot.gains = {0};
    korvexctl::StandardOutput standardOutput(false);
    korvexctl::Output output(standardOutput, true);
    const korvexctl::Outcome outcome =
        korvexctl::RunSnap(choice, output, [&](const auto& file, const auto& bytes) {
            RaiseSignal(GetParam());
            EXPECT_TRUE(errorIntoFile.WaitForMessage());
            korvexctl::StoreWhole(file, bytes);
        });
    EXPECT_EQ(outcome.code, ExitCode::Interrupted);
    EXPECT_EQ(outcome.message, "interrupted: 1 of 2 images written");
    EXPECT_THAT(ReadText(errorFile), HasSubstr("korvexctl: interrupted; finishing the file"));
    ExpectColourImages({"snap_0.png"});
    EXPECT_EQ(outcome.figures["images"][0]["file"], (m_out / "snap_0.png").string());
    EXPECT_EQ(outcome.figures["images"][1]["file"], nullptr);
}

INSTANTIATE_TEST_SUITE_P(Signals, KorvexctlSnapInterrupt,
                         ::testing::Values(kInterrupt, kTerminate, kHangUp),
                         [](const auto& row) { return SignalName(row.param); });

}  // namespace

}  // namespace Korvex3Sync::tests
