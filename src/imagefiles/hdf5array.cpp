#include "imagefiles/hdf5array.h"

#include "imagefiles/filebuffer.h"
#include "records/availablememory.h"
#include "records/regularfile.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

namespace tessera {

namespace {

constexpr uint64_t g_nSmall = 64 << 20;  ///< bytes; for fewer the available memory is not checked

/// The distance of neighbours along each axis of a block, in elements.
std::vector<uint64_t> stridesOf(const std::vector<hsize_t>& vecLength)
{
    std::vector<uint64_t> vecStride(vecLength.size(), 1);
    for (size_t i = vecLength.size(); i-- > 1;) {
        vecStride[i - 1] = vecStride[i] * vecLength[i];
    }
    return vecStride;
}

/// Whether rows and columns are the last two axes, so that a plane is contiguous in a block of elements.
bool isLastAxes(const Hdf5Layout& layout, const Hdf5Plane& plane)
{
    const int nAxes = int(layout.vecLength.size());
    return nAxes == 0 ||
           (plane.nColumnAxis == nAxes - 1 && (plane.nRowAxis == nAxes - 2 || plane.nRowAxis < 0));
}

/// Whether a plane has a size that an image may have and that a packed file of this length can have.
bool isPossible(const Hdf5Layout& layout, const Hdf5Plane& plane, QString& strReason)
{
    strReason.clear();
    const uint64_t nRows = rowsOf(layout, plane), nColumns = columnsOf(layout, plane);
    if (productOf({nRows, nColumns}) > uint64_t(std::numeric_limits<int>::max())) {
        strReason =
            QStringLiteral("%1 x %2 pixels; fewer than 2147483648 can be read").arg(nColumns).arg(nRows);
    } else if (nRows * nColumns * layout.nElementSize / g_nHdf5BestRatio > layout.nFileSize) {
        strReason = QStringLiteral("truncated: %1 bytes do not hold %2 x %3 pixels")
                        .arg(layout.nFileSize)
                        .arg(nColumns)
                        .arg(nRows);
    }
    return strReason.isEmpty();
}

bool fetchByLibrary(hid_t idDataSet, const Hdf5Layout& layout, const Hdf5Plane& plane, uint8_t* pTarget)
{
    const CHdf5Id idType(H5Dget_type(idDataSet)), idSpace(H5Dget_space(idDataSet));
    std::vector<hsize_t> vecCount(layout.vecLength.size(), 1);
    for (int nAxis : {plane.nRowAxis, plane.nColumnAxis}) {
        if (nAxis >= 0) {
            vecCount[nAxis] = layout.vecLength[nAxis];
        }
    }
    if (!vecCount.empty() && H5Sselect_hyperslab(idSpace, H5S_SELECT_SET, plane.vecPlace.data(), nullptr,
                                                 vecCount.data(), nullptr) < 0) {
        return false;
    }
    const hsize_t nAll = productOf(vecCount);
    const CHdf5Id idMemory(H5Screate_simple(1, &nAll, nullptr));
    return H5Dread(idDataSet, idType, idMemory, idSpace, H5P_DEFAULT, pTarget) >= 0;
}

/// The chunks that a plane intersects, row by row.
std::vector<Hdf5Fetched::Chunk> chunksOf(const Hdf5Layout& layout, const Hdf5Plane& plane)
{
    std::vector<hsize_t> vecFirst(layout.vecChunk.size());
    for (size_t i = 0; i < vecFirst.size(); ++i) {
        vecFirst[i] = plane.vecPlace[i] / layout.vecChunk[i] * layout.vecChunk[i];
    }
    const auto ends = [&](int nAxis) { return nAxis < 0 ? hsize_t(1) : layout.vecLength[nAxis]; };
    const auto step = [&](int nAxis) { return nAxis < 0 ? hsize_t(1) : layout.vecChunk[nAxis]; };
    std::vector<Hdf5Fetched::Chunk> vecChunk;
    for (hsize_t y = 0; y < ends(plane.nRowAxis); y += step(plane.nRowAxis)) {
        for (hsize_t x = 0; x < ends(plane.nColumnAxis); x += step(plane.nColumnAxis)) {
            Hdf5Fetched::Chunk chunk;
            chunk.vecPlace = vecFirst;
            if (plane.nRowAxis >= 0) {
                chunk.vecPlace[plane.nRowAxis] = y;
            }
            if (plane.nColumnAxis >= 0) {
                chunk.vecPlace[plane.nColumnAxis] = x;
            }
            vecChunk.push_back(chunk);
        }
    }
    return vecChunk;
}

/// Whether a file of this length can have as many chunks, as each has an entry of some bytes in an index.
bool canHoldChunks(const Hdf5Layout& layout, const Hdf5Plane& plane)
{
    uint64_t nChunks = 1;
    for (int nAxis : {plane.nRowAxis, plane.nColumnAxis}) {
        if (nAxis >= 0) {
            const hsize_t nChunk = layout.vecChunk[nAxis];
            const uint64_t nAlong = (layout.vecLength[nAxis] - 1) / nChunk + 1;
            if (nAlong > layout.nFileSize / 4) {
                return false;
            }
            nChunks *= nAlong;
        }
    }
    return nChunks <= layout.nFileSize / 4;
}

bool fetchChunks(hid_t idDataSet, const Hdf5Layout& layout, Hdf5Fetched& fetched, QString& strReason)
{
    uint64_t nAll = 0;
    for (Hdf5Fetched::Chunk& chunk : fetched.vecChunk) {
        hsize_t nBytes = 0;
        if (H5Dget_chunk_storage_size(idDataSet, chunk.vecPlace.data(), &nBytes) < 0) {
            nBytes = 0;
        }
        if (nBytes > layout.nFileSize - nAll) {
            strReason = QStringLiteral("chunks that are larger than the file");
            return false;
        }
        chunk.nBegin = size_t(nAll);
        chunk.nBytes = size_t(nBytes);
        nAll += nBytes;
    }
    if (nAll == 0) {
        strReason = QStringLiteral("it was never written");
        return false;
    }
    fetched.pBytes = makeFileBuffer(size_t(nAll));
    for (Hdf5Fetched::Chunk& chunk : fetched.vecChunk) {
        if (chunk.nBytes > 0 && H5Dread_chunk(idDataSet, H5P_DEFAULT, chunk.vecPlace.data(), &chunk.nSkipped,
                                              fetched.pBytes.get() + chunk.nBegin) < 0) {
            strReason = QStringLiteral("packed pixels cannot be read");
            return false;
        }
    }
    return true;
}

/// Copies elements with a constant distance from each other.
void copyRow(const uint8_t* pSource, uint64_t nStride, uint64_t nCount, size_t nSize, uint8_t* pTarget)
{
    if (nStride == 1) {
        std::memcpy(pTarget, pSource, size_t(nCount) * nSize);
        return;
    }
    for (uint64_t i = 0; i < nCount; ++i) {
        std::memcpy(pTarget + i * nSize, pSource + i * nStride * nSize, nSize);
    }
}

/// Copies the part of a plane that is in a chunk. Without a source the fill value is used.
void copyFromChunk(const Hdf5Layout& layout, const Hdf5Plane& plane, const Hdf5Fetched::Chunk& chunk,
                   const uint8_t* pChunk, uint8_t* pTarget)
{
    const std::vector<uint64_t> vecStride = stridesOf(layout.vecChunk);
    uint64_t nFirst = 0;
    for (size_t i = 0; i < vecStride.size(); ++i) {
        if (int(i) != plane.nRowAxis && int(i) != plane.nColumnAxis) {
            nFirst += vecStride[i] * (plane.vecPlace[i] - chunk.vecPlace[i]);
        }
    }
    struct Axis {
        uint64_t nBegin = 0, nCount = 1, nStride = 1;
    };
    const auto axisOf = [&](int nAxis) {
        Axis axis;
        if (nAxis >= 0) {
            const size_t i = size_t(nAxis);
            axis.nBegin = chunk.vecPlace[i];
            axis.nCount = std::min(layout.vecChunk[i], layout.vecLength[i] - chunk.vecPlace[i]);
            axis.nStride = vecStride[i];
        }
        return axis;
    };
    const Axis rows = axisOf(plane.nRowAxis), columns = axisOf(plane.nColumnAxis);
    const size_t nSize = layout.nElementSize;
    const uint64_t nColumns = columnsOf(layout, plane);
    for (uint64_t y = 0; y < rows.nCount; ++y) {
        uint8_t* pRow = pTarget + ((rows.nBegin + y) * nColumns + columns.nBegin) * nSize;
        if (pChunk) {
            copyRow(pChunk + (nFirst + y * rows.nStride) * nSize, columns.nStride, columns.nCount, nSize,
                    pRow);
        } else {
            for (uint64_t x = 0; x < columns.nCount; ++x) {
                std::memcpy(pRow + x * nSize, &layout.nFill, nSize);
            }
        }
    }
}

}  // namespace

uint64_t rowsOf(const Hdf5Layout& layout, const Hdf5Plane& plane)
{
    return plane.nRowAxis < 0 ? 1 : layout.vecLength[plane.nRowAxis];
}

uint64_t columnsOf(const Hdf5Layout& layout, const Hdf5Plane& plane)
{
    return plane.nColumnAxis < 0 ? 1 : layout.vecLength[plane.nColumnAxis];
}

bool isOnePiece(const Hdf5Layout& layout, const Hdf5Plane& plane)
{
    return layout.vecChunk.empty() && !layout.bCompact && isLastAxes(layout, plane);
}

std::shared_ptr<uint8_t> readPiece(const QString& strFileName, const Hdf5Layout& layout,
                                   const Hdf5Plane& plane, QString& strReason)
{
    QFile file(strFileName);
    if (!isPossible(layout, plane, strReason) ||
        !openRegularFile(file, QIODevice::ReadOnly | QIODevice::Unbuffered, strReason)) {
        return nullptr;
    }
    const std::vector<uint64_t> vecStride = stridesOf(layout.vecLength);
    uint64_t nElement = 0;
    for (size_t i = 0; i < vecStride.size(); ++i) {
        nElement += vecStride[i] * plane.vecPlace[i];
    }
    const size_t nBytes = size_t(rowsOf(layout, plane) * columnsOf(layout, plane)) * layout.nElementSize;
    const std::shared_ptr<uint8_t> pPlane = makeFileBuffer(nBytes);
    const uint64_t nBegin = layout.nOffset + nElement * layout.nElementSize;
    if (!file.seek(qint64(nBegin)) ||
        file.read(reinterpret_cast<char*>(pPlane.get()), qint64(nBytes)) != qint64(nBytes)) {
        strReason = QStringLiteral("pixels cannot be read: %1").arg(file.errorString());
        return nullptr;
    }
    return pPlane;
}

bool fetchPlane(hid_t idDataSet, const QString& strFileName, const Hdf5Layout& layout, const Hdf5Plane& plane,
                Hdf5Fetched& fetched, QString& strReason)
{
    if (!isPossible(layout, plane, strReason)) {
        return false;
    }
    if (layout.vecChunk.empty()) {
        fetched.bPlane = true;
        if (isOnePiece(layout, plane)) {
            fetched.pBytes = readPiece(strFileName, layout, plane, strReason);
            return fetched.pBytes != nullptr;
        }
        fetched.pBytes = makeFileBuffer(size_t(rowsOf(layout, plane) * columnsOf(layout, plane)) *
                                        layout.nElementSize);
        if (!fetchByLibrary(idDataSet, layout, plane, fetched.pBytes.get())) {
            strReason = QStringLiteral("pixels cannot be read");
        }
        return strReason.isEmpty();
    }
    if (!canHoldChunks(layout, plane)) {
        strReason = QStringLiteral("more chunks than the file has room for");
        return false;
    }
    fetched.vecChunk = chunksOf(layout, plane);
    if (!fetchChunks(idDataSet, layout, fetched, strReason)) {
        return false;
    }
    const uint64_t nChunk = productOf(layout.vecChunk);
    fetched.bPlane = fetched.vecChunk.size() == 1 && layout.vecFilter.empty() && isLastAxes(layout, plane) &&
                     fetched.vecChunk[0].nBytes == nChunk * layout.nElementSize &&
                     nChunk == rowsOf(layout, plane) * columnsOf(layout, plane);
    return true;
}

std::shared_ptr<uint8_t> unpackPlane(const Hdf5Layout& layout, const Hdf5Plane& plane,
                                     const Hdf5Fetched& fetched, QString& strReason)
{
    if (fetched.bPlane) {
        return fetched.pBytes;
    }
    const size_t nPlane = size_t(rowsOf(layout, plane) * columnsOf(layout, plane)) * layout.nElementSize;
    const uint64_t nChunk = productOf(layout.vecChunk) * layout.nElementSize;
    uint64_t nLargest = 0;
    for (const Hdf5Fetched::Chunk& chunk : fetched.vecChunk) {
        nLargest = std::max<uint64_t>(nLargest, chunk.nBytes);
    }
    if (nChunk / g_nHdf5BestRatio > nLargest) {
        strReason = QStringLiteral("packed pixels of %1 bytes where %2 belong").arg(nLargest).arg(nChunk);
        return nullptr;
    }
    if (nChunk + nPlane > g_nSmall && !hasMemoryFor(2 * nChunk + nPlane)) {
        throw std::bad_alloc();
    }
    const std::shared_ptr<uint8_t> pPlane = makeFileBuffer(nPlane);
    // A chunk that is the whole plane is unpacked in place.
    const bool bInPlace = fetched.vecChunk.size() == 1 && nChunk == nPlane && isLastAxes(layout, plane) &&
                          fetched.vecChunk[0].vecPlace == plane.vecPlace;
    const std::shared_ptr<uint8_t> pChunk = bInPlace ? pPlane : makeFileBuffer(size_t(nChunk));
    for (const Hdf5Fetched::Chunk& chunk : fetched.vecChunk) {
        if (chunk.nBytes > 0 && !decodeChunk(layout.vecFilter, chunk.nSkipped, layout.nElementSize,
                                             fetched.pBytes.get() + chunk.nBegin, chunk.nBytes, pChunk.get(),
                                             size_t(nChunk), strReason)) {
            return nullptr;
        }
        if (!bInPlace) {
            copyFromChunk(layout, plane, chunk, chunk.nBytes > 0 ? pChunk.get() : nullptr, pPlane.get());
        }
    }
    return pPlane;
}

std::vector<double> numbersIn(hid_t idWhere, const QByteArray& strPath, const QString& strFileName,
                              uint64_t nMost)
{
    const CHdf5Id idDataSet = openDataSet(idWhere, strPath);
    Hdf5Layout layout;
    QString strReason;
    if (!idDataSet.isOpen() ||
        !describeDataSet(idDataSet, uint64_t(QFileInfo(strFileName).size()), layout, strReason) ||
        layout.vecLength.size() > 1 || productOf(layout.vecLength) > nMost) {
        return {};
    }
    Hdf5Plane plane;
    plane.vecPlace.assign(layout.vecLength.size(), 0);
    plane.nColumnAxis = layout.vecLength.empty() ? -1 : 0;
    Hdf5Fetched fetched;
    if (!fetchPlane(idDataSet, strFileName, layout, plane, fetched, strReason)) {
        return {};
    }
    const std::shared_ptr<uint8_t> pPlane = unpackPlane(layout, plane, fetched, strReason);
    std::vector<double> vecNumber;
    for (uint64_t i = 0; pPlane && i < columnsOf(layout, plane); ++i) {
        vecNumber.push_back(elementAt(layout, pPlane.get() + i * layout.nElementSize));
    }
    return vecNumber;
}

}  // namespace tessera
