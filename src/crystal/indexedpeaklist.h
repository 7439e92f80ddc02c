// The .ipf file: indexed peaks by frame.
#pragma once

#include "records/fileset.h"
#include "records/peak3d.h"
#include "records/runreport.h"

#include <QList>
#include <QString>
#include <QVector>

namespace tessera {

/// Writes one line per peak, frame by frame and in list order; the frame number is the index of the
/// list in `vecPeakOnFrame`, counted from 1.
/// @param pstrReason  may be null; on failure the file's name and what is wrong
/// @param pSet        may be null; else the file becomes one of the set and waits for its commit()
/// @return false if the name is empty or the file can't be written
bool writeIndexedPeakList(const QVector<QList<Peak3D>>& vecPeakOnFrame, const QString& strFileName,
                          QString* pstrReason = nullptr, CFileSet* pSet = nullptr);

/// Writes DIR/NAME.ipf, or adds it to a set, and says in the log whether that went well; where a set waits
/// for its commit(), only whether it did not.
/// @return whether it did
bool outputIndexedReflectionsOnFrames(const QVector<QList<Peak3D>>& vecPeakIndexedOnFrame,
                                      const QString& strProjectDir, const QString& strProjectName,
                                      CRunReport& report, CFileSet* pSet = nullptr);

/// The line of the log after strFile was written.
void tellIndexedPeaksWritten(const QString& strFile, CRunReport& report);

}  // namespace tessera
