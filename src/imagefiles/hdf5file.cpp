#include "imagefiles/hdf5file.h"

#include "imagefiles/hdf5emd.h"
#include "imagefiles/hdf5series.h"
#include "imagefiles/pixelconvert.h"
#include "records/availablememory.h"

#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>

namespace tessera {

namespace {

template <class T>
void convertAs(const Hdf5Layout& layout, const uint8_t* pSource, size_t nCount, float* pTarget)
{
    if (layout.bBigEndian != (Q_BYTE_ORDER == Q_BIG_ENDIAN)) {
        convertPixels<T, true>(pSource, nCount, pTarget);
    } else {
        convertPixels<T, false>(pSource, nCount, pTarget);
    }
}

void convert(const Hdf5Layout& layout, const uint8_t* pSource, size_t nCount, float* pTarget)
{
    switch (layout.nElementSize) {
        case 1:
            return layout.bSigned ? convertAs<int8_t>(layout, pSource, nCount, pTarget)
                                  : convertAs<uint8_t>(layout, pSource, nCount, pTarget);
        case 2:
            return layout.bSigned ? convertAs<int16_t>(layout, pSource, nCount, pTarget)
                                  : convertAs<uint16_t>(layout, pSource, nCount, pTarget);
        case 4:
            return layout.bFloat    ? convertAs<float>(layout, pSource, nCount, pTarget)
                   : layout.bSigned ? convertAs<int32_t>(layout, pSource, nCount, pTarget)
                                    : convertAs<uint32_t>(layout, pSource, nCount, pTarget);
        default:
            return layout.bFloat    ? convertAs<double>(layout, pSource, nCount, pTarget)
                   : layout.bSigned ? convertAs<int64_t>(layout, pSource, nCount, pTarget)
                                    : convertAs<uint64_t>(layout, pSource, nCount, pTarget);
    }
}

/// Converts pixels of 16 bits. Those with the greatest number, whose bits are all set, become NaN. All is
/// done in one pass, as most frames are of this kind, with an inner loop as in convertPixels().
template <bool bSwap>
void convertMarked(const uint8_t* __restrict pSource, size_t nCount, float* __restrict pTarget)
{
    constexpr size_t nBlock = 64;
    const auto one = [](const uint8_t* p) {
        const int32_t n = elementFromBytes<uint16_t, bSwap>(p);
        const float f = static_cast<float>(n);
        int32_t nBits;
        std::memcpy(&nBits, &f, sizeof nBits);
        return nBits | -int32_t(n == 0xFFFF);
    };
    size_t nDone = 0;
    for (; nDone + nBlock <= nCount; nDone += nBlock) {
        int32_t anBits[nBlock];
        for (size_t i = 0; i < nBlock; ++i) {
            anBits[i] = one(pSource + 2 * (nDone + i));
        }
        std::memcpy(pTarget + nDone, anBits, sizeof anBits);
    }
    for (; nDone < nCount; ++nDone) {
        const int32_t nBits = one(pSource + 2 * nDone);
        std::memcpy(pTarget + nDone, &nBits, sizeof nBits);
    }
}

/// Replaces positive numbers from a bound on by NaN. As bit patterns of positive numbers are ordered like
/// the numbers, and a pattern of ones is NaN, the compiler can use vector instructions in the inner loop of
/// fixed length.
void blankFrom(float fBound, float* pPixels, size_t nCount)
{
    constexpr size_t nBlock = 64;
    int32_t nBound;
    std::memcpy(&nBound, &fBound, sizeof nBound);
    size_t nDone = 0;
    for (; nDone + nBlock <= nCount; nDone += nBlock) {
        int32_t anBits[nBlock];
        std::memcpy(anBits, pPixels + nDone, sizeof anBits);
        for (size_t i = 0; i < nBlock; ++i) {
            anBits[i] |= -int32_t(anBits[i] >= nBound);
        }
        std::memcpy(pPixels + nDone, anBits, sizeof anBits);
    }
    for (; nDone < nCount; ++nDone) {
        pPixels[nDone] = pPixels[nDone] >= fBound ? std::numeric_limits<float>::quiet_NaN() : pPixels[nDone];
    }
}

/// Converts pixels. Those without a measurement become NaN.
void convertAndBlank(const Hdf5Series& series, const Hdf5Layout& layout, const uint8_t* pSource,
                     size_t nCount, float* pTarget)
{
    const bool bUnsigned = !layout.bFloat && !layout.bSigned;
    // With 32 bits and more, the numbers just below the mark are rounded to the mark, too.
    const float fMark = float(std::ldexp(1.0, int(8 * layout.nElementSize)) - 1);
    const float fLeast = float(series.dfUnderload);
    constexpr size_t nLongest = 8192;  // pixels that stay in the cache between the two steps
    for (size_t n = 0; n < nCount; n += nLongest) {
        const size_t nStrip = std::min(nLongest, nCount - n);
        const uint8_t* pStrip = pSource + n * layout.nElementSize;
        if (series.bMarked && bUnsigned && layout.nElementSize == 2) {
            layout.bBigEndian != (Q_BYTE_ORDER == Q_BIG_ENDIAN)
                ? convertMarked<true>(pStrip, nStrip, pTarget + n)
                : convertMarked<false>(pStrip, nStrip, pTarget + n);
            continue;
        }
        convert(layout, pStrip, nStrip, pTarget + n);
        if (series.bMarked && bUnsigned) {
            blankFrom(fMark, pTarget + n, nStrip);
        }
        if (std::isfinite(series.dfUnderload) && !bUnsigned) {
            std::replace_if(
                pTarget + n, pTarget + n + nStrip, [fLeast](float f) { return f < fLeast; },
                std::numeric_limits<float>::quiet_NaN());
        }
    }
    for (const uint32_t nPixel : series.vecMasked) {
        if (nPixel < nCount) {
            pTarget[nPixel] = std::numeric_limits<float>::quiet_NaN();
        }
    }
}

/// The block of an image, and the number of the image in it; null for a number after the last one.
const Hdf5Block* blockOfImage(const Hdf5Series& series, int nImage, int& nInBlock)
{
    nInBlock = nImage;
    for (const Hdf5Block& block : series.vecBlock) {
        if (nInBlock < block.nCount) {
            return &block;
        }
        nInBlock -= block.nCount;
    }
    return nullptr;
}

/// Reads with the lock and unpacks without it, so that several threads can unpack at the same time.
std::shared_ptr<uint8_t> readPlane(const Hdf5Block& block, const Hdf5Plane& plane, QString& strReason)
{
    Hdf5Fetched fetched;
    if (isOnePiece(block.layout, plane)) {
        return readPiece(block.strFile, block.layout, plane, strReason);
    }
    {
        const CHdf5Lock lock;
        const CHdf5Id idFile = openHdf5(block.strFile, strReason);
        if (!idFile.isOpen()) {
            return nullptr;
        }
        const CHdf5Id idDataSet = openDataSet(idFile, block.strPath);
        Hdf5Layout layout;
        if (!idDataSet.isOpen() || dimensionsOf(idDataSet) != block.layout.vecLength ||
            uint64_t(QFileInfo(block.strFile).size()) != block.layout.nFileSize) {
            strReason = QStringLiteral("the file has changed while it was read");
            return nullptr;
        }
        if (!fetchPlane(idDataSet, block.strFile, block.layout, plane, fetched, strReason)) {
            return nullptr;
        }
    }
    return unpackPlane(block.layout, plane, fetched, strReason);
}

/// Reads an image.
/// @return null with the reason
std::unique_ptr<CImgObj<float>> readImage(const Hdf5Series& series, int nImage, QString& strReason)
{
    int nInBlock = 0;
    const Hdf5Block* pBlock = blockOfImage(series, nImage, nInBlock);
    if (!pBlock) {
        strReason = QStringLiteral("there is none");
        return nullptr;
    }
    if (!pBlock->strMissing.isEmpty()) {
        strReason = pBlock->strMissing;
        return nullptr;
    }
    const int nInSet = pBlock->nFirst + nInBlock;
    if (nInSet >= imagesIn(pBlock->layout, series.bFramesLast)) {
        strReason = QStringLiteral("it was never written");
        return nullptr;
    }
    const Hdf5Plane plane = planeOf(pBlock->layout, series.bFramesLast, nInSet);
    const std::shared_ptr<uint8_t> pPlane = readPlane(*pBlock, plane, strReason);
    if (!pPlane) {
        return nullptr;
    }
    auto pImage = std::make_unique<CImgObj<float>>();
    const size_t nWidth = size_t(columnsOf(pBlock->layout, plane));
    const size_t nHeight = size_t(rowsOf(pBlock->layout, plane));
    // Bytes; checking the available memory takes longer than reading such a frame.
    constexpr size_t nSmall = size_t(64) << 20;
    const size_t nBytes = nWidth * nHeight * sizeof(float);
    if ((nBytes > nSmall && !hasMemoryFor(nBytes)) || !pImage->Create(int(nWidth), int(nHeight))) {
        throw std::bad_alloc();
    }
    convertAndBlank(series, pBlock->layout, pPlane.get(), nWidth * nHeight, pImage->Data());
    return pImage;
}

}  // namespace

bool readHdf5Frames(const QString& strFileName, int nFirst, int nMaxImages, ImageList& vecImage,
                    QString& strReason)
{
    strReason.clear();
    const std::shared_ptr<const Hdf5Series> pSeries = hdf5Series(strFileName, strReason);
    if (!pSeries) {
        return false;
    }
    const int nImages = pSeries->header.nImages;
    if (nFirst < 0 || nFirst >= nImages) {
        strReason = QStringLiteral("image %1 of %2").arg(qint64(nFirst) + 1).arg(nImages);
        return false;
    }
    ImageList vecRead;
    for (int i = nFirst; i < nImages && int(vecRead.size()) < nMaxImages; ++i) {
        auto pImage = readImage(*pSeries, i, strReason);
        if (!pImage) {  // the images after it would get wrong numbers
            strReason =
                QStringLiteral("image %1 of %2 cannot be read: %3").arg(i + 1).arg(nImages).arg(strReason);
            break;
        }
        vecRead.push_back(std::move(pImage));
        strReason.clear();
    }
    if (vecRead.empty()) {
        return false;
    }
    vecImage.reserve(vecImage.size() + vecRead.size());
    std::move(vecRead.begin(), vecRead.end(), std::back_inserter(vecImage));
    return true;
}

FrameHeader readHdf5Header(const QString& strFileName, int nImage)
{
    QString strReason;
    const std::shared_ptr<const Hdf5Series> pSeries = hdf5Series(strFileName, strReason);
    if (!pSeries) {
        return {};
    }
    FrameHeader header = pSeries->header;
    if (!pSeries->strReason.isEmpty()) {
        header.listDoubt.append(
            QStringLiteral("A part of the series is missing: %1.").arg(pSeries->strReason));
    }
    if (nImage < 0 || nImage >= header.nImages) {
        return header;
    }
    if (pSeries->kind == Hdf5Series::Kind::VELOX) {
        const CHdf5Lock lock;
        readVeloxText(veloxText(*pSeries, nImage), header);
    }
    const size_t nAt = size_t(nImage);
    if (nAt < pSeries->vecStart.size()) {
        header.tiltStart = {pSeries->vecStart[nAt], pSeries->strTiltSource};
        const bool bNext = nAt + 1 < pSeries->vecStart.size();
        const double dfStep = bNext ? pSeries->vecStart[nAt + 1] - pSeries->vecStart[nAt] : pSeries->dfWidth;
        header.tiltStep = {dfStep, pSeries->strWidthSource};
    }
    return header;
}

}  // namespace tessera
