#include "imagefiles/dm3tagparser.h"

#include <QtEndian>

#include <vector>

namespace tessera {

namespace {

constexpr int g_nTypeStructure = 15, g_nTypeArray = 20;
constexpr uint8_t g_nKindGroup = 20, g_nKindEntry = 21;

/// The bytes of an element by the type code of the info array; 0 for an unknown code.
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

/// Adds up the sizes of the fields of a structure. `nFirst` is the index of the number of fields in the
/// info array, which must end `nAfter` words after the last field.
/// @return false if it does not
bool structureSize(const std::vector<int>& vecInfo, size_t nFirst, size_t nAfter, uint64_t& nSize)
{
    if (vecInfo.size() <= nFirst) {
        return false;
    }
    const uint64_t nFields = static_cast<uint32_t>(vecInfo[nFirst]);
    if (vecInfo.size() != nFirst + 1 + 2 * nFields + nAfter) {
        return false;
    }
    nSize = 0;
    for (uint64_t i = 0; i < nFields; ++i) {
        nSize += elementSize(vecInfo[nFirst + 2 + 2 * i]);
    }
    return true;
}

/// The size and number of elements from the info array.
/// @return false for an array of an unknown form
bool dataLayout(const std::vector<int>& vecInfo, uint64_t& nElement, uint64_t& nCount)
{
    nCount = 1;
    if (vecInfo.size() == 1) {
        nElement = elementSize(vecInfo[0]);
        return true;
    }
    if (vecInfo.size() == 3 && vecInfo[0] == g_nTypeArray) {
        nElement = elementSize(vecInfo[1]);
        nCount = static_cast<uint32_t>(vecInfo[2]);
        return true;
    }
    if (vecInfo[0] == g_nTypeStructure) {
        return structureSize(vecInfo, 2, 0, nElement);
    }
    if (vecInfo[0] == g_nTypeArray && vecInfo[1] == g_nTypeStructure) {
        nCount = static_cast<uint32_t>(vecInfo.back());
        return structureSize(vecInfo, 3, 1, nElement);
    }
    return false;
}

/// A label for the log: the beginning of a long one, with a question mark for each character that is not
/// printable ASCII.
QString shownLabel(const std::string& strLabel)
{
    constexpr size_t nMostShown = 40;
    QString strShown;
    for (char c : strLabel.substr(0, nMostShown)) {
        strShown += QLatin1Char(c >= 0x20 && c < 0x7f ? c : '?');
    }
    return strLabel.size() > nMostShown ? strShown + QLatin1String("...") : strShown;
}

}  // namespace

uint16_t CDm3TagParser::shortAt(size_t nOffset) const
{
    return qFromBigEndian<uint16_t>(m_pFile.get() + nOffset);
}

uint32_t CDm3TagParser::wordAt(size_t nOffset) const
{
    return qFromBigEndian<uint32_t>(m_pFile.get() + nOffset);
}

bool CDm3TagParser::checkHead()
{
    if (m_nSize < nRootTags) {
        return fail(QStringLiteral("truncated: %1 of %2 header bytes").arg(m_nSize).arg(nRootTags));
    }
    const uint32_t nCount = wordAt(14);
    if (nCount == 0 || (checkCount("RootDirectory", nCount, nRootTags) && checkKind(nRootTags))) {
        return true;
    }
    if (wordAt(0) != 3) {
        m_strReason += QStringLiteral(" (version %1; this is a reader of version 3)").arg(wordAt(0));
    }
    return false;
}

bool CDm3TagParser::parseChildren(TagDirectory& directory, uint32_t nCount, size_t& nOffset, int nDepth)
{
    if (!checkCount(directory.strLabel, nCount, nOffset)) {
        return false;
    }
    m_nTags += nCount;
    if (m_nTags > nMaxTags) {
        return fail(QStringLiteral("more than %1 tags").arg(nMaxTags));
    }
    directory.nCount = static_cast<int>(nCount);
    for (uint32_t i = 0; i < nCount; ++i) {
        std::unique_ptr<Tag> pTag = parseTag(nOffset, nDepth);
        if (!pTag) {
            return false;
        }
        nOffset += pTag->nTotalSize;
        directory.vecChild.push_back(std::move(pTag));
    }
    return true;
}

bool CDm3TagParser::fail(const QString& strReason)
{
    m_strReason = strReason;
    return false;
}

bool CDm3TagParser::checkCount(const std::string& strLabel, uint32_t nCount, size_t nOffset)
{
    const size_t nLeft = m_nSize - nOffset;
    if (nCount > nLeft / nSmallestTag) {
        return fail(QStringLiteral("group \"%1\" of %2 tags with %3 bytes left")
                        .arg(shownLabel(strLabel), QString::number(nCount), QString::number(nLeft)));
    }
    return true;
}

bool CDm3TagParser::checkKind(size_t nOffset)
{
    const uint8_t nKind = byteAt(nOffset);
    return nKind == g_nKindGroup || nKind == g_nKindEntry ||
           fail(QStringLiteral("Error: tagtype = %1 at byte %2").arg(nKind).arg(nOffset));
}

bool CDm3TagParser::failTruncated(const char* pWhat, uint64_t nNeeded, size_t nOffset)
{
    return fail(QStringLiteral("truncated: %1 of %2 bytes at byte %3, %4 left")
                    .arg(QLatin1String(pWhat), QString::number(nNeeded), QString::number(nOffset),
                         QString::number(m_nSize - nOffset)));
}

std::unique_ptr<Tag> CDm3TagParser::parseTag(size_t nOffset, int nDepth)
{
    if (m_nSize - nOffset < nSmallestTag) {
        failTruncated("tag", nSmallestTag, nOffset);
        return nullptr;
    }
    if (!checkKind(nOffset)) {
        return nullptr;
    }
    const uint8_t nKind = byteAt(nOffset);
    const size_t nLabel = shortAt(nOffset + 1);
    const size_t nHead = nLabel + (nKind == g_nKindGroup ? 9 : 11);
    if (m_nSize - nOffset < nHead) {
        failTruncated("head of a tag", nHead, nOffset);
        return nullptr;
    }
    std::string strLabel(reinterpret_cast<const char*>(m_pFile.get() + nOffset + 3), nLabel);

    if (nKind == g_nKindGroup) {
        if (nDepth >= nMaxDepth) {
            fail(QStringLiteral("groups nested more than %1 deep").arg(nMaxDepth));
            return nullptr;
        }
        auto pGroup = std::make_unique<TagDirectory>();
        pGroup->nLabelLength = static_cast<uint16_t>(nLabel);
        pGroup->strLabel = std::move(strLabel);
        pGroup->bSorted = byteAt(nOffset + nLabel + 3);
        pGroup->bOpen = byteAt(nOffset + nLabel + 4);
        size_t nEnd = nOffset + nHead;
        if (!parseChildren(*pGroup, wordAt(nOffset + nLabel + 5), nEnd, nDepth + 1)) {
            return nullptr;
        }
        pGroup->nTotalSize = static_cast<uint32_t>(nEnd - nOffset);
        return pGroup;
    }

    auto pEntry = std::make_unique<TagEntry>();
    pEntry->nLabelLength = static_cast<uint16_t>(nLabel);
    pEntry->strLabel = std::move(strLabel);
    if (!parseData(*pEntry, nOffset + nLabel + 7)) {
        return nullptr;
    }
    pEntry->nTotalSize = static_cast<uint32_t>(nHead + 4 * static_cast<size_t>(pEntry->nInfoCount) +
                                               pEntry->nDataSize);
    return pEntry;
}

bool CDm3TagParser::parseData(TagEntry& entry, size_t nOffset)
{
    const int32_t nInfo = static_cast<int32_t>(wordAt(nOffset));
    nOffset += 4;
    if (nInfo <= 0) {
        return fail(QStringLiteral("Error: size of infoarry  <= 0"));
    }
    if (static_cast<uint32_t>(nInfo) > (m_nSize - nOffset) / 4) {
        return failTruncated("info array", 4 * static_cast<uint64_t>(nInfo), nOffset);
    }
    entry.nInfoCount = nInfo;
    entry.vecInfo.resize(static_cast<size_t>(nInfo));
    for (int& nWord : entry.vecInfo) {
        nWord = static_cast<int>(wordAt(nOffset));
        nOffset += 4;
    }

    uint64_t nElement, nCount;
    if (!dataLayout(entry.vecInfo, nElement, nCount)) {
        return fail(
            QStringLiteral("Unknown tag \"%1\" with an info array of %2 words, first %3")
                .arg(shownLabel(entry.strLabel), QString::number(nInfo), QString::number(entry.vecInfo[0])));
    }
    const size_t nLeft = m_nSize - nOffset;
    if (nElement > 0 && nCount > nLeft / nElement) {
        return fail(QStringLiteral("truncated: entry \"%1\" of %2 elements of %3 bytes, %4 bytes left")
                        .arg(shownLabel(entry.strLabel), QString::number(nCount), QString::number(nElement),
                             QString::number(nLeft)));
    }
    entry.nDataSize = static_cast<size_t>(nElement * nCount);
    entry.pData = std::shared_ptr<const uint8_t>(m_pFile, m_pFile.get() + nOffset);
    return true;
}

}  // namespace tessera
