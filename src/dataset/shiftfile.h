// Shift files (".sc", "shifts.txt"): the direct beam and the shift of each frame.
#pragma once

#include "dataset/dataset.h"
#include "records/runreport.h"

#include <QByteArray>
#include <QList>
#include <QPointF>
#include <QString>

namespace tessera {

/// The content of a shift file. Pixels of the raw frame.
struct ShiftData {
    double dfCenterX = 0;  ///< direct beam on the first frame
    double dfCenterY = 0;
    QList<QPointF> listShift;  ///< per frame, with respect to the first
};

/// Reads a shift file: a line with the direct beam, then "serial x y" for each frame.
///
/// At least 2 lines that are neither empty nor comments. A frame line without three finite numbers is
/// skipped; a serial other than the running count of good lines fails, as does a first line without
/// two finite numbers.
///
/// @param pstrReason  may be null; on failure names the file and what is wrong
/// @return false on failure; `shift` is then as it was
[[nodiscard]] bool readShiftFile(const QString& strFileName, ShiftData& shift, QString* pstrReason = nullptr);

/// The same for lines, without the name in the reason.
[[nodiscard]] bool readShiftLines(QList<QByteArray> listLine, ShiftData& shift,
                                  QString* pstrReason = nullptr);

/// Reads a shift file into the data set: centre and shifts, if it has one shift per frame. Else says in
/// red that it does not fit, and the old shifts stay. A centre that roundToPages() will move is told in red.
/// @return 1, or 0 when the file failed or does not fit
[[nodiscard]] int loadShiftFile(DataSet& data, const QString& strFileName, CRunReport& report,
                                QString* pstrReason = nullptr);

/// The content of a shift file, with 2 decimals.
QByteArray shiftFileText(const ShiftData& shift);

/// Writes a shift file with 2 decimals, whole or not at all.
///
/// A shift file of that name with more frames is first copied to the name with "~" behind it, in place
/// of a former copy unless that has still more: runs that were stopped early do not cost the shifts of the
/// whole series. If the copy fails nothing is written.
///
/// @param pstrReason  may be null; on failure what is wrong, else where a former file was kept
/// @return false when the name is empty or the file cannot be written
[[nodiscard]] bool writeShiftFile(const QString& strFileName, const ShiftData& shift,
                                  QString* pstrReason = nullptr);

}  // namespace tessera
