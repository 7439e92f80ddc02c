// CDm3TagParser: builds the tree of tags from the bytes of a DM3 file.
#pragma once

#include "imagefiles/dm3tags.h"

#include <QString>

namespace tessera {

/// Checks every size and count against the remaining bytes. After the first fault the reason tells it.
class CDm3TagParser {
public:
    static constexpr size_t nRootTags = 18;    ///< offset of the first tag
    static constexpr size_t nSmallestTag = 9;  ///< bytes of a group without label and children
    static constexpr int nMaxDepth = 64;       ///< levels of groups; real files have about ten
    /// Number of tags; real files have some thousands. An empty group takes 9 bytes of the file and 100 of
    /// memory.
    static constexpr int nMaxTags = 1 << 20;

    /// For checkHead(), the first nRootTags + nSmallestTag of the `nSize` bytes at `pFile` are enough.
    CDm3TagParser(const std::shared_ptr<const uint8_t>& pFile, size_t nSize, QString& strReason)
        : m_pFile(pFile), m_nSize(nSize), m_strReason(strReason)
    {}

    /// The byte at an offset (not checked).
    uint8_t byteAt(size_t nOffset) const { return m_pFile.get()[nOffset]; }
    /// The big-endian number of 16 bits at an offset (not checked).
    uint16_t shortAt(size_t nOffset) const;
    /// The big-endian number of 32 bits at an offset (not checked).
    uint32_t wordAt(size_t nOffset) const;

    /// Checks the header and the kind of the first tag.
    bool checkHead();
    /// Reads the children of a group, which follow each other from `nOffset` on. `nOffset` is moved to the
    /// end of the last one.
    bool parseChildren(TagDirectory& directory, uint32_t nCount, size_t& nOffset, int nDepth);

private:
    bool fail(const QString& strReason);
    bool failTruncated(const char* pWhat, uint64_t nNeeded, size_t nOffset);
    bool checkCount(const std::string& strLabel, uint32_t nCount, size_t nOffset);
    bool checkKind(size_t nOffset);
    std::unique_ptr<Tag> parseTag(size_t nOffset, int nDepth);
    /// Reads info array and data of an entry, from the length of the info array on.
    bool parseData(TagEntry& entry, size_t nOffset);

    const std::shared_ptr<const uint8_t> m_pFile;
    const size_t m_nSize;
    uint64_t m_nTags = 0;  ///< number of tags that the groups so far have announced
    QString& m_strReason;
};

}  // namespace tessera
