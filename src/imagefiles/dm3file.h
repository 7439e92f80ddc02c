// DM3File: reads the files of microscope cameras in version 3 of their format.
#pragma once

#include "imagefiles/dm3tags.h"
#include "imaging/imgobj.h"

#include <QString>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace tessera {

/// Reads DM3 files. An object must be used by one thread at a time.
class DM3File {
public:
    /// A reader without a file.
    DM3File();

    /// Reads the whole file and parses it. The former tree is deleted first.
    ///
    /// The first 27 bytes are checked before memory for the rest is allocated, so that a large file of
    /// another format costs nothing. Depth and number of tags are limited (`CDm3TagParser`). After a
    /// failure the tree is empty.
    ///
    /// @param pReason  may be null; takes what is wrong with the file; empty on success
    /// @return 1 on success, 0 if the file cannot be opened or read, or is no valid tag tree
    /// @throws std::bad_alloc when memory runs out
    int Read(const QString& strFileName, QString* pReason = nullptr);

    /// Like Read() for the bytes of a file in memory, which are copied.
    int readBytes(const uint8_t* pData, size_t nSize, QString* pReason = nullptr);

    /// The first tag, group or entry, with a label below `directory`, depth first in the order of the file;
    /// null if there is none. As labels occur many times in a file, the search must begin at the right
    /// group.
    static const Tag* FindTag(const TagDirectory& directory, const std::string& strLabel);

    /// The group of the image: the first one of "ImageList" that "Thumbnails" does not name as the
    /// thumbnail. Null if there is none.
    const TagDirectory* GetImageTag() const;

    /// Width (0) or height (1) of the image in pixels, as in the file, unchecked. 0 for another index, and
    /// when the file does not have it.
    int GetDimension(int nIndex) const;

    /// Converts the pixels of the image, first row first.
    ///
    /// Data types 1 (signed 16-bit), 2 (float), 6 (unsigned 8-bit), 7 (signed 32-bit), 9 (signed 8-bit), 10
    /// (unsigned 16-bit), 11 (unsigned 32-bit) and 12 (double) are read. Of a stack the first plane is
    /// read.
    ///
    /// @param pfData   takes width × height floats; unchanged on failure. Null only checks whether the
    ///                 image can be read.
    /// @param pReason  may be null; takes why there is no image; empty on success
    /// @return 1 on success. 0 when image, width, height, type or pixels are missing, width or height is
    ///         below 1, there are 2^31 pixels or more, the type is another one, or there are fewer than
    ///         width × height pixels.
    int GetImage(float* pfData, QString* pReason = nullptr) const;

    /// The root of the tree.
    const TagDirectory& root() const { return m_root; }
    /// Whether the data are big-endian.
    bool needsSwap() const { return bSwap; }

private:
    int parse(const std::shared_ptr<const uint8_t>& pFile, size_t nSize, QString& strReason);
    void clear();
    bool readInt(const Tag* pTag, int& nValue) const;

    bool bSwap = false;  ///< the data are big-endian; the structure of the tags always is
    uint32_t nRootLength = 0;
    uint32_t nByteOrder = 0;
    uint8_t bSorted = 0;
    uint8_t bOpen = 0;
    int nTagCount = 0;
    TagDirectory m_root;  ///< labelled "RootDirectory"
};

/// Reads the image of a DM3 file. The first row of the data is the first row of the image.
///
/// @param image    takes the image; unchanged on failure
/// @param pReason  may be null; takes what is wrong with the file; empty on success
/// @return 1 on success, else -1
/// @throws std::bad_alloc when memory runs out
int ReadDM3(CImgObj<float>& image, const QString& strFileName, QString* pReason = nullptr);

/// Like ReadDM3() for `nSize` bytes of any content at pData.
int readDm3Bytes(const uint8_t* pData, size_t nSize, CImgObj<float>& image, QString* pReason = nullptr);

}  // namespace tessera
