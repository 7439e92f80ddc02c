#include "imagefiles/smvreader.h"

namespace tessera {

bool readSmvFrames(const QString&, int, int, ImageList&, QString& strReason)
{
    strReason = QStringLiteral("SMV files are not read yet");
    return false;
}

FrameHeader readSmvHeader(const QString&, int)
{
    return {};
}

}  // namespace tessera
