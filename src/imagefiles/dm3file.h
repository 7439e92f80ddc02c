// DM3File: reader of the files of microscope cameras.
#pragma once

#include "imagefiles/dm3tags.h"
#include "imaging/imgobj.h"

#include <QString>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace tessera {

/// Reader of DM3 files. One object serves one thread; different objects can work side by side.
class DM3File {
public:
    DM3File();

    /// Reads the whole file and parses it; a former tree goes first.
    ///
    /// The first 27 bytes are looked at before memory is taken for the rest, so that a large file of
    /// another format costs nothing. Depth and number of tags are limited
    /// (`CDm3TagParser`). After a failure the tree is empty.
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

}  // namespace tessera
