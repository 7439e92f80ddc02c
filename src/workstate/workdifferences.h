// WorkDifferences: the user's change from one work state to the next, described for the undo menu.
#pragma once

#include "workstate/workstate.h"

#include <QString>

namespace tessera {

/// The step from one state to another. Changes of derived data alone (masks of groups, peaks within the
/// limits, decimals of a box) are not a step.
struct WorkDifferences {
    QString strName;  ///< what was changed, such as "Rotation axis 39.8° to 40.1°"; empty: there is no step
    /// Identifies a change that is made in many small ones, such as typing a number: changes with the same
    /// key that follow each other closely are merged into one step. Empty: the change is a step of its own.
    QString strKey;
    bool bOtherSeries = false;  ///< frames or project differ: the change cannot be undone

    /// Whether there is a step to undo.
    bool isStep() const { return !strName.isEmpty(); }
};

/// Compares two states. If several things differ, the step is named after one of them: results of runs come
/// before numbers on the pages and groups, and among results the earlier stage comes first, such as peaks
/// before merged reflections.
///
/// Lists that share their data are not compared element by element; the later state should therefore share
/// unchanged lists with the earlier one.
WorkDifferences differences(const WorkState& before, const WorkState& after);

/// The name of a parameter for the user, such as "Rotation axis".
/// @param nRow  row of parameterTable()
QString nameOfNumber(int nRow);

}  // namespace tessera
