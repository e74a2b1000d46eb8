#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

#include <bit>
#include <cstdint>
#include <optional>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/link/wire/Bytes.h"

namespace Korvex3Sync::link {

// How each type travels. `Read` accepts only what `Write` writes: every count and length is checked
// against what is left before it is used, so that memory is bounded by the size of the message.

void Write(ByteWriter& out, bool value);
bool Read(ByteReader& in, bool& value);
/// Texts travel as UTF-16, so that every text arrives unchanged.
void Write(ByteWriter& out, const QString& value);
bool Read(ByteReader& in, QString& value);
void Write(ByteWriter& out, const QStringList& value);
bool Read(ByteReader& in, QStringList& value);
/// Elements are nothing, bool, int, long long, unsigned long long, double, texts, lists of texts
/// and lists, at most four deep. An element of any other type travels as its text.
void Write(ByteWriter& out, const QVariantList& value);
bool Read(ByteReader& in, QVariantList& value);

inline void Write(ByteWriter& out, double value) {
    out.Number(std::bit_cast<std::uint64_t>(value));
}

inline bool Read(ByteReader& in, double& value) {
    std::uint64_t bits = 0;
    if (!in.Number(bits)) {
        return false;
    }
    value = std::bit_cast<double>(bits);
    return true;
}

template <class T>
concept WireInteger = (std::is_integral_v<T> && !std::is_same_v<T, bool> &&
                       (sizeof(T) == 4 || sizeof(T) == 8)) ||
                      (std::is_enum_v<T> && sizeof(T) == 4);

template <WireInteger T>
void Write(ByteWriter& out, T value) {
    using Bits = std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>;
    out.Number(static_cast<Bits>(value));
}

template <WireInteger T>
bool Read(ByteReader& in, T& value) {
    using Bits = std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>;
    Bits bits = 0;
    if (!in.Number(bits)) {
        return false;
    }
    value = static_cast<T>(bits);
    return true;
}

template <class... T>
void Write(ByteWriter& out, const std::tuple<T...>& values);
template <class... T>
bool Read(ByteReader& in, std::tuple<T...>& values);

template <class A, class B>
void Write(ByteWriter& out, const std::pair<A, B>& value) {
    Write(out, value.first);
    Write(out, value.second);
}

template <class A, class B>
bool Read(ByteReader& in, std::pair<A, B>& value) {
    return Read(in, value.first) && Read(in, value.second);
}

/// Whether there is a value, and the value if there is one.
template <class T>
void Write(ByteWriter& out, const std::optional<T>& value) {
    Write(out, value.has_value());
    if (value) {
        Write(out, *value);
    }
}

template <class T>
bool Read(ByteReader& in, std::optional<T>& value) {
    bool present = false;
    if (!Read(in, present)) {
        return false;
    }
    value.reset();
    return !present || Read(in, value.emplace());
}

template <class T>
void Write(ByteWriter& out, const std::vector<T>& values) {
    out.Number(static_cast<std::uint32_t>(values.size()));
    for (const auto& value : values) {
        Write(out, static_cast<const T&>(value));
    }
}

template <class T>
bool Read(ByteReader& in, std::vector<T>& values) {
    std::uint32_t count = 0;
    if (!in.Number(count) || count > in.Left()) {  // an element takes at least one byte
        return false;
    }
    values.clear();
    for (std::uint32_t i = 0; i < count; ++i) {
        T value{};
        if (!Read(in, value)) {
            return false;
        }
        values.push_back(std::move(value));
    }
    return true;
}

template <class... T>
void Write(ByteWriter& out, const std::tuple<T...>& values) {
    std::apply([&out](const auto&... value) { (Write(out, value), ...); }, values);
}

template <class... T>
bool Read(ByteReader& in, std::tuple<T...>& values) {
    return std::apply([&in](auto&... value) { return (Read(in, value) && ...); }, values);
}

/// Reads all that is left as one value; false if something remains.
template <class T>
bool ReadWhole(ByteSpan bytes, T& value) {
    ByteReader in(bytes);
    return Read(in, value) && in.Left() == 0;
}

}  // namespace Korvex3Sync::link
