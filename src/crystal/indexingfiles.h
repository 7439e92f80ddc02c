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
/// Where calAllReflections2() refuses, the HKL file has no unobserved reflections, and the log no count of
/// them.
///
/// @param listIndexedPeak  indexed reflections, real indices
/// @param basis            without a cell the p4p file is empty and nothing is said
/// @param listOverallTilt  degrees, one per frame
/// @param pSet             may be null; else the files become part of the set and wait for its commit()
/// @return true if both files stand
bool outputIndexingResultsToFile(const QList<Peak3D>& listIndexedPeak,
                                 const std::optional<ReciprocalBasis>& basis,
                                 const QList<double>& listOverallTilt, const QString& strProjectDir,
                                 const QString& strProjectName, CRunReport& report, CFileSet* pSet = nullptr);

}  // namespace tessera
