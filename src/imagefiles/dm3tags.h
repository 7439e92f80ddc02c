// DM3 tags: the tree of groups and entries of a DM3 file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tessera {

/// A tag of the tree: a group or an entry.
class Tag {
public:
    /// Deletes the tag with its children.
    virtual ~Tag() = default;
    /// Deletes the children or the data. Kind, label and size stay.
    virtual void Clear() = 0;

    int nKind = 0;              ///< 0: group, 1: entry
    uint16_t nLabelLength = 0;  ///< bytes
    std::string strLabel;       ///< as in the file; may be empty
    uint32_t nTotalSize = 0;    ///< bytes in the file, including the head
};

/// A group: a list of tags.
class TagDirectory : public Tag {
public:
    void Clear() override;

    uint8_t bSorted = 0;
    uint8_t bOpen = 0;
    int nCount = 0;                              ///< number of children as in the file
    std::vector<std::unique_ptr<Tag>> vecChild;  ///< in the order of the file
};

/// An entry: a value, an array or a structure, kept as bytes.
class TagEntry : public Tag {
public:
    /// An empty entry.
    TagEntry() { nKind = 1; }
    void Clear() override;

    int nInfoCount = 0;
    std::vector<int> vecInfo;  ///< type and counts, in host byte order
    /// The data in the byte order of the file. All entries of a file share the block that the file was read
    /// into, which exists as long as one of them does.
    std::shared_ptr<const uint8_t> pData;
    size_t nDataSize = 0;  ///< bytes at `pData`
};

/// The tag as a group; null when it is null or an entry.
const TagDirectory* asGroup(const Tag* pTag);
/// The tag as an entry; null when it is null or a group.
const TagEntry* asEntry(const Tag* pTag);

}  // namespace tessera
