#include "reciprocal/predictedpositions.h"

#include "geometry/angles.h"
#include "geometry/doublevector.h"
#include "reciprocal/mapping.h"

#include <QRectF>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <vector>

namespace tessera {

namespace {

constexpr double g_dfSingleStep = 1;  // degrees, of a series of one frame
constexpr double g_dfMaxRows = 1e7;
constexpr int g_nMaxReflections = 1000000;

DoubleVector sum(const DoubleVector& a, double df, const DoubleVector& b)
{
    return {a[0] + df * b[0], a[1] + df * b[1], a[2] + df * b[2]};
}

// The tilts that belong to a frame, relative to its own, radians: from the first (included) to the last.
struct TiltWindow {
    double dfTilt;  // of the frame, degrees
    double dfFrom, dfTo;
};

// None for a frame without tilt and for tilts that are no numbers.
std::optional<TiltWindow> windowOfFrame(const DataSet& dataSet, int nFrame)
{
    const int nShifts = dataSet.m_listShift.size();
    const int nTilts = dataSet.m_listOverallTilt.size();
    const int nFrames = nShifts > 0 ? nShifts : nTilts;
    if (nFrame < 0 || nFrame >= std::min(nFrames, nTilts)) {
        return std::nullopt;
    }
    TiltWindow window{};
    window.dfTilt = relaxedTilt(dataSet, nFrame, nFrames);
    std::vector<double> vecTilt;
    vecTilt.reserve(size_t(std::min(nFrames, nTilts)));
    for (int n = 0; n < std::min(nFrames, nTilts); ++n) {
        vecTilt.push_back(relaxedTilt(dataSet, n, nFrames));
    }
    if (!std::all_of(vecTilt.begin(), vecTilt.end(), [](double df) { return std::isfinite(df); })) {
        return std::nullopt;
    }
    std::sort(vecTilt.begin(), vecTilt.end());
    vecTilt.erase(std::unique(vecTilt.begin(), vecTilt.end()), vecTilt.end());
    double dfHalf = g_dfSingleStep / 2;
    if (vecTilt.size() > 1) {
        std::vector<double> vecStep;
        for (std::size_t n = 1; n < vecTilt.size(); ++n) {
            vecStep.push_back(vecTilt[n] - vecTilt[n - 1]);
        }
        std::nth_element(vecStep.begin(), vecStep.begin() + std::ptrdiff_t(vecStep.size() / 2),
                         vecStep.end());
        dfHalf = vecStep[vecStep.size() / 2] / 2;
    }
    const auto it = std::lower_bound(vecTilt.begin(), vecTilt.end(), window.dfTilt);
    const double dfBelow = it == vecTilt.begin() ? dfHalf : (*it - *(it - 1)) / 2;
    const double dfAbove = it + 1 == vecTilt.end() ? dfHalf : (*(it + 1) - *it) / 2;
    window.dfFrom = -radians(std::min(dfHalf, dfBelow));
    window.dfTo = radians(std::min(dfHalf, dfAbove));
    return window;
}

// The crystal at the tilt of a frame, and the reflections that the frame shows.
class CFramePrediction {
public:
    CFramePrediction(const DataSet& dataSet, const ReciprocalBasis& basis, int nFrame,
                     const TiltWindow& window, double dfMaxDStar, bool bApplyStretching)
        : m_dataSet(dataSet),
          m_basis(basis),
          m_nFrame(nFrame),
          m_window(window),
          m_dfMaxDStar(dfMaxDStar),
          m_dfRadius(1 / dataSet.m_dfWavelength),
          m_dfCosAxis(std::cos(radians(dataSet.m_dfRotationAxis))),
          m_dfSinAxis(std::sin(radians(dataSet.m_dfRotationAxis))),
          m_ptCentre(frameCentre(beamCentres(dataSet), nFrame)),
          m_correction(placeCorrection(dataSet, bApplyStretching)),
          m_dfOut(radians(dataSet.m_distortion.dfAxisOutOfPlane))
    {
        const double dfCos = std::cos(radians(window.dfTilt));
        const double dfSin = std::sin(radians(window.dfTilt));
        const std::array<Vec3D, 3> aVector = basis.vectors();
        for (std::size_t n = 0; n < 3; ++n) {
            const DoubleVector v = toAxis(widened(aVector[n]));
            m_aBasis[n] = fromAxis({v[0], dfCos * v[1] + dfSin * v[2], -dfSin * v[1] + dfCos * v[2]});
        }
    }

    // False for a cell whose lattice points cannot be gone through.
    bool walk(QList<Peak3D>& listPeak)
    {
        // The innermost index runs along the basis vector that leaves the plane of the frame most steeply.
        std::size_t nIn = 0;
        for (std::size_t n = 1; n < 3; ++n) {
            if (std::fabs(m_aBasis[n][2]) > std::fabs(m_aBasis[nIn][2])) {
                nIn = n;
            }
        }
        const std::size_t nOut = (nIn + 1) % 3, nMid = (nIn + 2) % 3;
        const double dfVolume = std::fabs(dot(m_aBasis[0], cross(m_aBasis[1], m_aBasis[2])));
        // No index exceeds d* times the length of its direct vector.
        const auto limit = [&](std::size_t n) {
            const DoubleVector v = cross(m_aBasis[(n + 1) % 3], m_aBasis[(n + 2) % 3]);
            return std::floor(m_dfMaxDStar * std::sqrt(dot(v, v)) / dfVolume + 1e-6);
        };
        const double dfOut = limit(nOut), dfMid = limit(nMid);
        if (!((2 * dfOut + 1) * (2 * dfMid + 1) <= g_dfMaxRows) || !(limit(nIn) < 1e9)) {
            return false;
        }
        const double dfLimit2 = m_dfMaxDStar * m_dfMaxDStar;
        // Height of the sphere above the plane at d* = r: at most r²·λ/2; the tilts of the window move a
        // point by at most the angle times r.
        const double dfTurn = std::max(m_window.dfTo, -m_window.dfFrom);
        const double dfStepZ = m_aBasis[nIn][2];
        const double dfStep2 = dot(m_aBasis[nIn], m_aBasis[nIn]);
        int aIndex[3] = {0, 0, 0};
        for (aIndex[nOut] = -int(dfOut); aIndex[nOut] <= int(dfOut); ++aIndex[nOut]) {
            const DoubleVector vecOut = sum({0, 0, 0}, aIndex[nOut], m_aBasis[nOut]);
            for (aIndex[nMid] = -int(dfMid); aIndex[nMid] <= int(dfMid); ++aIndex[nMid]) {
                const DoubleVector vecRow = sum(vecOut, aIndex[nMid], m_aBasis[nMid]);
                // The piece of the row inside the sphere of the limit, then the piece near the plane.
                const double dfMiddle = -dot(vecRow, m_aBasis[nIn]) / dfStep2;
                const double dfNearest2 = dot(vecRow, vecRow) - dfMiddle * dfMiddle * dfStep2;
                if (dfNearest2 > dfLimit2) {
                    continue;
                }
                const double dfHalf = std::sqrt((dfLimit2 - dfNearest2) / dfStep2);
                const double dfLow = (-dfTurn * m_dfMaxDStar - vecRow[2]) / dfStepZ;
                const double dfHigh = (dfTurn * m_dfMaxDStar + dfLimit2 / (2 * m_dfRadius) - vecRow[2]) /
                                      dfStepZ;
                const int nFrom = int(std::ceil(std::max(dfMiddle - dfHalf, std::min(dfLow, dfHigh)) - 1e-6));
                const int nTo = int(std::floor(std::min(dfMiddle + dfHalf, std::max(dfLow, dfHigh)) + 1e-6));
                for (aIndex[nIn] = nFrom; aIndex[nIn] <= nTo; ++aIndex[nIn]) {
                    addCrossings(aIndex, sum(vecRow, aIndex[nIn], m_aBasis[nIn]), listPeak);
                    if (listPeak.size() > g_nMaxReflections) {
                        return false;
                    }
                }
            }
        }
        return true;
    }

private:
    // To coordinates with the rotation axis as x, and back; an axis in the plane of the frame is the x
    // already.
    DoubleVector toAxis(const DoubleVector& v) const
    {
        const double dfCos = std::cos(m_dfOut), dfSin = std::sin(m_dfOut);
        return m_dfOut == 0 ? v
                            : DoubleVector{dfCos * v[0] + dfSin * v[2], v[1], dfCos * v[2] - dfSin * v[0]};
    }
    DoubleVector fromAxis(const DoubleVector& v) const
    {
        const double dfCos = std::cos(m_dfOut), dfSin = std::sin(m_dfOut);
        return m_dfOut == 0 ? v
                            : DoubleVector{dfCos * v[0] - dfSin * v[2], v[1], dfSin * v[0] + dfCos * v[2]};
    }

    // The crossings with the sphere inside the window: turned by δ about the axis, the point must have
    // |g|²·λ/2 along the beam; an axis out of the plane adds its part to that.
    void addCrossings(const int* pIndex, const DoubleVector& vecLaboratory, QList<Peak3D>& listPeak)
    {
        const DoubleVector g = toAxis(vecLaboratory);
        const double dfSquare = dot(g, g);
        const double dfDistance = std::hypot(g[1], g[2]);
        const double dfSine = m_dfOut == 0 ? dfSquare / (2 * m_dfRadius * dfDistance)
                                           : (dfSquare / (2 * m_dfRadius) - std::sin(m_dfOut) * g[0]) /
                                                 (std::cos(m_dfOut) * dfDistance);
        if (dfSquare > m_dfMaxDStar * m_dfMaxDStar || dfSquare == 0 || !(std::fabs(dfSine) <= 1)) {
            return;
        }
        const double dfPhi = std::atan2(g[2], g[1]), dfRise = std::asin(dfSine);
        double dfLast = std::numeric_limits<double>::quiet_NaN();
        for (double dfTurn : {dfPhi - dfRise, dfPhi + dfRise - g_dfPi}) {
            dfTurn = std::remainder(dfTurn, 2 * g_dfPi);
            if (dfTurn >= m_window.dfFrom && dfTurn < m_window.dfTo && dfTurn != dfLast) {
                addPeak(pIndex, g, dfSquare, dfTurn, listPeak);
            }
            dfLast = dfTurn;
        }
    }

    void addPeak(const int* pIndex, const DoubleVector& g, double dfSquare, double dfTurn,
                 QList<Peak3D>& listPeak)
    {
        const double dfCos = std::cos(dfTurn), dfSin = std::sin(dfTurn);
        const DoubleVector seen = fromAxis({g[0], dfCos * g[1] + dfSin * g[2], dfCos * g[2] - dfSin * g[1]});
        const double dfX = seen[0], dfY = seen[1];
        // From the centre of the sphere through the point onto the flat pattern, then to the frame's axes.
        const double dfScale = m_dfRadius / (m_dfRadius - dfSquare / (2 * m_dfRadius)) /
                               m_dataSet.m_dfPixelSize;
        const QPointF ptFlat((m_dfCosAxis * dfX + m_dfSinAxis * dfY) * dfScale,
                             (-m_dfSinAxis * dfX + m_dfCosAxis * dfY) * dfScale);
        const std::optional<QPointF> pt = m_correction.putBack(ptFlat);
        if (!pt) {
            return;
        }
        Peak3D peak;
        peak.setHKL(pIndex[0], pIndex[1], pIndex[2]);
        const Vec3D v = m_basis.point(pIndex[0], pIndex[1], pIndex[2]);
        peak.setPoint(v);
        peak.dfDStar = double(length(v));
        peak.dfFrameTilt = m_window.dfTilt + degrees(dfTurn);
        peak.dfX2D = m_ptCentre.x() + pt->x();
        peak.dfY2D = m_ptCentre.y() + pt->y();
        if (!std::isfinite(peak.dfX2D) || !std::isfinite(peak.dfY2D)) {
            return;
        }
        peak.nFrame = m_nFrame;
        peak.nID = listPeak.size();
        listPeak.append(peak);
    }

    const DataSet& m_dataSet;
    ReciprocalBasis m_basis;
    int m_nFrame;
    TiltWindow m_window;
    double m_dfMaxDStar;
    double m_dfRadius;  // of the sphere, Å⁻¹
    double m_dfCosAxis, m_dfSinAxis;
    QPointF m_ptCentre;
    CPlaceCorrection m_correction;
    double m_dfOut;                        // of the axis, out of the plane, radians
    std::array<DoubleVector, 3> m_aBasis;  // at the tilt of the frame
};

// How far from the beam the rim of a frame is without its distortions, pixels; dfX, dfY: half the sides of a
// frame around the beam that contains the real one. A margin covers what lies between the places looked at.
double farthestWithoutDistortion(const CPlaceCorrection& correction, double dfX, double dfY)
{
    const int nSteps = 32;
    double dfFarthest = 0;
    for (int n = -nSteps; n <= nSteps; ++n) {
        const double dfPart = double(n) / nSteps;
        for (const QPointF& pt : {QPointF(dfX, dfPart * dfY), QPointF(-dfX, dfPart * dfY),
                                  QPointF(dfPart * dfX, dfY), QPointF(dfPart * dfX, -dfY)}) {
            const QPointF ptUndone = correction.undone(pt);
            dfFarthest = std::max(dfFarthest, std::hypot(ptUndone.x(), ptUndone.y()));
        }
    }
    return 1.01 * dfFarthest;
}

}  // namespace

QList<Peak3D> predictedPositions(const DataSet& dataSet, int nFrame, double dfMaxDStar, bool bApplyStretching)
{
    const std::optional<ReciprocalBasis> basis = cellInForce(dataSet);
    if (!basis || !(dfMaxDStar > 0) || !std::isfinite(dfMaxDStar) || !(dataSet.m_dfWavelength > 0) ||
        !(dataSet.m_dfPixelSize > 0)) {
        return {};
    }
    const std::optional<TiltWindow> window = windowOfFrame(dataSet, nFrame);
    if (!window) {
        return {};
    }
    QList<Peak3D> listPeak;
    CFramePrediction prediction(dataSet, *basis, nFrame, *window, dfMaxDStar, bApplyStretching);
    return prediction.walk(listPeak) ? listPeak : QList<Peak3D>();
}

QList<Peak3D> predictedPositionsOnFrame(const DataSet& dataSet, int nFrame, double dfMaxDStar,
                                        bool bApplyStretching, const QSize& sizeFrame)
{
    const QPointF ptCentre = frameCentre(beamCentres(dataSet), nFrame);
    const double dfX = std::max(std::fabs(ptCentre.x()), std::fabs(sizeFrame.width() - ptCentre.x()));
    const double dfY = std::max(std::fabs(ptCentre.y()), std::fabs(sizeFrame.height() - ptCentre.y()));
    // d* of a point of the sphere is below the distance of its pixel from the beam.
    const double dfStretch = bApplyStretching ? 1 + std::fabs(dataSet.m_dfStretchAmplitude) / 100 : 1;
    double dfFarthest = std::hypot(dfX, dfY) * dataSet.m_dfPixelSize * dfStretch;
    if (dataSet.m_distortion.movesPlaces()) {
        dfFarthest = farthestWithoutDistortion(placeCorrection(dataSet, bApplyStretching), dfX, dfY) *
                     dataSet.m_dfPixelSize;
    }
    QList<Peak3D> listPeak = predictedPositions(dataSet, nFrame, std::min(dfMaxDStar, dfFarthest),
                                                bApplyStretching);
    const QRectF rectFrame(QPointF(-0.5, -0.5), QSizeF(sizeFrame));
    listPeak.erase(std::remove_if(listPeak.begin(), listPeak.end(),
                                  [&](const Peak3D& peak) {
                                      return !rectFrame.contains(QPointF(peak.dfX2D, peak.dfY2D));
                                  }),
                   listPeak.end());
    return listPeak;
}

}  // namespace tessera
