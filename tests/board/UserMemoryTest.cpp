#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <numeric>

#include "board/OpenBoard.h"
#include "support/RequestedHead.h"

namespace Korvex3Sync::tests {
namespace {

using namespace board;
using namespace zr3DHandiDLPdev;
using testing::Each;
using testing::ElementsAre;
using virtual_head::HeadDescription;

constexpr char kUntouched = 0x33;

// A page with room before and behind it, to see what a read writes.
struct Page {
    Page() { room.fill(kUntouched); }

    bool Read(void* handle, int address) {
        char* buffer = room.data() + 8;
        const bool read = zr3DReadUserInfomation(handle, address, buffer);
        EXPECT_EQ(buffer, room.data() + 8) << "the buffer stays the caller's";
        return read;
    }
    std::string Text() const { return {room.data() + 8, 256}; }
    bool KeptItsEdges() const {
        return std::string(room.data(), 8) + std::string(room.data() + 264, 8) ==
               std::string(16, kUntouched);
    }

    std::array<char, 272> room;
};

class UserMemory : public testing::Test {
protected:
    RequestedHead m_head;
    OpenedBoard m_board;
    void* m_handle = m_board.handle;
};

std::string EveryByte() {
    std::string bytes(256, '\0');
    for (std::size_t place = 0; place < bytes.size(); ++place) {
        bytes[place] = static_cast<char>(255 - place);
    }
    return bytes;
}

TEST_F(UserMemory, KeepsEveryByteOfAPage) {
    const std::string bytes = EveryByte();
    EXPECT_TRUE(zr3DWriteUserInfomation(m_handle, 3, bytes.data(), 256));
    Page page;
    EXPECT_TRUE(page.Read(m_handle, 3));
    EXPECT_EQ(page.Text(), bytes);
    EXPECT_TRUE(page.KeptItsEdges());
}

TEST_F(UserMemory, ReadsExactlyOneZeroFilledPage) {
    Page page;
    EXPECT_TRUE(page.Read(m_handle, 15));
    EXPECT_EQ(page.Text(), std::string(256, '\0'));
    EXPECT_TRUE(page.KeptItsEdges());
}

TEST_F(UserMemory, TakesEveryLengthAndClearsTheRestOfThePage) {
    const std::string bytes(256, '\xFF');
    for (const int length : {256, 255, 33, 32, 31, 64, 1, 0}) {
        EXPECT_TRUE(zr3DWriteUserInfomation(m_handle, 7, bytes.data(), 256));
        EXPECT_TRUE(zr3DWriteUserInfomation(m_handle, 7, bytes.data(), length)) << length;
        Page page;
        EXPECT_TRUE(page.Read(m_handle, 7));
        const auto size = static_cast<std::size_t>(length);
        EXPECT_EQ(page.Text(), bytes.substr(0, size) + std::string(256 - size, '\0')) << length;
    }
}

TEST_F(UserMemory, TakesNoBytesFromNull) {
    EXPECT_TRUE(zr3DWriteUserInfomation(m_handle, 7, "x", 1));
    EXPECT_TRUE(zr3DWriteUserInfomation(m_handle, 7, nullptr, 0));
    Page page;
    EXPECT_TRUE(page.Read(m_handle, 7));
    EXPECT_EQ(page.Text(), std::string(256, '\0'));
    EXPECT_FALSE(zr3DWriteUserInfomation(m_handle, 7, nullptr, 1));
}

TEST_F(UserMemory, KeepsPagesApart) {
    for (int address = 0; address < 16; ++address) {
        const std::string text = "page " + std::to_string(address);
        EXPECT_TRUE(
            zr3DWriteUserInfomation(m_handle, address, text.data(), static_cast<int>(text.size())));
    }
    for (int address = 0; address < 16; ++address) {
        Page page;
        EXPECT_TRUE(page.Read(m_handle, address));
        EXPECT_STREQ(page.Text().c_str(), ("page " + std::to_string(address)).c_str());
    }
}

TEST_F(UserMemory, RefusesWhatIsOutOfRangeAndWritesNothing) {
    const std::string bytes(300, 'x');
    for (const int address : {INT_MIN, -1, 16, 256, INT_MAX}) {
        EXPECT_FALSE(zr3DWriteUserInfomation(m_handle, address, bytes.data(), 4)) << address;
        Page page;
        EXPECT_FALSE(page.Read(m_handle, address)) << address;
        EXPECT_THAT(page.room, Each(kUntouched)) << address;
    }
    for (const int length : {INT_MIN, -1, 257, INT_MAX}) {
        EXPECT_FALSE(zr3DWriteUserInfomation(m_handle, 0, bytes.data(), length)) << length;
    }
    char* nothing = nullptr;
    EXPECT_FALSE(zr3DReadUserInfomation(m_handle, 0, nothing));
    for (int address = 0; address < 16; ++address) {
        Page page;
        EXPECT_TRUE(page.Read(m_handle, address));
        EXPECT_EQ(page.Text(), std::string(256, '\0'));
    }
}

TEST_F(UserMemory, StandsInTheJournalOnceForEachCall) {
    m_head->GetJournal().Clear();
    const std::string bytes = EveryByte();
    EXPECT_TRUE(zr3DWriteUserInfomation(m_handle, 1, bytes.data(), 256));
    EXPECT_TRUE(zr3DWriteUserInfomation(m_handle, 1, bytes.data(), 0));
    EXPECT_FALSE(zr3DWriteUserInfomation(m_handle, 16, bytes.data(), 256));
    Page page;
    EXPECT_TRUE(page.Read(m_handle, 1));
    EXPECT_FALSE(page.Read(m_handle, -1));
    EXPECT_THAT(
        m_head->GetJournal().Texts(),
        ElementsAre("zr3DWriteUserInfomation(1, 256) = true",
                    "zr3DWriteUserInfomation(1, 0) = true",
                    "zr3DWriteUserInfomation(16, 256) = false", "zr3DReadUserInfomation(1) = true",
                    "zr3DReadUserInfomation(-1) = false"));
}

TEST_F(UserMemory, MeetsOneFaultForEachCallAndKeepsThePage) {
    const std::string bytes = EveryByte();
    ASSERT_TRUE(m_head->GetFaults().Fail("zr3DWriteUserInfomation", 1));
    EXPECT_FALSE(zr3DWriteUserInfomation(m_handle, 1, bytes.data(), 256));
    Page page;
    EXPECT_TRUE(page.Read(m_handle, 1));
    EXPECT_EQ(page.Text(), std::string(256, '\0'));
    EXPECT_TRUE(zr3DWriteUserInfomation(m_handle, 1, bytes.data(), 256));
}

TEST(UserMemoryAtPowerOn, IsThatOfTheHead) {
    HeadDescription description;
    std::iota(description.userMemory.begin(), description.userMemory.end(), std::uint8_t{1});
    RequestedHead head(description);
    OpenedBoard board;
    for (int address = 0; address < 16; ++address) {
        Page page;
        EXPECT_TRUE(page.Read(board.handle, address));
        const auto* const begin = description.userMemory.data() + std::ptrdiff_t{address} * 256;
        EXPECT_EQ(page.Text(), std::string(begin, begin + 256)) << address;
    }
}

}  // namespace
}  // namespace Korvex3Sync::tests
