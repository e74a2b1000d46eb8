#include <gtest/gtest.h>

#include "link/WireSamples.h"
#include "platform/link/wire/Messages.h"

namespace Korvex3Sync::tests {
namespace {

using namespace Korvex3Sync::link;

template <class T>
T DecodedAs(const QByteArray& bytes) {
    const auto message = Decoded(SpanOf(bytes));
    EXPECT_TRUE(message && std::holds_alternative<T>(*message));
    return message && std::holds_alternative<T>(*message) ? std::get<T>(*message) : T();
}

void ExpectNoPartIsAMessage(const QByteArray& bytes) {
    for (int size = 0; size < bytes.size(); ++size) {
        EXPECT_FALSE(Decoded(SpanOf(bytes.left(size)))) << size;
    }
    EXPECT_FALSE(Decoded(SpanOf(bytes + '\0')));
}

TEST(Messages, OfGreetingArrive) {
    const QByteArray bytes = Encoded(Hello{7, Role::Hub, 1234567890123});
    EXPECT_EQ(static_cast<std::size_t>(bytes.size()), kHelloBytes);
    const Hello read = DecodedAs<Hello>(bytes);
    EXPECT_EQ(read.version, 7U);
    EXPECT_EQ(read.role, Role::Hub);
    EXPECT_EQ(read.process, 1234567890123);
    ExpectNoPartIsAMessage(bytes);
}

TEST(Messages, OfGreetingNeedTheMarkAndAKnownRole) {
    const QByteArray bytes = Encoded(Hello{});
    for (const int place : {1, 2, 3, 4}) {
        QByteArray other = bytes;
        other[place] = static_cast<char>(other[place] ^ 1);
        EXPECT_FALSE(Decoded(SpanOf(other))) << place;
    }
    for (const char role : {'\0', '\4', '\377'}) {
        QByteArray other = bytes;
        other[9] = role;
        EXPECT_FALSE(Decoded(SpanOf(other)));
    }
}

TEST(Messages, OfCallsArrive) {
    const QByteArray bytes = Encoded(CallMessage{0xFFFFFFFF, 0xABCD, "arguments"});
    const auto read = DecodedAs<CallMessage>(bytes);
    EXPECT_EQ(read.number, 0xFFFFFFFFU);
    EXPECT_EQ(read.operation, 0xABCD);
    EXPECT_EQ(read.arguments, "arguments");
    for (int size = 0; size < 7; ++size) {
        EXPECT_FALSE(Decoded(SpanOf(bytes.left(size)))) << size;
    }
}

TEST(Messages, OfAnswersArrive) {
    const auto read = DecodedAs<ReplyMessage>(Encoded(ReplyMessage{5, STATUS_SUCCESS, "results"}));
    EXPECT_EQ(read.number, 5U);
    EXPECT_EQ(read.status, STATUS_SUCCESS);
    EXPECT_EQ(read.results, "results");
    const QByteArray refusal = Encoded(ReplyMessage{5, STATUS_CAMERA, {}});
    EXPECT_EQ(DecodedAs<ReplyMessage>(refusal).status, STATUS_CAMERA);
    ExpectNoPartIsAMessage(refusal);
}

TEST(Messages, OfSignalsArrive) {
    for (const QVariantList& list : WireSamples<QVariantList>::All()) {
        const QByteArray bytes = Encoded(Signal{Signal::Kind::Callback, "p", "n", list, "v"});
        const auto read = DecodedAs<Signal>(bytes);
        EXPECT_EQ(read.kind, Signal::Kind::Callback);
        EXPECT_EQ(read.pluginName, "p");
        EXPECT_EQ(read.name, "n");
        EXPECT_EQ(read.list, list);
        EXPECT_EQ(read.version, "v");
        ExpectNoPartIsAMessage(bytes);
    }
    for (const char kind : {'\0', '\3'}) {
        QByteArray other = Encoded(Signal{});
        other[1] = kind;
        EXPECT_FALSE(Decoded(SpanOf(other)));
    }
}

TEST(Messages, OfUnknownTypesAreNone) {
    for (int type = 0; type < 256; ++type) {
        const QByteArray bytes(1, static_cast<char>(type));
        EXPECT_FALSE(Decoded(SpanOf(bytes))) << type;
        if (type == 0 || type > 4) {
            EXPECT_FALSE(Decoded(SpanOf(bytes + QByteArray(100, '\1')))) << type;
        }
    }
}

}  // namespace
}  // namespace Korvex3Sync::tests
