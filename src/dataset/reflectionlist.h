// Reflection lists (".txt"): points of reciprocal space with their indices, for the 3D view.
#pragma once

#include "records/hklref.h"
#include "records/peak3d.h"
#include "records/vec3d.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace tessera {

/// The reflections of a list. The two lists have corresponding entries.
struct ReflectionList {
    QList<Vec3D> listPoint;  ///< Å⁻¹
    QList<HKLRef> listReflection;
};

/// Reads a text reflection list (".txt"). A line has a serial number, real h, k and l, x, y and z in Å⁻¹,
/// two further numbers of which the second is the intensity, and a word.
///
/// A line without all ten items, with a number that is not finite or an index beyond int, or with an "s" in
/// its word is skipped. Indices are truncated to integers. Files of up to 500 MB are read.
///
/// @param pstrReason  may be null; takes on failure the file's name and what is wrong
/// @return nothing when the file cannot be read or has no reflection
[[nodiscard]] std::optional<ReflectionList> readReflectionList(const QString& strFileName,
                                                               QString* pstrReason = nullptr);

/// Does the same for the text of a list.
/// @return the reflections, which may be none
ReflectionList readReflectionText(const QByteArray& bytesText);

/// Records for the view: the point, d* in single precision, the intensity as dfIPoint, and a running nID
/// from 0. If the lists differ in length, the shorter one counts.
QList<Peak3D> peaksOfReflectionList(const QList<Vec3D>& listPoint, const QList<HKLRef>& listReflection);

}  // namespace tessera
