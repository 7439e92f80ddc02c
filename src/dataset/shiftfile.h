// Shift files (".sc", "shifts.txt"): the direct beam and the shift of each frame.
#pragma once

#include "dataset/dataset.h"
#include "records/runreport.h"

#include <QByteArray>
#include <QList>
#include <QPointF>
#include <QString>

namespace tessera {

/// The content of a shift file, in pixels of the raw frame.
struct ShiftData {
    double dfCenterX = 0;  ///< column of the direct beam on the first frame
    double dfCenterY = 0;
    QList<QPointF> listShift;  ///< shift of each frame relative to the first one
};

/// Reads a shift file: a line with the direct beam, then "serial x y" for each frame.
///
/// At least 2 lines that are neither empty nor comments are needed. A frame line without three finite
/// numbers is skipped. A serial number that is not the running number of good lines is a failure, as is a
/// first line without two finite numbers.
///
/// @param pstrReason  may be null; takes on failure the file's name and what is wrong
/// @return false, with `shift` as it was, on failure
[[nodiscard]] bool readShiftFile(const QString& strFileName, ShiftData& shift, QString* pstrReason = nullptr);

/// Does the same for lines, without the file's name in the reason.
[[nodiscard]] bool readShiftLines(QList<QByteArray> listLine, ShiftData& shift,
                                  QString* pstrReason = nullptr);

/// Reads centre and shifts into the data set if the file has one shift per frame. Otherwise a red line
/// tells that it does not fit, and the former shifts stay. If roundToPages() will change the centre, a red
/// line tells so.
/// @return 1, or 0 when the file could not be read or does not fit
[[nodiscard]] int loadShiftFile(DataSet& data, const QString& strFileName, CRunReport& report,
                                QString* pstrReason = nullptr);

/// The content of a shift file, with 2 decimals.
QByteArray shiftFileText(const ShiftData& shift);

/// Writes a shift file with 2 decimals, whole or not at all.
///
/// A file of that name with more frames is first copied to the name with "~" at its end, unless a former
/// copy has even more frames. So a run that was stopped early does not destroy the shifts of the whole
/// series. If the copy fails, nothing is written.
///
/// @param pstrReason  may be null; takes on failure what is wrong, else where a former file was kept
/// @return false when the name is empty or the file cannot be written
[[nodiscard]] bool writeShiftFile(const QString& strFileName, const ShiftData& shift,
                                  QString* pstrReason = nullptr);

}  // namespace tessera
