#include "imagefiles/dm4file.h"

#include "imagefiles/dmheader.h"

namespace tessera {

bool readDm4Frames(const QString& strFileName, int nFirst, int nMaxImages, ImageList& vecImage,
                   QString& strReason)
{
    return readDmFrames(strFileName, 4, nFirst, nMaxImages, vecImage, strReason);
}

FrameHeader readDm4Header(const QString& strFileName, int nImage)
{
    return readDmHeader(strFileName, 4, nImage);
}

}  // namespace tessera
