// Text files of exported 3D peaks.
#pragma once

#include "records/peak3d.h"

#include <QList>
#include <QString>

namespace tessera {

/// Writes a header and one line per peak; `bWithHKL` puts the real indices before each line. Frames count
/// from 0 in this file.
/// @param pstrReason  may be null; on failure the file's name and what is wrong
/// @return false if the name is empty or the file can't be written
bool writePeak3DList(const QList<Peak3D>& listPeak, const QString& strFileName, bool bWithHKL,
                     QString* pstrReason = nullptr);

/// Writes a line of point, intensity, frame number from 1 and position for each peak at the places
/// `listPoint`.
/// @param pstrReason  may be null; on failure the file's name and what is wrong
/// @return false if the name is empty or the file can't be written
bool writePeakPositions(const QList<Peak3D>& listPeak, const QList<int>& listPoint,
                        const QString& strFileName, QString* pstrReason = nullptr);

}  // namespace tessera
