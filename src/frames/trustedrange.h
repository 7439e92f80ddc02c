// TrustedRange: the counts from which pixels of a series are saturated, as the headers tell.
#pragma once

#include "dataset/dataset.h"

#include <QString>
#include <QStringList>

namespace tessera {

/// The counts from which pixels are saturated.
struct TrustedRange {
    double dfSaturation = 0;  ///< counts from which a pixel is not to be trusted; 0: unknown
    QString strSource;        ///< name of the number in the header, "CCD_IMAGE_SATURATION"; empty: unknown
};

/// Reads the header of the first frame. The result is unknown where the format has no such number, or there
/// is no frame.
TrustedRange trustedRangeOf(const QStringList& listFrameFile);

/// Does the same for the frames of a series after summing and binning, which reach their limit when all
/// their pixels do.
TrustedRange trustedRangeOf(const SeriesData& series);

}  // namespace tessera
