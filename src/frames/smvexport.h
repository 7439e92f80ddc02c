// exportSMVImages: writes the frames of a series as SMV images, with the drift corrected.
#pragma once

#include "dataset/dataset.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <functional>

namespace tessera {

/// The SMV file of a frame: FOLDER/NAME.img, where NAME is the frame's name up to its first dot.
QString smvImageFile(const QString& strFolder, const QString& strFrame);

/// Writes the first image of each frame into the folder of the project, see smvImageFile(). The image is
/// moved back by its shift in whole pixels, cyclically, so that the direct beam is at the same place on all
/// images. The header has pixel size, wavelength, beam and tilts of the data set; the camera length is the
/// one that the pixel size in reciprocal space means for detector pixels of 0.055 mm. Existing files are
/// replaced. For failures see exportSeries(). A shift of each frame is needed, and pixel size and
/// wavelength, without which there would be no camera length. At the end the log gets the number of files
/// and their folder.
/// @return Finished if each frame has its file
RunOutcome exportSMVImages(const DataSet& dataSet, CRunReport& report);

/// Does the same with other names.
/// @param strFolder  folder of the files, for the log
/// @param fnTarget   returns the file for a frame
RunOutcome exportSMVImages(const DataSet& dataSet, const QString& strFolder,
                           const std::function<QString(const QString& strFrame)>& fnTarget,
                           CRunReport& report);

}  // namespace tessera
