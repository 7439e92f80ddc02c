// Reflection lists (".txt"): points of reciprocal space with their indices, for the 3D view.
#pragma once

#include "records/hklref.h"
#include "records/peak3d.h"
#include "records/vec3d.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace tessera {

/// Reads a text reflection list (".txt"). A line has a serial number, real h, k and l, x, y and z in Å⁻¹,
/// two further numbers of which the second is the intensity, and a word.
///
/// A line without all ten items, with a number that is not finite or an index beyond int, or with an "s" in
/// its word is skipped. Indices are truncated to integers. The two lists have corresponding entries. Files
/// of up to 500 MB are read.
///
/// @param pstrReason  may be null; takes on failure the file's name and what is wrong
/// @return false, with the lists as they were, when the file cannot be read or has no reflection
[[nodiscard]] bool readReflectionList(const QString& strFileName, QList<Vec3D>& listPoint,
                                      QList<HKLRef>& listReflection, QString* pstrReason = nullptr);

/// Does the same for the text of a list, and always replaces the lists.
/// @return the number of reflections
int readReflectionText(const QByteArray& bytesText, QList<Vec3D>& listPoint, QList<HKLRef>& listReflection);

/// Records for the view: the point, d* in single precision, the intensity as dfIPoint, and a running nID
/// from 0. If the lists differ in length, the shorter one counts.
QList<Peak3D> peaksOfReflectionList(const QList<Vec3D>& listPoint, const QList<HKLRef>& listReflection);

}  // namespace tessera
