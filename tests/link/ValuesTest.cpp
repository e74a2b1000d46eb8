#include <gtest/gtest.h>

#include <set>
#include <string>

#include "link/WireSamples.h"
#include "platform/link/wire/Values.h"

namespace Korvex3Sync::tests {
namespace {

using namespace Korvex3Sync::link;

/// A value arrives as it was, and no part of its bytes is one.
template <class T, bool kComparable = true>
void CheckSamples() {
    for (const T& value : WireSamples<T>::All()) {
        const QByteArray bytes = WireBytes(value);
        T read{};
        ASSERT_TRUE(ReadWhole(SpanOf(bytes), read));
        EXPECT_EQ(WireBytes(read), bytes);
        if constexpr (kComparable) {
            EXPECT_TRUE(value == read || value != value);  // NaN differs from itself
        }
        for (int size = 0; size < bytes.size(); ++size) {
            T cut{};
            EXPECT_FALSE(ReadWhole(SpanOf(bytes.left(size)), cut)) << size;
        }
        T longer{};
        EXPECT_FALSE(ReadWhole(SpanOf(bytes + '\0'), longer));
    }
}

TEST(WireValues, ArriveAsTheyWere) {
    CheckSamples<bool>();
    CheckSamples<int>();
    CheckSamples<qint64>();
    CheckSamples<quint64>();
    CheckSamples<quint32>();
    CheckSamples<double>();
    CheckSamples<QString>();
    CheckSamples<QStringList>();
    CheckSamples<QVariantList>();
    CheckSamples<std::vector<int>>();
    CheckSamples<std::vector<bool>>();
    CheckSamples<CONTROLROUTE>();
    CheckSamples<ServiceState, false>();
    CheckSamples<Registration, false>();
    CheckSamples<HubState, false>();
}

TEST(WireValues, HaveTheMostSignificantByteFirst) {
    EXPECT_EQ(WireBytes(0x01020304), QByteArray("\1\2\3\4", 4));
    EXPECT_EQ(WireBytes(qint64{0x0102030405060708}), QByteArray("\1\2\3\4\5\6\7\10", 8));
    EXPECT_EQ(WireBytes(QString(QChar(0x0102))), QByteArray("\0\0\0\1\1\2", 6));
}

TEST(WireValues, OfAnOtherTypeTravelAsTheirText) {
    QVariantList read;
    ASSERT_TRUE(ReadWhole(SpanOf(WireBytes(QVariantList{QVariant(QChar('x'))})), read));
    EXPECT_EQ(read, QVariantList{QString("x")});
}

TEST(WireValues, NestAtMostFourDeep) {
    QVariantList deep{1};
    for (int i = 0; i < 10; ++i) {
        deep = QVariantList{QVariant(deep)};
    }
    QVariantList read;
    ASSERT_TRUE(ReadWhole(SpanOf(WireBytes(deep)), read));
    int depth = 1;
    for (QVariant inner = read.value(0); inner.type() == QVariant::List;
         inner = inner.toList().value(0)) {
        ++depth;
    }
    EXPECT_EQ(depth, 4);

    ByteWriter deeper;
    for (int i = 0; i < 5; ++i) {
        deeper.Number(std::uint32_t{1});
        deeper.Number(std::uint8_t{8});  // a list
    }
    deeper.Number(std::uint32_t{0});
    EXPECT_FALSE(ReadWhole(SpanOf(deeper.Bytes()), read));
}

/// A claimed number of elements that the message cannot contain costs nothing.
template <class T>
void ExpectRefusedCount(std::uint32_t count) {
    ByteWriter out;
    out.Number(count);
    out.Append("1234567890");
    T read{};
    EXPECT_FALSE(ReadWhole(SpanOf(out.Bytes()), read)) << count;
}

TEST(WireValues, WithImpossibleCountsAreRefused) {
    for (const std::uint32_t count : {6U, 11U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        ExpectRefusedCount<QString>(count);
        ExpectRefusedCount<QStringList>(count);
        ExpectRefusedCount<QVariantList>(count);
        ExpectRefusedCount<std::vector<int>>(count);
        ExpectRefusedCount<std::vector<bool>>(count);
    }
}

TEST(WireValues, OfUnknownKindsAreRefused) {
    bool flag = false;
    EXPECT_FALSE(ReadWhole(SpanOf(QByteArray("\2", 1)), flag));
    QVariantList list;
    EXPECT_FALSE(ReadWhole(SpanOf(QByteArray("\0\0\0\1\11", 5)), list));
}

TEST(WireValues, OfEveryOperationArriveAsTheyWere) {
    int operations = 0;
    ForEachOperation([&operations]<class Op>() {
        SCOPED_TRACE(Op::kName);
        CheckSamples<typename Op::In, false>();
        CheckSamples<typename Op::Out, false>();
        ++operations;
    });
    EXPECT_EQ(operations, 41);
}

TEST(Operations, HaveNumbersOfTheirOwn) {
    std::set<std::uint16_t> numbers;
    std::set<std::string> names;
    ForEachOperation([&]<class Op>() {
        EXPECT_TRUE(numbers.insert(Op::kNumber).second) << Op::kName;
        EXPECT_TRUE(names.insert(Op::kName).second) << Op::kName;
    });
}

}  // namespace
}  // namespace Korvex3Sync::tests
