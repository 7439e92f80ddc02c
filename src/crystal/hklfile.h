// HKL and p4p files: the results of indexing for structure solution, and the HKL reader.
#pragma once

#include "app/records/hkl5.h"
#include "app/records/hklref.h"
#include "app/records/peak3d.h"
#include "app/records/runreport.h"
#include "app/records/vec3d.h"

#include <QList>
#include <QString>

/// The text of an HKL file: observed reflections, unobserved ones with intensity 0, closing line; (0, 0, 0)
/// is left out of both. Intensities are scaled by a power of ten if the largest is 100000 or more.
QString hklFileText(const QList<HKLRef>& listObserved, const QList<HKLRef>& listMissing);

/// Writes DIR/NAME.hkl and DIR/NAME.p4p. Each failure is a red line, and the other file is still written.
/// Where calAllReflections2() refuses, the HKL file has no unobserved reflections, and the log no count of
/// them.
///
/// @param listIndexedPeak  indexed reflections, real indices
/// @param listCell         a*, b*, c* in Å⁻¹; without a cell the p4p file is empty and nothing is said
/// @param listOverallTilt  degrees, one per frame
/// @return true if both files stand
bool outputIndexingResultsToFile(const QList<Peak3D>& listIndexedPeak, const QList<Vec3D>& listCell,
                                 const QList<double>& listOverallTilt, const QString& strProjectDir,
                                 const QString& strProjectName, CRunReport& report);

/// Reads every line that begins with three integers and a real number, free format, C locale; all other
/// lines are skipped, and so are numbers out of range. The closing line of a file counts as a reflection
/// (0, 0, 0). A file that can't be opened gives an empty list.
/// @param pbOpened  may be null; takes whether the file could be opened
QList<HKL5> readHKLFile(const QString& strFileName, bool* pbOpened = nullptr);
