#include "imagefiles/dmimage.h"

#include "imagefiles/dm3file.h"
#include "imagefiles/dmpixels.h"
#include "imagefiles/filebuffer.h"
#include "records/availablememory.h"

#include <QtEndian>

#include <algorithm>
#include <iterator>
#include <limits>
#include <new>
#include <set>

namespace tessera {

namespace {

constexpr int g_nMostPixels = std::numeric_limits<int>::max();
constexpr qint64 g_nImagesTrusted = 65536;  ///< up to this many planes are read even if they are tiny
constexpr quint64 g_nImageOverhead = 96;    ///< memory of an image besides its pixels, bytes

/// A whole number of 32 bits, 0 for any other number. In DM3 files every entry of 4 bytes counts as one, as
/// for DM3File.
int integer(const DmTags& tags, const Tag* pTag)
{
    if (tags.nVersion == 3) {
        const TagEntry* pEntry = asEntry(pTag);
        if (!pEntry || pEntry->nDataSize < 4) {
            return 0;
        }
        return tags.bBigEndian ? qFromBigEndian<int32_t>(pEntry->pData.get())
                               : qFromLittleEndian<int32_t>(pEntry->pData.get());
    }
    const double df = dmNumber(tags, pTag);
    return df >= std::numeric_limits<int>::min() && df <= std::numeric_limits<int>::max() ? int(df) : 0;
}

/// The indices of the images that "Thumbnails" names.
std::set<double> thumbnailIndices(const DmTags& tags, const TagDirectory* pThumbnails)
{
    std::set<double> setIndex;
    for (size_t i = 0; pThumbnails && i < pThumbnails->vecChild.size(); ++i) {
        const TagDirectory* pThumbnail = asGroup(pThumbnails->vecChild[i].get());
        const double dfIndex = dmNumber(tags, dmChild(pThumbnail, "ImageIndex"));
        if (dfIndex >= 0) {  // false for NaN, which a set cannot order
            setIndex.insert(dfIndex);
        }
    }
    return setIndex;
}

/// The groups that may be the image, the likeliest one first.
std::vector<const TagDirectory*> candidates(const DmTags& tags)
{
    const bool bAnyDepth = tags.nVersion == 3;  // as DM3File searches
    const auto groupOf = [&](const char* pLabel) {
        return bAnyDepth ? asGroup(DM3File::FindTag(tags.root, pLabel)) : dmGroup(&tags.root, pLabel);
    };
    std::vector<const TagDirectory*> vecImage;
    const TagDirectory* pList = groupOf("ImageList");
    const TagDirectory* pThumbnails = groupOf("Thumbnails");
    const std::set<double> setThumbnail = bAnyDepth ? std::set<double>()
                                                    : thumbnailIndices(tags, pThumbnails);
    for (size_t i = 0; pList && i < pList->vecChild.size(); ++i) {
        if (bAnyDepth) {
            const TagEntry* pIndex = asEntry(pThumbnails ? DM3File::FindTag(*pThumbnails, "ImageIndex")
                                                         : nullptr);
            const bool bFirst = pIndex && pIndex->nDataSize >= 4 && integer(tags, pIndex) == 0;
            if (i == (bFirst ? 1u : 0u)) {
                vecImage.push_back(asGroup(pList->vecChild[i].get()));
            }
        } else if (setThumbnail.count(double(i)) == 0) {
            vecImage.push_back(asGroup(pList->vecChild[i].get()));
        }
    }
    return vecImage;
}

/// A tag of the image. In DM4 files it must be below "ImageData", since other tags may have the same name.
const Tag* tagOf(const DmTags& tags, const TagDirectory& image, const char* pLabel)
{
    const TagDirectory* pData = tags.nVersion == 4 ? dmGroup(&image, "ImageData") : nullptr;
    return pData ? dmChild(pData, pLabel) : DM3File::FindTag(image, pLabel);
}

/// The number of frames of a stack: the product of all further dimensions.
qint64 planesTold(const DmTags& tags, const TagDirectory* pDimensions)
{
    qint64 nPlanes = 1;
    for (size_t i = 2; i < pDimensions->vecChild.size(); ++i) {
        const int nSize = std::max(integer(tags, pDimensions->vecChild[i].get()), 1);
        nPlanes = nPlanes <= g_nMostPixels ? nPlanes * nSize : nPlanes;  // more than any file can have
    }
    return nPlanes;
}

bool imageFromTags(const DmTags& tags, const TagDirectory* pTags, DmImage& image, QString& strReason)
{
    const auto fail = [&](const QString& str) {
        strReason = str;
        return false;
    };
    if (!pTags) {
        return fail(QStringLiteral("no image"));
    }
    image.pTags = pTags;
    const TagDirectory* pDimensions = asGroup(tagOf(tags, *pTags, "Dimensions"));
    const auto dimension = [&](size_t i) {
        return pDimensions && i < pDimensions->vecChild.size() ? integer(tags, pDimensions->vecChild[i].get())
                                                               : 0;
    };
    image.nWidth = dimension(0);
    image.nHeight = dimension(1);
    const quint64 nPixels = quint64(std::max(image.nWidth, 0)) * quint64(std::max(image.nHeight, 0));
    if (nPixels == 0 || nPixels > quint64(g_nMostPixels)) {
        return fail(QStringLiteral("image of %1 x %2 pixels").arg(image.nWidth).arg(image.nHeight));
    }
    const Tag* pType = tagOf(tags, *pTags, "DataType");
    if (!asEntry(pType)) {
        return fail(QStringLiteral("no data type"));
    }
    image.nDataType = integer(tags, pType);
    const size_t nPixelSize = dmPixelSize(image.nDataType);
    if (nPixelSize == 0) {
        return fail(QStringLiteral("data type %1%2 is not read")
                        .arg(image.nDataType)
                        .arg(dmPixelName(image.nDataType)));
    }
    const auto* pPixels = static_cast<const DmEntry*>(asEntry(tagOf(tags, *pTags, "Data")));
    if (!pPixels) {
        return fail(QStringLiteral("no pixels"));
    }
    image.nOffset = pPixels->nOffset;
    image.nPlaneBytes = nPixels * nPixelSize;
    if (pPixels->nBytes < image.nPlaneBytes) {
        return fail(QStringLiteral("%1 x %2 pixels of %3 bytes, but %4 bytes of data")
                        .arg(QString::number(image.nWidth), QString::number(image.nHeight),
                             QString::number(nPixelSize), QString::number(pPixels->nBytes)));
    }
    image.nPlanesTold = planesTold(tags, pDimensions);
    const qint64 nThere = qint64(std::min(pPixels->nBytes / image.nPlaneBytes, quint64(g_nMostPixels)));
    image.nPlanes = int(std::min(image.nPlanesTold, nThere));
    if (image.nPlanes > g_nImagesTrusted && quint64(image.nPlanes) * g_nImageOverhead > 4 * tags.nFileSize) {
        return fail(QStringLiteral("%1 images of %2 bytes").arg(image.nPlanes).arg(image.nPlaneBytes));
    }
    return true;
}

}  // namespace

bool findDmImage(const DmTags& tags, DmImage& image, QString& strReason)
{
    strReason = QStringLiteral("no image");
    QString strFirst;  // why the likeliest one cannot be read
    for (const TagDirectory* pTags : candidates(tags)) {
        image = DmImage();
        if (imageFromTags(tags, pTags, image, strReason)) {
            strReason.clear();
            return true;
        }
        strFirst = strFirst.isEmpty() ? strReason : strFirst;
    }
    strReason = strFirst.isEmpty() ? strReason : strFirst;
    image = DmImage();
    return false;
}

bool readDmPlanes(QFile& file, const DmTags& tags, const DmImage& image, int nFirst, int nMaxImages,
                  ImageList& vecImage, QString& strReason)
{
    if (nFirst >= image.nPlanes) {
        strReason = QStringLiteral("image %1 of %2").arg(qint64(nFirst) + 1).arg(image.nPlanes);
        return false;
    }
    const int nCount = std::min(nMaxImages, image.nPlanes - nFirst);
    const size_t nPixels = size_t(image.nWidth) * size_t(image.nHeight);
    const qint64 nBytes = qint64(image.nPlaneBytes);
    constexpr quint64 nMemoryAsked = quint64(1)
                                     << 28;  // bytes; for fewer the available memory is not checked
    const quint64 nMemory = quint64(nCount) * nPixels * sizeof(float) + image.nPlaneBytes;
    if (nMemory > nMemoryAsked && !hasMemoryFor(nMemory)) {
        strReason = QStringLiteral("not enough memory for %1 images of %2 x %3 pixels")
                        .arg(nCount)
                        .arg(image.nWidth)
                        .arg(image.nHeight);
        return false;
    }
    const std::shared_ptr<uint8_t> pPlane = makeFileBuffer(size_t(nBytes));
    ImageList vecRead;
    vecRead.reserve(nCount);
    for (int i = 0; i < nCount; ++i) {
        if (!file.seek(qint64(image.nOffset) + (nFirst + i) * nBytes) ||
            file.read(reinterpret_cast<char*>(pPlane.get()), nBytes) != nBytes) {
            strReason =
                QStringLiteral("image %1 cannot be read: %2").arg(nFirst + i + 1).arg(file.errorString());
            break;
        }
        auto pImage = std::make_unique<CImgObj<float>>();
        if (!pImage->Create(image.nWidth, image.nHeight)) {
            throw std::bad_alloc();
        }
        dmPixelsToFloat(image.nDataType, tags.bBigEndian, pPlane.get(), nPixels, pImage->Data());
        vecRead.push_back(std::move(pImage));
    }
    if (vecRead.empty()) {
        return false;
    }
    if (image.nPlanesTold > image.nPlanes && nFirst + qint64(nMaxImages) > image.nPlanes) {
        strReason = QStringLiteral("%1 of %2 images are there").arg(image.nPlanes).arg(image.nPlanesTold);
    }
    vecImage.reserve(vecImage.size() + vecRead.size());
    std::move(vecRead.begin(), vecRead.end(), std::back_inserter(vecImage));
    return true;
}

}  // namespace tessera
