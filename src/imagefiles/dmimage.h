// DmImage: finds the image of a DM3 or DM4 file in its tags, and reads its planes.
#pragma once

#include "imagefiles/dmtags.h"
#include "imaging/imagelist.h"

namespace tessera {

/// The image of a file, which has one or many planes.
struct DmImage {
    const TagDirectory* pTags = nullptr;  ///< its group in "ImageList", which belongs to the DmTags
    int nWidth = 0;
    int nHeight = 0;
    int nPlanes = 1;  ///< complete planes: frames of a stack, or sections of a volume
    qint64 nPlanesTold = 1;
    int nDataType = 0;
    quint64 nOffset = 0;  ///< place of the first plane in the file, bytes
    quint64 nPlaneBytes = 0;
};

/// Finds the image: in DM4 files the first one of "ImageList" that is no thumbnail and can be read, in DM3
/// files the one that DM3File reads. All sizes are checked against the data of the file.
/// @param strReason  takes why there is none, in the words of DM3File::GetImage()
bool findDmImage(const DmTags& tags, DmImage& image, QString& strReason);

/// Reads planes and appends them. The first row of the data is the first row of the image. Arguments and
/// result are those of FrameFormat::fnRead.
bool readDmPlanes(QFile& file, const DmTags& tags, const DmImage& image, int nFirst, int nMaxImages,
                  ImageList& vecImage, QString& strReason);

}  // namespace tessera
