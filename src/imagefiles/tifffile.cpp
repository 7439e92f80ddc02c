#include "imagefiles/tifffile.h"

namespace tessera {

bool readTiffFrames(const QString&, int, int, ImageList&, QString& strReason)
{
    strReason = QStringLiteral("TIFF files are not read yet");
    return false;
}

FrameHeader readTiffHeader(const QString&, int)
{
    return {};
}

}  // namespace tessera
