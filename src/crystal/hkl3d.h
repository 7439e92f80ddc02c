// An HKL list as points of reciprocal space.
#pragma once

#include "geometry/reciprocalbasis.h"
#include "records/hkl5.h"
#include "records/peak3d.h"
#include "records/runreport.h"

#include <QList>
#include <QString>

#include <optional>

namespace tessera {

/// Makes one record per entry of `listHKL`: the point h·a* + k·b* + l·c* (Å⁻¹, single precision), d*, the
/// indices, the intensity as dfIPoint, frame 0 and a running nID from 0.
/// @param listPeak  replaced; the caller shows it and keeps it as the merged list
/// @return false, with `listPeak` untouched and a red line in the log, without a cell
bool showHKL3D(const QList<HKL5>& listHKL, const std::optional<ReciprocalBasis>& basis,
               QList<Peak3D>& listPeak, CRunReport& report);

/// Reads the HKL file `strFileName` and makes its points with showHKL3D(). An empty name, as of a cancelled
/// dialog, does nothing.
/// @param pbShown  may be null; whether `listPeak` has been replaced
/// @return false, with `listPeak` untouched, without a cell or a name and for a file that can't be opened
///         (a red line); else true, also when showHKL3D() found the cell co-planar
bool loadShelxFile(const QString& strFileName, const std::optional<ReciprocalBasis>& basis,
                   QList<Peak3D>& listPeak, CRunReport& report, bool* pbShown = nullptr);

}  // namespace tessera
