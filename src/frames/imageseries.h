// saveSeries: saves the frames of a series as pictures.
#pragma once

#include "dataset/dataset.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <QString>

namespace tessera {

/// The picture file of a frame: FOLDER/NAME with the extension, where NAME is the frame's name without its
/// last suffix (frameBaseName()).
QString seriesPictureFile(const QString& strFolder, const QString& strFrame, const QString& strExtension);

/// Writes the first image of each frame as a grey picture of 8 bits into a folder. Existing files are
/// replaced. For failures see exportSeries().
///
/// @param strExtension   with the dot, as from imageTypeExtension(); an empty one is refused in red
/// @param dfContrastMin  pixel value that becomes 0 on all frames
/// @param dfContrastMax  pixel value that becomes 255
/// @return Finished if each frame has its picture
RunOutcome saveSeries(const DataSet& dataSet, const QString& strFolder, const QString& strExtension,
                      double dfContrastMin, double dfContrastMax, CRunReport& report);

}  // namespace tessera
