#include "imagefiles/dm3file.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#include "imagefiles/filebuffer.h"
#include "imagefiles/pixelconvert.h"

namespace {

constexpr size_t ROOT_TAGS = 18;    ///< offset of the first tag
constexpr size_t SMALLEST_TAG = 9;  ///< bytes: a group without label and children
constexpr int TYPE_STRUCTURE = 15, TYPE_ARRAY = 20;
constexpr uint8_t KIND_GROUP = 20, KIND_ENTRY = 21;
constexpr bool HOST_BIG_ENDIAN = Q_BYTE_ORDER == Q_BIG_ENDIAN;

/// Bytes of one element, by the type codes of the info array; 0 for a code that is not known.
size_t elementSize(int nType)
{
    switch (nType) {
        case 2:
        case 4:
            return 2;
        case 3:
        case 5:
        case 6:
            return 4;
        case 7:
            return 8;
        case 8:
        case 9:
        case 10:
            return 1;
        default:
            return 0;
    }
}

/// Adds the sizes of the fields of a structure. `nFirst` is the index of the field count in the info
/// array, which has to end `nAfter` words behind the last field. False if the array is another.
bool structureSize(const std::vector<int>& vecInfo, size_t nFirst, size_t nAfter, uint64_t& nSize)
{
    if (vecInfo.size() <= nFirst)
        return false;
    const uint64_t nFields = static_cast<uint32_t>(vecInfo[nFirst]);
    if (vecInfo.size() != nFirst + 1 + 2 * nFields + nAfter)
        return false;
    nSize = 0;
    for (uint64_t i = 0; i < nFields; ++i)
        nSize += elementSize(vecInfo[nFirst + 2 + 2 * i]);
    return true;
}

/// What the info array tells of the data: `nCount` elements of `nElement` bytes. False for an array of
/// none of the known forms.
bool dataLayout(const std::vector<int>& vecInfo, uint64_t& nElement, uint64_t& nCount)
{
    nCount = 1;
    if (vecInfo.size() == 1) {
        nElement = elementSize(vecInfo[0]);
        return true;
    }
    if (vecInfo.size() == 3 && vecInfo[0] == TYPE_ARRAY) {
        nElement = elementSize(vecInfo[1]);
        nCount = static_cast<uint32_t>(vecInfo[2]);
        return true;
    }
    if (vecInfo[0] == TYPE_STRUCTURE)
        return structureSize(vecInfo, 2, 0, nElement);
    if (vecInfo[0] == TYPE_ARRAY && vecInfo[1] == TYPE_STRUCTURE) {
        nCount = static_cast<uint32_t>(vecInfo.back());
        return structureSize(vecInfo, 3, 1, nElement);
    }
    return false;
}

/// A label as the log can show it: the start of a long one, with a question mark for what is no
/// printable ASCII character.
QString shownLabel(const std::string& strLabel)
{
    constexpr size_t MOST_SHOWN = 40;
    QString strShown;
    for (char c : strLabel.substr(0, MOST_SHOWN))
        strShown += QLatin1Char(c >= 0x20 && c < 0x7f ? c : '?');
    return strLabel.size() > MOST_SHOWN ? strShown + QLatin1String("...") : strShown;
}

/// Builds the tree from the bytes of a file. After the first fault `strReason` tells it.
class TagParser {
public:
    /// `checkHead` needs only the first 27 bytes of the `nSize` at `pFile`.
    TagParser(const std::shared_ptr<const uint8_t>& pFile, size_t nSize, QString& strReason)
        : m_pFile(pFile), m_nSize(nSize), m_strReason(strReason)
    {}

    uint8_t byteAt(size_t nOffset) const { return m_pFile.get()[nOffset]; }
    uint16_t shortAt(size_t nOffset) const { return qFromBigEndian<uint16_t>(m_pFile.get() + nOffset); }
    uint32_t wordAt(size_t nOffset) const { return qFromBigEndian<uint32_t>(m_pFile.get() + nOffset); }

    /// The header and the kind of the first tag.
    bool checkHead()
    {
        if (m_nSize < ROOT_TAGS)
            return fail(QStringLiteral("truncated: %1 of %2 header bytes").arg(m_nSize).arg(ROOT_TAGS));
        const uint32_t nCount = wordAt(14);
        if (nCount == 0 || (checkCount("RootDirectory", nCount, ROOT_TAGS) && checkKind(ROOT_TAGS)))
            return true;
        if (wordAt(0) != 3)
            m_strReason += QStringLiteral(" (version %1; this is a reader of version 3)").arg(wordAt(0));
        return false;
    }

    /// The children of a group, one behind the other from `nOffset`, which is moved behind the last.
    bool parseChildren(TagDirectory& directory, uint32_t nCount, size_t& nOffset, int nDepth)
    {
        if (!checkCount(directory.strLabel, nCount, nOffset))
            return false;
        m_nTags += nCount;
        if (m_nTags > DM3File::MAX_TAGS)
            return fail(QStringLiteral("more than %1 tags").arg(DM3File::MAX_TAGS));
        directory.nCount = static_cast<int>(nCount);
        for (uint32_t i = 0; i < nCount; ++i) {
            std::unique_ptr<Tag> pTag = parseTag(nOffset, nDepth);
            if (!pTag)
                return false;
            nOffset += pTag->nTotalSize;
            directory.vecChild.push_back(std::move(pTag));
        }
        return true;
    }

private:
    bool fail(const QString& strReason)
    {
        m_strReason = strReason;
        return false;
    }

    bool checkCount(const std::string& strLabel, uint32_t nCount, size_t nOffset)
    {
        const size_t nLeft = m_nSize - nOffset;
        if (nCount > nLeft / SMALLEST_TAG)
            return fail(QStringLiteral("group \"%1\" of %2 tags with %3 bytes left")
                            .arg(shownLabel(strLabel), QString::number(nCount), QString::number(nLeft)));
        return true;
    }

    bool checkKind(size_t nOffset)
    {
        const uint8_t nKind = byteAt(nOffset);
        return nKind == KIND_GROUP || nKind == KIND_ENTRY ||
               fail(QStringLiteral("Error: tagtype = %1 at byte %2").arg(nKind).arg(nOffset));
    }

    bool failTruncated(const char* pWhat, uint64_t nNeeded, size_t nOffset)
    {
        return fail(QStringLiteral("truncated: %1 of %2 bytes at byte %3, %4 left")
                        .arg(QLatin1String(pWhat), QString::number(nNeeded), QString::number(nOffset),
                             QString::number(m_nSize - nOffset)));
    }

    std::unique_ptr<Tag> parseTag(size_t nOffset, int nDepth)
    {
        if (m_nSize - nOffset < SMALLEST_TAG) {
            failTruncated("tag", SMALLEST_TAG, nOffset);
            return nullptr;
        }
        if (!checkKind(nOffset))
            return nullptr;
        const uint8_t nKind = byteAt(nOffset);
        const size_t nLabel = shortAt(nOffset + 1);
        const size_t nHead = nLabel + (nKind == KIND_GROUP ? 9 : 11);
        if (m_nSize - nOffset < nHead) {
            failTruncated("head of a tag", nHead, nOffset);
            return nullptr;
        }
        std::string strLabel(reinterpret_cast<const char*>(m_pFile.get() + nOffset + 3), nLabel);

        if (nKind == KIND_GROUP) {
            if (nDepth >= DM3File::MAX_DEPTH) {
                fail(QStringLiteral("groups nested more than %1 deep").arg(DM3File::MAX_DEPTH));
                return nullptr;
            }
            auto pGroup = std::make_unique<TagDirectory>();
            pGroup->nLabelLength = static_cast<uint16_t>(nLabel);
            pGroup->strLabel = std::move(strLabel);
            pGroup->bSorted = byteAt(nOffset + nLabel + 3);
            pGroup->bOpen = byteAt(nOffset + nLabel + 4);
            size_t nEnd = nOffset + nHead;
            if (!parseChildren(*pGroup, wordAt(nOffset + nLabel + 5), nEnd, nDepth + 1))
                return nullptr;
            pGroup->nTotalSize = static_cast<uint32_t>(nEnd - nOffset);
            return pGroup;
        }

        auto pEntry = std::make_unique<TagEntry>();
        pEntry->nLabelLength = static_cast<uint16_t>(nLabel);
        pEntry->strLabel = std::move(strLabel);
        if (!parseData(*pEntry, nOffset + nLabel + 7))
            return nullptr;
        pEntry->nTotalSize = static_cast<uint32_t>(nHead + 4 * static_cast<size_t>(pEntry->nInfoCount) +
                                                   pEntry->nDataSize);
        return pEntry;
    }

    /// Info array and data of an entry, from the length of the info array on.
    bool parseData(TagEntry& entry, size_t nOffset)
    {
        const int32_t nInfo = static_cast<int32_t>(wordAt(nOffset));
        nOffset += 4;
        if (nInfo <= 0)
            return fail(QStringLiteral("Error: size of infoarry  <= 0"));
        if (static_cast<uint32_t>(nInfo) > (m_nSize - nOffset) / 4)
            return failTruncated("info array", 4 * static_cast<uint64_t>(nInfo), nOffset);
        entry.nInfoCount = nInfo;
        entry.vecInfo.resize(static_cast<size_t>(nInfo));
        for (int& nWord : entry.vecInfo) {
            nWord = static_cast<int>(wordAt(nOffset));
            nOffset += 4;
        }

        uint64_t nElement, nCount;
        if (!dataLayout(entry.vecInfo, nElement, nCount))
            return fail(QStringLiteral("Unknown tag \"%1\" with an info array of %2 words, first %3")
                            .arg(shownLabel(entry.strLabel), QString::number(nInfo),
                                 QString::number(entry.vecInfo[0])));
        const size_t nLeft = m_nSize - nOffset;
        if (nElement > 0 && nCount > nLeft / nElement)
            return fail(QStringLiteral("truncated: entry \"%1\" of %2 elements of %3 bytes, %4 bytes left")
                            .arg(shownLabel(entry.strLabel), QString::number(nCount),
                                 QString::number(nElement), QString::number(nLeft)));
        entry.nDataSize = static_cast<size_t>(nElement * nCount);
        entry.pData = std::shared_ptr<const uint8_t>(m_pFile, m_pFile.get() + nOffset);
        return true;
    }

    const std::shared_ptr<const uint8_t> m_pFile;
    const size_t m_nSize;
    uint64_t m_nTags = 0;  ///< that the groups so far tell of
    QString& m_strReason;
};

const TagDirectory* asGroup(const Tag* pTag)
{
    return pTag && pTag->nKind == 0 ? static_cast<const TagDirectory*>(pTag) : nullptr;
}

const TagEntry* asEntry(const Tag* pTag)
{
    return pTag && pTag->nKind == 1 ? static_cast<const TagEntry*>(pTag) : nullptr;
}

/// Bytes of a pixel by the image's data type; 0 for a type that is not read.
size_t pixelSize(int nDataType)
{
    switch (nDataType) {
        case 6:
        case 9:
            return 1;
        case 1:
        case 10:
            return 2;
        case 2:
        case 7:
        case 11:
            return 4;
        case 12:
            return 8;
        default:
            return 0;
    }
}

template <bool bSwap>
void pixelsToFloat(int nDataType, const uint8_t* pSource, size_t nCount, float* pfTarget)
{
    switch (nDataType) {
        case 1:
            return convertPixels<int16_t, bSwap>(pSource, nCount, pfTarget);
        case 2:
            return convertPixels<float, bSwap>(pSource, nCount, pfTarget);
        case 6:
            return convertPixels<uint8_t, bSwap>(pSource, nCount, pfTarget);
        case 7:
            return convertPixels<int32_t, bSwap>(pSource, nCount, pfTarget);
        case 9:
            return convertPixels<int8_t, bSwap>(pSource, nCount, pfTarget);
        case 10:
            return convertPixels<uint16_t, bSwap>(pSource, nCount, pfTarget);
        case 11:
            return convertPixels<uint32_t, bSwap>(pSource, nCount, pfTarget);
        case 12:
            return convertPixels<double, bSwap>(pSource, nCount, pfTarget);
    }
}

int imageFromFile(const DM3File& file, CImgObj<float>& image, QString* pReason)
{
    if (!file.GetImage(nullptr, pReason))  // everything is checked before the old image goes
        return -1;
    const int nWidth = file.GetDimension(0);
    const int nHeight = file.GetDimension(1);
    if (image.Width() != nWidth || image.Height() != nHeight) {
        CImgObj<float> imgNew;
        if (!imgNew.Create(nWidth, nHeight))
            throw std::bad_alloc();
        image = std::move(imgNew);
    }
    return file.GetImage(image.Data(), pReason) ? 1 : -1;
}

}  // namespace

void TagDirectory::Clear()
{
    vecChild.clear();
}

void TagEntry::Clear()
{
    nInfoCount = 0;
    vecInfo.clear();
    pData.reset();
    nDataSize = 0;
}

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

    if (QFileInfo::exists(strFileName) && !QFileInfo(strFileName).isFile()) {
        strReason = QStringLiteral("not a file");  // opening a pipe would wait for its writer
        return 0;
    }
    QFile file(strFileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        strReason = file.errorString();
        return 0;
    }
    const qint64 nSize = file.size();
    if (nSize > std::numeric_limits<uint32_t>::max()) {
        strReason = QStringLiteral("%1 bytes; the format ends at 4294967295").arg(nSize);
        return 0;
    }
    const auto readWhole = [&](uint8_t* p, qint64 nBytes) {
        if (file.read(reinterpret_cast<char*>(p), nBytes) == nBytes)
            return true;
        strReason = QStringLiteral("cannot be read whole: %1").arg(file.errorString());
        return false;
    };
    const qint64 nHead = std::min(nSize, static_cast<qint64>(ROOT_TAGS + SMALLEST_TAG));
    const std::shared_ptr<uint8_t> pHead(new uint8_t[ROOT_TAGS + SMALLEST_TAG](),
                                         std::default_delete<uint8_t[]>());
    if (!readWhole(pHead.get(), nHead))
        return 0;
    TagParser head(pHead, static_cast<size_t>(nSize), strReason);
    if (!head.checkHead())
        return 0;
    if (head.wordAt(14) == 0)  // no tags: the rest of the file counts for nothing
        return parse(pHead, ROOT_TAGS, strReason);
    const std::shared_ptr<uint8_t> pFile = makeFileBuffer(static_cast<size_t>(nSize));
    std::memcpy(pFile.get(), pHead.get(), static_cast<size_t>(nHead));
    if (!readWhole(pFile.get() + nHead, nSize - nHead))
        return 0;
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
    if (nSize > 0)
        std::memcpy(pFile.get(), pData, nSize);
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
    TagParser parser(pFile, nSize, strReason);
    if (!parser.checkHead())
        return 0;
    const uint32_t nVersion = parser.wordAt(0);
    nRootLength = parser.wordAt(4);
    nByteOrder = parser.wordAt(8);
    bSwap = nByteOrder != 1;
    m_root.bSorted = bSorted = parser.byteAt(12);
    m_root.bOpen = bOpen = parser.byteAt(13);
    size_t nOffset = ROOT_TAGS;
    if (!parser.parseChildren(m_root, parser.wordAt(14), nOffset, 0)) {
        clear();
        if (nVersion != 3)
            strReason += QStringLiteral(" (version %1; this is a reader of version 3)").arg(nVersion);
        return 0;
    }
    nTagCount = m_root.nCount;
    m_root.nTotalSize = static_cast<uint32_t>(nOffset - 12);  // flags and count are the root's head
    return 1;
}

const Tag* DM3File::FindTag(const TagDirectory& directory, const std::string& strLabel)
{
    for (const std::unique_ptr<Tag>& pChild : directory.vecChild) {
        if (pChild->strLabel == strLabel)
            return pChild.get();
        if (const TagDirectory* pGroup = asGroup(pChild.get()))
            if (const Tag* pFound = FindTag(*pGroup, strLabel))
                return pFound;
    }
    return nullptr;
}

bool DM3File::readInt(const Tag* pTag, int& nValue) const
{
    const TagEntry* pEntry = asEntry(pTag);
    if (!pEntry || pEntry->nDataSize < 4)
        return false;
    nValue = bSwap ? qFromBigEndian<int32_t>(pEntry->pData.get())
                   : qFromLittleEndian<int32_t>(pEntry->pData.get());
    return true;
}

const TagDirectory* DM3File::GetImageTag() const
{
    const TagDirectory* pList = asGroup(FindTag(m_root, "ImageList"));
    if (!pList || pList->vecChild.empty())
        return nullptr;
    int nThumbnail = -1;
    if (const TagDirectory* pThumbnails = asGroup(FindTag(m_root, "Thumbnails")))
        readInt(FindTag(*pThumbnails, "ImageIndex"), nThumbnail);
    const size_t nImage = nThumbnail == 0 ? 1 : 0;  // dropping any other leaves the first in front
    return nImage < pList->vecChild.size() ? asGroup(pList->vecChild[nImage].get()) : nullptr;
}

int DM3File::GetDimension(int nIndex) const
{
    if (nIndex != 0 && nIndex != 1)
        return 0;
    const TagDirectory* pImage = GetImageTag();
    const TagDirectory* pDimensions = pImage ? asGroup(FindTag(*pImage, "Dimensions")) : nullptr;
    int nValue = 0;
    if (pDimensions && static_cast<size_t>(nIndex) < pDimensions->vecChild.size())
        readInt(pDimensions->vecChild[static_cast<size_t>(nIndex)].get(), nValue);
    return nValue;
}

int DM3File::GetImage(float* pfData, QString* pReason) const
{
    const auto fail = [pReason](const QString& strReason) {
        if (pReason)
            *pReason = strReason;
        return 0;
    };
    const TagDirectory* pImage = GetImageTag();
    if (!pImage)
        return fail(QStringLiteral("no image"));
    const int nWidth = GetDimension(0);
    const int nHeight = GetDimension(1);
    const uint64_t nPixels = static_cast<uint64_t>(std::max(nWidth, 0)) *
                             static_cast<uint64_t>(std::max(nHeight, 0));
    if (nPixels == 0 || nPixels > static_cast<uint64_t>(std::numeric_limits<int>::max()))
        return fail(QStringLiteral("image of %1 x %2 pixels").arg(nWidth).arg(nHeight));
    int nDataType = 0;
    if (!readInt(FindTag(*pImage, "DataType"), nDataType))
        return fail(QStringLiteral("no data type"));
    const size_t nPixelSize = pixelSize(nDataType);
    if (nPixelSize == 0)
        return fail(QStringLiteral("data type %1 is not read").arg(nDataType));
    const TagEntry* pPixels = asEntry(FindTag(*pImage, "Data"));
    if (!pPixels)
        return fail(QStringLiteral("no pixels"));
    if (pPixels->nDataSize / nPixelSize < nPixels)
        return fail(QStringLiteral("%1 x %2 pixels of %3 bytes, but %4 bytes of data")
                        .arg(QString::number(nWidth), QString::number(nHeight), QString::number(nPixelSize),
                             QString::number(pPixels->nDataSize)));

    if (pfData) {
        if (bSwap != HOST_BIG_ENDIAN)
            pixelsToFloat<true>(nDataType, pPixels->pData.get(), nPixels, pfData);
        else
            pixelsToFloat<false>(nDataType, pPixels->pData.get(), nPixels, pfData);
    }
    if (pReason)
        pReason->clear();
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
