#include "imagefiles/dm4file.h"

namespace tessera {

bool readDm4Frames(const QString&, int, int, ImageList&, QString& strReason)
{
    strReason = QStringLiteral("DM4 files are not read yet");
    return false;
}

FrameHeader readDm4Header(const QString&, int)
{
    return {};
}

}  // namespace tessera
