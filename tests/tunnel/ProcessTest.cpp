#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "support/BlockingCall.h"
#include "support/ChildProcess.h"
#include "support/Seed.h"
#include "support/WaitUntil.h"
#include "tunnel/Areas.h"

namespace Korvex3Sync::tests {

namespace {

using support::WaitUntil;
using ::testing::Optional;

constexpr std::size_t kPeerBytes = 1000000;
constexpr std::size_t kPeerSegments = 6;

std::vector<std::string> Peer(const std::vector<std::string>& words) {
    std::vector<std::string> command{KORVEX_TUNNEL_PEER};
    command.insert(command.end(), words.begin(), words.end());
    return command;
}

std::vector<std::string> WritingPeer() {
    return Peer({"write", "images", std::to_string(kPeerSegments), std::to_string(kPeerBytes)});
}

class Processes : public ::testing::Test {
protected:
    /// The file of the area as this test has opened it; stays when the name goes.
    static os::SharedFile OpenFile() {
        std::string reason;
        std::error_code error;
        os::SharedFile file = os::SharedFile::Open(tunnel::SharedNameOf("images", reason), error);
        EXPECT_FALSE(error) << error.message();
        return file;
    }

    /// How many segments there are now. What is found has to be whole.
    int FoundSegments() {
        int found = 0;
        for (std::uint64_t set = 0; set < 3; ++set) {
            for (const std::string& name : NamesOf(set)) {
                if (const auto content = Found(*m_reader, name)) {
                    EXPECT_TRUE(content->whole) << name;
                    ++found;
                }
            }
        }
        return found;
    }

    /// Reads until so many segments were seen.
    bool SeeSegments(int count) {
        return WaitUntil([&] {
            count -= FoundSegments();
            return count <= 0 || HasFailure();
        });
    }

    Folders m_folders;
    std::unique_ptr<tunnel::AreaReader> m_reader = ReadArea("images");
};

bool AnyEntryLocked(const os::SharedFile& file) {
    for (std::size_t entry = 0; entry < kPeerSegments; ++entry) {
        if (file.LockedElsewhere(tunnel::EntryLock(entry))) {
            return true;
        }
    }
    return false;
}

/// Stops the writer while it holds locks of entries; false if that does not happen.
bool StopInASet(const ChildProcess& writer, const os::SharedFile& file) {
    return WaitUntil([&] {
        writer.Stop();
        if (WaitUntil([&] { return writer.IsStopped(); }) && AnyEntryLocked(file)) {
            return true;
        }
        writer.Continue();
        return false;
    });
}

TEST_F(Processes, ReadWhatAnotherOneWrites) {
    ChildProcess writer(WritingPeer());
    ASSERT_TRUE(writer.WaitForOutput("writing"));
    EXPECT_TRUE(SeeSegments(100));
}

TEST_F(Processes, KilledAtAnyMomentLeaveNothingTornAndNothingBehind) {
    std::mt19937 random(support::Seed());
    for (int round = 0; round < 20; ++round) {
        ChildProcess writer(WritingPeer());
        ASSERT_TRUE(writer.WaitForOutput("writing"));
        ASSERT_TRUE(SeeSegments(std::uniform_int_distribution<int>(1, 20)(random)));
        writer.Kill();
        writer.Wait();
        FoundSegments();
    }
    tunnel::AreaWriter::ReclaimStaleAreas();
    EXPECT_FALSE(AreaExists("images"));
}

TEST_F(Processes, KilledWithALockReleaseIt) {
    for (int round = 0; round < 3; ++round) {
        ChildProcess writer(WritingPeer());
        ASSERT_TRUE(writer.WaitForOutput("writing"));
        const os::SharedFile file = OpenFile();
        ASSERT_TRUE(StopInASet(writer, file));
        writer.Kill();
        writer.Wait();
        EXPECT_FALSE(AnyEntryLocked(file));
        EXPECT_FALSE(file.LockedElsewhere(tunnel::kOwnerLock));
        FoundSegments();
        // The next one starts as if nothing had happened.
        const auto next = MakeArea("images", kPeerSegments, kPeerBytes);
        ASSERT_TRUE(Write(*next, {"a", "b", "c", "d", "e", "f"}, 5, kPeerBytes));
        EXPECT_THAT(Found(*m_reader, "f"), Optional(Whole(5, kPeerBytes)));
    }
}

TEST_F(Processes, StoppedWithALockDoNotStopAReader) {
    ChildProcess writer(WritingPeer());
    ASSERT_TRUE(writer.WaitForOutput("writing"));
    const os::SharedFile file = OpenFile();
    ASSERT_TRUE(StopInASet(writer, file));
    // Three of six places are locked; the set before is in the others.
    const support::BlockingCall calls([&] { FoundSegments(); });
    EXPECT_TRUE(calls.WaitUntilReturned());
    EXPECT_TRUE(AnyEntryLocked(file));
    writer.Continue();
    EXPECT_TRUE(SeeSegments(10));
}

TEST_F(Processes, KilledWithAPinGiveItsPlaceBack) {
    const auto writer = MakeArea("images", 3, kPeerBytes);
    ASSERT_TRUE(Write(*writer, {"a", "b", "c"}, 1, kPeerBytes));
    ChildProcess holder(Peer({"hold", "images", "b"}));
    ASSERT_TRUE(holder.WaitForOutput("holding"));
    for (int number = 2; number < 10; ++number) {
        EXPECT_FALSE(Write(*writer, {"d", "e", "f"}, number, kPeerBytes));
        EXPECT_TRUE(Write(*writer, {"d", "e"}, number, kPeerBytes));
        EXPECT_THAT(Found(*m_reader, "b"), Optional(Whole(1, kPeerBytes)));
    }
    holder.Kill();
    holder.Wait();
    EXPECT_TRUE(Write(*writer, {"d", "e", "f"}, 10, kPeerBytes));
    EXPECT_EQ(Found(*m_reader, "b"), std::nullopt);
}

TEST_F(Processes, StoppedWithAPinCostTheWriterOnePlace) {
    const auto writer = MakeArea("images", 4, kPeerBytes);
    ASSERT_TRUE(Write(*writer, {"x"}, 1, kPeerBytes));
    ChildProcess holder(Peer({"hold", "images", "x"}));
    ASSERT_TRUE(holder.WaitForOutput("holding"));
    holder.Stop();
    for (int number = 2; number < 10; ++number) {
        ASSERT_TRUE(Write(*writer, {"a", "b", "c"}, number, kPeerBytes));
        EXPECT_THAT(Found(*m_reader, "c"), Optional(Whole(number, kPeerBytes)));
    }
}

TEST_F(Processes, LeaveTheAreasOfLivingOnesAlone) {
    ChildProcess living(WritingPeer());
    ASSERT_TRUE(living.WaitForOutput("writing"));
    ChildProcess dead(Peer({"write", "other", "3", "1000"}));
    ASSERT_TRUE(dead.WaitForOutput("writing"));
    ASSERT_TRUE(AreaExists("other"));
    dead.Kill();
    dead.Wait();
    const auto writer = MakeArea("third", 3, kPeerBytes);
    EXPECT_FALSE(AreaExists("other"));
    EXPECT_TRUE(SeeSegments(10));
    // Stopped is not dead.
    living.Stop();
    tunnel::AreaWriter::ReclaimStaleAreas();
    EXPECT_TRUE(AreaExists("images"));
    EXPECT_TRUE(AreaExists("third"));
}

TEST_F(Processes, ReplaceTheAreaOfOneThatHangs) {
    ChildProcess hung(WritingPeer());
    ASSERT_TRUE(hung.WaitForOutput("writing"));
    hung.Stop();
    const auto next = MakeArea("images", 3, kPeerBytes);
    ASSERT_TRUE(Write(*next, {"n"}, 8, kPeerBytes));
    EXPECT_THAT(Found(*m_reader, "n"), Optional(Whole(8, kPeerBytes)));
    hung.Continue();
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(Write(*next, {"n"}, 9 + i, kPeerBytes));
        EXPECT_THAT(Found(*m_reader, "n"), Optional(Whole(9 + i, kPeerBytes)));
    }
}

}  // namespace

}  // namespace Korvex3Sync::tests
