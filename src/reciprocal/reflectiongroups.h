// Reflection groups: numbering the sets of symmetry-equivalent reflections.
#pragma once

#include "records/peak3d.h"
#include "records/runreport.h"

#include <QList>

namespace tessera {

/// Sets nRGroup under the Laue class of a space group and brings the list into the order of groups.
///
/// Reflections whose indices are not within `fThreshold` of whole numbers get 0 and come first; then follow
/// group 1, 2 and so on, each numbered by its first member in list order.
/// @param nSpaceGroup  1 to 230; another number leaves every set of equal indices a group of its own
void assignReflectionGroups(QList<Peak3D>& listPeak, int nSpaceGroup, float fThreshold, CRunReport& report);

}  // namespace tessera
