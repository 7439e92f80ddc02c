// WorkDifferences: what a user has changed from one state of the work to the next, in plain words.
#pragma once

#include "workstate/workstate.h"

#include <QString>

namespace tessera {

/// What is a step between two states. What follows from other things alone, as the masks of groups, the peaks
/// within the limits and the decimals of a box do, is none.
struct WorkDifferences {
    QString strName;  ///< what was changed, such as "Rotation axis 39.8° to 40.1°"; empty: nothing
    /// Of a change that is made bit by bit, as a number is typed or turned: changes of the same key belong
    /// together where they follow each other closely. Empty: a change by itself.
    QString strKey;
    bool bOtherSeries = false;  ///< the frames or the project are others: nothing leads back

    bool isStep() const { return !strName.isEmpty(); }
};

/// Named by what lies furthest up the road of the data: peaks before what was merged of them, and so on.
///
/// Lists that share their data cost nothing; others are looked into, so that the next state should share its
/// lists with the last one where they are the same.
WorkDifferences differences(const WorkState& before, const WorkState& after);

/// The name of a number of the pages in plain words, such as "Rotation axis".
/// @param nRow  of parameterTable()
QString nameOfNumber(int nRow);

}  // namespace tessera
