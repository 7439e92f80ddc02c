// Peak list files (".pk", "peaklist.txt"): all peaks of all frames with their group masks.
#pragma once

#include "dataset/dataset.h"
#include "records/runreport.h"

#include <QByteArray>
#include <QString>

namespace tessera {

/// Reads a peak list into m_listPeakFrame and m_vecPeakGroup, one list for each frame of the data set.
///
/// A line is "serial frame index x y I [[I2D] mask]", that is 6, 7 or 8 words; without I2D it is I, and
/// without a mask a peak is in no group. Lines that are empty or begin with "#" are skipped. x, y, I and
/// I2D are rounded to single precision. Peaks keep their order in the file on each frame; nID is the
/// place in the file.
///
/// A line of another form says so in red and ends the list; the peaks before it are used. So does a
/// number that touches the next one, which would else be read wrongly, a frame number below 0 and a
/// position that is not finite: none of them gets into the store. A serial out of order, no peak at all, or
/// a frame beyond the data set (with a red line) leave the data set as it was.
///
/// Numbers are read as in the C locale, whatever that of the process.
///
/// @param report      progress in steps of 1000 lines; what it says to goOn() is not asked for
/// @param pstrReason  may be null; on a result of 0, and for peaks that were left out, what is wrong
/// @return 1 when peaks were taken over, else 0
[[nodiscard]] int readPeakList(DataSet& data, const QString& strFileName, CRunReport& report,
                               QString* pstrReason = nullptr);

/// The same for the content of a file; the name is for the messages only.
[[nodiscard]] int readPeakListBytes(DataSet& data, const QByteArray& bytesFile, const QString& strFileName,
                                    CRunReport& report, QString* pstrReason = nullptr);

/// Writes m_listPeakFrame with 1 decimal, in lines of 71 characters.
///
/// The masks come from m_vecPeakGroup if it agrees with the peaks on every frame; groups of a former
/// peak list are left aside, and every peak is in group 0 alone. The file is written whole or not at all.
///
/// The format has no blank between a number as wide as its field and the one before it, and such a line
/// cannot be read back. It is written all the same, and the reason then says how many there are.
///
/// @param pstrReason  may be null; on a result of 0, and for lines too wide, what is wrong
/// @return 1, or 0 when the file cannot be written
[[nodiscard]] int writePeakList(const DataSet& data, const QString& strFileName,
                                QString* pstrReason = nullptr);

/// How many peaks a peak list holds: its lines but for empty ones and comments, whatever stands in them.
/// 0 when there is no such file, or it can't be read.
int countPeaksOfFile(const QString& strFileName);

}  // namespace tessera
