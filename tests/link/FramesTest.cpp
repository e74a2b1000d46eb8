#include <gtest/gtest.h>

#include <QByteArray>

#include <string>
#include <vector>

#include "platform/link/wire/Frames.h"

namespace Korvex3Sync::tests {
namespace {

using namespace Korvex3Sync::link;

QByteArray Copied(ByteSpan bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size())};
}

TEST(Frames, ArriveWhateverThePiecesAre) {
    const QByteArray long_(100'000, 'x');
    const QByteArray stream = Framed("a") + Framed(long_) + Framed("bc");
    for (const int piece : {1, 2, 3, 5, 4096, stream.size()}) {
        FrameReader reader;
        std::vector<QByteArray> messages;
        for (int i = 0; i < stream.size(); i += piece) {
            reader.Append(stream.mid(i, piece));
            while (const auto message = reader.Next()) {
                messages.push_back(Copied(*message));
            }
        }
        EXPECT_EQ(messages, (std::vector<QByteArray>{"a", long_, "bc"})) << piece;
        EXPECT_EQ(reader.Fault(), "");
        EXPECT_FALSE(reader.InMessage());
    }
}

TEST(Frames, InPartAreNoticed) {
    FrameReader reader;
    EXPECT_FALSE(reader.InMessage());
    const QByteArray stream = Framed("abc");
    for (int i = 0; i < stream.size() - 1; ++i) {
        reader.Append(stream.mid(i, 1));
        EXPECT_FALSE(reader.Next());
        EXPECT_TRUE(reader.InMessage()) << i;
    }
    reader.Append(stream.right(1));
    EXPECT_TRUE(reader.Next());
    EXPECT_FALSE(reader.InMessage());
}

QByteArray Length(std::uint32_t length) {
    ByteWriter out;
    out.Number(length);
    return out.Bytes();
}

TEST(Frames, OfImpossibleLengthEndTheStream) {
    for (const std::uint32_t length :
         {0U, (1U << 20U) + 1, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        FrameReader reader;
        reader.Append(Framed("good") + Length(length) + Framed("later"));
        EXPECT_TRUE(reader.Next());
        EXPECT_FALSE(reader.Next());
        EXPECT_NE(reader.Fault().find(std::to_string(length)), std::string::npos);
        EXPECT_FALSE(reader.Next());
        EXPECT_NE(reader.Fault(), "");
    }
}

TEST(Frames, OfTheLongestLengthArrive) {
    FrameReader reader;
    reader.Append(Framed(QByteArray(static_cast<int>(kMostMessageBytes), 'x')));
    const auto message = reader.Next();
    ASSERT_TRUE(message);
    EXPECT_EQ(message->size(), kMostMessageBytes);
}

TEST(Frames, CanBeLimited) {
    FrameReader reader;
    reader.Limit(3);
    reader.Append(Framed("abc") + Framed("abcd"));
    EXPECT_TRUE(reader.Next());
    EXPECT_FALSE(reader.Next());
    EXPECT_NE(reader.Fault(), "");
}

}  // namespace
}  // namespace Korvex3Sync::tests
