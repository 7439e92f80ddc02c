// Saving of images as pictures.
#pragma once

#include "imaging/imgobj.h"

#include <QString>

namespace tessera {

/// Writes an 8-bit image as a grey picture, in the format that the suffix of the name tells.
///
/// The palette of the display does not reach the file. The file appears whole or not at all.
///
/// @param pImage       null or empty gives false
/// @param strFileName  an existing file is replaced; a suffix that no writer knows gives false
/// @param pstrReason   may be null; on failure the file's name and what is wrong
bool saveImage(const CImgObj<unsigned char>* pImage, const QString& strFileName,
               QString* pstrReason = nullptr);

/// Saves what the view shows: as an MRC file of one image the values of the frame, as a picture the 8-bit
/// image made of them by the contrast limits.
/// @param pDisplay  the image shown; null when there is none
/// @param pFrame    the frame's image behind it; null when the frame is no longer in memory, as after a
///                  failure to load, and then there is no MRC file
/// @return false, with a former file as it was, when nothing could be written
bool saveShownImage(const CImgObj<unsigned char>* pDisplay, const CImgObj<float>* pFrame,
                    const QString& strFileName, QString* pstrReason = nullptr);

}  // namespace tessera
