// CMessagePack: writes values as MessagePack does.
#pragma once

#include <QByteArray>

#include <cstdint>

namespace tessera {

/// Appends one value after the other; arrays and maps are followed by their elements. Numbers are unsigned
/// and take the shortest form.
/// Source: the description of the format at msgpack.org.
class CMessagePack {
public:
    void beginArray(quint32 nElements);
    void beginMap(quint32 nPairs);
    void text(const QByteArray& bytes);
    void binary(const QByteArray& bytes);
    void number(quint64 nValue);

    const QByteArray& bytes() const { return m_bytes; }

private:
    void bigEndian(quint64 nValue, int nBytes);

    QByteArray m_bytes;
};

}  // namespace tessera
