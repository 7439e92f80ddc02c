#include "refinement/spotresiduals.h"

#include "refinement/geometryrounds.h"

#include <algorithm>
#include <cmath>

namespace tessera {

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
    return radius() > 0 ? (place.dfY * dfX - place.dfX * dfY) / radius() : 0;
}

std::vector<SpotResidual> spotResiduals(const std::vector<GeometrySpot>& listSpot,
                                        const DiffractionGeometry& geometry)
{
    const double dfCos = std::cos(radians(geometry.plane.axis));
    const double dfSin = std::sin(radians(geometry.plane.axis));
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
    const double dfIndexTolerance = 0.25;  // as in the final rounds of the refinement
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
        spot.dfWeight = spot.dfWeight > 0 ? spot.dfWeight : 1;
    }
    numberChains(listSpot);
    GeometryWork work;
    work.listSpot = std::move(listSpot);
    work.fixed = start;
    work.dfAzimuthZero = start.plane.axis;
    chooseSpots(work, model.fit, dfIndexTolerance);
    std::vector<GeometrySpot> listKept;
    for (const int n : work.listUsed) {
        listKept.push_back(work.listSpot[n]);
    }
    return listKept;
}

}  // namespace tessera
