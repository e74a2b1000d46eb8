#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QByteArray>
#include <atomic>
#include <thread>

#include "platform/include/QtTunnel.h"
#include "support/ThreadState.h"
#include "tunnel/Areas.h"

namespace Korvex3Sync::tests {

namespace {

using QtTunnel::Segment;
using QtTunnel::SharedMemory;
using ::testing::IsNull;
using ::testing::NotNull;

constexpr std::size_t kSegmentBytes = 5000;

QString AreaName() {
    return QString::fromStdString(::testing::UnitTest::GetInstance()->current_test_info()->name());
}

QByteArray Bytes(std::uint64_t number, std::size_t size = kSegmentBytes) {
    return QByteArray::fromStdString(BytesOf(number, size));
}

/// The objects of an area live as long as the process, and so does its runtime folder.
const Folders& RuntimeFolders() {
    static const Folders folders;
    return folders;
}

class Segments : public ::testing::Test {
protected:
    Segments() { RuntimeFolders(); }

    /// Makes an area of this test's name and writes the segment "a" into it.
    void Prepare() {
        m_writer = MakeArea(AreaName().toStdString(), 4, kSegmentBytes);
        ASSERT_TRUE(Write(*m_writer, {"a"}, 1, kSegmentBytes));
        m_area = SharedMemory::open(AreaName(), 1024);
        ASSERT_THAT(m_area, NotNull());
        m_segment = m_area->segment("a", 0);
        ASSERT_THAT(m_segment, NotNull());
    }
    void TearDown() override {
        if (m_area != nullptr) {
            m_area->destroy(m_segment);
        }
    }

    std::unique_ptr<tunnel::AreaWriter> m_writer;
    SharedMemory* m_area = nullptr;
    Segment* m_segment = nullptr;
};

TEST_F(Segments, ComeOpenUnbufferedAndSequentialAtTheirStart) {
    Prepare();
    EXPECT_EQ(m_segment->openMode(), QIODevice::ReadOnly | QIODevice::Unbuffered);
    EXPECT_TRUE(m_segment->isOpen());
    EXPECT_TRUE(m_segment->isReadable());
    EXPECT_FALSE(m_segment->isWritable());
    EXPECT_TRUE(m_segment->isSequential());
    EXPECT_EQ(m_segment->pos(), 0);
    EXPECT_EQ(m_segment->bytesAvailable(), static_cast<qint64>(kSegmentBytes));
    EXPECT_FALSE(m_segment->atEnd());
    EXPECT_EQ(m_segment->read(8), Bytes(1).left(8));
}

TEST_F(Segments, AreReadAsTheClientReadsThem) {
    Prepare();
    std::vector<char> image(kSegmentBytes);
    EXPECT_TRUE(m_segment->lock());
    EXPECT_EQ(m_segment->read(image.data(), static_cast<qint64>(image.size())),
              static_cast<qint64>(kSegmentBytes));
    EXPECT_TRUE(m_segment->unlock());
    EXPECT_EQ(QByteArray(image.data(), static_cast<int>(image.size())), Bytes(1));
}

TEST_F(Segments, GiveTheirBytesOnce) {
    Prepare();
    QByteArray read = m_segment->read(1);
    read += m_segment->read(0);
    read += m_segment->read(999);
    EXPECT_EQ(m_segment->bytesAvailable(), static_cast<qint64>(kSegmentBytes - 1000));
    // More than there is.
    std::vector<char> rest(2 * kSegmentBytes, '!');
    const qint64 count = m_segment->read(rest.data(), static_cast<qint64>(rest.size()));
    EXPECT_EQ(count, static_cast<qint64>(kSegmentBytes - 1000));
    EXPECT_EQ(rest[kSegmentBytes - 1000], '!');
    read += QByteArray(rest.data(), static_cast<int>(count));
    EXPECT_EQ(read, Bytes(1));
    EXPECT_TRUE(m_segment->atEnd());
    EXPECT_EQ(m_segment->bytesAvailable(), 0);
    EXPECT_EQ(m_segment->read(rest.data(), 1), -1);
    EXPECT_EQ(m_segment->read(1), QByteArray());
    EXPECT_EQ(m_segment->readAll(), QByteArray());
}

TEST_F(Segments, AreReadFromTheStartByEachObject) {
    Prepare();
    EXPECT_EQ(m_segment->readAll(), Bytes(1));
    Segment* const other = m_area->segment("a", 0);
    ASSERT_THAT(other, NotNull());
    EXPECT_NE(other, m_segment);
    EXPECT_EQ(other->peek(100), Bytes(1).left(100));
    EXPECT_EQ(other->readAll(), Bytes(1));
    m_area->destroy(other);
}

TEST_F(Segments, ThatAreReadCannotBeWritten) {
    Prepare();
    EXPECT_EQ(m_segment->write("x", 1), -1);
    EXPECT_EQ(m_segment->readAll(), Bytes(1));
    EXPECT_FALSE(m_segment->seek(0));
}

TEST_F(Segments, LockOnce) {
    Prepare();
    EXPECT_FALSE(m_segment->unlock());
    EXPECT_TRUE(m_segment->lock());
    EXPECT_FALSE(m_segment->lock());
    EXPECT_TRUE(m_segment->unlock());
    EXPECT_FALSE(m_segment->unlock());
    // Two readers do not exclude each other.
    Segment* const other = m_area->segment("a", 0);
    EXPECT_TRUE(m_segment->lock());
    EXPECT_TRUE(other->lock());
    m_area->destroy(other);
}

TEST_F(Segments, KeepTheirBytesWhileTheyExist) {
    Prepare();
    for (int number = 2; number < 50; ++number) {
        ASSERT_TRUE(Write(*m_writer, {"b", "c", "d"}, number, kSegmentBytes));
    }
    EXPECT_FALSE(Write(*m_writer, {"b", "c", "d", "e"}, 50, kSegmentBytes));
    EXPECT_EQ(m_segment->readAll(), Bytes(1));
    m_area->destroy(m_segment);
    m_segment = nullptr;
    EXPECT_TRUE(Write(*m_writer, {"b", "c", "d", "e"}, 50, kSegmentBytes));
    EXPECT_THAT(m_area->segment("a", 0), IsNull());
}

TEST_F(Segments, OfAFileThatIsCutShortGiveNothing) {
    Prepare();
    std::filesystem::resize_file(FileOf(AreaName().toStdString()), 8192);
    EXPECT_FALSE(m_segment->lock());
    EXPECT_EQ(m_segment->bytesAvailable(), 0);
    char byte = 0;
    EXPECT_EQ(m_segment->read(&byte, 1), -1);
    EXPECT_THAT(m_area->segment("a", 0), IsNull());
}

TEST_F(Segments, FollowTheAreaThatTookTheName) {
    Prepare();
    m_writer.reset();
    EXPECT_THAT(m_area->segment("a", 0), IsNull());
    m_writer = MakeArea(AreaName().toStdString(), 4, kSegmentBytes);
    ASSERT_TRUE(Write(*m_writer, {"a"}, 2, kSegmentBytes));
    Segment* const now = m_area->segment("a", 0);
    ASSERT_THAT(now, NotNull());
    EXPECT_EQ(now->readAll(), Bytes(2));
    m_area->destroy(now);
    EXPECT_EQ(m_segment->readAll(), Bytes(1)) << "the earlier one stays what it is";
}

TEST_F(Segments, WithNullOrOddNamesAreAbsent) {
    Prepare();
    for (const QString& name :
         {QString(), QString(""), QString("A"), QString("a "), QString(64, 'a'),
          QString(100000, 'a'), QString("a") + QChar(0), QString(QChar(0)), QString(QChar(0xD800)),
          QString::fromUtf8("ä")}) {
        EXPECT_THAT(m_area->segment(name, 0), IsNull()) << qPrintable(name);
    }
    for (const QString& name : {QString(), QString(""), QString(64, 'a'), QString(QChar(0)),
                                QString(QChar(0xD800)), QString("b") + QChar(0xDC00)}) {
        EXPECT_THAT(m_area->segment(name, 100), IsNull()) << qPrintable(name);
    }
}

TEST_F(Segments, NeedAnAreaWithAValidName) {
    for (const QString& name :
         {QString(), QString(""), QString("a/b"), QString("../x"), QString(101, 'a'),
          QString("a") + QChar(0), QString::fromUtf8("ä")}) {
        EXPECT_THAT(SharedMemory::open(name, 1024), IsNull()) << qPrintable(name);
    }
    SharedMemory* const area = SharedMemory::open(AreaName(), 1024);
    ASSERT_THAT(area, NotNull());
    EXPECT_EQ(SharedMemory::open(AreaName(), 0), area) << "one object for each name";
    EXPECT_NE(SharedMemory::open(AreaName() + "2", 1024), area);
    EXPECT_THAT(area->segment("a", 0), IsNull());
}

TEST_F(Segments, AreDestroyedOnce) {
    Prepare();
    m_area->destroy(nullptr);
    SharedMemory* const other = SharedMemory::open(AreaName() + "2", 1024);
    other->destroy(m_segment);
    EXPECT_EQ(m_segment->readAll(), Bytes(1)) << "of another area";
    m_area->destroy(m_segment);
    m_area->destroy(m_segment);
    EXPECT_TRUE(Write(*m_writer, {"b", "c", "d", "e"}, 2, kSegmentBytes)) << "no pin is left";
}

TEST_F(Segments, AreCreatedWrittenAndReadAgain) {
    SharedMemory* const area = SharedMemory::open(AreaName(), 3);
    Segment* const created = area->segment("new", kSegmentBytes);
    ASSERT_THAT(created, NotNull());
    EXPECT_EQ(created->openMode(), QIODevice::WriteOnly | QIODevice::Unbuffered);
    char byte = 0;
    EXPECT_EQ(created->read(&byte, 1), -1);
    EXPECT_TRUE(created->lock());
    EXPECT_EQ(created->write(Bytes(1).left(3000)), 3000);
    EXPECT_THAT(area->segment("new", 0), IsNull()) << "not before unlock()";
    EXPECT_EQ(created->write(Bytes(1).mid(3000)), static_cast<qint64>(kSegmentBytes - 3000));
    EXPECT_EQ(created->write("more", 4), -1) << "it is full";
    EXPECT_TRUE(created->unlock());
    const auto reader = ReadArea(AreaName().toStdString());
    EXPECT_THAT(Found(*reader, "new"), ::testing::Optional(Whole(1, kSegmentBytes)));
    area->destroy(created);
    EXPECT_TRUE(Found(*reader, "new")) << "the bytes stay";
    Segment* const read = area->segment("new", 0);
    ASSERT_THAT(read, NotNull());
    EXPECT_EQ(read->readAll(), Bytes(1));
    area->destroy(read);
}

TEST_F(Segments, ThatAreNotWrittenAreZero) {
    SharedMemory* const area = SharedMemory::open(AreaName(), 3);
    Segment* const created = area->segment("zero", 100);
    ASSERT_THAT(created, NotNull());
    EXPECT_EQ(created->write("ab", 2), 2);
    area->destroy(created);
    Segment* const read = area->segment("zero", 0);
    ASSERT_THAT(read, NotNull());
    EXPECT_EQ(read->readAll(), QByteArray("ab") + QByteArray(98, '\0'));
    area->destroy(read);
}

TEST_F(Segments, MakeRoomForNewOnesWhenTheAreaCanNameNoMore) {
    SharedMemory* const area = SharedMemory::open(AreaName(), 3);
    for (const char* name : {"1", "2", "3", "4"}) {
        area->destroy(area->segment(name, 1000));
    }
    EXPECT_THAT(area->segment("1", 0), IsNull());
    std::vector<Segment*> held;
    for (const char* name : {"2", "3", "4"}) {
        held.push_back(area->segment(name, 0));
        ASSERT_THAT(held.back(), NotNull()) << name;
    }
    Segment* const fifth = area->segment("5", 1000);
    ASSERT_THAT(fifth, NotNull());
    EXPECT_TRUE(fifth->lock());
    EXPECT_FALSE(fifth->unlock()) << "all places are in use";
    area->destroy(held.back());
    held.pop_back();
    EXPECT_TRUE(fifth->lock());
    EXPECT_TRUE(fifth->unlock());
    held.push_back(fifth);
    for (Segment* const segment : held) {
        area->destroy(segment);
    }
    EXPECT_THAT(area->segment("4", 0), IsNull());
}

TEST_F(Segments, CannotBeCreatedInTheAreaOfAnotherWriter) {
    Prepare();
    EXPECT_THAT(m_area->segment("new", 100), IsNull());
    EXPECT_EQ(m_segment->readAll(), Bytes(1));
    EXPECT_TRUE(Write(*m_writer, {"a"}, 2, kSegmentBytes));
    m_writer.reset();
    Segment* const created = m_area->segment("new", 100);
    EXPECT_THAT(created, NotNull());
    m_area->destroy(created);
}

TEST_F(Segments, CannotBeOfAnImpossibleSize) {
    SharedMemory* const area = SharedMemory::open(AreaName(), 3);
    EXPECT_THAT(area->segment("big", (16U << 20U) + 1), IsNull());
    EXPECT_THAT(area->segment("big", ~0ULL), IsNull());
    Segment* const largest = area->segment("big", 16U << 20U);
    ASSERT_THAT(largest, NotNull());
    area->destroy(largest);
    Segment* const read = area->segment("big", 0);
    ASSERT_THAT(read, NotNull());
    EXPECT_EQ(read->bytesAvailable(), 16 << 20);
    area->destroy(read);
    // An area that can name nothing, or too much.
    EXPECT_THAT(SharedMemory::open(AreaName() + "0", 0)->segment("a", 10), IsNull());
    EXPECT_THAT(SharedMemory::open(AreaName() + "1", ~0ULL)->segment("a", 10), IsNull());
}

TEST_F(Segments, LeaveNothingBehindAfter10000OfThem) {
    Prepare();
    const std::size_t before = support::OpenFiles();
    for (int i = 0; i < 10000; ++i) {
        SharedMemory* const area = SharedMemory::open(AreaName(), 1024);
        Segment* const segment = area->segment("a", 0);
        ASSERT_THAT(segment, NotNull());
        ASSERT_EQ(segment->read(8), Bytes(1).left(8));
        area->destroy(segment);
    }
    EXPECT_EQ(support::OpenFiles(), before);
    m_area->destroy(m_segment);
    EXPECT_TRUE(Write(*m_writer, {"b", "c", "d", "e"}, 2, kSegmentBytes)) << "no pin is left";
}

TEST_F(Segments, AreReadByManyThreadsAtOnce) {
    Prepare();
    std::atomic<bool> stop = false;
    std::atomic<int> seen = 0;
    std::atomic<int> torn = 0;
    std::vector<std::thread> readers;
    for (int i = 0; i < 4; ++i) {
        readers.emplace_back([&] {
            while (!stop) {
                SharedMemory* const area = SharedMemory::open(AreaName(), 1024);
                if (Segment* const segment = area->segment("b", 0)) {
                    const std::string bytes = segment->readAll().toStdString();
                    std::uint64_t number = 0;
                    std::memcpy(&number, bytes.data(), sizeof(number));
                    torn += bytes == BytesOf(number, kSegmentBytes) ? 0 : 1;
                    ++seen;
                    area->destroy(segment);
                }
            }
        });
    }
    for (int number = 1; number <= 500 || seen < 200; ++number) {
        Write(*m_writer, {"b"}, number, kSegmentBytes);
    }
    stop = true;
    for (std::thread& reader : readers) {
        reader.join();
    }
    EXPECT_EQ(torn, 0);
}

}  // namespace

}  // namespace Korvex3Sync::tests
