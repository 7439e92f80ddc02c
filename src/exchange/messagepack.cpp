#include "exchange/messagepack.h"

namespace tessera {

void CMessagePack::bigEndian(quint64 nValue, int nBytes)
{
    for (int n = nBytes - 1; n >= 0; --n) {
        m_bytes += char((nValue >> (8 * n)) & 0xff);
    }
}

void CMessagePack::beginArray(quint32 nElements)
{
    if (nElements < 16) {
        m_bytes += char(0x90 | nElements);
    } else {
        m_bytes += char(0xdd);
        bigEndian(nElements, 4);
    }
}

void CMessagePack::beginMap(quint32 nPairs)
{
    if (nPairs < 16) {
        m_bytes += char(0x80 | nPairs);
    } else {
        m_bytes += char(0xdf);
        bigEndian(nPairs, 4);
    }
}

void CMessagePack::text(const QByteArray& bytes)
{
    if (bytes.size() < 32) {
        m_bytes += char(0xa0 | bytes.size());
    } else if (bytes.size() < 256) {
        m_bytes += char(0xd9);
        bigEndian(quint64(bytes.size()), 1);
    } else {
        m_bytes += char(0xdb);
        bigEndian(quint64(bytes.size()), 4);
    }
    m_bytes += bytes;
}

void CMessagePack::binary(const QByteArray& bytes)
{
    m_bytes += char(0xc6);
    bigEndian(quint64(bytes.size()), 4);
    m_bytes += bytes;
}

void CMessagePack::number(quint64 nValue)
{
    if (nValue < 128) {
        m_bytes += char(nValue);
    } else {
        m_bytes += char(0xcf);
        bigEndian(nValue, 8);
    }
}

}  // namespace tessera
