// Tags of a DM3 file: groups and entries with names, a tree.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tessera {

/// What a group and an entry of the tree have in common.
class Tag {
public:
    virtual ~Tag() = default;
    /// Gives up what the tag holds: children or data. Kind, label and size stay.
    virtual void Clear() = 0;

    int nKind = 0;              ///< 0 a group, 1 an entry
    uint16_t nLabelLength = 0;  ///< bytes
    std::string strLabel;       ///< as in the file; may be empty
    uint32_t nTotalSize = 0;    ///< bytes in the file, head included
};

/// A group: a list of tags.
class TagDirectory : public Tag {
public:
    void Clear() override;

    uint8_t bSorted = 0;
    uint8_t bOpen = 0;
    int nCount = 0;                              ///< children that the file tells of
    std::vector<std::unique_ptr<Tag>> vecChild;  ///< in file order
};

/// An entry: a value, an array or a structure, kept as bytes.
class TagEntry : public Tag {
public:
    TagEntry() { nKind = 1; }
    void Clear() override;

    int nInfoCount = 0;
    std::vector<int> vecInfo;  ///< type and counts, in host byte order
    /// The data in the file's data byte order. All entries of one file share the one block that the
    /// file was read into, which lives as long as any of them.
    std::shared_ptr<const uint8_t> pData;
    size_t nDataSize = 0;  ///< bytes at `pData`
};

/// The tag as a group, or as an entry; null when it is the other, or null.
const TagDirectory* asGroup(const Tag* pTag);
const TagEntry* asEntry(const Tag* pTag);

}  // namespace tessera
