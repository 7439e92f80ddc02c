// Opening: makes a data set from a project file or from a plain list of images.
#pragma once

#include "dataset/dataset.h"
#include "dataset/projectfile.h"
#include "records/runparameters.h"
#include "records/runreport.h"

#include <QString>
#include <QStringList>

namespace tessera {

/// How files are opened together, by the suffix of the first one in upper or lower case.
enum class OpenKind {
    nothing,         ///< no files
    reflectionList,  ///< "txt": only the first file, for the 3D view
    project,         ///< "ed3d": only the first file
    images           ///< all files, as frames
};
/// How files are opened together.
OpenKind openKind(const QStringList& listFile);

/// Why a file cannot be opened as a data set; empty when it can. Projects and text lists are checked by
/// their readers. Any other name, "FILE" or "FILE#12", must be that of an existing regular file with a
/// content or suffix of a frame format; result files and side files are none of these.
QString reasonNotToOpen(const QString& strFile);
/// Does the same for files that are opened together. The files after the first are only checked as frames,
/// and may be missing, as the loader tells so when they are displayed.
QString reasonNotToOpen(const QStringList& listFile);

/// The frames whose file cannot be read, and images that their files do not have, as far as the headers
/// tell, with the number of existing images.
QStringList missingFrames(const QStringList& listFrame);

/// Opens a project: geometry, frames, hot pixels, peaks and shifts. The log tells what was found.
///
/// A stretching amplitude of at least 0.01 is taken over, with the azimuth of the file plus 90 modulo 180,
/// and switches the stretching on. A smaller one leaves amplitude, azimuth and switch as they are, except
/// that a project with a line of SeriesDistortion describes its lens completely: then the stretching is
/// switched off. Such a project also keeps the decimals of its axis, up to four. The distortions of a
/// former data set are removed in any case. The rotation axis is wrapped into -180 to 180, and geometry and
/// centre are rounded as on the pages (roundToPages()).
///
/// The caller must then map the peaks if countsAgree(), and call loadUnitCellAtOpening() in any case.
///
/// @param plistReason  may be null; takes a line for each side file that exists but was not used, or only
///                     in part. The same holds for the other functions here
/// @param axisLine     with AxisLine::MayLack a project without a rotation axis leaves that of the data set
///                     as it was, with a line of the log, and m_bRotationAxisKnown false
/// @param pChoice      how the series is read; null: as "NAME.series.json" beside the project tells, or
///                     else unchanged. Peaks and shifts that were made from the series read in another way
///                     are not read, with a line of the log
/// @return false, with only new lines in the log, when the project cannot be read, or not in this way
[[nodiscard]] bool openProject(DataSet& data, MappingParameters& parameters, const QString& strFileName,
                               CRunReport& report, QStringList* plistReason = nullptr,
                               AxisLine axisLine = AxisLine::Needed, const SeriesChoice* pChoice = nullptr);

/// Logs in red that the stretching of a former data set stays in force, if there is one, as the opened data
/// set has none. openProject() does this itself.
void tellStretchingThatStays(const DataSet& data, const MappingParameters& parameters, CRunReport& report);

/// Whether the data set has frames, and peaks and shifts for each of them, so that the peaks can be mapped
/// into reciprocal space.
bool countsAgree(const DataSet& data);

/// Reads the cell file of the project, if it exists and has three vectors, and puts the cell in force. To
/// be called after the peaks were mapped. If the counts do not agree, it logs this and reads nothing.
/// @return whether a cell was loaded
bool loadUnitCellAtOpening(DataSet& data, CRunReport& report, QStringList* plistReason = nullptr);

/// The frames of image files that are opened together. Usually each file is a frame. If each of them has
/// three images or more, the frames are all images, "FILE#1" ... "FILE#n". An MRC stack is one frame with
/// several images.
/// @param pReport  may be null; gets a line for each file whose images become frames
QStringList framesOfImageFiles(const QStringList& listFile, CRunReport* pReport = nullptr);

/// Opens images as the frames of a new data set, by framesOfImageFiles(). Stage and overall tilt get steps
/// of 0.1 degrees, the beam tilt is 0, and the geometry stays as it was, but without distortions other than
/// the stretching. The folder of the project is that of the first file.
///
/// @return false, without a change, for an empty list
bool openImageFiles(DataSet& data, const QStringList& listImage, CRunReport& report,
                    QStringList* plistReason = nullptr);

}  // namespace tessera
