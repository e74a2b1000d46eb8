#include "platform/link/wire/Values.h"

namespace Korvex3Sync::link {
namespace {

constexpr int kMostDepth = 4;

enum class Kind : std::uint8_t {
    Nothing,
    Bool,
    Int,
    LongLong,
    UnsignedLongLong,
    Double,
    Text,
    Texts,
    List
};

template <class T>
void WriteKind(ByteWriter& out, Kind kind, const T& value) {
    out.Number(static_cast<std::uint8_t>(kind));
    Write(out, value);
}

template <class T>
bool ReadAs(ByteReader& in, QVariant& value) {
    T read{};
    if (!Read(in, read)) {
        return false;
    }
    value = QVariant(read);
    return true;
}

void WriteList(ByteWriter& out, const QVariantList& value, int depth);
bool ReadList(ByteReader& in, QVariantList& value, int depth);

void WriteElement(ByteWriter& out, const QVariant& value, int depth) {
    switch (static_cast<int>(value.type())) {
        case QMetaType::UnknownType:
            return out.Number(static_cast<std::uint8_t>(Kind::Nothing));
        case QMetaType::Bool:
            return WriteKind(out, Kind::Bool, value.toBool());
        case QMetaType::Int:
            return WriteKind(out, Kind::Int, value.toInt());
        case QMetaType::LongLong:
            return WriteKind(out, Kind::LongLong, value.toLongLong());
        case QMetaType::ULongLong:
            return WriteKind(out, Kind::UnsignedLongLong, value.toULongLong());
        case QMetaType::Double:
            return WriteKind(out, Kind::Double, value.toDouble());
        case QMetaType::QStringList:
            return WriteKind(out, Kind::Texts, value.toStringList());
        case QMetaType::QVariantList:
            if (depth >= kMostDepth) {
                return out.Number(static_cast<std::uint8_t>(Kind::Nothing));
            }
            out.Number(static_cast<std::uint8_t>(Kind::List));
            return WriteList(out, value.toList(), depth + 1);
        default:
            return WriteKind(out, Kind::Text, value.toString());
    }
}

bool ReadElement(ByteReader& in, QVariant& value, int depth) {
    std::uint8_t kind = 0;
    if (!in.Number(kind)) {
        return false;
    }
    switch (static_cast<Kind>(kind)) {
        case Kind::Nothing:
            value = QVariant();
            return true;
        case Kind::Bool:
            return ReadAs<bool>(in, value);
        case Kind::Int:
            return ReadAs<int>(in, value);
        case Kind::LongLong:
            return ReadAs<qlonglong>(in, value);
        case Kind::UnsignedLongLong:
            return ReadAs<qulonglong>(in, value);
        case Kind::Double:
            return ReadAs<double>(in, value);
        case Kind::Text:
            return ReadAs<QString>(in, value);
        case Kind::Texts:
            return ReadAs<QStringList>(in, value);
        case Kind::List: {
            QVariantList list;
            if (depth >= kMostDepth || !ReadList(in, list, depth + 1)) {
                return false;
            }
            value = list;
            return true;
        }
    }
    return false;
}

void WriteList(ByteWriter& out, const QVariantList& value, int depth) {
    out.Number(static_cast<std::uint32_t>(value.size()));
    for (const QVariant& element : value) {
        WriteElement(out, element, depth);
    }
}

bool ReadList(ByteReader& in, QVariantList& value, int depth) {
    std::uint32_t count = 0;
    if (!in.Number(count) || count > in.Left()) {  // an element takes at least one byte
        return false;
    }
    value.clear();
    for (std::uint32_t i = 0; i < count; ++i) {
        QVariant element;
        if (!ReadElement(in, element, depth)) {
            return false;
        }
        value.append(element);
    }
    return true;
}

}  // namespace

void Write(ByteWriter& out, bool value) {
    out.Number(static_cast<std::uint8_t>(value ? 1 : 0));
}

bool Read(ByteReader& in, bool& value) {
    std::uint8_t byte = 0;
    if (!in.Number(byte) || byte > 1) {
        return false;
    }
    value = byte == 1;
    return true;
}

void Write(ByteWriter& out, const QString& value) {
    out.Number(static_cast<std::uint32_t>(value.size()));
    for (const QChar unit : value) {
        out.Number(unit.unicode());
    }
}

bool Read(ByteReader& in, QString& value) {
    std::uint32_t size = 0;
    if (!in.Number(size) || size > in.Left() / sizeof(ushort)) {
        return false;
    }
    value.resize(static_cast<int>(size));
    for (QChar& unit : value) {
        ushort code = 0;
        in.Number(code);
        unit = QChar(code);
    }
    return true;
}

void Write(ByteWriter& out, const QStringList& value) {
    out.Number(static_cast<std::uint32_t>(value.size()));
    for (const QString& text : value) {
        Write(out, text);
    }
}

bool Read(ByteReader& in, QStringList& value) {
    std::uint32_t count = 0;
    if (!in.Number(count) || count > in.Left() / sizeof(count)) {
        return false;
    }
    value.clear();
    for (std::uint32_t i = 0; i < count; ++i) {
        QString text;
        if (!Read(in, text)) {
            return false;
        }
        value.append(text);
    }
    return true;
}

void Write(ByteWriter& out, const QVariantList& value) {
    WriteList(out, value, 1);
}

bool Read(ByteReader& in, QVariantList& value) {
    return ReadList(in, value, 1);
}

}  // namespace Korvex3Sync::link
