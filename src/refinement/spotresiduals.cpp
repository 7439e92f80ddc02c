#include "refinement/spotresiduals.h"

#include "refinement/geometryrounds.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

// The same as in the final rounds of the refinement, so that the spots are those that it has fitted.
const double g_dfIndexTolerance = 0.25;

}  // namespace

double SpotResidual::radius() const
{
    return std::hypot(place.dfX, place.dfY);
}

double SpotResidual::alongRadius() const
{
    return radius() > 0 ? (place.dfX * dfX + place.dfY * dfY) / radius() : 0;
}

double SpotResidual::alongCircle() const
{
    // With y down, (y, −x) is the direction counter-clockwise on the screen.
    return radius() > 0 ? (place.dfY * dfX - place.dfX * dfY) / radius() : 0;
}

std::vector<SpotResidual> spotResiduals(const std::vector<GeometrySpot>& listSpot,
                                        const DiffractionGeometry& geometry)
{
    const double dfCos = std::cos(radians(geometry.plane.axis));
    const double dfSin = std::sin(radians(geometry.plane.axis));
    // Distances are found in the laboratory frame, whose x runs along the projection of the axis, and turned
    // back to the columns and rows of the frame.
    std::vector<SpotResidual> listResidual;
    listResidual.reserve(listSpot.size());
    for (const GeometrySpot& spot : listSpot) {
        const std::array<double, 3> seen = spherePoint(geometry.plane, geometry, spot.place);
        const DoubleVector expected = laboratoryPoint(geometry, realIndices(spot), spot.dfTilt);
        const double dfAlongAxis = (seen[0] - expected[0]) / geometry.dfPixelSize;
        const double dfAcross = (seen[1] - expected[1]) / geometry.dfPixelSize;
        SpotResidual residual;
        residual.nFrame = spot.nFrame;
        residual.dfTilt = spot.dfTilt;
        residual.place = spot.place;
        residual.anIndex = spot.anIndex;
        residual.dfX = dfCos * dfAlongAxis + dfSin * dfAcross;
        residual.dfY = dfCos * dfAcross - dfSin * dfAlongAxis;
        residual.dfAlong = (seen[2] - expected[2]) / geometry.dfPixelSize;
        listResidual.push_back(residual);
    }
    return listResidual;
}

std::vector<GeometrySpot> spotsOfModel(std::vector<GeometrySpot> listSpot, const DiffractionGeometry& start,
                                       const GeometryModel& model)
{
    // As in refineGeometry(): spots whose numbers are not finite take no part, and each has a weight.
    listSpot.erase(std::remove_if(listSpot.begin(), listSpot.end(),
                                  [](const GeometrySpot& spot) {
                                      return !std::isfinite(spot.place.dfX + spot.place.dfY + spot.dfTilt +
                                                            spot.dfWeight);
                                  }),
                   listSpot.end());
    if (listSpot.empty()) {
        return {};
    }
    for (GeometrySpot& spot : listSpot) {
        // Intensities may be negative after the subtraction of the background.
        spot.dfWeight = spot.dfWeight > 0 ? spot.dfWeight : 1;
    }
    numberChains(listSpot);
    GeometryWork work;
    work.listSpot = std::move(listSpot);
    work.fixed = start;
    work.dfAzimuthZero = start.plane.axis;
    chooseSpots(work, model.fit, g_dfIndexTolerance);
    std::vector<GeometrySpot> listKept;
    for (const int n : work.listUsed) {
        listKept.push_back(work.listSpot[n]);
    }
    return listKept;
}

}  // namespace tessera
