// Solve pictures: pictures of "Solve" and of what the views have in common, one function for each. They
// must be called in this order, as each leaves the window in the state that the next one needs.
#pragma once

#include "tools/screenshots/camera.h"

namespace tessera {

/// "Solve" on the open series: the dock "Road" at its end, and the lattice on the merged points.
void shootSolve(CCamera& camera);
/// A reflection that is selected in the table, in all four views.
void shootSelection(CCamera& camera);
/// Resolution rings, and the distance between two spots.
void shootRings(CCamera& camera);
/// The tab "Quality".
void shootQuality(CCamera& camera);
/// Saves the report of the last "Solve" to a file, for a browser.
void saveReport(CCamera& camera, const QString& strFile);
/// A dock with a title such as "Steps". Without such a dock there is no picture.
void shootDock(CCamera& camera, const QString& strTitle, const QString& strName);
/// The axis 10 degrees off, and the road from there on. The axis is restored.
void shootWrongAxis(CCamera& camera);

}  // namespace tessera
