// Opening: makes a data set from a project file or from a plain list of images.
#pragma once

#include "dataset/dataset.h"
#include "dataset/projectfile.h"
#include "records/runparameters.h"
#include "records/runreport.h"

#include <QString>
#include <QStringList>

namespace tessera {

/// What the first of some files says about how to open them all, by its suffix in any case.
enum class OpenKind {
    nothing,         ///< no files
    reflectionList,  ///< "txt": the first file, for the 3D view
    project,         ///< "ed3d": the first file
    images           ///< all of them, as frames
};
OpenKind openKind(const QStringList& listFile);

/// Why a file is none to begin a data set with; empty when it is one. A project and a text list are left to
/// their readers. What goes as an image, "FILE" or "FILE#12", must be there, a regular file, and of a content
/// or a suffix that a reader of frames knows: results and side files are none of these.
QString reasonNotToOpen(const QString& strFile);
/// The same for files that are opened together: of the first, and of the others as far as they are frames. A
/// frame behind the first one may be missing: the loader says so when it is looked at.
QString reasonNotToOpen(const QStringList& listFile);

/// Those of some frames whose file cannot be read, and images that their files do not hold, as far as the
/// headers tell, with how many there are.
QStringList missingFrames(const QStringList& listFrame);

/// Opens a project: geometry, frames, hot pixels, peaks and shifts. What the log says on the way tells
/// what was found.
///
/// A stretching amplitude of at least 0.01 is taken over, with the file's azimuth plus 90 modulo 180, and
/// switches the stretching on; a smaller one leaves amplitude, azimuth and switch as they are, unless the
/// project has a line of SeriesDistortion: then it tells all of its lens, and the stretching is switched off.
/// Such a project also keeps the decimals of its axis, up to four. The distortions of a former data set go,
/// whether or not the new one tells any. The rotation
/// axis is wrapped into -180 to 180, and geometry and centre are rounded as the pages hold them
/// (roundToPages()).
///
/// The caller then maps the peaks if countsAgree(), and calls loadUnitCellAtOpening() in any case.
///
/// @param plistReason  may be null; gets a line for each side file that is there but was not used, or only
///                     in part. The same for the other functions here
/// @param axisLine     with AxisLine::MayLack a project that names no rotation axis leaves that of the data
/// set
///                     as it was, with a line of the log, and m_bRotationAxisKnown false
/// @param pChoice      how the series is read; null: as "NAME.series.json" beside the project tells, or as it
///                     comes. Peaks and shifts that were made of the series as it is read otherwise are left
///                     unread, with a line of the log
/// @return false when the project cannot be read, or cannot be read so; nothing but the log has then changed
[[nodiscard]] bool openProject(DataSet& data, MappingParameters& parameters, const QString& strFileName,
                               CRunReport& report, QStringList* plistReason = nullptr,
                               AxisLine axisLine = AxisLine::Needed, const SeriesChoice* pChoice = nullptr);

/// Says in red that a stretching which was set before stays in force, as the data set that has just been
/// opened tells none; nothing where none is. openProject() does so itself.
void tellStretchingThatStays(const DataSet& data, const MappingParameters& parameters, CRunReport& report);

/// Whether peaks and shifts are there for every frame of the data set, and it has frames: the peaks can be
/// mapped into reciprocal space.
bool countsAgree(const DataSet& data);

/// Reads the project's unit cell file, if there is one with three vectors, and puts that cell in force.
/// Belongs after the mapping of the peaks. Where the counts do not agree it says so, and reads nothing.
/// @return whether a cell was loaded
bool loadUnitCellAtOpening(DataSet& data, CRunReport& report, QStringList* plistReason = nullptr);

/// The frames of images that are opened together: the files themselves, or where each of them holds three
/// images or more all of these, "FILE#1" ... "FILE#n". A MRC stack stays one frame
/// with several images.
/// @param pReport  may be null; gets a line for each file that was taken apart
QStringList framesOfImageFiles(const QStringList& listFile, CRunReport* pReport = nullptr);

/// Opens images as the frames of a data set of their own, by framesOfImageFiles(): stage and overall tilt 0.1
/// degrees a frame, beam tilt 0, geometry as it was but without the distortions beside the stretching. The
/// project's folder is that of the first file.
///
/// @return false for an empty list; nothing has then changed
bool openImageFiles(DataSet& data, const QStringList& listImage, CRunReport& report,
                    QStringList* plistReason = nullptr);

}  // namespace tessera
