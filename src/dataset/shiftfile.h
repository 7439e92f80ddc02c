// Shift files (".sc", "shifts.txt"): the direct beam and the shift of each frame.
#pragma once

#include "dataset/dataset.h"
#include "records/runreport.h"

#include <QByteArray>
#include <QList>
#include <QPointF>
#include <QString>

#include <optional>

namespace tessera {

/// The content of a shift file, in pixels of the raw frames: x to the right, y down.
struct ShiftData {
    double dfCenterX = 0;      ///< column of the direct beam on the first frame
    double dfCenterY = 0;      ///< its row
    QList<QPointF> listShift;  ///< shift of the direct beam on each frame relative to the first one
};

/// Reads a shift file: a line "x y" with the direct beam, then a line "serial x y" with the shift of each
/// frame. Serials count from 1.
///
/// At least 2 lines that are neither empty nor comments are needed. A line of a frame without three finite
/// numbers is skipped. It is a failure if the first line has no two finite numbers, or if a serial is not one
/// more than that of the last line that was not skipped.
///
/// @param pstrReason  may be null; takes on failure the file's name and what is wrong
/// @return nothing on failure
[[nodiscard]] std::optional<ShiftData> readShiftFile(const QString& strFileName,
                                                     QString* pstrReason = nullptr);

/// Does the same for the lines of a shift file, without the file's name in the reason.
[[nodiscard]] std::optional<ShiftData> readShiftLines(QList<QByteArray> listLine,
                                                      QString* pstrReason = nullptr);

/// Reads centre and shifts into the data set if the file has one shift per frame. Otherwise a red line
/// tells that it does not fit, and the former shifts stay. The centre is taken as it is; a red line tells
/// where it is out of the range of the page's boxes, so that roundToPages() will change it.
/// @param pstrReason  may be null; takes on failure the file's name and what is wrong
/// @return 1, or 0 when the file could not be read or does not fit
[[nodiscard]] int loadShiftFile(DataSet& data, const QString& strFileName, CRunReport& report,
                                QString* pstrReason = nullptr);

/// The text of a shift file, with 2 decimals.
QByteArray shiftFileText(const ShiftData& shift);

/// Writes a shift file with 2 decimals, whole or not at all.
///
/// A file of that name with more frames is first copied to the name with "~" at its end, unless a former
/// copy has even more frames. So a run that was stopped early does not destroy the shifts of the whole
/// series. If the copy fails, nothing is written.
///
/// @param pstrReason  may be null; takes on failure what is wrong, and on success a sentence about the copy
/// of
///                    a former file with more frames, if there is one
/// @return false when the name is empty, the former file cannot be copied, or the file cannot be written
[[nodiscard]] bool writeShiftFile(const QString& strFileName, const ShiftData& shift,
                                  QString* pstrReason = nullptr);

}  // namespace tessera
