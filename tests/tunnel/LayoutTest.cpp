#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <vector>

#include "platform/tunnel/AreaLayout.h"

namespace Korvex3Sync::tests {

namespace {

using namespace tunnel;

constexpr std::uint64_t kGeneration = 0x1234'5678'9ABC'DEF0;
constexpr std::size_t kVersionWord = 1;
constexpr std::size_t kGenerationWordOfHeader = 2;
constexpr std::size_t kEntriesWordOfHeader = 3;
constexpr std::size_t kBytesWordOfHeader = 4;

const std::vector<std::uint64_t> kOddNumbers{0,
                                             1,
                                             2,
                                             3,
                                             24,
                                             25,
                                             4095,
                                             4096,
                                             4097,
                                             1U << 20U,
                                             1ULL << 30U,
                                             (1ULL << 30U) + 1,
                                             1ULL << 31U,
                                             1ULL << 32U,
                                             1ULL << 62U,
                                             1ULL << 63U,
                                             (1ULL << 63U) - 1,
                                             std::numeric_limits<std::uint64_t>::max()};

/// With the checksum that belongs to the words.
template <class Words>
Words Sealed(Words words, std::uint64_t generation) {
    words.back() = generation;
    words.back() = Checksum({reinterpret_cast<const char*>(words.data()), sizeof(words)});
    return words;
}

TEST(AreaHeader, SaysTheShape) {
    for (const auto& [entries, bytes] : std::vector<std::pair<std::size_t, std::size_t>>{
             {1, 1}, {24, 1310720}, {1024, 4096}, {kMostEntries, kMostBytesPerEntry}}) {
        const AreaShape shape{kGeneration, entries, bytes};
        const auto decoded = DecodeHeader(EncodeHeader(shape), shape.FileSize());
        ASSERT_TRUE(decoded) << entries << " x " << bytes;
        EXPECT_EQ(decoded->generation, kGeneration);
        EXPECT_EQ(decoded->entries, entries);
        EXPECT_EQ(decoded->bytesPerEntry, bytes);
    }
}

TEST(AreaHeader, PlacesNothingOverSomethingElse) {
    for (const std::size_t entries :
         {std::size_t{1}, std::size_t{46}, std::size_t{47}, kMostEntries}) {
        for (const std::size_t bytes : {std::size_t{1}, std::size_t{4096}, std::size_t{4097}}) {
            const AreaShape shape{0, entries, bytes};
            EXPECT_GE(AreaShape::EntryOffset(0), sizeof(HeaderWords));
            EXPECT_GE(shape.DataOffset(), AreaShape::EntryOffset(entries - 1) + sizeof(EntryWords));
            for (std::size_t entry = 0; entry < entries; ++entry) {
                EXPECT_EQ(shape.DataOffset(entry) % 4096, 0U);
                EXPECT_GE(shape.DataOffset(entry + 1), shape.DataOffset(entry) + bytes);
            }
            EXPECT_GE(shape.FileSize(), shape.DataOffset(entries - 1) + bytes);
            EXPECT_GT(kOwnerLock, shape.FileSize());
        }
    }
}

TEST(AreaHeader, IsRefusedWithAnyOtherWord) {
    const AreaShape shape{kGeneration, 24, 1310720};
    const HeaderWords good = EncodeHeader(shape);
    for (std::size_t word = 0; word < good.size(); ++word) {
        for (const std::uint64_t value : kOddNumbers) {
            HeaderWords words = good;
            words[word] = value;
            EXPECT_EQ(DecodeHeader(words, shape.FileSize()).has_value(), words == good)
                << "word " << word << " = " << value;
        }
        for (unsigned bit = 0; bit < 64; ++bit) {
            HeaderWords words = good;
            words[word] ^= std::uint64_t{1} << bit;
            EXPECT_FALSE(DecodeHeader(words, shape.FileSize())) << word << ", bit " << bit;
        }
    }
    EXPECT_FALSE(DecodeHeader(HeaderWords{}, shape.FileSize()));
}

/// Wrong magic, version, offsets and sizes, by somebody who knows how the checksum is made.
TEST(AreaHeader, IsRefusedWithAnyOtherWordAndTheRightChecksum) {
    const AreaShape shape{kGeneration, 24, 1310720};
    const HeaderWords good = EncodeHeader(shape);
    EXPECT_EQ(Sealed(good, kGeneration), good) << "the checksum is made in another way";
    for (std::size_t word = 0; word + 1 < good.size(); ++word) {
        if (word == kGenerationWordOfHeader) {
            continue;
        }
        std::vector<std::uint64_t> values = kOddNumbers;
        values.push_back(good[word] - 1);
        values.push_back(good[word] + 1);
        values.push_back(good[word] + 4096);
        for (const std::uint64_t value : values) {
            HeaderWords words = good;
            words[word] = value;
            words = Sealed(words, kGeneration);
            const auto decoded = DecodeHeader(words, shape.FileSize());
            if (word == kBytesWordOfHeader && (value + 4095) / 4096 == 320) {
                // Another size of segments, in the same pages: a valid area.
                EXPECT_EQ(decoded->bytesPerEntry, value);
            } else {
                EXPECT_EQ(decoded.has_value(), words == good) << "word " << word << " = " << value;
            }
        }
    }
    HeaderWords other = good;
    other[kVersionWord] += 1;
    EXPECT_FALSE(DecodeHeader(Sealed(other, kGeneration), shape.FileSize()));
}

TEST(AreaHeader, IsRefusedBeyondTheLimits) {
    for (const std::size_t word : {kEntriesWordOfHeader, kBytesWordOfHeader}) {
        const AreaShape most{kGeneration, kMostEntries, kMostBytesPerEntry};
        AreaShape more = most;
        (word == kEntriesWordOfHeader ? more.entries : more.bytesPerEntry) += 1;
        EXPECT_TRUE(DecodeHeader(EncodeHeader(most), most.FileSize()));
        EXPECT_FALSE(DecodeHeader(EncodeHeader(more), more.FileSize()));
    }
}

TEST(AreaHeader, BelongsToAFileOfItsSize) {
    const AreaShape shape{kGeneration, 24, 1310720};
    const HeaderWords words = EncodeHeader(shape);
    for (const std::uint64_t size : {shape.FileSize() - 1, shape.FileSize() + 1, std::size_t{0},
                                     std::numeric_limits<std::size_t>::max()}) {
        EXPECT_FALSE(DecodeHeader(words, size)) << size;
    }
}

TEST(DirectoryEntry, NamesOneSegment) {
    const AreaShape shape{kGeneration, 24, 1000};
    for (const std::string& name :
         {std::string("a"), std::string(63, 'z'), std::string("GrayImage")}) {
        for (const std::size_t length : {std::size_t{1}, std::size_t{999}, std::size_t{1000}}) {
            const EntryWords words = EncodeEntry(shape, 2, name, length);
            EXPECT_EQ(DecodeEntry(words, shape, name), length);
            EXPECT_EQ(DecodeEntry(words, shape, name + "x"), std::nullopt);
            EXPECT_EQ(DecodeEntry(words, shape, name.substr(1)), std::nullopt);
            EXPECT_EQ(DecodeEntry(words, shape, ""), std::nullopt);
        }
    }
    EXPECT_EQ(DecodeEntry(EntryWords{}, shape, ""), std::nullopt);
    EXPECT_EQ(
        DecodeEntry(EncodeEntry(shape, 2, std::string(64, 'z'), 5), shape, std::string(64, 'z')),
        std::nullopt);
}

TEST(DirectoryEntry, IsRefusedWithAnyOtherWord) {
    const AreaShape shape{kGeneration, 24, 1000};
    const EntryWords good = EncodeEntry(shape, 4, "image", 1000);
    for (std::size_t word = 0; word < good.size(); ++word) {
        for (unsigned bit = 0; bit < 64; ++bit) {
            EntryWords words = good;
            words[word] ^= std::uint64_t{1} << bit;
            EXPECT_FALSE(DecodeEntry(words, shape, "image")) << word << ", bit " << bit;
        }
    }
    EXPECT_FALSE(DecodeEntry(good, AreaShape{kGeneration + 1, 24, 1000}, "image"))
        << "an entry of another area";
}

TEST(DirectoryEntry, IsRefusedWithASizeOrANumberThatCannotBe) {
    const AreaShape shape{kGeneration, 24, 1000};
    for (const std::uint64_t value : kOddNumbers) {
        EXPECT_EQ(DecodeEntry(EncodeEntry(shape, 2, "image", value), shape, "image").has_value(),
                  value >= 1 && value <= 1000)
            << value;
        EXPECT_EQ(DecodeEntry(EncodeEntry(shape, value, "image", 5), shape, "image").has_value(),
                  value != 0 && value % 2 == 0)
            << value;
    }
    EXPECT_FALSE(DecodeEntry(EncodeEntry(shape, 2, "image", 1001), shape, "image"));
}

TEST(Directory, IsSearchedFromAPlaceOn) {
    const AreaShape shape{kGeneration, 5, 1000};
    std::vector<std::uint64_t> area(shape.DataOffset() / sizeof(std::uint64_t));
    auto* const memory = reinterpret_cast<std::byte*>(area.data());
    const auto put = [&](std::size_t entry, const EntryWords& words) {
        std::memcpy(memory + AreaShape::EntryOffset(entry), words.data(), sizeof(words));
    };
    EXPECT_FALSE(FindEntry(memory, shape, "a", 0));
    put(1, EncodeEntry(shape, 2, "a", 10));
    put(2, EncodeEntry(shape, 3, "a", 11));  // being written
    put(4, EncodeEntry(shape, 4, "a", 12));
    // Behind the directory.
    put(5, EncodeEntry(shape, 4, "b", 13));
    EXPECT_EQ(FindEntry(memory, shape, "a", 0)->entry, 1U);
    EXPECT_EQ(FindEntry(memory, shape, "a", 1)->length, 10U);
    EXPECT_EQ(FindEntry(memory, shape, "a", 2)->entry, 4U);
    EXPECT_EQ(FindEntry(memory, shape, "a", 4)->length, 12U);
    EXPECT_FALSE(FindEntry(memory, shape, "a", 5));
    EXPECT_FALSE(FindEntry(memory, shape, "b", 0));
}

}  // namespace

}  // namespace Korvex3Sync::tests
