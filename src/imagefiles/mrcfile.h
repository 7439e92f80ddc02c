// MRC files: reads frames and stacks as float images, and writes stacks of three element types.
#pragma once

#include "imaging/imagelist.h"
#include "imaging/imgobj.h"

#include <QString>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace tessera {

/// Reads the sections of an MRC file and appends one image per section to `vecImage`.
///
/// The file has a header of 1024 bytes, possibly an extended header of NSYMBT bytes, and then the sections
/// without gaps, in either byte order: see MrcLayout. MODE 0 is 8-bit, signed unless the header tells
/// otherwise, 1 signed 16-bit, 2 float, 6 unsigned 16-bit, 12 float of 16 bits, 101 unsigned 4-bit. Rows
/// are stored bottom up, so the first row of a section is the last row of its image, except in the files
/// that MrcLayout names.
///
/// All sizes are checked against the length of the file before memory is allocated. A section that is not
/// complete is left out. Nothing is read of a file with another MODE, with NX or NY below 1, or with 2^31
/// pixels or more per section. The same holds for more than 65536 sections that are so small that the
/// images would take many times the memory of the file, and for images that there is no memory for. These
/// cases are no failures, but `pReason` tells about them.
///
/// Calls on different files can run side by side.
///
/// @param strFileName   path
/// @param vecImage      takes the images; unchanged on failure
/// @param pReason       may be null; takes what is wrong with the file; empty if nothing is
/// @param nMaxSections  greatest number of sections to be read
/// @return 1 when the file was opened and has 1024 header bytes, else 0
/// @throws std::bad_alloc when memory runs out, with `vecImage` unchanged
/// Source: Cheng et al. (2015), J. Struct. Biol. 192, 146.
int ReadMRC(const QString& strFileName, ImageList& vecImage, QString* pReason = nullptr,
            int nMaxSections = std::numeric_limits<int>::max());

/// Like ReadMRC() from section `nFirst` on, counted from 0. A file without this section gives no image and
/// the reason.
int readMrcSections(const QString& strFileName, int nFirst, int nMaxSections, ImageList& vecImage,
                    QString& strReason);

/// Like ReadMRC() for `nSize` bytes of any content at `pData`.
int readMrcBytes(const uint8_t* pData, size_t nSize, ImageList& vecImage, QString* pReason = nullptr,
                 int nMaxSections = std::numeric_limits<int>::max());

/// Writes images as the sections of an MRC file; `T` is `float` (MODE 2), `short` (1) or `unsigned short`
/// (6).
///
/// Rows are stored bottom up, as ReadMRC() expects them. The cell is NX, NY, NZ; density statistics, map
/// word and labels are zero. The file is written whole or not at all.
///
/// @param vecImage     the sections in order; a null pointer counts as an empty image. If the sizes differ,
///                     an empty file is written, with a result of 1.
/// @param strFileName  path; an existing file is replaced
/// @param pstrReason   may be null; takes on failure the file's name and what is wrong
/// @return 0 for an empty list and when the file cannot be written, else 1
template <class T>
int WriteMRC(const std::vector<const CImgObj<T>*>& vecImage, const QString& strFileName,
             QString* pstrReason = nullptr);

extern template int WriteMRC<float>(const std::vector<const CImgObj<float>*>&, const QString&, QString*);
extern template int WriteMRC<short>(const std::vector<const CImgObj<short>*>&, const QString&, QString*);
extern template int WriteMRC<unsigned short>(const std::vector<const CImgObj<unsigned short>*>&,
                                             const QString&, QString*);

/// Does the same for the images of a frame.
int WriteMRC(const ImageList& vecImage, const QString& strFileName, QString* pstrReason = nullptr);

}  // namespace tessera
