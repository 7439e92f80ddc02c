// Unit cell files (".uc", "unitcell.txt"): the three reciprocal basis vectors.
#pragma once

#include "dataset/dataset.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace tessera {

/// Reads a*, b*, c* in Å⁻¹. The first three lines that are neither empty nor comments must begin, apart
/// from blanks, with "a*", "b*" and "c*", each followed by three finite numbers.
///
/// @param pstrReason  may be null; takes on failure the file's name and what is wrong
/// @return three vectors, or none on failure
QList<Vec3D> readUnitCellFile(const QString& strFileName, QString* pstrReason = nullptr);

/// Does the same for lines, without the file's name in the reason.
QList<Vec3D> readUnitCellLines(QList<QByteArray> listLine, QString* pstrReason = nullptr);

/// The text of a unit cell file in UTF-8 with a byte order mark: a comment with the direct cell in Å and
/// degrees, or a comment that the vectors are co-planar, and a line for each reciprocal vector in Å⁻¹.
/// Lines end with line feeds on all platforms.
QByteArray unitCellText(const ReciprocalBasis& basis);

/// Writes m_listCell, whole or not at all.
/// @param pstrReason  may be null; takes on failure the file's name and what is wrong
/// @return false when there is no cell in force, the name is empty or the file cannot be written
[[nodiscard]] bool saveUnitCellFile(const DataSet& data, const QString& strFileName,
                                    QString* pstrReason = nullptr);

}  // namespace tessera
