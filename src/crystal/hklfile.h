// The HKL file: text and reader.
#pragma once

#include "records/hkl5.h"
#include "records/hklref.h"

#include <QList>
#include <QString>

namespace tessera {

/// The text of an HKL file: observed reflections, unobserved ones with intensity 0, closing line; (0, 0, 0)
/// is left out of both. Intensities are scaled by a power of ten if the largest is 100000 or more.
/// The columns hold for indices from -999 to 9999.
QString hklFileText(const QList<HKLRef>& listObserved, const QList<HKLRef>& listMissing);

/// Reads every line that begins with three integers and a real number, free format, C locale; all other
/// lines are skipped, and so are numbers out of range. Indices that fill their columns of four need no
/// blanks. The closing line of a file counts as a reflection (0, 0, 0). A file that can't be opened gives an
/// empty list.
/// @param pbOpened  may be null; takes whether the file could be opened
QList<HKL5> readHKLFile(const QString& strFileName, bool* pbOpened = nullptr);

/// How many observed reflections, of another intensity than 0, a file holds. 0 when there is none.
int countObservedOfFile(const QString& strFileName);

}  // namespace tessera
