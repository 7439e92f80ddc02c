// DmImage: the image of a DM3 or DM4 file, one or many planes, found in its tags and read by seeks.
#pragma once

#include "imagefiles/dmtags.h"
#include "imaging/imagelist.h"

namespace tessera {

struct DmImage {
    const TagDirectory* pTags = nullptr;  ///< its group in "ImageList"; belongs to the tags
    int nWidth = 0;
    int nHeight = 0;
    int nPlanes = 1;  ///< that the file holds whole: frames of a stack, sections of a volume
    qint64 nPlanesTold = 1;
    int nDataType = 0;
    quint64 nOffset = 0;  ///< of the first plane
    quint64 nPlaneBytes = 0;
};

/// The image proper: of DM4 files the first of "ImageList" that is no thumbnail and can be read, of DM3 files
/// the one that DM3File takes. All sizes are checked against the data that the file has.
/// @param strReason  why there is none, in the words of DM3File::GetImage()
bool findDmImage(const DmTags& tags, DmImage& image, QString& strReason);

/// Reads planes and appends them, the first row of the data as the first row of the image; arguments and
/// result are those of FrameFormat::fnRead.
bool readDmPlanes(QFile& file, const DmTags& tags, const DmImage& image, int nFirst, int nMaxImages,
                  ImageList& vecImage, QString& strReason);

}  // namespace tessera
