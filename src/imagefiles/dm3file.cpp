#include "imagefiles/dm3file.h"

#include "records/regularfile.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#include "imagefiles/dm3tagparser.h"
#include "imagefiles/dmpixels.h"
#include "imagefiles/filebuffer.h"

namespace tessera {

namespace {

int imageFromFile(const DM3File& file, CImgObj<float>& image, QString* pReason)
{
    if (!file.GetImage(nullptr, pReason)) {  // all checks are done before the former image is deleted
        return -1;
    }
    const int nWidth = file.GetDimension(0);
    const int nHeight = file.GetDimension(1);
    if (image.Width() != nWidth || image.Height() != nHeight) {
        CImgObj<float> imgNew;
        if (!imgNew.Create(nWidth, nHeight)) {
            throw std::bad_alloc();
        }
        image = std::move(imgNew);
    }
    return file.GetImage(image.Data(), pReason) ? 1 : -1;
}

}  // namespace

DM3File::DM3File()
{
    m_root.strLabel = "RootDirectory";
    m_root.nLabelLength = static_cast<uint16_t>(m_root.strLabel.size());
}

int DM3File::Read(const QString& strFileName, QString* pReason)
{
    QString strUnused;
    QString& strReason = pReason ? *pReason : strUnused;
    strReason.clear();
    clear();

    QFile file(strFileName);
    if (!openRegularFile(file, QIODevice::ReadOnly | QIODevice::Unbuffered, strReason)) {
        return 0;
    }
    const qint64 nSize = file.size();
    if (nSize > std::numeric_limits<uint32_t>::max()) {
        strReason = QStringLiteral("%1 bytes; the format ends at 4294967295").arg(nSize);
        return 0;
    }
    const auto readWhole = [&](uint8_t* p, qint64 nBytes) {
        if (file.read(reinterpret_cast<char*>(p), nBytes) == nBytes) {
            return true;
        }
        strReason = QStringLiteral("cannot be read whole: %1").arg(file.errorString());
        return false;
    };
    const qint64 nHead = std::min(
        nSize, static_cast<qint64>(CDm3TagParser::nRootTags + CDm3TagParser::nSmallestTag));
    const std::shared_ptr<uint8_t> pHead(
        new uint8_t[CDm3TagParser::nRootTags + CDm3TagParser::nSmallestTag](),
        std::default_delete<uint8_t[]>());
    if (!readWhole(pHead.get(), nHead)) {
        return 0;
    }
    CDm3TagParser head(pHead, static_cast<size_t>(nSize), strReason);
    if (!head.checkHead()) {
        return 0;
    }
    if (head.wordAt(14) == 0) {  // without tags the rest of the file is ignored
        return parse(pHead, CDm3TagParser::nRootTags, strReason);
    }
    const std::shared_ptr<uint8_t> pFile = makeFileBuffer(static_cast<size_t>(nSize));
    std::memcpy(pFile.get(), pHead.get(), static_cast<size_t>(nHead));
    if (!readWhole(pFile.get() + nHead, nSize - nHead)) {
        return 0;
    }
    return parse(pFile, static_cast<size_t>(nSize), strReason);
}

int DM3File::readBytes(const uint8_t* pData, size_t nSize, QString* pReason)
{
    QString strUnused;
    QString& strReason = pReason ? *pReason : strUnused;
    strReason.clear();
    clear();
    if (nSize > std::numeric_limits<uint32_t>::max()) {
        strReason = QStringLiteral("%1 bytes; the format ends at 4294967295").arg(nSize);
        return 0;
    }
    const std::shared_ptr<uint8_t> pFile = makeFileBuffer(nSize);
    if (nSize > 0) {
        std::memcpy(pFile.get(), pData, nSize);
    }
    return parse(pFile, nSize, strReason);
}

void DM3File::clear()
{
    m_root.Clear();
    m_root.nCount = nTagCount = 0;
    m_root.nTotalSize = nRootLength = nByteOrder = 0;
    m_root.bSorted = m_root.bOpen = bSorted = bOpen = 0;
    bSwap = false;
}

int DM3File::parse(const std::shared_ptr<const uint8_t>& pFile, size_t nSize, QString& strReason)
{
    CDm3TagParser parser(pFile, nSize, strReason);
    if (!parser.checkHead()) {
        return 0;
    }
    const uint32_t nVersion = parser.wordAt(0);
    nRootLength = parser.wordAt(4);
    nByteOrder = parser.wordAt(8);
    bSwap = nByteOrder != 1;
    m_root.bSorted = bSorted = parser.byteAt(12);
    m_root.bOpen = bOpen = parser.byteAt(13);
    size_t nOffset = CDm3TagParser::nRootTags;
    if (!parser.parseChildren(m_root, parser.wordAt(14), nOffset, 0)) {
        clear();
        if (nVersion != 3) {
            strReason += QStringLiteral(" (version %1; this is a reader of version 3)").arg(nVersion);
        }
        return 0;
    }
    nTagCount = m_root.nCount;
    m_root.nTotalSize = static_cast<uint32_t>(nOffset - 12);  // without flags and count of the root
    return 1;
}

const Tag* DM3File::FindTag(const TagDirectory& directory, const std::string& strLabel)
{
    for (const std::unique_ptr<Tag>& pChild : directory.vecChild) {
        if (pChild->strLabel == strLabel) {
            return pChild.get();
        }
        if (const TagDirectory* pGroup = asGroup(pChild.get())) {
            if (const Tag* pFound = FindTag(*pGroup, strLabel)) {
                return pFound;
            }
        }
    }
    return nullptr;
}

bool DM3File::readInt(const Tag* pTag, int& nValue) const
{
    const TagEntry* pEntry = asEntry(pTag);
    if (!pEntry || pEntry->nDataSize < 4) {
        return false;
    }
    nValue = bSwap ? qFromBigEndian<int32_t>(pEntry->pData.get())
                   : qFromLittleEndian<int32_t>(pEntry->pData.get());
    return true;
}

const TagDirectory* DM3File::GetImageTag() const
{
    const TagDirectory* pList = asGroup(FindTag(m_root, "ImageList"));
    if (!pList || pList->vecChild.empty()) {
        return nullptr;
    }
    int nThumbnail = -1;
    if (const TagDirectory* pThumbnails = asGroup(FindTag(m_root, "Thumbnails"))) {
        readInt(FindTag(*pThumbnails, "ImageIndex"), nThumbnail);
    }
    const size_t nImage = nThumbnail == 0 ? 1 : 0;  // removing another one leaves the first in front
    return nImage < pList->vecChild.size() ? asGroup(pList->vecChild[nImage].get()) : nullptr;
}

int DM3File::GetDimension(int nIndex) const
{
    if (nIndex != 0 && nIndex != 1) {
        return 0;
    }
    const TagDirectory* pImage = GetImageTag();
    const TagDirectory* pDimensions = pImage ? asGroup(FindTag(*pImage, "Dimensions")) : nullptr;
    int nValue = 0;
    if (pDimensions && static_cast<size_t>(nIndex) < pDimensions->vecChild.size()) {
        readInt(pDimensions->vecChild[nIndex].get(), nValue);
    }
    return nValue;
}

int DM3File::GetImage(float* pfData, QString* pReason) const
{
    const auto fail = [pReason](const QString& strReason) {
        if (pReason) {
            *pReason = strReason;
        }
        return 0;
    };
    const TagDirectory* pImage = GetImageTag();
    if (!pImage) {
        return fail(QStringLiteral("no image"));
    }
    const int nWidth = GetDimension(0);
    const int nHeight = GetDimension(1);
    const uint64_t nPixels = static_cast<uint64_t>(std::max(nWidth, 0)) *
                             static_cast<uint64_t>(std::max(nHeight, 0));
    if (nPixels == 0 || nPixels > static_cast<uint64_t>(std::numeric_limits<int>::max())) {
        return fail(QStringLiteral("image of %1 x %2 pixels").arg(nWidth).arg(nHeight));
    }
    int nDataType = 0;
    if (!readInt(FindTag(*pImage, "DataType"), nDataType)) {
        return fail(QStringLiteral("no data type"));
    }
    const size_t nPixelSize = dmPixelSize(nDataType);
    if (nPixelSize == 0) {
        return fail(QStringLiteral("data type %1%2 is not read").arg(nDataType).arg(dmPixelName(nDataType)));
    }
    const TagEntry* pPixels = asEntry(FindTag(*pImage, "Data"));
    if (!pPixels) {
        return fail(QStringLiteral("no pixels"));
    }
    if (pPixels->nDataSize / nPixelSize < nPixels) {
        return fail(QStringLiteral("%1 x %2 pixels of %3 bytes, but %4 bytes of data")
                        .arg(QString::number(nWidth), QString::number(nHeight), QString::number(nPixelSize),
                             QString::number(pPixels->nDataSize)));
    }

    if (pfData) {
        dmPixelsToFloat(nDataType, bSwap, pPixels->pData.get(), nPixels, pfData);
    }
    if (pReason) {
        pReason->clear();
    }
    return 1;
}

int ReadDM3(CImgObj<float>& image, const QString& strFileName, QString* pReason)
{
    DM3File file;
    return file.Read(strFileName, pReason) ? imageFromFile(file, image, pReason) : -1;
}

int readDm3Bytes(const uint8_t* pData, size_t nSize, CImgObj<float>& image, QString* pReason)
{
    DM3File file;
    return file.readBytes(pData, nSize, pReason) ? imageFromFile(file, image, pReason) : -1;
}

}  // namespace tessera
