// MRC files: frames and image stacks, read into float images and written from three element types.
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
/// The file is a header of 1024 bytes, an extended header of NSYMBT bytes where it has one, and the sections
/// behind it without gaps, in either order of bytes: see MrcLayout. MODE 0 is 8-bit, signed unless the
/// header tells otherwise, 1 signed 16-bit, 2 float, 6 unsigned 16-bit, 12 float of 16 bits, 101 unsigned
/// 4-bit. Rows are stored bottom up, so the first row of a section is the last row of its image, but for the
/// files that MrcLayout names.
///
/// All sizes are checked against the length of the file before memory is taken. A section that the file
/// does not hold whole is left out, and so is everything of a file with another MODE, with NX or NY
/// below 1, or with 2^31 pixels or more per section: that is no failure, but `pReason` says so. The same
/// goes for more than 65536 sections of so few bytes that the images would take many times the file.
///
/// Calls on different files can run side by side.
///
/// @param strFileName   path
/// @param vecImage      gets the images; unchanged on failure
/// @param pReason       if given: what is wrong with the file, in words; empty if nothing is
/// @param nMaxSections  sections after this many are not read, for callers that look at the first only
/// @return 1 when the file was opened and has 1024 header bytes, else 0
/// @throws std::bad_alloc when memory runs out; `vecImage` is then unchanged too
/// Source: Cheng et al. (2015), J. Struct. Biol. 192, 146.
int ReadMRC(const QString& strFileName, ImageList& vecImage, QString* pReason = nullptr,
            int nMaxSections = std::numeric_limits<int>::max());

/// Same as `ReadMRC` from the section `nFirst` on, counted from 0; those before it are not read. A file with
/// no more sections gives no image and the reason.
int readMrcSections(const QString& strFileName, int nFirst, int nMaxSections, ImageList& vecImage,
                    QString& strReason);

/// Same as `ReadMRC` for a file that lies in memory: `nSize` bytes from `pData`, any content.
int readMrcBytes(const uint8_t* pData, size_t nSize, ImageList& vecImage, QString* pReason = nullptr,
                 int nMaxSections = std::numeric_limits<int>::max());

/// Writes images as the sections of an MRC file; `T` is `float` (MODE 2), `short` (1) or
/// `unsigned short` (6).
///
/// Rows are stored bottom up, as `ReadMRC` takes them. The cell is NX, NY, NZ; density statistics,
/// map word and labels stay zero. The file appears whole under its name or not at all.
///
/// @param vecImage     the sections in order. A null pointer counts as an empty image.
///                     If the sizes differ the file is made, but stays empty, with a result of 1.
/// @param strFileName  path; an existing file is replaced
/// @param pstrReason   may be null; takes why a file could not be written, with its name
/// @return 0 for an empty list and when the file cannot be created or written, else 1
template <class T>
int WriteMRC(const std::vector<const CImgObj<T>*>& vecImage, const QString& strFileName,
             QString* pstrReason = nullptr);

extern template int WriteMRC<float>(const std::vector<const CImgObj<float>*>&, const QString&, QString*);
extern template int WriteMRC<short>(const std::vector<const CImgObj<short>*>&, const QString&, QString*);
extern template int WriteMRC<unsigned short>(const std::vector<const CImgObj<unsigned short>*>&,
                                             const QString&, QString*);

/// Same for the images of a frame.
int WriteMRC(const ImageList& vecImage, const QString& strFileName, QString* pstrReason = nullptr);

}  // namespace tessera
