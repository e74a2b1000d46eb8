#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "korvexctl/CommandOverHead.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::ExitCode;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class KorvexctlSnap : public ::testing::Test {
protected:
    TemporaryFolder m_folder;
    std::filesystem::path m_out = m_folder.Path() / "snaps";
};

TEST_F(KorvexctlSnap, AHeadWithoutColourIsRefusedBeforeItIsConnected) {
    virtual_head::HeadDescription description = SmallHeadDescription();
    description.color = false;
    const test::RequestedHead head(description);
    for (const char* command : {"snap", "snap-ir"}) {
        const CommandResult result = RunHere({command, "--out", m_out.string()});
        EXPECT_EQ(result.code, ExitCode::DeviceRefused);
        EXPECT_THAT(result.message, HasSubstr("no colour camera"));
    }
    EXPECT_THAT(head->GetJournal().Texts({"zr3DInitHidDev"}), IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(m_out));
}

TEST_F(KorvexctlSnap, ACameraThatTheHeadDoesNotHaveIsRefused) {
    const test::RequestedHead head(SmallHeadDescription());
    const CommandResult result = RunHere({"snap", "--camera", "2", "--out", m_out.string()});
    EXPECT_EQ(result.code, ExitCode::DeviceRefused);
    EXPECT_THAT(result.message, HasSubstr("the head has 2 cameras"));
}

TEST_F(KorvexctlSnap, AFolderThatCannotBeMadeIsToldBeforeAnythingIsTaken) {
    const test::RequestedHead head(SmallHeadDescription());
    WriteText(m_out, "a file in the way");
    EXPECT_EQ(RunHere({"snap", "--out", m_out.string()}).code, ExitCode::NotWritable);
    EXPECT_THAT(head->GetJournal().Texts({"zr3DInitHidDev"}), IsEmpty());
}

}  // namespace

}  // namespace Korvex3Sync::tests
