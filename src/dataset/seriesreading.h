// Series reading: applies the choice of frames, sums and bins to a series.
#pragma once

#include "dataset/dataset.h"
#include "records/runreport.h"

#include <QString>

namespace tessera {

/// Replaces the frames of a data set by those that were chosen: names, tilts (the mean of summed frames)
/// and beam tilt breaks. Pixel size and the radius of the distortions follow the binning. The log tells
/// what was left out. Frames of a resting crystal count as continuous rotation after they were summed.
///
/// Must be called on a series as it was opened, before anything that depends on its pixels.
/// @param pstrReason  may be null; takes the reason on failure
/// @return false, with the data set as it was, where no frame would be left
[[nodiscard]] bool takeSeriesChoice(DataSet& data, const SeriesChoice& choice, CRunReport& report,
                                    QString* pstrReason = nullptr);

/// The series as it was before the choice, with the present geometry, for a project file.
struct SourceSeries {
    QStringList listFrame;        ///< full paths of the frames
    FrameTilts tilts;             ///< without the relaxation
    double dfPixelSize = 0;       ///< Å⁻¹, of the pixels of the files
    SeriesDistortion distortion;  ///< with the radius in pixels of the files
    QList<int>
        listFrameOf;  ///< for each frame the one of the data set that it is a part of, or the nearest one
};

/// The series before the choice.
SourceSeries sourceSeries(const SeriesData& data);

/// Converts a coordinate of a place on frames of the files to one on binned frames. Whole numbers are
/// centres of pixels.
double placeInBins(double dfPlace, int nBin);
/// The inverse.
double placeInFile(double dfPlace, int nBin);

/// Converts areas likewise. Upright rectangles are extended to the borders of the bins, as a bin that is
/// partly covered is no measurement.
MaskData maskInBins(const MaskData& mask, int nBin);
/// The inverse.
MaskData maskInFile(const MaskData& mask, int nBin);

}  // namespace tessera
