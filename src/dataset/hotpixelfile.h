// Hot pixel files ("hotpixels.txt"): pixels to repair on every frame.
#pragma once

#include "dataset/dataset.h"
#include "records/runreport.h"

#include <QByteArray>
#include <QList>
#include <QPoint>
#include <QString>

namespace tessera {

/// Reads lines of "serial x y". Coordinates are cut to integers. A line without three items, or whose
/// coordinates do not fit an int, is skipped; a serial other than the running count of good lines fails.
///
/// @param pstrReason  may be null; on failure names the file and what is wrong
/// @return false on failure; the list is then as it was. A file without pixels is no failure
[[nodiscard]] bool readHotPixelFile(const QString& strFileName, QList<QPoint>& listHotPixel,
                                    QString* pstrReason = nullptr);

/// The same for lines, without the name in the reason.
[[nodiscard]] bool readHotPixelLines(QList<QByteArray> listLine, QList<QPoint>& listHotPixel,
                                     QString* pstrReason = nullptr);

/// Name of the list of a data set: "hotpixels.txt" in the project's folder; of frames that are binned
/// "hotpixels_bin2.txt", as its pixels are other ones.
QString fileOfHotPixels(const DataSet& data);

/// Name of the list of the camera's own pixels, which are repaired before frames are binned: "hotpixels.txt".
QString fileOfCameraHotPixels(const DataSet& data);

/// Reads "hotpixels.txt" of the project's folder into m_listHotPixel and says how many there are, or that
/// there are none; on failure the list stays as it was. Where the frames are binned, the list goes into
/// m_reading, and that of the binned frames, without a word, into m_listHotPixel.
/// @return whether the file was read
bool loadHotPixels(DataSet& data, CRunReport& report, QString* pstrReason = nullptr);

/// Appends the pixels that a hot pixel file does not hold yet, numbered on, and keeps what stands there. A
/// file that is not there is made.
/// @return false, with the file as it was, when it is there and cannot be read, or cannot be written
[[nodiscard]] bool addToHotPixelFile(const QString& strFileName, const QList<QPoint>& listHotPixel,
                                     QString* pstrReason = nullptr);

/// Adds pixels to m_listHotPixel, each once, and to "hotpixels.txt" of the project's folder. Says how many,
/// and in red why the file could not be written; the pixels are in force all the same.
void addHotPixels(DataSet& data, const QList<QPoint>& listHotPixel, CRunReport& report);

}  // namespace tessera
