// Image saving: saves images as pictures.
#pragma once

#include "imaging/imgobj.h"

#include <QString>

namespace tessera {

/// Writes an 8-bit image as a grey picture in the format of the suffix. The palette of the display has no
/// effect on the file, which is written whole or not at all.
///
/// @param pImage       null or empty gives false
/// @param strFileName  an existing file is replaced; an unknown suffix gives false
/// @param pstrReason   may be null; takes on failure the file's name and what is wrong
bool saveImage(const CImgObj<unsigned char>* pImage, const QString& strFileName,
               QString* pstrReason = nullptr);

/// Saves the image that the view shows: the values of the frame as an MRC file of one image, or the 8-bit
/// image made of them by the contrast limits as a picture.
/// @param pDisplay    the displayed image; null when there is none
/// @param pFrame      the image of the frame; null when the frame is no longer in memory, as after a
///                    failure to load; then no MRC file can be written
/// @param pstrReason  may be null; takes on failure the file's name and what is wrong
/// @return false, with a former file as it was, when nothing could be written
bool saveShownImage(const CImgObj<unsigned char>* pDisplay, const CImgObj<float>* pFrame,
                    const QString& strFileName, QString* pstrReason = nullptr);

}  // namespace tessera
