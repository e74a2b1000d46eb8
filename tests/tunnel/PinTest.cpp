#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "tunnel/Areas.h"

namespace Korvex3Sync::tests {

namespace {

using ::testing::Optional;
using tunnel::PinnedSegment;

constexpr std::size_t kPinnedBytes = 20000;

class Pins : public ::testing::Test {
protected:
    /// Writes single segments "0", "1" and so on.
    void WriteMore(int count) {
        for (int i = 0; i < count; ++i, ++m_written) {
            ASSERT_TRUE(Write(*m_writer, {std::to_string(m_written)}, m_written, kPinnedBytes));
        }
    }

    Folders m_folders;
    std::unique_ptr<tunnel::AreaWriter> m_writer = MakeArea("images", 8, kPinnedBytes);
    std::unique_ptr<tunnel::AreaReader> m_reader = ReadArea("images");
    int m_written = 0;
};

TEST_F(Pins, KeepTheBytesWhileTheWriterGoesRound) {
    WriteMore(8);
    const auto held = m_reader->Pin("3");
    ASSERT_TRUE(held);
    for (int round = 0; round < 200; ++round) {
        WriteMore(1);
        ASSERT_EQ(ContentOf(*held), Whole(3, kPinnedBytes));
        ASSERT_THAT(Found(*m_reader, "3"), Optional(Whole(3, kPinnedBytes)));
        // The other places are all in use: the newest seven segments are there.
        for (int number = std::max(4, m_written - 7); number < m_written; ++number) {
            ASSERT_TRUE(Found(*m_reader, std::to_string(number))) << number;
        }
        if (m_written - 8 > 3) {
            ASSERT_EQ(Found(*m_reader, std::to_string(m_written - 8)), std::nullopt);
        }
    }
}

TEST_F(Pins, OnOneSegmentHoldUntilTheLastOneGoes) {
    WriteMore(8);
    auto first = std::make_unique<PinnedSegment>(*m_reader->Pin("0"));
    auto second = m_reader->Pin("0");
    auto moved = std::make_unique<PinnedSegment>(std::move(*second));
    second.reset();
    const auto otherReader = ReadArea("images");
    auto third = otherReader->Pin("0");
    ASSERT_TRUE(third);
    WriteMore(20);
    first.reset();
    WriteMore(20);
    EXPECT_EQ(ContentOf(*moved), Whole(0, kPinnedBytes));
    third.reset();
    WriteMore(20);
    EXPECT_EQ(ContentOf(*moved), Whole(0, kPinnedBytes));
    moved.reset();
    WriteMore(8);
    EXPECT_EQ(Found(*m_reader, "0"), std::nullopt) << "the place is used again";
}

TEST_F(Pins, OutliveReaderAndWriter) {
    WriteMore(8);
    const auto pinned = m_reader->Pin("5");
    ASSERT_TRUE(pinned);
    m_reader.reset();
    m_writer.reset();
    EXPECT_EQ(ContentOf(*pinned), Whole(5, kPinnedBytes));
    m_writer = MakeArea("images", 8, kPinnedBytes);
    WriteMore(20);
    EXPECT_EQ(ContentOf(*pinned), Whole(5, kPinnedBytes));
}

TEST_F(Pins, OnEverySegmentLeaveNoRoomForASet) {
    WriteMore(8);
    std::vector<PinnedSegment> pinned;
    for (int number = 0; number < 8; ++number) {
        auto segment = m_reader->Pin(std::to_string(number));
        ASSERT_TRUE(segment);
        pinned.push_back(std::move(*segment));
    }
    EXPECT_FALSE(Write(*m_writer, {"more"}, 1, kPinnedBytes));
    pinned.pop_back();
    EXPECT_TRUE(Write(*m_writer, {"more"}, 1, kPinnedBytes));
    EXPECT_EQ(ContentOf(pinned.front()), Whole(0, kPinnedBytes));
}

TEST_F(Pins, AreTakenInTheAreaThatTookTheName) {
    WriteMore(1);
    ASSERT_TRUE(Found(*m_reader, "0"));
    const auto replacement = MakeArea("images", 3, 500);
    EXPECT_EQ(Found(*m_reader, "0"), std::nullopt);
    ASSERT_TRUE(Write(*replacement, {"new"}, 9, 500));
    EXPECT_THAT(Found(*m_reader, "new"), Optional(Whole(9, 500)));
}

TEST_F(Pins, NeedAnArea) {
    const auto reader = ReadArea("later");
    EXPECT_EQ(Found(*reader, "0"), std::nullopt);
    {
        const auto writer = MakeArea("later", 2, kPinnedBytes);
        EXPECT_EQ(Found(*reader, "0"), std::nullopt);
        ASSERT_TRUE(Write(*writer, {"0"}, 1, kPinnedBytes));
        EXPECT_TRUE(Found(*reader, "0"));
    }
    EXPECT_EQ(Found(*reader, "0"), std::nullopt) << "the writer has removed the area";
}

TEST_F(Pins, OfManyThreadsNeverShowHalfASegment) {
    constexpr int kReaders = 4;
    std::atomic<bool> stop = false;
    std::atomic<int> seen = 0;
    std::atomic<int> torn = 0;
    std::vector<std::thread> readers;
    for (int i = 0; i < kReaders; ++i) {
        readers.emplace_back([&, own = i % 2 == 0 ? ReadArea("images") : nullptr] {
            tunnel::AreaReader& reader = own ? *own : *m_reader;
            while (!stop) {
                for (const char* name : {"a", "b", "c"}) {
                    if (const auto bytes = Found(reader, name)) {
                        ++seen;
                        torn += bytes->whole ? 0 : 1;
                    }
                }
            }
        });
    }
    int written = 0;
    for (int number = 1; number <= 2000 || seen < 200; ++number) {
        written += Write(*m_writer, {"a", "b", "c"}, number, kPinnedBytes) ? 1 : 0;
    }
    stop = true;
    for (std::thread& reader : readers) {
        reader.join();
    }
    EXPECT_EQ(torn, 0);
    EXPECT_GT(written, 0);
    // Every pin is gone: the whole area can be written.
    EXPECT_TRUE(Write(*m_writer, {"1", "2", "3", "4", "5", "6", "7", "8"}, 1, kPinnedBytes));
}

/// A place is used again between the moment that a reader finds a name and the moment that it holds
/// the segment: then it must not take the new segment for the old one.
TEST_F(Pins, OfANameNeverShowTheNextSegmentInItsPlace) {
    const auto writer = MakeArea("small", 2, 8);
    const auto reader = ReadArea("small");
    std::atomic<bool> stop = false;
    std::atomic<std::uint64_t> newest = 0;
    std::thread writing([&] {
        for (std::uint64_t number = 1; !stop; ++number) {
            if (Write(*writer, {std::to_string(number)}, number, 8)) {
                newest = number;
            }
        }
    });
    int seen = 0;
    int gone = 0;
    while (seen < 20000 || gone < 500) {
        const std::uint64_t number = newest;
        const auto content = Found(*reader, std::to_string(number));
        ++(content ? seen : gone);
        if (content && content->number != number) {
            ADD_FAILURE() << "asked for " << number << ", got " << content->number;
            break;
        }
    }
    stop = true;
    writing.join();
}

}  // namespace

}  // namespace Korvex3Sync::tests
