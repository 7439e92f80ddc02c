// Peak groups: the group masks of the peak list, from and to the point groups of the raw 3D view.
#pragma once

#include "app/dataset/dataset.h"

#include <QList>
#include <QVector>

#include <vector>

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

/// One flag per nID of the peaks: whether the masks put it into group `nGroup`, by the rule of
/// restorePointGroups(). Masks that don't fit the peaks are none.
std::vector<char> flagsOfPeakGroup(const DataSet& dataSet, int nGroup);

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

/// The new number of each group of a view that loses some (-1: gone), or that unites some under the place of
/// the first of them. Group 0, of the peaks in no other group, stays group 0; one that is united itself
/// leaves that place to the union, and its peaks go into group 1, as in the view.
QVector<int> groupNumbersAfterRemoval(int nGroups, QList<int> listRemoved);
QVector<int> groupNumbersAfterMerge(int nGroups, QList<int> listMerged);

/// Gives the groups of m_vecPeakGroup their new numbers. A peak that has lost its last group goes to group 0,
/// and none is in group 0 and another.
void renumberPeakGroups(DataSet& dataSet, const QVector<int>& vecNewNumber);

/// Puts peaks whose groups all lie beyond the 64 of a peak list into group 0, lest they be in none when the
/// list is read again.
/// @return how many there are
int keepPeaksBeyondMasks(DataSet& dataSet);
