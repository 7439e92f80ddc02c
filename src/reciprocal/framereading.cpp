#include "reciprocal/framereading.h"

#include "geometry/rotationgeometry.h"
#include "reciprocal/basissolver.h"
#include "reciprocal/mapping.h"

#include <cmath>

namespace tessera {

std::optional<FrameReading> readFramePlace(const DataSet& dataSet, bool bApplyStretching, int nFrame,
                                           const QPointF& ptRaw)
{
    const BeamCentres centres = beamCentres(dataSet);
    const int nFrames = dataSet.m_listShift.size();
    if (!centres.holds(nFrame) || nFrame >= dataSet.m_listOverallTilt.size()) {
        return {};
    }
    Peak3D peak;
    peak.dfX2D = ptRaw.x();
    peak.dfY2D = ptRaw.y();
    mapPeakTo3D(
        peak, frameCentre(centres, nFrame), rotationZ(dataSet.m_dfRotationAxis),
        rotationAboutAxis(relaxedTilt(dataSet, nFrame, nFrames), dataSet.m_distortion.dfAxisOutOfPlane),
        dataSet, bApplyStretching);
    if (!std::isfinite(peak.dfDStar)) {
        return {};
    }
    FrameReading reading;
    reading.point = peak.point();
    reading.dfDStar = peak.dfDStar;
    reading.dfAxisAngle = double(calAngleToRotationAxis(centres, dataSet.m_dfRotationAxis, nFrame, peak));
    if (const std::optional<ReciprocalBasis> basis = cellInForce(dataSet)) {
        const CBasisSolver solver(*basis);
        if (solver.isValid()) {
            const Vec3D hkl = solver.solve(reading.point);
            reading.indices = {double(hkl.x), double(hkl.y), double(hkl.z)};
        }
    }
    return reading;
}

std::optional<FrameDistance> distanceOnFrame(const DataSet& dataSet, bool bApplyStretching, int nFrame,
                                             const QPointF& ptFrom, const QPointF& ptTo)
{
    const auto from = readFramePlace(dataSet, bApplyStretching, nFrame, ptFrom);
    const auto to = readFramePlace(dataSet, bApplyStretching, nFrame, ptTo);
    if (!from || !to) {
        return {};
    }
    return FrameDistance{std::hypot(ptTo.x() - ptFrom.x(), ptTo.y() - ptFrom.y()),
                         double(length(to->point - from->point))};
}

}  // namespace tessera
