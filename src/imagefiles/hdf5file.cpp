#include "imagefiles/hdf5file.h"

namespace tessera {

bool readHdf5Frames(const QString&, int, int, ImageList&, QString& strReason)
{
    strReason = QStringLiteral("HDF5 files are not read yet");
    return false;
}

FrameHeader readHdf5Header(const QString&, int)
{
    return {};
}

}  // namespace tessera
