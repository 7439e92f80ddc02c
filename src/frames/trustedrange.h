// TrustedRange: up to which counts the frames of a series are told to be trusted.
#pragma once

#include "dataset/dataset.h"

#include <QString>
#include <QStringList>

namespace tessera {

struct TrustedRange {
    double dfSaturation = 0;  ///< counts; of this many and above a pixel is not to be trusted; 0: not told
    QString strSource;        ///< as the header names it, "CCD_IMAGE_SATURATION"; empty: not told
};

/// What the header of the first frame tells; "not told" where its format has none, or there is no frame.
TrustedRange trustedRangeOf(const QStringList& listFrameFile);

/// The same for the frames of a series as they come out: sums and bins reach their limit as all their pixels
/// do.
TrustedRange trustedRangeOf(const SeriesData& series);

}  // namespace tessera
