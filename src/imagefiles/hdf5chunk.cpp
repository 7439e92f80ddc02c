#include "imagefiles/hdf5chunk.h"

#include "imagefiles/bitshuffle.h"
#include "imagefiles/filebuffer.h"

#include <QtEndian>

#include <lz4.h>
#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>

namespace tessera {

namespace {

constexpr int g_nDeflate = 1, g_nShuffle = 2, g_nChecksum = 3, g_nLz4 = 32004, g_nBitshuffle = 32008;
constexpr size_t g_nChecksumSize = 4;
/// Bytes, for g_nLz4 and bitshuffle: length of all, length of a block.
constexpr size_t g_nPackedHeader = 12;
constexpr unsigned g_nBitshufflePlain = 0, g_nBitshuffleLz4 = 2, g_nBitshuffleZstd = 3;

unsigned clientValue(const Hdf5Filter& filter, size_t n)
{
    return n < filter.vecClient.size() ? filter.vecClient[n] : 0;
}

/// The bytes of a chunk after a filter.
struct ChunkBytes {
    const uint8_t* p;
    size_t n;
};

bool tooShort(QString& strReason)
{
    strReason = QStringLiteral("packed pixels are truncated");
    return false;
}

bool damaged(const char* pszPacking, QString& strReason)
{
    strReason = QStringLiteral("packed pixels (%1) are damaged").arg(QLatin1String(pszPacking));
    return false;
}

/// Undoes deflate. The counters of zlib have 32 bits, so larger chunks are refused.
bool inflateChunk(ChunkBytes source, uint8_t* pTarget, size_t nTarget, QString& strReason)
{
    if (source.n > std::numeric_limits<uInt>::max() || nTarget > std::numeric_limits<uInt>::max()) {
        strReason = QStringLiteral("packed pixels of %1 bytes").arg(source.n);
        return false;
    }
    z_stream stream = {};
    stream.next_in = const_cast<Bytef*>(source.p);
    stream.avail_in = uInt(source.n);
    stream.next_out = pTarget;
    stream.avail_out = uInt(nTarget);
    if (inflateInit(&stream) != Z_OK) {
        throw std::bad_alloc();
    }
    const int nResult = inflate(&stream, Z_FINISH);
    const bool bWhole = nResult == Z_STREAM_END && stream.avail_out == 0;
    inflateEnd(&stream);
    return bWhole || damaged("deflate", strReason);
}

/// Undoes shuffle, which stores bytes of equal weight together. The bytes of an incomplete element stay at
/// the end.
void unshuffleBytes(ChunkBytes source, size_t nElementSize, uint8_t* pTarget)
{
    const size_t nCount = source.n / nElementSize;
    for (size_t j = 0; j < nElementSize; ++j) {
        const uint8_t* pPlane = source.p + j * nCount;
        for (size_t i = 0; i < nCount; ++i) {
            pTarget[i * nElementSize + j] = pPlane[i];
        }
    }
    const size_t nDone = nCount * nElementSize;
    std::memcpy(pTarget + nDone, source.p + nDone, source.n - nDone);
}

/// Removes the header of g_nLz4 or bitshuffle.
/// @return false when it gives a size other than that of the chunk
bool takePackedHeader(ChunkBytes& source, size_t nTarget, size_t& nBlockBytes, QString& strReason)
{
    if (source.n < g_nPackedHeader) {
        return tooShort(strReason);
    }
    const uint64_t nAll = qFromBigEndian<quint64>(source.p);
    nBlockBytes = qFromBigEndian<quint32>(source.p + 8);
    source = {source.p + g_nPackedHeader, source.n - g_nPackedHeader};
    if (nAll != nTarget) {
        strReason = QStringLiteral("packed pixels of %1 bytes where %2 belong").arg(nAll).arg(nTarget);
        return false;
    }
    return true;
}

/// Removes the next block, which follows its length.
bool takeBlock(ChunkBytes& source, ChunkBytes& block)
{
    if (source.n < 4) {
        return false;
    }
    const size_t nBlock = qFromBigEndian<quint32>(source.p);
    if (nBlock > source.n - 4) {
        return false;
    }
    block = {source.p + 4, nBlock};
    source = {source.p + 4 + nBlock, source.n - 4 - nBlock};
    return true;
}

bool unpackBlock(ChunkBytes block, uint8_t* pTarget, size_t nTarget)
{
    return block.n <= size_t(LZ4_MAX_INPUT_SIZE) && nTarget <= size_t(LZ4_MAX_INPUT_SIZE) &&
           LZ4_decompress_safe(reinterpret_cast<const char*>(block.p), reinterpret_cast<char*>(pTarget),
                               int(block.n), int(nTarget)) == int(nTarget);
}

bool unpackLz4(ChunkBytes source, uint8_t* pTarget, size_t nTarget, QString& strReason)
{
    size_t nBlockBytes = 0;
    if (!takePackedHeader(source, nTarget, nBlockBytes, strReason)) {
        return false;
    }
    if (nBlockBytes == 0) {
        return damaged("LZ4", strReason);
    }
    for (size_t nDone = 0; nDone < nTarget;) {
        const size_t nNext = std::min(nBlockBytes, nTarget - nDone);
        ChunkBytes block = {};
        if (!takeBlock(source, block)) {
            return tooShort(strReason);
        }
        if (block.n == nNext) {  // a block that packing would not shorten is stored unpacked
            std::memcpy(pTarget + nDone, block.p, nNext);
        } else if (!unpackBlock(block, pTarget + nDone, nNext)) {
            return damaged("LZ4", strReason);
        }
        nDone += nNext;
    }
    return true;
}

bool unpackBitshuffle(const Hdf5Filter& filter, ChunkBytes source, size_t nElementSize, uint8_t* pTarget,
                      size_t nTarget, QString& strReason)
{
    const bool bPacked = clientValue(filter, 4) == g_nBitshuffleLz4;
    size_t nBlockBytes = size_t(clientValue(filter, 3)) * nElementSize;
    if (bPacked && !takePackedHeader(source, nTarget, nBlockBytes, strReason)) {
        return false;
    }
    if (!bPacked && source.n != nTarget) {
        return tooShort(strReason);
    }
    if (nBlockBytes == 0) {
        nBlockBytes = bitshuffleBlock(nElementSize) * nElementSize;
    }
    const size_t nEight = 8 * nElementSize;
    if (nBlockBytes % nEight != 0) {
        return damaged("bitshuffle", strReason);
    }
    std::vector<uint8_t> vecPlanes(bPacked ? std::min(nBlockBytes, nTarget) : 0);
    size_t nDone = 0;
    for (size_t nRest = nTarget / nEight * nEight; nDone < nRest;) {
        const size_t nNext = std::min(nBlockBytes, nRest - nDone);
        ChunkBytes block = {source.p, nNext};
        if (!bPacked) {
            source = {source.p + nNext, source.n - nNext};
        } else if (!takeBlock(source, block)) {
            return tooShort(strReason);
        } else if (!unpackBlock(block, vecPlanes.data(), nNext)) {
            return damaged("bitshuffle, LZ4", strReason);
        } else {
            block = {vecPlanes.data(), nNext};
        }
        unshuffleBits(block.p, nNext / nElementSize, nElementSize, pTarget + nDone);
        nDone += nNext;
    }
    if (source.n < nTarget - nDone) {  // up to seven elements at the end are stored unpacked
        return tooShort(strReason);
    }
    std::memcpy(pTarget + nDone, source.p, nTarget - nDone);
    return true;
}

bool undoFilter(const Hdf5Filter& filter, ChunkBytes source, size_t nElementSize, uint8_t* pTarget,
                size_t nTarget, QString& strReason)
{
    switch (filter.nId) {
        case g_nDeflate:
            return inflateChunk(source, pTarget, nTarget, strReason);
        case g_nShuffle:
            if (source.n != nTarget) {
                return tooShort(strReason);
            }
            unshuffleBytes(source, nElementSize, pTarget);
            return true;
        case g_nLz4:
            return unpackLz4(source, pTarget, nTarget, strReason);
        default:
            return unpackBitshuffle(filter, source, nElementSize, pTarget, nTarget, strReason);
    }
}

bool packs(const Hdf5Filter& filter)
{
    return filter.nId == g_nDeflate || filter.nId == g_nLz4 ||
           (filter.nId == g_nBitshuffle && clientValue(filter, 4) == g_nBitshuffleLz4);
}

}  // namespace

QString unknownFilter(const std::vector<Hdf5Filter>& vecFilter)
{
    constexpr size_t nMostFilters = 8;
    if (vecFilter.size() > nMostFilters) {
        return QStringLiteral("%1 filters of HDF5").arg(vecFilter.size());
    }
    bool bPacked = false;
    for (const Hdf5Filter& filter : vecFilter) {
        const bool bBits = filter.nId == g_nBitshuffle;
        if (bBits && clientValue(filter, 4) == g_nBitshuffleZstd) {
            return QStringLiteral("pixels packed by bitshuffle with Zstandard are not read");
        }
        if ((!bBits && filter.nId != g_nDeflate && filter.nId != g_nShuffle && filter.nId != g_nChecksum &&
             filter.nId != g_nLz4) ||
            (bBits && clientValue(filter, 4) != g_nBitshuffleLz4 &&
             clientValue(filter, 4) != g_nBitshufflePlain)) {
            return QStringLiteral("pixels packed by filter %1 of HDF5 are not read").arg(filter.nId);
        }
        if (bPacked && filter.nId != g_nChecksum) {
            return QStringLiteral("pixels that are packed twice are not read");
        }
        bPacked = bPacked || packs(filter);
    }
    return {};
}

bool decodeChunk(const std::vector<Hdf5Filter>& vecFilter, uint32_t nSkipped, size_t nElementSize,
                 const uint8_t* pSource, size_t nSource, uint8_t* pTarget, size_t nTarget, QString& strReason)
{
    ChunkBytes source = {pSource, nSource};
    std::shared_ptr<uint8_t> pBetween;  // owns the bytes of `source` after the first filter
    bool bInTarget = false;
    // A checksum, applied before the packing filter, has made the chunk longer by four bytes.
    size_t nInside = nTarget;
    for (size_t i = 0; i < vecFilter.size() && !packs(vecFilter[i]); ++i) {
        nInside += vecFilter[i].nId == g_nChecksum && !(nSkipped >> i & 1) ? g_nChecksumSize : 0;
    }
    for (size_t i = vecFilter.size(); i-- > 0;) {
        if (nSkipped >> i & 1) {
            continue;
        }
        if (vecFilter[i].nId == g_nChecksum) {
            if (source.n < g_nChecksumSize) {
                return tooShort(strReason);
            }
            source.n -= g_nChecksumSize;
            continue;
        }
        const size_t nOut = packs(vecFilter[i]) ? nInside : source.n;
        std::shared_ptr<uint8_t> pOut;
        const bool bLast = i == 0 && nOut == nTarget && !bInTarget;
        if (!bLast) {
            pOut = makeFileBuffer(nOut);
        }
        if (!undoFilter(vecFilter[i], source, nElementSize, bLast ? pTarget : pOut.get(), nOut, strReason)) {
            return false;
        }
        bInTarget = bLast;
        source = {bLast ? pTarget : pOut.get(), nOut};
        pBetween = pOut;
    }
    if (source.n != nTarget) {
        strReason = QStringLiteral("packed pixels of %1 bytes where %2 belong").arg(source.n).arg(nTarget);
        return false;
    }
    if (!bInTarget) {
        std::memcpy(pTarget, source.p, nTarget);
    }
    return true;
}

}  // namespace tessera
