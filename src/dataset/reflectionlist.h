// Text reflection list: points of reciprocal space with their indices, for the 3D view.
#pragma once

#include "records/hklref.h"
#include "records/peak3d.h"
#include "records/vec3d.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace tessera {

/// Reads a text reflection list (".txt"): a line per reflection of serial, real h, k and l, x, y and z
/// in Å⁻¹, two further numbers of which the second is the intensity, and a word.
///
/// A line without all ten items, with a number that is not finite or an index beyond int, or whose word
/// holds an "s" is skipped. Indices are cut to integers. The two lists run parallel.
///
/// A file of up to 500 MB is read.
///
/// @param pstrReason  may be null; on failure names the file and what is wrong
/// @return false when the file cannot be read or holds no reflection; the lists are then as they were
[[nodiscard]] bool readReflectionList(const QString& strFileName, QList<Vec3D>& listPoint,
                                      QList<HKLRef>& listReflection, QString* pstrReason = nullptr);

/// The same for the text of a list; gives the number of reflections and always replaces the lists.
int readReflectionText(const QByteArray& bytesText, QList<Vec3D>& listPoint, QList<HKLRef>& listReflection);

/// Records for the view: the point, d* in single precision, the intensity as dfIPoint and a running
/// nID from 0. Lists of different length give the records of the shorter.
QList<Peak3D> peaksOfReflectionList(const QList<Vec3D>& listPoint, const QList<HKLRef>& listReflection);

}  // namespace tessera
