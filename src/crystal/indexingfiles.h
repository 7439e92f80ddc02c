// Result files of indexing for structure solution: .hkl and .p4p.
#pragma once

#include "geometry/reciprocalbasis.h"
#include "records/fileset.h"
#include "records/peak3d.h"
#include "records/runreport.h"

#include <QList>
#include <QString>

#include <optional>

namespace tessera {

/// Writes DIR/NAME.hkl and DIR/NAME.p4p. Each failure is a red line, and the other file is still written.
/// The HKL file lists the observed reflections with rounded indices, and then, with intensity 0, those that
/// the rotation swept through and that were not observed. Where calAllReflections2() refuses to list the
/// latter, the HKL file has none of them, and the log does not count them.
///
/// @param listIndexedPeak  indexed reflections; their indices are real numbers
/// @param basis            none, or one that spans no cell: the p4p file is empty, and the log does not
///                         mention it
/// @param listOverallTilt  degrees, one per frame
/// @param pSet             may be null; else the files become part of the set and wait for its commit(), and
///                         whoever commits it tells that they are written
/// @return true if both files have been written, or have become part of the set
bool outputIndexingResultsToFile(const QList<Peak3D>& listIndexedPeak,
                                 const std::optional<ReciprocalBasis>& basis,
                                 const QList<double>& listOverallTilt, const QString& strProjectDir,
                                 const QString& strProjectName, CRunReport& report, CFileSet* pSet = nullptr);

/// The line of the log after strHKLFile was written.
void tellHKLWritten(const QString& strHKLFile, CRunReport& report);
/// The line of the log after strP4PFile was written with a cell.
void tellP4PWritten(const QString& strP4PFile, CRunReport& report);

}  // namespace tessera
