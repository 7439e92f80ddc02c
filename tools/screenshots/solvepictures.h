// Pictures of "Solve" and of what the views have in common, one function each. They go by the order in which
// they stand here: each leaves the window as the next one expects it.
#pragma once

#include "tools/screenshots/camera.h"

namespace tessera {

/// "Solve" on the series that is open: the dock "Road" at its end, and the lattice on the merged points.
void shootSolve(CCamera& camera);
/// A reflection that is chosen in the table, in all four views.
void shootSelection(CCamera& camera);
/// Resolution rings, and the distance between two spots.
void shootRings(CCamera& camera);
/// The tab "Quality".
void shootQuality(CCamera& camera);
/// The report of the last "Solve", into a file: a browser shows it.
void saveReport(CCamera& camera, const QString& strFile);
/// A dock by its title, as "Steps"; without a dock of that title nothing is kept.
void shootDock(CCamera& camera, const QString& strTitle, const QString& strName);
/// The axis 10 degrees off, and the road on from there. The axis is put back.
void shootWrongAxis(CCamera& camera);

}  // namespace tessera
