#include "imagefiles/dmtags.h"

#include "imagefiles/dm3tagparser.h"
#include "imagefiles/pixelconvert.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <limits>

namespace tessera {

namespace {

constexpr int g_nTypeStructure = 15, g_nTypeArray = 20;
constexpr uint8_t g_nKindGroup = 20, g_nKindEntry = 21;

/// The layout of the data of an entry, from its info words.
struct DataLayout {
    const std::vector<quint64>& vecInfo;
    quint64 nTypes;  ///< number of known type codes
    quint64 nElement = 0;
    quint64 nCount = 1;

    /// The bytes of an element; 0 for an unknown code.
    size_t elementSize(quint64 nType) const
    {
        const size_t anSize[] = {0, 0, 2, 4, 2, 4, 4, 8, 1, 1, 1, 8, 8};
        return nType < nTypes ? anSize[nType] : 0;
    }
    /// The layout of a structure, whose number of fields is the word nFirst; nAfter words follow the last
    /// field.
    bool structure(size_t nFirst, size_t nAfter)
    {
        if (vecInfo.size() <= nFirst || vecInfo[nFirst] > vecInfo.size() ||
            vecInfo.size() != nFirst + 1 + 2 * vecInfo[nFirst] + nAfter) {
            return false;
        }
        for (quint64 i = 0; i < vecInfo[nFirst]; ++i) {
            nElement += elementSize(vecInfo[nFirst + 2 + 2 * i]);
        }
        return true;
    }
    /// Decides which form it has.
    /// @return false for an unknown form
    bool decide()
    {
        if (vecInfo.empty()) {
            return false;
        }
        if (vecInfo.size() == 1) {
            nElement = elementSize(vecInfo[0]);
            return true;
        }
        if (vecInfo.size() == 3 && vecInfo[0] == g_nTypeArray) {
            nElement = elementSize(vecInfo[1]);
            nCount = vecInfo[2];
            return true;
        }
        if (vecInfo[0] == g_nTypeStructure) {
            return structure(2, 0);
        }
        nCount = vecInfo.back();
        return vecInfo[0] == g_nTypeArray && vecInfo[1] == g_nTypeStructure && structure(3, 1);
    }
};

class CWalker {
public:
    CWalker(QFile& file, bool bPixelsOnly, DmTags& tags, QString& strReason)
        : m_file(file), m_bPixelsOnly(bPixelsOnly), m_tags(tags), m_strReason(strReason)
    {}

    bool walk();

private:
    bool isLong() const { return m_tags.nVersion == 4; }
    quint64 wordSize() const { return isLong() ? 8 : 4; }
    /// Whether a tag at this depth of a DM4 file is needed, or can be skipped.
    bool isUseful(const std::string& strLabel, int nDepth) const
    {
        if (nDepth == 0) {
            return strLabel == "ImageList" || strLabel == "Thumbnails";
        }
        return !m_bPixelsOnly || nDepth != 2 || strLabel != "ImageTags";  // in ImageList/[k]
    }
    bool fail(const QString& strReason)
    {
        m_strReason = strReason;
        return false;
    }
    /// Reads up to nWindow bytes at nOffset.
    /// @return false, with the reason, where they end after nEnd
    bool bytes(quint64 nOffset, quint64 nEnd, void* pTarget, quint64 nSize);
    bool word(quint64& nOffset, quint64 nEnd, quint64& nWord);
    bool readGroup(TagDirectory& group, quint64& nOffset, quint64 nEnd, int nDepth);
    bool readTag(TagDirectory& group, quint64& nOffset, quint64 nEnd, int nDepth);
    bool readEntry(DmEntry& entry, quint64& nOffset, quint64 nEnd);
    bool readInfo(std::vector<quint64>& vecInfo, quint64& nOffset, quint64 nEnd);

    static constexpr qint64 nWindow = 65536;  // bytes, more than the longest label; tags are many and small

    QFile& m_file;
    const bool m_bPixelsOnly;
    DmTags& m_tags;
    QString& m_strReason;
    int m_nTags = 0;
    std::vector<uint8_t> m_vecWindow = std::vector<uint8_t>(nWindow);  // bytes of the file from m_nWindow on
    quint64 m_nWindow = 0;
    quint64 m_nInWindow = 0;
};

bool CWalker::bytes(quint64 nOffset, quint64 nEnd, void* pTarget, quint64 nSize)
{
    if (nOffset > nEnd || nEnd - nOffset < nSize) {
        return fail(QStringLiteral("truncated: %1 bytes at byte %2, %3 left")
                        .arg(nSize)
                        .arg(nOffset)
                        .arg(nEnd - std::min(nOffset, nEnd)));
    }
    if (nOffset < m_nWindow || nOffset + nSize > m_nWindow + m_nInWindow) {
        const qint64 nRead = m_file.seek(qint64(nOffset))
                                 ? m_file.read(reinterpret_cast<char*>(m_vecWindow.data()), nWindow)
                                 : -1;
        m_nWindow = nOffset;
        m_nInWindow = quint64(std::max(nRead, qint64(0)));
        if (m_nInWindow < nSize) {
            return fail(QStringLiteral("cannot be read whole: %1").arg(m_file.errorString()));
        }
    }
    std::memcpy(pTarget, m_vecWindow.data() + (nOffset - m_nWindow), nSize);
    return true;
}

bool CWalker::word(quint64& nOffset, quint64 nEnd, quint64& nWord)
{
    uint8_t aBytes[8];
    if (!bytes(nOffset, nEnd, aBytes, wordSize())) {
        return false;
    }
    nWord = isLong() ? qFromBigEndian<quint64>(aBytes) : qFromBigEndian<quint32>(aBytes);
    nOffset += wordSize();
    return true;
}

bool CWalker::walk()
{
    m_tags.nFileSize = quint64(std::max(m_file.size(), qint64(0)));
    uint8_t aVersion[4], aOrder[4];
    if (!bytes(0, m_tags.nFileSize, aVersion, 4)) {
        return false;
    }
    const quint32 nVersion = qFromBigEndian<quint32>(aVersion);
    if (nVersion != 3 && nVersion != 4) {
        return fail(QStringLiteral("version %1; this is a reader of versions 3 and 4").arg(nVersion));
    }
    m_tags.nVersion = int(nVersion);
    quint64 nOffset = 4 + wordSize();  // after the length of the file
    if (!bytes(nOffset, m_tags.nFileSize, aOrder, 4)) {
        return false;
    }
    m_tags.bBigEndian = qFromBigEndian<quint32>(aOrder) != 1;
    nOffset += 4;
    return readGroup(m_tags.root, nOffset, m_tags.nFileSize, 0);
}

bool CWalker::readGroup(TagDirectory& group, quint64& nOffset, quint64 nEnd, int nDepth)
{
    if (nDepth > CDm3TagParser::nMaxDepth) {
        return fail(QStringLiteral("groups nested more than %1 deep").arg(CDm3TagParser::nMaxDepth));
    }
    uint8_t aFlags[2];
    quint64 nCount = 0;
    if (!bytes(nOffset, nEnd, aFlags, 2)) {
        return false;
    }
    nOffset += 2;
    if (!word(nOffset, nEnd, nCount)) {
        return false;
    }
    if (nCount > (nEnd - nOffset) / CDm3TagParser::nSmallestTag) {
        return fail(QStringLiteral("group of %1 tags with %2 bytes left").arg(nCount).arg(nEnd - nOffset));
    }
    group.nCount = int(std::min(nCount, quint64(std::numeric_limits<int>::max())));
    for (quint64 i = 0; i < nCount; ++i) {
        if (++m_nTags > CDm3TagParser::nMaxTags) {
            return fail(QStringLiteral("more than %1 tags").arg(CDm3TagParser::nMaxTags));
        }
        if (!readTag(group, nOffset, nEnd, nDepth)) {
            return false;
        }
    }
    return true;
}

bool CWalker::readTag(TagDirectory& group, quint64& nOffset, quint64 nEnd, int nDepth)
{
    uint8_t aHead[3];
    const quint64 nBegin = nOffset;
    if (!bytes(nOffset, nEnd, aHead, 3)) {
        return false;
    }
    if (aHead[0] != g_nKindGroup && aHead[0] != g_nKindEntry) {
        return fail(QStringLiteral("tag of the kind %1 at byte %2").arg(aHead[0]).arg(nBegin));
    }
    nOffset += 3;
    std::string strLabel(qFromBigEndian<quint16>(aHead + 1), '\0');
    if (!bytes(nOffset, nEnd, &strLabel[0], strLabel.size())) {
        return false;
    }
    nOffset += strLabel.size();
    quint64 nTagEnd = nEnd;
    if (isLong()) {
        quint64 nLength = 0;
        if (!word(nOffset, nEnd, nLength)) {
            return false;
        }
        if (nLength > nEnd - nOffset) {
            return fail(QStringLiteral("truncated: tag of %1 bytes at byte %2, %3 left")
                            .arg(nLength)
                            .arg(nOffset)
                            .arg(nEnd - nOffset));
        }
        nTagEnd = nOffset + nLength;
    }
    const bool bUseful = !isLong() || isUseful(strLabel, nDepth);
    if (bUseful && aHead[0] == g_nKindGroup) {
        auto pGroup = std::make_unique<TagDirectory>();
        pGroup->strLabel = std::move(strLabel);
        if (!readGroup(*pGroup, nOffset, nTagEnd, nDepth + 1)) {
            return false;
        }
        group.vecChild.push_back(std::move(pGroup));
    } else if (bUseful) {
        auto pEntry = std::make_unique<DmEntry>();
        pEntry->strLabel = std::move(strLabel);
        if (!readEntry(*pEntry, nOffset, nTagEnd)) {
            return false;
        }
        group.vecChild.push_back(std::move(pEntry));
    }
    if (isLong()) {
        nOffset = nTagEnd;
    }
    return true;
}

bool CWalker::readInfo(std::vector<quint64>& vecInfo, quint64& nOffset, quint64 nEnd)
{
    quint64 nInfo = 0;
    nOffset += 4;  // the mark "%%%%"
    if (!word(nOffset, nEnd, nInfo)) {
        return false;
    }
    if (nInfo == 0 || nInfo > (nEnd - nOffset) / wordSize()) {
        return fail(QStringLiteral("info array of %1 words at byte %2").arg(nInfo).arg(nOffset));
    }
    constexpr quint64 nMostWords = 4096;  // words of a structure of 2000 fields; real files have a few
    if (nInfo > nMostWords) {
        return isLong() || fail(QStringLiteral("info array of %1 words at byte %2").arg(nInfo).arg(nOffset));
    }
    vecInfo.resize(nInfo);
    for (quint64& nWord : vecInfo) {
        if (!word(nOffset, nEnd, nWord)) {
            return false;
        }
    }
    return true;
}

bool CWalker::readEntry(DmEntry& entry, quint64& nOffset, quint64 nEnd)
{
    std::vector<quint64> vecInfo;
    if (!readInfo(vecInfo, nOffset, nEnd)) {
        return false;
    }
    DataLayout layout = {
        vecInfo,
        isLong() ? quint64(13) : quint64(11)};  // codes for whole numbers of 64 bits came with version 4
    if (!layout.decide()) {
        return isLong() || fail(QStringLiteral("entry of an unknown form at byte %1").arg(nOffset));
    }
    if (layout.nElement > 0 && layout.nCount > (nEnd - nOffset) / layout.nElement) {
        return fail(QStringLiteral("truncated: %1 elements of %2 bytes at byte %3, %4 bytes left")
                        .arg(layout.nCount)
                        .arg(layout.nElement)
                        .arg(nOffset)
                        .arg(nEnd - nOffset));
    }
    entry.vecInfo.reserve(vecInfo.size());
    for (const quint64 nWord : vecInfo) {
        entry.vecInfo.push_back(int(std::min(nWord, quint64(std::numeric_limits<int>::max()))));
    }
    entry.nInfoCount = int(vecInfo.size());
    entry.nOffset = nOffset;
    entry.nBytes = layout.nElement * layout.nCount;
    entry.nDataSize = size_t(std::min(entry.nBytes, quint64(DmEntry::nMostRead)));
    const std::shared_ptr<uint8_t> pData(new uint8_t[entry.nDataSize], std::default_delete<uint8_t[]>());
    if (!bytes(nOffset, nEnd, pData.get(), entry.nDataSize)) {
        return false;
    }
    entry.pData = pData;
    nOffset += entry.nBytes;
    return true;
}

template <class T>
double element(const TagEntry& entry, bool bBigEndian)
{
    if (entry.nDataSize < sizeof(T)) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    return double(bBigEndian != (Q_BYTE_ORDER == Q_BIG_ENDIAN)
                      ? elementFromBytes<T, true>(entry.pData.get())
                      : elementFromBytes<T, false>(entry.pData.get()));
}

/// The type code of the first number of an entry.
int typeOf(const TagEntry& entry)
{
    const std::vector<int>& vecInfo = entry.vecInfo;
    if (vecInfo.size() > 4 && vecInfo[0] == g_nTypeStructure) {
        return vecInfo[4];
    }
    if (vecInfo.size() == 3 && vecInfo[0] == g_nTypeArray) {
        return vecInfo[1];
    }
    return vecInfo.size() == 1 ? vecInfo[0] : 0;
}

}  // namespace

bool readDmTags(QFile& file, bool bPixelsOnly, DmTags& tags, QString& strReason)
{
    tags = DmTags();
    return CWalker(file, bPixelsOnly, tags, strReason).walk();
}

double dmNumber(const DmTags& tags, const Tag* pTag)
{
    const TagDirectory* pGroup = asGroup(pTag);
    if (pGroup && !pGroup->vecChild.empty() && pGroup->vecChild[0]->strLabel.empty()) {
        pTag = pGroup->vecChild[0].get();
    }
    const TagEntry* pEntry = asEntry(pTag);
    switch (pEntry ? typeOf(*pEntry) : 0) {
        case 2:
            return element<int16_t>(*pEntry, tags.bBigEndian);
        case 3:
            return element<int32_t>(*pEntry, tags.bBigEndian);
        case 4:
            return element<uint16_t>(*pEntry, tags.bBigEndian);
        case 5:
            return element<uint32_t>(*pEntry, tags.bBigEndian);
        case 6:
            return element<float>(*pEntry, tags.bBigEndian);
        case 7:
            return element<double>(*pEntry, tags.bBigEndian);
        case 8:
            return element<uint8_t>(*pEntry, tags.bBigEndian);
        case 9:
        case 10:
            return element<int8_t>(*pEntry, tags.bBigEndian);
        case 11:
            return element<int64_t>(*pEntry, tags.bBigEndian);
        case 12:
            return element<uint64_t>(*pEntry, tags.bBigEndian);
        default:
            return std::numeric_limits<double>::quiet_NaN();
    }
}

QString dmText(const DmTags& tags, const Tag* pTag)
{
    const TagEntry* pEntry = asEntry(pTag);
    QString str;
    if (pEntry && pEntry->vecInfo.size() == 3 && pEntry->vecInfo[0] == g_nTypeArray &&
        pEntry->vecInfo[1] == 4) {
        for (size_t n = 0; n + 2 <= pEntry->nDataSize; n += 2) {
            str += QChar(tags.bBigEndian ? qFromBigEndian<quint16>(pEntry->pData.get() + n)
                                         : qFromLittleEndian<quint16>(pEntry->pData.get() + n));
        }
    }
    return str.left(str.indexOf(QChar(0)));  // the whole text where there is no NUL
}

const Tag* dmChild(const TagDirectory* pGroup, const char* pLabel)
{
    if (pGroup) {
        for (const std::unique_ptr<Tag>& pChild : pGroup->vecChild) {
            if (pChild->strLabel == pLabel) {
                return pChild.get();
            }
        }
    }
    return nullptr;
}

const TagDirectory* dmGroup(const TagDirectory* pGroup, const char* pLabel)
{
    return asGroup(dmChild(pGroup, pLabel));
}

}  // namespace tessera
