// CDm3TagParser: builds the tree of tags from the bytes of a DM3 file.
#pragma once

#include "imagefiles/dm3tags.h"

#include <QString>

namespace tessera {

/// Every size and count is checked against the bytes left. After the first fault the reason tells it.
class CDm3TagParser {
public:
    static constexpr size_t nRootTags = 18;    ///< offset of the first tag
    static constexpr size_t nSmallestTag = 9;  ///< bytes: a group without label and children
    static constexpr int nMaxDepth = 64;       ///< groups within groups; real files have about ten
    /// Real files have some thousands. An empty group has 9 bytes in the file and 100 in memory.
    static constexpr int nMaxTags = 1 << 20;

    /// `checkHead` needs only the first nRootTags + nSmallestTag bytes of the `nSize` at `pFile`.
    CDm3TagParser(const std::shared_ptr<const uint8_t>& pFile, size_t nSize, QString& strReason)
        : m_pFile(pFile), m_nSize(nSize), m_strReason(strReason)
    {}

    uint8_t byteAt(size_t nOffset) const { return m_pFile.get()[nOffset]; }
    uint16_t shortAt(size_t nOffset) const;
    uint32_t wordAt(size_t nOffset) const;

    /// The header and the kind of the first tag.
    bool checkHead();
    /// The children of a group, one behind the other from `nOffset`, which is moved behind the last.
    bool parseChildren(TagDirectory& directory, uint32_t nCount, size_t& nOffset, int nDepth);

private:
    bool fail(const QString& strReason);
    bool failTruncated(const char* pWhat, uint64_t nNeeded, size_t nOffset);
    bool checkCount(const std::string& strLabel, uint32_t nCount, size_t nOffset);
    bool checkKind(size_t nOffset);
    std::unique_ptr<Tag> parseTag(size_t nOffset, int nDepth);
    /// Info array and data of an entry, from the length of the info array on.
    bool parseData(TagEntry& entry, size_t nOffset);

    const std::shared_ptr<const uint8_t> m_pFile;
    const size_t m_nSize;
    uint64_t m_nTags = 0;  ///< that the groups so far tell of
    QString& m_strReason;
};

}  // namespace tessera
