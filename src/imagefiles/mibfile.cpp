#include "imagefiles/mibfile.h"

namespace tessera {

bool readMibFrames(const QString&, int, int, ImageList&, QString& strReason)
{
    strReason = QStringLiteral("MIB files are not read yet");
    return false;
}

FrameHeader readMibHeader(const QString&, int)
{
    return {};
}

}  // namespace tessera
