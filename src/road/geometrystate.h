// CGeometryState: a copy of the geometry of a series and everything that depends on it, for undoing a change.
#pragma once

#include "dataset/dataset.h"
#include "records/runparameters.h"

namespace tessera {

/// The parts of a data set that change with its geometry: the geometry itself, the cells, the mapped peaks,
/// and the merged and indexed reflections. Lists share their data with the data set until one of them
/// changes.
class CGeometryState {
public:
    /// Copies the present state.
    CGeometryState(const DataSet& dataSet, const MappingParameters& mapping);

    /// Whether a data set has the same frames, and the same peaks on them, as when the copy was made.
    bool isOf(const DataSet& dataSet) const;
    /// Whether a data set has the geometry and the cells of the copy.
    bool isInForce(const DataSet& dataSet, const MappingParameters& mapping) const;
    /// Restores the copy exactly; mapped peaks, and merged and indexed reflections, only if isOf() holds.
    /// @return whether these were restored; if not, the peaks have to be mapped, merged and indexed again
    bool putBack(DataSet& dataSet, MappingParameters& mapping) const;

private:
    DataSet m_data;  ///< without images, mask and hot pixels
    bool m_bApplyStretching;
};

}  // namespace tessera
