#include "imagefiles/mrcheader.h"

#include "imagefiles/mrcfile.h"

namespace tessera {

bool readMrcFrames(const QString& strFileName, int nFirst, int nMaxImages, ImageList& vecImage,
                   QString& strReason)
{
    ImageList vecRead;
    const bool bRead = ReadMRC(strFileName, vecRead, &strReason, nFirst + nMaxImages) == 1;
    for (size_t i = size_t(nFirst); i < vecRead.size(); ++i) {
        vecImage.push_back(std::move(vecRead[i]));
    }
    return bRead;
}

FrameHeader readMrcHeader(const QString&, int)
{
    return {};
}

}  // namespace tessera
