#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tunnel/Areas.h"

namespace Korvex3Sync::tests {

namespace {

using ::testing::Optional;
using tunnel::AreaWriter;
using tunnel::SegmentBytes;

constexpr std::size_t kImage = 1280UL * 1024;
constexpr std::size_t kSmall = 100;

std::vector<std::string> NamesOfSet(int number) {
    return {std::to_string(number) + "/0", std::to_string(number) + "/1",
            std::to_string(number) + "/2"};
}

class Sets : public ::testing::Test {
protected:
    Folders m_folders;
};

TEST_F(Sets, AreFoundByNameWithTheirBytes) {
    const auto writer = MakeArea("images", 24, kImage);
    const auto reader = ReadArea("images");
    const std::string bytes = BytesOf(1, kImage);
    const std::string other = BytesOf(2, 77);
    const std::vector<SegmentBytes> set{{"a", bytes.data(), bytes.size()},
                                        {"b", other.data(), other.size()},
                                        {"c", bytes.data(), 1}};
    ASSERT_TRUE(writer->WriteSet(set));
    EXPECT_THAT(Found(*reader, "a"), Optional(Whole(1, kImage)));
    EXPECT_THAT(Found(*reader, "b"), Optional(Whole(2, 77)));
    EXPECT_THAT(Found(*reader, "c"), Optional(Whole(1, 1)));
    ;
    EXPECT_EQ(Found(*reader, "d"), std::nullopt);
    EXPECT_EQ(Found(*reader, ""), std::nullopt);
}

TEST_F(Sets, TakeTheOldestPlaces) {
    const auto writer = MakeArea("images", 9, kSmall);
    const auto reader = ReadArea("images");
    for (int number = 1; number <= 10; ++number) {
        ASSERT_TRUE(Write(*writer, NamesOfSet(number), 1, kSmall));
        for (int earlier = 1; earlier <= number; ++earlier) {
            for (const std::string& name : NamesOfSet(earlier)) {
                EXPECT_EQ(Found(*reader, name).has_value(), earlier > number - 3) << name;
            }
        }
    }
}

TEST_F(Sets, OfSeveralSizesFollowEachOther) {
    const auto writer = MakeArea("images", 3, kSmall);
    const auto reader = ReadArea("images");
    for (const std::size_t size : {kSmall, std::size_t{8}, kSmall - 1, std::size_t{9}, kSmall}) {
        ASSERT_TRUE(Write(*writer, {"a", "b"}, size, size));
        EXPECT_THAT(Found(*reader, "a"), Optional(Whole(size, size)));
        EXPECT_THAT(Found(*reader, "b"), Optional(Whole(size, size)));
    }
}

TEST_F(Sets, NamesMayHave1To63Bytes) {
    const auto writer = MakeArea("images", 4, kSmall);
    const auto reader = ReadArea("images");
    using namespace std::string_literals;
    for (const std::string& name :
         {"x"s, std::string(63, 'n'), " "s, "\xFF\x01\n/../"s, "GrayImage"s}) {
        ASSERT_TRUE(Write(*writer, {name}, 7, kSmall)) << name;
        EXPECT_THAT(Found(*reader, name), Optional(Whole(7, kSmall))) << name;
    }
    for (const std::string& name :
         {""s, std::string(64, 'n'), std::string(1000, 'n'), "a\0b"s, "\0"s}) {
        EXPECT_FALSE(Write(*writer, {"good", name}, 8, kSmall)) << name;
        EXPECT_EQ(Found(*reader, name), std::nullopt);
    }
    EXPECT_EQ(Found(*reader, "good"), std::nullopt) << "no part of a refused set is written";
    // Not the beginning of a name.
    EXPECT_EQ(Found(*reader, std::string(62, 'n')), std::nullopt);
}

TEST_F(Sets, SizesMayReachTheOneOfTheArea) {
    const auto writer = MakeArea("images", 4, kSmall);
    const auto reader = ReadArea("images");
    const std::string bytes = BytesOf(1, kSmall + 1);
    const auto write = [&](const void* data, std::size_t size) {
        const SegmentBytes segment{"a", data, size};
        return writer->WriteSet({&segment, 1});
    };
    EXPECT_FALSE(write(bytes.data(), 0));
    EXPECT_FALSE(write(bytes.data(), kSmall + 1));
    EXPECT_FALSE(write(bytes.data(), SIZE_MAX));
    EXPECT_FALSE(write(nullptr, 1));
    EXPECT_FALSE(writer->WriteSet({}));
    EXPECT_EQ(Found(*reader, "a"), std::nullopt);
    EXPECT_TRUE(write(bytes.data(), kSmall));
    EXPECT_THAT(Found(*reader, "a"), Optional(Whole(1, kSmall)));
    EXPECT_TRUE(write(bytes.data(), 1));
    EXPECT_THAT(Found(*reader, "a"), Optional(Whole(1, 1)));
}

TEST_F(Sets, MayFillTheAreaAndNotMore) {
    const auto writer = MakeArea("images", 3, kSmall);
    const auto reader = ReadArea("images");
    EXPECT_TRUE(Write(*writer, {"a", "b", "c"}, 1, kSmall));
    EXPECT_TRUE(Write(*writer, {"d", "e", "f"}, 2, kSmall));
    EXPECT_FALSE(Write(*writer, {"g", "h", "i", "j"}, 3, kSmall));
    EXPECT_FALSE(Write(*writer, {"g", "g"}, 4, kSmall)) << "one name for two segments";
    for (const char* name : {"d", "e", "f"}) {
        EXPECT_THAT(Found(*reader, name), Optional(Whole(2, kSmall))) << name;
    }
}

TEST_F(Sets, WithTheNamesOfEarlierOnesReplaceThem) {
    const auto writer = MakeArea("images", 7, kSmall);
    const auto reader = ReadArea("images");
    for (int number = 1; number <= 20; ++number) {
        ASSERT_TRUE(Write(*writer, {"a", "b", "c"}, number, kSmall));
        for (const char* name : {"a", "b", "c"}) {
            EXPECT_THAT(Found(*reader, name), Optional(Whole(number, kSmall))) << name;
        }
    }
    // Nothing older comes to light when the newest one has made room for others.
    ASSERT_TRUE(Write(*writer, {"d", "e", "f"}, 21, kSmall));
    ASSERT_TRUE(Write(*writer, {"g", "h", "i", "j"}, 22, kSmall));
    EXPECT_EQ(Found(*reader, "a"), std::nullopt);
}

TEST_F(Sets, OfAPinnedNameAreReplacedToo) {
    const auto writer = MakeArea("images", 4, kSmall);
    const auto reader = ReadArea("images");
    ASSERT_TRUE(Write(*writer, {"a"}, 1, kSmall));
    const auto pinned = reader->Pin("a");
    ASSERT_TRUE(pinned);
    ASSERT_TRUE(Write(*writer, {"a"}, 2, kSmall));
    EXPECT_THAT(Found(*reader, "a"), Optional(Whole(2, kSmall)));
    ASSERT_TRUE(Write(*writer, {"x", "y", "z"}, 3, kSmall));
    EXPECT_EQ(Found(*reader, "a"), std::nullopt) << "the first one is older than the second";
    EXPECT_EQ(ContentOf(*pinned), Whole(1, kSmall));
}

TEST_F(Sets, AreWrittenWholeOrNotAtAll) {
    const auto writer = MakeArea("images", 6, kSmall);
    const auto reader = ReadArea("images");
    ASSERT_TRUE(Write(*writer, {"a", "b", "c"}, 1, kSmall));
    ASSERT_TRUE(Write(*writer, {"d", "e", "f"}, 2, kSmall));
    {
        const auto a = reader->Pin("a");
        const auto c = reader->Pin("c");
        const auto d = reader->Pin("d");
        const auto f = reader->Pin("f");
        ASSERT_TRUE(a && c && d && f);
        EXPECT_FALSE(Write(*writer, {"g", "h", "i"}, 3, kSmall));
        for (const char* name : {"g", "h", "i"}) {
            EXPECT_EQ(Found(*reader, name), std::nullopt) << name;
        }
        for (const char* name : {"b", "e"}) {
            EXPECT_TRUE(Found(*reader, name)) << name << " has to stay: nothing took its place";
        }
        EXPECT_TRUE(Write(*writer, {"g", "h"}, 3, kSmall));
    }
    EXPECT_TRUE(Write(*writer, {"g", "h", "i", "j", "k", "l"}, 4, kSmall));
}

TEST_F(Sets, NeedAnAreaOfAPossibleSize) {
    std::string reason;
    for (const auto& [segments, bytes] :
         std::vector<std::pair<std::size_t, std::size_t>>{{0, kSmall},
                                                          {kSmall, 0},
                                                          {4097, 1},
                                                          {1, (std::size_t{1} << 30U) + 1},
                                                          {SIZE_MAX, SIZE_MAX}}) {
        reason.clear();
        EXPECT_EQ(AreaWriter::Make("images", segments, bytes, reason), nullptr);
        EXPECT_NE(reason.find(std::to_string(segments)), std::string::npos) << reason;
    }
    const auto most = MakeArea("images", 4096, 1);
    const auto reader = ReadArea("images");
    std::vector<std::string> names;
    for (int number = 0; number < 4096; ++number) {
        names.push_back(std::to_string(number));
    }
    ASSERT_TRUE(Write(*most, names, 7, 1));
    EXPECT_THAT(Found(*reader, "0"), Optional(Whole(7, 1)));
    EXPECT_THAT(Found(*reader, "4095"), Optional(Whole(7, 1)));
}

TEST_F(Sets, AreOfOneAreaOnly) {
    const auto one = MakeArea("one", 3, kSmall);
    const auto two = MakeArea("two", 3, kSmall);
    ASSERT_TRUE(Write(*one, {"a"}, 1, kSmall));
    ASSERT_TRUE(Write(*two, {"b"}, 2, kSmall));
    EXPECT_EQ(Found(*ReadArea("one"), "b"), std::nullopt);
    EXPECT_THAT(Found(*ReadArea("two"), "b"), Optional(Whole(2, kSmall)));
}

TEST_F(Sets, NeedAnAreaWithAValidName) {
    using namespace std::string_literals;
    for (const std::string& name :
         {""s, "a/b"s, "../a"s, "a b"s, "a\0b"s, "\xC3\xA4"s, std::string(101, 'a'), "a\n"s}) {
        std::string reason;
        EXPECT_EQ(AreaWriter::Make(name, 3, kSmall, reason), nullptr) << name;
        EXPECT_NE(reason, "") << name;
        EXPECT_EQ(tunnel::AreaReader::Open(name, reason), nullptr) << name;
    }
    for (const std::string& name :
         {"a"s, ".."s, "ZrSyncService_SharedMemory"s, "9-_.x"s, std::string(100, 'a')}) {
        const auto writer = MakeArea(name, 3, kSmall);
        ASSERT_NE(writer, nullptr) << name;
        ASSERT_TRUE(Write(*writer, {"a"}, 1, kSmall)) << name;
        EXPECT_TRUE(Found(*ReadArea(name), "a")) << name;
    }
}

}  // namespace

}  // namespace Korvex3Sync::tests
