#include "imagefiles/dm3frames.h"

#include "imagefiles/dm3file.h"
#include "imagefiles/dmheader.h"

namespace tessera {

bool readDm3Frames(const QString& strFileName, int nFirst, int, ImageList& vecImage, QString& strReason)
{
    if (nFirst > 0) {
        return readDmFrames(strFileName, 3, nFirst, 1, vecImage, strReason);
    }
    auto pImage = std::make_unique<CImgObj<float>>();
    if (ReadDM3(*pImage, strFileName, &strReason) != 1) {
        return false;
    }
    vecImage.push_back(std::move(pImage));
    return true;
}

FrameHeader readDm3Header(const QString& strFileName, int nImage)
{
    return readDmHeader(strFileName, 3, nImage);
}

}  // namespace tessera
