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
/// A line of another form ends the list with a red line; the peaks before it are used. The same holds for
/// a line in which two numbers touch, as their columns would be mistaken, for a frame number below 0, and for
/// a position or intensity that is not finite. A serial number out of order, a file without any peak, or a
/// frame beyond the data set (with a red line) leave the data set as it was.
///
/// Numbers are read as in the C locale, whatever the locale of the process.
///
/// @param report      shows progress in steps of 1000 lines; a request to stop is ignored
/// @param pstrReason  may be null; takes what is wrong when the result is 0 or peaks were left out
/// @return 1 when peaks were taken over, else 0
[[nodiscard]] int readPeakList(DataSet& data, const QString& strFileName, CRunReport& report,
                               QString* pstrReason = nullptr);

/// Does the same for the content of a file; the name appears in the messages only.
[[nodiscard]] int readPeakListBytes(DataSet& data, const QByteArray& bytesFile, const QString& strFileName,
                                    CRunReport& report, QString* pstrReason = nullptr);

/// Writes m_listPeakFrame with 1 decimal, in lines of 71 characters.
///
/// The masks come from m_vecPeakGroup if it has as many entries as there are peaks on every frame. Otherwise
/// the groups belong to a former peak list, and every peak is written as a member of group 0 alone. The file
/// is written whole or not at all.
///
/// The format has no blank between the columns, so a line with a number as wide as its field cannot be read
/// back. Such lines are written nevertheless, and the reason tells how many there are.
///
/// @param pstrReason  may be null; takes what is wrong when the result is 0 or numbers were too wide
/// @return 1, or 0 when the file cannot be written
[[nodiscard]] int writePeakList(const DataSet& data, const QString& strFileName,
                                QString* pstrReason = nullptr);

/// Counts the peaks of a peak list file: its lines except empty ones and comments, without parsing them.
/// @return 0 when there is no such file or it cannot be read
int countPeaksOfFile(const QString& strFileName);

}  // namespace tessera
