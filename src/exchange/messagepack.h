// CMessagePack: writes values in the format MessagePack.
#pragma once

#include <QByteArray>

#include <cstdint>

namespace tessera {

/// Appends one value after another. Arrays and maps must be followed by their elements. Numbers are
/// unsigned and get the shortest form.
/// Source: the description of the format at msgpack.org.
class CMessagePack {
public:
    /// Begins an array, whose elements must follow.
    void beginArray(quint32 nElements);
    /// Begins a map, whose keys and values must follow in turn.
    void beginMap(quint32 nPairs);
    /// Appends a text in UTF-8.
    void text(const QByteArray& bytes);
    /// Appends binary data.
    void binary(const QByteArray& bytes);
    /// Appends a number.
    void number(quint64 nValue);

    /// All that was appended.
    const QByteArray& bytes() const { return m_bytes; }

private:
    void bigEndian(quint64 nValue, int nBytes);

    QByteArray m_bytes;
};

}  // namespace tessera
