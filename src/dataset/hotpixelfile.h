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

/// Reads "hotpixels.txt" of the project's folder into m_listHotPixel and says how many there are, or that
/// there are none; on failure the list stays as it was.
/// @return whether the file was read
bool loadHotPixels(DataSet& data, CRunReport& report, QString* pstrReason = nullptr);

}  // namespace tessera
