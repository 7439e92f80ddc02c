// exportSMVImages: the frames of a series as SMV images, with the drift taken out.
#pragma once

#include "dataset/dataset.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <functional>

namespace tessera {

/// FOLDER/NAME.img, with the frame's name up to its first dot.
QString smvImageFile(const QString& strFolder, const QString& strFrame);

/// Writes the first image of each frame into the project's folder, under the frame's name up to its first dot
/// and ".img". The image is moved back by its shift in whole pixels, with wrap-around, so that the direct
/// beam stands in one place on all. Pixel size, wavelength, beam and tilts of the data set give the header;
/// the camera length is the one that the reciprocal pixel size has with detector pixels of 0.055 mm. Existing
/// files are replaced. See exportSeries() for what goes wrong; a shift per frame is needed, and a pixel
/// size and a wavelength, without which the header would hold no camera length. Before the end the log gets
/// the number of files and their folder.
/// @return Finished if each frame has its file
RunOutcome exportSMVImages(const DataSet& dataSet, CRunReport& report);

/// The same under other names.
/// @param strFolder  of all files, for the log
/// @param fnTarget   the file that a frame gives
RunOutcome exportSMVImages(const DataSet& dataSet, const QString& strFolder,
                           const std::function<QString(const QString& strFrame)>& fnTarget,
                           CRunReport& report);

}  // namespace tessera
