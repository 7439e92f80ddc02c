#include "road/seriesgeometry.h"

#include "dataset/pagerounding.h"
#include "reciprocal/cellcommit.h"
#include "refinement/geometryofseries.h"
#include "road/finespots.h"
#include "road/refinedproject.h"

namespace tessera {

std::vector<CellConstraint> constraintsOf(const std::vector<LatticeType>& listType)
{
    std::vector<CellConstraint> listConstraint;
    listConstraint.reserve(listType.size());
    for (const LatticeType& type : listType) {
        listConstraint.push_back({type.symmetry.system, type.matTransform, bravaisSymbol(type.symmetry)});
    }
    return listConstraint;
}

GeometryRefinement refineSeriesGeometry(DataSet& dataSet, const MappingParameters& mapping,
                                        GeometryRefinementOptions options, int nJobs, CRunReport& report)
{
    const std::optional<DiffractionGeometry> start = geometryOfSeries(dataSet, mapping);
    if (!start) {
        GeometryRefinement none;
        none.strReason = QStringLiteral("Unit cell is not ready.");
        return none;
    }
    options.nJobs = nJobs;
    options.nFrames = dataSet.m_listFrameFile.size();
    return refineGeometry(fineSpots(dataSet, nJobs, report), *start, options, report);
}

ReciprocalBasis basisOf(const DiffractionGeometry& geometry)
{
    const auto vector = [&](size_t n) {
        const DoubleVector& vec = geometry.aBasis[n];
        return Vec3D{float(vec[0]), float(vec[1]), float(vec[2])};
    };
    return {vector(0), vector(1), vector(2)};
}

void takeGeometry(DataSet& dataSet, MappingParameters& mapping, const GeometryModel& model)
{
    const DiffractionGeometry& geometry = model.geometry;
    const PlaneTerms<double>& plane = geometry.plane;
    dataSet.m_bRotationAxisKnown = true;
    dataSet.m_dfRotationAxis = wrappedAxis(plane.axis);
    dataSet.m_nAxisDecimals = axisDecimals(dataSet.m_dfRotationAxis);
    const Distortion stretching = distortionOf(plane.stretchingCos, plane.stretchingSin);
    dataSet.m_dfStretchAmplitude = 100 * stretching.dfAmplitude;
    dataSet.m_dfStretchAzimuth = wrappedAzimuth(stretching.dfAzimuth);
    mapping.m_bApplyStretching = stretching.dfAmplitude != 0;
    dataSet.m_distortion = seriesDistortion(geometry);
    dataSet.m_distortion.dfEllipseAzimuth = wrappedAzimuth(dataSet.m_distortion.dfEllipseAzimuth);
    dataSet.m_distortion.dfParabolicAzimuth = wrappedAxis(dataSet.m_distortion.dfParabolicAzimuth);
    const ShiftData shifts = refinedShifts(dataSet, model);
    dataSet.m_dfCenterX = shifts.dfCenterX;
    dataSet.m_dfCenterY = shifts.dfCenterY;
    dataSet.m_listShift = shifts.listShift;
    for (int n = 0; n < dataSet.m_listOverallTilt.size(); ++n) {
        const double dfMore = (geometry.turn.scale - 1) *
                                  (dataSet.m_listOverallTilt[n] - geometry.dfMiddleTilt) +
                              geometry.turn.offset;
        dataSet.m_listOverallTilt[n] += dfMore;
        if (n < dataSet.m_listStageTilt.size()) {
            dataSet.m_listStageTilt[n] += dfMore;
        }
    }
    dataSet.m_listCellFound = basisOf(geometry).toList();
    updateUnitCell(dataSet);
    roundToPages(dataSet);
}

}  // namespace tessera
