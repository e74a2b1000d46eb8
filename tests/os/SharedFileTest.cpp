#include <gmock/gmock.h>

#include <array>
#include <memory>
#include <thread>

#include "os/SharedFiles.h"
#include "platform/os/Descriptors.h"
#include "platform/os/File.h"

namespace Korvex3Sync::tests {

namespace {

using ::testing::Contains;
using ::testing::Not;

/// Lets the system write a byte: what it may not write, it refuses, instead of ending the program.
/// Wine also refuses memory of a section that may be written, with another error.
bool IsForReadingOnly(const os::SharedMapping& memory) {
    std::array<int, 2> ends{};
    EXPECT_TRUE(os::MakePipe(ends));
    const os::File readEnd(ends[0]);
    EXPECT_FALSE(os::File(ends[1]).Write("x"));
    auto* const bytes = reinterpret_cast<char*>(memory.Data());
    return os::ReadDescriptor(readEnd.Descriptor(), bytes, 1) < 0 &&
           os::LastError() == std::errc::bad_address;
}

TEST_F(SharedFiles, HaveANameFromTheMomentThatTheyTakeIt) {
    const SharedFile file = Create();
    EXPECT_FALSE(file.Now().usable);
    EXPECT_EQ(file.Now().size, kSharedSize);
    EXPECT_EQ(OpenError(), std::errc::no_such_file_or_directory);
    EXPECT_THAT(os::SharedFileNames(), Not(Contains(m_name)));
    EXPECT_FALSE(file.TakeName(m_name));
    EXPECT_TRUE(file.Now().usable);
    EXPECT_TRUE(Open());
    EXPECT_THAT(os::SharedFileNames(), Contains(m_name));
    file.DropName(m_name + "-of-another");
    EXPECT_TRUE(file.Now().usable);
    file.DropName(m_name);
    EXPECT_FALSE(file.Now().usable);
    EXPECT_EQ(OpenError(), std::errc::no_such_file_or_directory);
}

TEST_F(SharedFiles, TakeANameFromTheFileThatHasIt) {
    const SharedFile first = CreateNamed();
    const SharedFile second = CreateNamed();
    EXPECT_FALSE(first.Now().usable);
    EXPECT_TRUE(second.Now().usable);
    first.DropName(m_name);
    EXPECT_TRUE(second.Now().usable) << "the name is no longer that of the first";
}

TEST_F(SharedFiles, ShowWhatOthersWrite) {
    const SharedFile file = CreateNamed();
    const SharedFile opened = Open();
    std::error_code error;
    const os::SharedMapping own = file.Map(kSharedSize, error);
    ASSERT_FALSE(error);
    const os::SharedMapping other = opened.Map(kSharedSize, error);
    ASSERT_FALSE(error);
    own.Data()[kSharedSize - 1] = std::byte{42};
    EXPECT_EQ(other.Data()[kSharedSize - 1], std::byte{42});
    os::SharedMapping moved;
    moved = opened.Map(kSharedSize, error);
    EXPECT_EQ(moved.Data()[kSharedSize - 1], std::byte{42});
    const os::SharedMapping none = opened.Map(0, error);
    EXPECT_TRUE(error);
    EXPECT_EQ(none.Data(), nullptr);
}

TEST_F(SharedFiles, AreWrittenByTheirCreatorOnly) {
    const SharedFile file = CreateNamed();
    std::error_code error;
    ASSERT_FALSE(file.Reserve(0, kSharedSize));
    EXPECT_TRUE(IsForReadingOnly(Open().Map(kSharedSize, error)));
    EXPECT_FALSE(IsForReadingOnly(file.Map(kSharedSize, error)));
    EXPECT_FALSE(error);
}

TEST_F(SharedFiles, GiveANameThatTwoTakeAtOnceToOneOfThem) {
    constexpr int kRounds = 200;
    for (int round = 0; round < kRounds && !HasFailure(); ++round) {
        const SharedFile one = Create();
        const SharedFile other = Create();
        std::thread taker([&] { EXPECT_FALSE(one.TakeName(m_name)); });
        EXPECT_FALSE(other.TakeName(m_name));
        taker.join();
        EXPECT_NE(one.Now().usable, other.Now().usable) << "round " << round;
    }
}

TEST_F(SharedFiles, LockPlacesAgainstOtherObjects) {
    constexpr std::uint64_t kPlace = std::uint64_t{1} << 62U;
    const SharedFile file = CreateNamed();
    const SharedFile one = Open();
    const SharedFile two = Open();
    EXPECT_TRUE(one.LockForReading(kPlace));
    EXPECT_TRUE(two.LockForReading(kPlace));
    EXPECT_FALSE(file.LockForWriting(kPlace));
    EXPECT_TRUE(file.LockForWriting(kPlace + 1));
    EXPECT_TRUE(file.LockForWriting(kPlace - 1));
    EXPECT_FALSE(one.LockForReading(kPlace + 1));
    EXPECT_TRUE(file.LockedElsewhere(kPlace));
    EXPECT_FALSE(file.LockedElsewhere(kPlace + 1)) << "its own";
    EXPECT_TRUE(two.LockedElsewhere(kPlace + 1));
    one.Unlock(kPlace);
    EXPECT_FALSE(file.LockForWriting(kPlace));
    two.Unlock(kPlace);
    EXPECT_FALSE(file.LockedElsewhere(kPlace));
    EXPECT_TRUE(file.LockForWriting(kPlace));
    EXPECT_FALSE(one.LockForWriting(kPlace + 2)) << "it is open for reading only";
}

TEST_F(SharedFiles, ReleaseTheirLocksWithTheObject) {
    SharedFile file = CreateNamed();
    auto opened = std::make_unique<SharedFile>(Open());
    EXPECT_TRUE(opened->LockForReading(7));
    EXPECT_TRUE(file.LockForWriting(8));
    EXPECT_FALSE(file.LockForWriting(7));
    opened = std::make_unique<SharedFile>(Open());
    EXPECT_TRUE(file.LockForWriting(7));
    file = SharedFile();
    EXPECT_TRUE(opened->LockForReading(8));
}

}  // namespace

}  // namespace Korvex3Sync::tests
