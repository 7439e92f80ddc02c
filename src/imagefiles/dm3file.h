// DM3 files: the tree of named tags of a microscope camera file, and the one image in it.
#pragma once

#include "imaging/imgobj.h"

#include <QString>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

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

/// Reader of DM3 files. One object serves one thread; different objects can work side by side.
class DM3File {
public:
    DM3File();

    /// Reads the whole file and parses it; a former tree goes first.
    ///
    /// The first 27 bytes are looked at before memory is taken for the rest, so that a large file of
    /// another format costs nothing. Every size and count is checked against the bytes left in its file.
    /// Groups may lie `MAX_DEPTH` deep, and a tree has at most `MAX_TAGS` tags. After a failure the tree
    /// is empty.
    ///
    /// @param pReason  if given: what is wrong with the file, in words; empty on success
    /// @return 1 on success, 0 if the file does not open, cannot be read whole or is no sound tag tree
    /// @throws std::bad_alloc when memory runs out
    int Read(const QString& strFileName, QString* pReason = nullptr);

    /// Same as `Read` for a file that lies in memory; the bytes are copied.
    int readBytes(const uint8_t* pData, size_t nSize, QString* pReason = nullptr);

    /// First tag, group or entry, with this label below `directory`, depth first in file order; null if
    /// there is none. A label exists many times in a file, so start from the right group.
    static const Tag* FindTag(const TagDirectory& directory, const std::string& strLabel);

    /// Group of the image proper: the first of "ImageList" that "Thumbnails" does not name as the
    /// thumbnail. Null if there is none.
    const TagDirectory* GetImageTag() const;

    /// Width (0) or height (1) of the image in pixels as the file tells it, unchecked; 0 for another
    /// index and when the file does not tell it.
    int GetDimension(int nIndex) const;

    /// Converts the pixels of the image, first row first.
    ///
    /// Data types 1 (signed 16-bit), 2 (float), 6 (unsigned 8-bit), 7 (signed 32-bit), 9 (signed 8-bit),
    /// 10 (unsigned 16-bit), 11 (unsigned 32-bit) and 12 (double) are read. Of a stack the first plane
    /// is taken.
    ///
    /// @param pfData   space for width × height floats; untouched on failure. Null asks only whether the
    ///                 image can be read.
    /// @param pReason  if given: why there is no image, in words; empty on success
    /// @return 1 on success. 0 when image, width, height, type or pixels are missing, width or height is
    ///         below 1, there are 2^31 pixels or more, the type is another, or the pixels are fewer than
    ///         width × height.
    int GetImage(float* pfData, QString* pReason = nullptr) const;

    const TagDirectory& root() const { return m_root; }
    bool needsSwap() const { return bSwap; }

    static constexpr int MAX_DEPTH = 64;  ///< groups within groups; real files have about ten
    /// Real files have some thousands. An empty group has 9 bytes in the file and 100 in memory.
    static constexpr int MAX_TAGS = 1 << 20;

private:
    int parse(const std::shared_ptr<const uint8_t>& pFile, size_t nSize, QString& strReason);
    void clear();
    bool readInt(const Tag* pTag, int& nValue) const;

    bool bSwap = false;  ///< the data are big-endian; the tag structure is so always
    uint32_t nRootLength = 0;
    uint32_t nByteOrder = 0;
    uint8_t bSorted = 0;
    uint8_t bOpen = 0;
    int nTagCount = 0;
    TagDirectory m_root;  ///< labelled "RootDirectory"
};

/// Reads the image of a DM3 file; the first row of the data is the first row of the image.
///
/// @param image        gets the image; unchanged on failure
/// @param pReason      if given: what is wrong with the file, in words; empty on success
/// @return 1 on success, else -1
/// @throws std::bad_alloc when memory runs out
int ReadDM3(CImgObj<float>& image, const QString& strFileName, QString* pReason = nullptr);

/// Same as `ReadDM3` for a file that lies in memory: `nSize` bytes from `pData`, any content.
int readDm3Bytes(const uint8_t* pData, size_t nSize, CImgObj<float>& image, QString* pReason = nullptr);
