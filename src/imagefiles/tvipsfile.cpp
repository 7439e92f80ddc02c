#include "imagefiles/tvipsfile.h"

namespace tessera {

bool readTvipsFrames(const QString&, int, int, ImageList&, QString& strReason)
{
    strReason = QStringLiteral("TVIPS files are not read yet");
    return false;
}

FrameHeader readTvipsHeader(const QString&, int)
{
    return {};
}

}  // namespace tessera
