// saveSeries: the frames of a series as pictures.
#pragma once

#include "dataset/dataset.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <QString>

namespace tessera {

/// FOLDER/NAME with the extension, with the frame's name without its last suffix (frameBaseName()).
QString seriesPictureFile(const QString& strFolder, const QString& strFrame, const QString& strExtension);

/// Writes the first image of each frame as an 8-bit grey picture into a folder, under the frame's name
/// without its last suffix. Existing files are replaced. See exportSeries() for what goes wrong.
///
/// @param strExtension   with the dot, as imageTypeExtension() gives it; an empty one is refused in red
/// @param dfContrastMin  the pixel value that becomes 0, for all frames; dfContrastMax that of 255
/// @return Finished if each frame has its picture
RunOutcome saveSeries(const DataSet& dataSet, const QString& strFolder, const QString& strExtension,
                      double dfContrastMin, double dfContrastMax, CRunReport& report);

}  // namespace tessera
