// Peak groups: the group masks of the peak list, from and to the point groups of the raw 3D view.
#pragma once

#include "app/dataset/dataset.h"

#include <QList>

/// What the raw view shows of a peak list with masks.
struct RestoredPointGroups {
    bool bRestored = false;  ///< false: the masks don't fit the peaks, and nothing is to change
    QList<QList<Peak3D>> listPeakFrameShown;  ///< per frame, the peaks that are shown
    QList<Peak3D> listPeakFlat;               ///< the same as one list, frame by frame
    QList<QList<int>> listGroupPoint;         ///< of groups 0 to 63 the places in listPeakFlat
};

/// Turns the masks m_vecPeakGroup into point groups.
///
/// A peak of no group is left out, but a list in which no peak has a group is a list without masks: all its
/// peaks are shown, as "Unlabeled". The masks alone decide, not the limits of the page, which come in again
/// with the next change of a limit or of the geometry.
RestoredPointGroups restorePointGroups(const DataSet& dataSet);

/// Rewrites m_vecPeakGroup after the groups of the raw view: for each point of group g (its nFrame and nID)
/// g joins the list of that peak. Peaks that the limits of the page hide keep the groups that they had.
///
/// @param listViewPoint   the points of the raw view
/// @param listGroupPoint  per group the indices into them
void updatePeakGroupsFromView(DataSet& dataSet, const QList<Peak3D>& listViewPoint,
                              const QList<QList<int>>& listGroupPoint);
