// WorkState: the complete state of the user's work on a series, as one value.
#pragma once

#include "cloud/pointgroups.h"
#include "dataset/dataset.h"
#include "geometry/matrix3.h"
#include "integration/integrationresult.h"
#include "records/runparameters.h"
#include "refinement/geometryrefinement.h"

#include <QList>

#include <memory>
#include <optional>

namespace tessera {

/// What undo restores, and what is recovered after a crash: the data set, the parameters on the pages, the
/// groups of the 3D views and the results of the runs. A copy is cheap, since it shares its lists.
struct WorkState {
    SeriesData series;
    PeakHuntingParameters hunting;
    MappingParameters mapping;
    PeakMergingParameters merging;
    CellHuntingParameters cellHunting;
    IndexingParameters indexing;
    ExtractionParameters extraction;
    RefinementParameters refinement;
    bool bConstantBackground = false;                   ///< peak positions are fitted beside a constant level
    std::optional<CellParameters> knownCell;            ///< the known cell that was entered last
    CMatrix3 matTransformation = CMatrix3::identity();  ///< transformation of the cell on its page
    QList<PointGroup> listRawGroup;                     ///< groups of the raw view; empty: it shows no peaks
    QList<PointGroup> listMergedGroup;                  ///< groups of the merged view
    /// Points of the merged view with the indices of the last indexing; empty: the merged peaks of the series
    /// with the indices of its indexed reflections.
    QList<Peak3D> listMergedPoint;
    QList<Peak3D> listTablePeak;  ///< peaks in the peak table; may be empty
    /// The last refinement of the geometry; may be null.
    std::shared_ptr<const GeometryRefinement> pGeometry;
    std::shared_ptr<const IntegrationResult> pIntegration;  ///< the last integration; may be null
};

}  // namespace tessera
