// Series reading: a series as it was chosen, some of its frames, summed and binned.
#pragma once

#include "dataset/dataset.h"
#include "records/runreport.h"

#include <QString>

namespace tessera {

/// Makes of the frames of a data set those that were chosen: names, tilts (the mean of those that are summed)
/// and beam tilt breaks; pixel size and the radius of the distortions follow the bins. Says in the log what
/// was left out. Frames that stood still while they were exposed are taken for a steady turn once they are
/// summed.
///
/// To be called on a series as it comes, before anything is known of its pixels.
/// @return false, with the reason and the data set as it was, where no frame would be left
[[nodiscard]] bool takeSeriesChoice(DataSet& data, const SeriesChoice& choice, CRunReport& report,
                                    QString* pstrReason = nullptr);

/// The series as it came, with the geometry of now: what a project file tells.
struct SourceSeries {
    QStringList listFrame;
    FrameTilts tilts;        ///< without a relaxation
    double dfPixelSize = 0;  ///< Å⁻¹
    SeriesDistortion distortion;
    QList<int>
        listFrameOf;  ///< for each of them the frame of the data set that it is a part of, or that is nearest
};

SourceSeries sourceSeries(const SeriesData& data);

/// From a place on the files' frames to one on those of the data set, and back: the centre of a pixel is
/// whole.
double placeInBins(double dfPlace, int nBin);
double placeInFile(double dfPlace, int nBin);

/// The same for areas. Upright rectangles grow to the borders of the bins, as a bin with a part in them is no
/// measurement.
MaskData maskInBins(const MaskData& mask, int nBin);
MaskData maskInFile(const MaskData& mask, int nBin);

}  // namespace tessera
