// GeometryState: the geometry of a series with all that follows from it, to be put back.
#pragma once

#include "dataset/dataset.h"
#include "records/runparameters.h"

namespace tessera {

/// A copy of what changes in a data set when another geometry is taken: the geometry itself, the cells, the
/// mapped peaks, and what was merged and indexed from them. Lists are shared with the data set until one of
/// both changes.
class CGeometryState {
public:
    CGeometryState(const DataSet& dataSet, const MappingParameters& mapping);

    /// Whether a data set still has the peaks, at their places on the frames, and the frames that it had
    /// then.
    bool isOf(const DataSet& dataSet) const;
    /// Whether geometry and cells of a data set are those that were kept.
    bool isInForce(const DataSet& dataSet, const MappingParameters& mapping) const;
    /// Puts all of it back, to the bit; the mapped peaks and what follows from them only where isOf() holds.
    /// @return whether these came back too; if not, peaks are to be mapped, merged and indexed anew
    bool putBack(DataSet& dataSet, MappingParameters& mapping) const;

private:
    DataSet m_data;  ///< without images, mask and hot pixels
    bool m_bApplyStretching;
};

}  // namespace tessera
