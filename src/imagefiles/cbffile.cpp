#include "imagefiles/cbffile.h"

namespace tessera {

bool readCbfFrames(const QString&, int, int, ImageList&, QString& strReason)
{
    strReason = QStringLiteral("CBF files are not read yet");
    return false;
}

FrameHeader readCbfHeader(const QString&, int)
{
    return {};
}

}  // namespace tessera
