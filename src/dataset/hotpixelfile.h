// Hot pixel files ("hotpixels.txt"): pixels to repair on every frame.
#pragma once

#include "dataset/dataset.h"
#include "records/runreport.h"

#include <QByteArray>
#include <QList>
#include <QPoint>
#include <QString>

#include <optional>

namespace tessera {

/// Reads lines of "serial x y". Coordinates are truncated to integers. A line without three items, or with
/// coordinates beyond int, is skipped. A serial number that is not the running number of good lines is a
/// failure.
///
/// @param pstrReason  may be null; takes on failure the file's name and what is wrong
/// @return the pixels; nothing on failure. A file without pixels is no failure
[[nodiscard]] std::optional<QList<QPoint>> readHotPixelFile(const QString& strFileName,
                                                            QString* pstrReason = nullptr);

/// Does the same for lines, without the file's name in the reason.
[[nodiscard]] std::optional<QList<QPoint>> readHotPixelLines(QList<QByteArray> listLine,
                                                             QString* pstrReason = nullptr);

/// The list of a data set: "hotpixels.txt" in the folder of the project, or "hotpixels_bin2.txt" for frames
/// that are binned, as these have other pixels.
QString fileOfHotPixels(const DataSet& data);

/// The list of the pixels of the camera, which are repaired before binning: "hotpixels.txt".
QString fileOfCameraHotPixels(const DataSet& data);

/// Reads "hotpixels.txt" from the folder of the project into m_listHotPixel and logs how many pixels there
/// are. On failure the list stays as it was. If the frames are binned, this list is put into m_reading, and
/// that of the binned frames is read into m_listHotPixel without a line.
/// @return whether the file was read
bool loadHotPixels(DataSet& data, CRunReport& report, QString* pstrReason = nullptr);

/// Appends pixels that are not in a hot pixel file yet, with further serial numbers. The file is made if it
/// does not exist.
/// @return false, with the file as it was, when it exists and cannot be read, or cannot be written
[[nodiscard]] bool addToHotPixelFile(const QString& strFileName, const QList<QPoint>& listHotPixel,
                                     QString* pstrReason = nullptr);

/// Adds pixels to m_listHotPixel, each once, and to "hotpixels.txt" in the folder of the project. Logs how
/// many there are, and in red why the file could not be written; the pixels are used even then.
void addHotPixels(DataSet& data, const QList<QPoint>& listHotPixel, CRunReport& report);

}  // namespace tessera
