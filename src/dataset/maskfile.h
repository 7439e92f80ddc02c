// Mask files (".msk"): polygons on the frame that the peak search leaves out.
#pragma once

#include "dataset/maskdata.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace tessera {

/// Reads polygons from lines of "number x y", one corner each in raw frame pixels.
///
/// Corners with the same number form a polygon, in the order of the file, even if they are not adjacent.
/// The polygons are in the order in which their numbers first appear. A line without three items, or with a
/// corner that is not finite, is skipped. A polygon of one or two corners covers nothing, but counts.
///
/// @param mask        its polygons are replaced, the fill rule stays
/// @param pstrReason  may be null; takes on failure the file's name and what is wrong
/// @return the number of polygons; 0, with the mask as it was, when there are fewer than 3 corners in all
[[nodiscard]] int readMaskFile(MaskData& mask, const QString& strFileName, QString* pstrReason = nullptr);

/// Does the same for lines, without the file's name in the reason.
[[nodiscard]] int readMaskLines(MaskData& mask, QList<QByteArray> listLine, QString* pstrReason = nullptr);

/// The text of a mask file, from which readMaskLines() makes the same polygons to the bit.
QByteArray maskFileText(const MaskData& mask);

}  // namespace tessera
