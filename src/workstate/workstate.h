// WorkState: all that a user has made of a series, as one value.
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

/// What undo puts back and what is restored after a crash: data set, numbers of the pages, groups of the 3D
/// views, results of runs. A copy costs little, as it shares its lists with whoever else holds them.
struct WorkState {
    SeriesData series;
    PeakHuntingParameters hunting;
    MappingParameters mapping;
    PeakMergingParameters merging;
    CellHuntingParameters cellHunting;
    IndexingParameters indexing;
    ExtractionParameters extraction;
    RefinementParameters refinement;
    bool bConstantBackground = false;                   ///< of the fits of peak positions
    std::optional<CellParameters> knownCell;            ///< as it was given last
    CMatrix3 matTransformation = CMatrix3::identity();  ///< of the cell, as the page has it
    QList<PointGroup> listRawGroup;                     ///< of the raw view; empty: it shows no peaks
    QList<PointGroup> listMergedGroup;                  ///< of the merged view
    /// Points of the merged view with the indices that the last indexing gave each of them; empty: those of
    /// the series, with the indices of its indexed reflections.
    QList<Peak3D> listMergedPoint;
    QList<Peak3D>
        listTablePeak;  ///< what the peak table shows; empty: nothing, in a row that keeps its layout
    std::shared_ptr<const GeometryRefinement>
        pGeometry;  ///< the last refinement of the geometry; may be null
    std::shared_ptr<const IntegrationResult> pIntegration;  ///< the last integration; may be null
};

}  // namespace tessera
