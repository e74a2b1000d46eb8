#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <fstream>
#include <iterator>
#include <random>
#include <thread>

#include "support/Seed.h"
#include "support/WaitUntil.h"
#include "tunnel/Areas.h"

namespace Korvex3Sync::tests {

namespace {

namespace fs = std::filesystem;
using ::testing::Optional;
using tunnel::AreaShape;

constexpr std::size_t kDamagedBytes = 20000;
constexpr std::size_t kDamagedSegments = 6;
constexpr std::size_t kNameInEntry = 16;

/// The file of an area, written by somebody who should not.
class Intruder {
public:
    explicit Intruder(const fs::path& file)
        : m_descriptor(::open(file.c_str(), O_RDWR | O_CLOEXEC)) {}
    ~Intruder() { ::close(m_descriptor); }
    Intruder(const Intruder&) = delete;
    Intruder& operator=(const Intruder&) = delete;

    bool Write(std::size_t offset, const std::string& bytes) const {
        return ::pwrite(m_descriptor, bytes.data(), bytes.size(), static_cast<off_t>(offset)) ==
               static_cast<ssize_t>(bytes.size());
    }
    std::string Read(std::size_t offset, std::size_t size) const {
        std::string bytes(size, '\0');
        EXPECT_EQ(::pread(m_descriptor, bytes.data(), size, static_cast<off_t>(offset)),
                  static_cast<ssize_t>(size));
        return bytes;
    }
    /// Changes one byte.
    void Flip(std::size_t offset) const {
        std::string byte = Read(offset, 1);
        byte[0] = static_cast<char>(~byte[0]);
        ASSERT_TRUE(Write(offset, byte));
    }

private:
    const int m_descriptor;
};

class Damage : public ::testing::Test {
protected:
    /// What everybody has to see after any damage: the next set is written, and readers find it.
    void ExpectRecovery() {
        ++m_number;
        ASSERT_TRUE(Write(*m_writer, {"a", "b", "c"}, m_number, kDamagedBytes));
        for (const char* name : {"a", "b", "c"}) {
            ASSERT_THAT(Found(*m_reader, name), Optional(Whole(m_number, kDamagedBytes))) << name;
        }
    }

    Folders m_folders;
    const fs::path m_file = FileOf("images");
    std::unique_ptr<tunnel::AreaWriter> m_writer =
        MakeArea("images", kDamagedSegments, kDamagedBytes);
    std::unique_ptr<tunnel::AreaReader> m_reader = ReadArea("images");
    const AreaShape m_shape{0, kDamagedSegments, kDamagedBytes};
    std::uint64_t m_number = 0;
};

TEST_F(Damage, OfAnyByteOfTheHeaderHidesTheAreaUntilTheNextSet) {
    ExpectRecovery();
    for (std::size_t offset = 0; offset < sizeof(tunnel::HeaderWords); ++offset) {
        const std::uint64_t generation = m_writer->Generation();
        Intruder(m_file).Flip(offset);
        EXPECT_EQ(Found(*m_reader, "a"), std::nullopt) << offset;
        EXPECT_EQ(Found(*ReadArea("images"), "a"), std::nullopt) << offset;
        ExpectRecovery();
        EXPECT_NE(m_writer->Generation(), generation) << offset;
    }
}

TEST_F(Damage, OfAnyByteOfAnEntryHidesItsSegmentUntilTheNextSet) {
    for (std::size_t place = 0; place < sizeof(tunnel::EntryWords); ++place) {
        ExpectRecovery();
        const Intruder intruder(m_file);
        std::size_t entry = 0;
        while (intruder.Read(AreaShape::EntryOffset(entry) + kNameInEntry, 2) !=
               std::string("b\0", 2)) {
            ++entry;
            ASSERT_LT(entry, kDamagedSegments);
        }
        intruder.Flip(AreaShape::EntryOffset(entry) + place);
        EXPECT_EQ(Found(*m_reader, "b"), std::nullopt) << place;
        EXPECT_TRUE(Found(*m_reader, "a")) << place;
        const std::uint64_t generation = m_writer->Generation();
        ExpectRecovery();
        EXPECT_NE(m_writer->Generation(), generation) << place;
    }
}

TEST_F(Damage, OfPinnedSegmentsLeavesThemToTheirReaders) {
    ExpectRecovery();
    const auto pinned = m_reader->Pin("a");
    ASSERT_TRUE(pinned);
    const Intruder intruder(m_file);
    ASSERT_TRUE(intruder.Write(0, std::string(m_shape.DataOffset(), '\xA5')));
    EXPECT_EQ(ContentOf(*pinned), Whole(m_number, kDamagedBytes));
    for (int i = 0; i < 20; ++i) {
        ExpectRecovery();
    }
    EXPECT_EQ(ContentOf(*pinned), Whole(1, kDamagedBytes));
}

TEST_F(Damage, AtRandomMomentsShowsNoReaderHalfASegment) {
    constexpr int kDamages = 1000;
    std::mt19937 random(support::Seed());
    std::atomic<bool> stop = false;
    std::atomic<int> written = 0;
    std::atomic<int> seen = 0;
    std::atomic<int> torn = 0;
    std::thread writer([&] {
        for (std::uint64_t number = 1; !stop; ++number) {
            written += Write(*m_writer, {"a", "b", "c"}, number, kDamagedBytes) ? 1 : 0;
        }
    });
    std::vector<std::thread> readers;
    for (int i = 0; i < 2; ++i) {
        readers.emplace_back([&] {
            while (!stop) {
                for (const char* name : {"a", "b", "c"}) {
                    if (const auto bytes = Found(*m_reader, name)) {
                        ++seen;
                        torn += bytes->whole ? 0 : 1;
                    }
                }
            }
        });
    }
    for (int done = 0; done < kDamages || seen < 100; ++done) {
        const std::size_t size = std::uniform_int_distribution<std::size_t>(1, 200)(random);
        const std::size_t offset =
            std::uniform_int_distribution<std::size_t>(0, 1)(random) == 0
                ? std::uniform_int_distribution<std::size_t>(0, 100)(random)
                : std::uniform_int_distribution<std::size_t>(tunnel::kDirectoryOffset,
                                                             m_shape.DataOffset() - size)(random);
        std::string garbage(size, '\0');
        std::ranges::generate(garbage, [&] { return static_cast<char>(random()); });
        Intruder(m_file).Write(offset, garbage);
        // If there were damage at every moment, nobody could read anything.
        const int enough = written + static_cast<int>(random() % 4);
        ASSERT_TRUE(support::WaitUntil([&] { return written >= enough; }));
    }
    stop = true;
    writer.join();
    for (std::thread& reader : readers) {
        reader.join();
    }
    EXPECT_EQ(torn, 0);
    ExpectRecovery();
}

TEST_F(Damage, ByShorteningTheFileEndsWithTheNextSet) {
    const std::size_t whole = m_shape.FileSize();
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{1}, sizeof(tunnel::HeaderWords), tunnel::kDirectoryOffset,
          m_shape.DataOffset(), m_shape.DataOffset(3), whole - 4096, whole - 1}) {
        ExpectRecovery();
        const auto pinned = m_reader->Pin("a");
        ASSERT_TRUE(pinned);
        ASSERT_EQ(::truncate(m_file.c_str(), static_cast<off_t>(size)), 0);
        EXPECT_TRUE(pinned->Bytes().empty()) << size;
        EXPECT_EQ(Found(*m_reader, "a"), std::nullopt) << size;
        EXPECT_EQ(Found(*ReadArea("images"), "a"), std::nullopt) << size;
        ExpectRecovery();
    }
}

TEST_F(Damage, ByLengtheningTheFileEndsWithTheNextSet) {
    ExpectRecovery();
    ASSERT_EQ(::truncate(m_file.c_str(), static_cast<off_t>(m_shape.FileSize() + 1)), 0);
    EXPECT_EQ(Found(*m_reader, "a"), std::nullopt);
    ASSERT_EQ(::truncate(m_file.c_str(), std::numeric_limits<off_t>::max() / 2), 0);
    EXPECT_EQ(Found(*ReadArea("images"), "a"), std::nullopt);
    ExpectRecovery();
}

TEST_F(Damage, ByRemovingTheFileEndsWithTheNextSet) {
    ExpectRecovery();
    ASSERT_TRUE(fs::remove(m_file));
    EXPECT_EQ(Found(*m_reader, "a"), std::nullopt);
    ExpectRecovery();
}

TEST_F(Damage, ByAFileOfSomethingElseEndsWithTheNextSet) {
    ExpectRecovery();
    fs::remove(m_file);
    std::ofstream(m_file) << "not an area";
    fs::permissions(m_file, fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(Found(*m_reader, "a"), std::nullopt);
    ExpectRecovery();
    fs::remove(m_file);
    fs::create_symlink("/etc/passwd", m_file);
    EXPECT_EQ(Found(*m_reader, "a"), std::nullopt);
    ExpectRecovery();
    fs::remove(m_file);
    ASSERT_EQ(::mkfifo(m_file.c_str(), 0600), 0);
    EXPECT_EQ(Found(*m_reader, "a"), std::nullopt);
    ExpectRecovery();
}

TEST_F(Damage, ByADirectoryOfTheNameIsReportedAndEndsWithIt) {
    ExpectRecovery();
    fs::remove(m_file);
    fs::create_directory(m_file);
    EXPECT_EQ(Found(*m_reader, "a"), std::nullopt);
    EXPECT_FALSE(Write(*m_writer, {"a"}, 1, kDamagedBytes));
    EXPECT_FALSE(Write(*m_writer, {"a"}, 1, kDamagedBytes));
    std::string reason;
    EXPECT_EQ(tunnel::AreaWriter::Make("images", 3, kDamagedBytes, reason), nullptr);
    EXPECT_NE(reason, "");
    fs::remove(m_file);
    ExpectRecovery();
}

TEST_F(Damage, ByAnotherWriterIsNotUndoneWhileThatOneLives) {
    ExpectRecovery();
    {
        const auto other = MakeArea("images", 3, kDamagedBytes);
        EXPECT_FALSE(Write(*m_writer, {"a"}, 1, kDamagedBytes));
        ASSERT_TRUE(Write(*other, {"a"}, 77, kDamagedBytes));
        EXPECT_FALSE(Write(*m_writer, {"a"}, 1, kDamagedBytes));
        EXPECT_THAT(Found(*m_reader, "a"), Optional(Whole(77, kDamagedBytes)));
    }
    ExpectRecovery();
}

}  // namespace

}  // namespace Korvex3Sync::tests
