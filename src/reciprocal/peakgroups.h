// Peak groups: the group masks of the peak list, from and to the point groups of the raw 3D view.
#pragma once

#include "dataset/dataset.h"
#include "records/runparameters.h"

#include <QList>

#include <vector>

namespace tessera {

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
/// peaks are shown, as "Unlabeled". The masks alone decide; withinLimits() brings in the limits of the page.
RestoredPointGroups restorePointGroups(const DataSet& dataSet);

/// One flag per nID of the peaks: whether the masks put it into group `nGroup`, by the rule of
/// restorePointGroups(). Masks that don't fit the peaks are none.
std::vector<char> flagsOfPeakGroup(const DataSet& dataSet, int nGroup);

/// The same under a raw view that shows the peaks: what it shows is where the view has it, and of the others
/// those that the limits hide are where the masks have them, so that a merge can tell how many it leaves out.
///
/// @param listViewPoint   the points of the raw view
/// @param listGroupPoint  the group's indices into them
std::vector<char> flagsOfPeakGroup(const DataSet& dataSet, int nGroup, const QList<Peak3D>& listViewPoint,
                                   const QList<int>& listGroupPoint, const MappingParameters& limits);

/// One flag per nID of the points that are peaks of a frame, as those of a list loaded for a look need not
/// be.
std::vector<char> flagsOfPoints(const QList<Peak3D>& listViewPoint, const QList<int>& listPoint);

/// What of it lies within the limits. Groups that have no other peaks are left without any.
RestoredPointGroups withinLimits(const RestoredPointGroups& restored, const MappingParameters& parameters);

/// Gives the groups of m_vecPeakGroup running numbers, as those of a view have, and group 0 to peaks in no
/// other: of all peaks of `restored`, which the limits have not cut.
void closeGapsOfGroups(DataSet& dataSet, const RestoredPointGroups& restored);

/// Rewrites m_vecPeakGroup after the groups of the raw view: for each point of group g (its nFrame and nID)
/// g joins the list of that peak. Peaks that the limits of the page hide keep the groups that they had.
///
/// @param listViewPoint   the points of the raw view
/// @param listGroupPoint  per group the indices into them
void updatePeakGroupsFromView(DataSet& dataSet, const QList<Peak3D>& listViewPoint,
                              const QList<QList<int>>& listGroupPoint);

/// For the groups 0 to nGroups - 1 of m_vecPeakGroup the places of their peaks in `listViewPoint`, some or
/// all of the peaks of m_listPeakFrame in their order there. All empty when the groups don't fit the peaks.
QList<QList<int>> pointsOfPeakGroups(const DataSet& dataSet, const QList<Peak3D>& listViewPoint, int nGroups);

/// What becomes of m_vecPeakGroup when a view of `nGroups` groups loses some, or unites some under the place
/// of the first of them. Group 0, of the peaks in no other group, is never lost. When it is united itself, it
/// takes who is in no other group any more and becomes group 1, as the view puts a new group ahead of it.
///
/// A peak that loses its last group goes to group 0, and none is in group 0 and another.
void removePeakGroups(DataSet& dataSet, int nGroups, const QList<int>& listRemoved);
void mergePeakGroups(DataSet& dataSet, int nGroups, const QList<int>& listMerged);

/// Puts peaks whose groups all lie beyond the 64 of a peak list into group 0, lest they be in none when the
/// list is read again.
/// @return how many there are
int keepPeaksBeyondMasks(DataSet& dataSet);

}  // namespace tessera
