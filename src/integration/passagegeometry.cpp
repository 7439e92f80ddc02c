#include "integration/passagegeometry.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace tessera {

CPassageGeometry::CPassageGeometry(const SeriesGeometry& series)
    : m_series(series),
      m_dfK(1 / series.geometry.dfWavelength),
      m_dfAxisX(std::cos(radians(series.geometry.turn.outOfPlane))),
      m_dfAxisZ(std::sin(radians(series.geometry.turn.outOfPlane)))
{
    const std::vector<double>& list = series.listTilt;
    for (size_t n = 2; n < list.size(); ++n) {
        m_bOneSense = m_bOneSense && (list[n] - list[n - 1]) * (list[1] - list[0]) > 0;
    }
    for (int nHalf = 0; nHalf <= 2 * frameCount(); ++nHalf) {
        m_listTurn.push_back(turnOf(tiltAt(nHalf / 2.0 - 0.5)));
    }
    findHoles();
}

void CPassageGeometry::findHoles()
{
    const double dfHole = 1.5;  // in usual steps: halfway between one step and two
    const std::vector<double>& list = m_series.listTilt;
    if (m_series.rotation.kind != RotationKind::Continuous || list.size() < 4) {
        return;  // with three frames it is unclear which step is the usual one
    }
    std::vector<double> listStep;
    for (size_t n = 1; n < list.size(); ++n) {
        listStep.push_back(std::abs(list[n] - list[n - 1]));
    }
    std::vector<double> listSorted = listStep;
    const auto middle = listSorted.begin() + std::ptrdiff_t(listSorted.size() / 2);
    std::nth_element(listSorted.begin(), middle, listSorted.end());
    const auto isHole = [&](double dfStep) { return dfStep > dfHole * *middle; };
    if (std::none_of(listStep.begin(), listStep.end(), isHole)) {
        return;
    }
    std::transform(listStep.begin(), listStep.end(), std::back_inserter(m_listHole),
                   [&](double dfStep) { return char(isHole(dfStep)); });
    m_dfHalfStep = std::copysign(*middle / 2, list.back() - list.front());
}

double CPassageGeometry::tiltAt(double dfFrame) const
{
    const std::vector<double>& list = m_series.listTilt;
    if (list.size() < 2) {
        return list.empty() ? 0 : list.front();
    }
    const int n = std::clamp(int(std::floor(dfFrame)), 0, frameCount() - 2);
    return list[n] + (dfFrame - n) * (list[size_t(n) + 1] - list[n]);
}

DoubleVector CPassageGeometry::pointOf(const std::array<int, 3>& anIndex) const
{
    DoubleVector point;
    for (size_t n = 0; n < 3; ++n) {
        point[n] = 0;
        for (size_t m = 0; m < 3; ++m) {
            point[n] += anIndex[m] * m_series.geometry.aBasis[m][n];
        }
    }
    return point;
}

CPassageGeometry::HeightRow CPassageGeometry::turnOf(double dfTilt) const
{
    return turnToLaboratory(m_series.geometry.turn, m_series.geometry.dfMiddleTilt, dfTilt);
}

double CPassageGeometry::excitation(const DoubleVector& point, const HeightRow& turn) const
{
    // Difference of squares divided by the sum, which avoids the cancellation of two long vectors.
    const double dfHeight = turn[6] * point[0] + turn[7] * point[1] + turn[8] * point[2];
    const double dfSquare = dot(point, point);
    const double dfDifference = 2 * m_dfK * dfHeight - dfSquare;
    return dfDifference / (m_dfK + std::sqrt(std::max(m_dfK * m_dfK - dfDifference, 0.0)));
}

double CPassageGeometry::excitationAt(const DoubleVector& point, int nFrame) const
{
    if (nFrame >= 0 && nFrame < frameCount()) {
        return excitation(point, turnAt(2 * nFrame + 1));
    }
    return excitation(point, turnOf(tiltAt(nFrame)));
}

double CPassageGeometry::excitationAtStart(const DoubleVector& point, int nFrame) const
{
    if (isHoleBehind(nFrame - 1)) {
        return excitation(point, turnOf(tiltAt(nFrame) - m_dfHalfStep));
    }
    if (nFrame >= 0 && nFrame <= frameCount()) {
        return excitation(point, turnAt(2 * nFrame));
    }
    return excitation(point, turnOf(tiltAt(nFrame - 0.5)));
}

double CPassageGeometry::excitationAtEnd(const DoubleVector& point, int nFrame) const
{
    return isHoleBehind(nFrame) ? excitation(point, turnOf(tiltAt(nFrame) + m_dfHalfStep))
                                : excitationAtStart(point, nFrame + 1);
}

double CPassageGeometry::excitationStep(const DoubleVector& point, int nFrame) const
{
    return std::abs(excitationAtEnd(point, nFrame) - excitationAtStart(point, nFrame));
}

// The frame number at which a tilt, modulo 360°, occurs between two frames.
std::optional<double> CPassageGeometry::frameWithin(double dfTilt, double dfFrom, double dfTo) const
{
    const double dfFirst = tiltAt(dfFrom);
    const double dfSpan = tiltAt(dfTo) - dfFirst;
    const double dfTurn = 360 / std::abs(m_series.geometry.turn.scale);
    double dfWay = std::fmod(dfTilt - dfFirst, dfTurn);
    if (dfSpan > 0 && dfWay < 0) {
        dfWay += dfTurn;
    } else if (dfSpan < 0 && dfWay > 0) {
        dfWay -= dfTurn;
    }
    if (dfSpan == 0 || std::abs(dfWay) >= std::abs(dfSpan)) {
        return std::nullopt;
    }
    return dfFrom + (dfTo - dfFrom) * dfWay / dfSpan;
}

std::vector<SphereCrossing> CPassageGeometry::crossings(const DoubleVector& point, int nBeyond) const
{
    std::vector<SphereCrossing> list;
    const TurnTerms<double>& turn = m_series.geometry.turn;
    const double dfMiddle = m_series.geometry.dfMiddleTilt;
    const double dfAlong = m_dfAxisX * point[0] + m_dfAxisZ * point[2];
    const double dfFixed = m_dfAxisZ * dfAlong;
    const double dfCos = point[2] - dfFixed;
    const double dfSin = -m_dfAxisX * point[1];
    const double dfRadius = std::sqrt(dfCos * dfCos + dfSin * dfSin);
    const double dfRatio = (dot(point, point) / (2 * m_dfK) - dfFixed) / dfRadius;
    if (frameCount() < 2 || !(std::abs(dfRatio) < 1) || turn.scale == 0) {
        return list;
    }
    const double dfPhase = degrees(std::atan2(dfSin, dfCos));
    const double dfOff = degrees(std::acos(dfRatio));
    // d(height)/d(angle) = −R·sin(angle − φ), the same at both crossings except for the sign.
    const double dfSpeed = dfRadius * std::sqrt(1 - dfRatio * dfRatio) * radians(1.0) * std::abs(turn.scale);
    const int nLast = frameCount() - 1;
    for (const double dfAngle : {dfPhase - dfOff, dfPhase + dfOff}) {
        const double dfTilt = dfMiddle + (dfAngle - turn.offset - dfMiddle) / turn.scale;
        // Most points never cross the sphere; if the rotation has one sense, this is quick to find.
        if (!m_bOneSense || frameWithin(dfTilt, -0.5 - nBeyond, 0) ||
            frameWithin(dfTilt, nLast, nLast + 0.5 + nBeyond) || liesBetweenEnds(dfTilt)) {
            for (int n = 0; n < nLast; ++n) {
                const double dfFrom = n == 0 ? -0.5 - nBeyond : n;
                const double dfTo = n == nLast - 1 ? nLast + 0.5 + nBeyond : n + 1;
                if (const auto dfFrame = frameWithin(dfTilt, dfFrom, dfTo)) {
                    list.push_back({*dfFrame, tiltAt(*dfFrame), dfSpeed});
                }
            }
        }
    }
    std::stable_sort(list.begin(), list.end(), [](const SphereCrossing& one, const SphereCrossing& other) {
        return one.dfFrame < other.dfFrame;
    });
    return list;
}

bool CPassageGeometry::liesBetweenEnds(double dfTilt) const
{
    const double dfFirst = m_series.listTilt.front(), dfSpan = m_series.listTilt.back() - dfFirst;
    const double dfTurn = 360 / std::abs(m_series.geometry.turn.scale);
    double dfWay = std::fmod(dfTilt - dfFirst, dfTurn);
    if (dfSpan > 0 && dfWay < 0) {
        dfWay += dfTurn;
    } else if (dfSpan < 0 && dfWay > 0) {
        dfWay -= dfTurn;
    }
    return std::abs(dfWay) <= std::abs(dfSpan);
}

std::optional<FramePlace> CPassageGeometry::placeOn(const std::array<int, 3>& anIndex, int nFrame) const
{
    const DoubleVector index = {double(anIndex[0]), double(anIndex[1]), double(anIndex[2])};
    const int n = std::clamp(nFrame, 0, frameCount() - 1);
    std::optional<FramePlace> place = placeOfReflection(m_series.geometry, index, tiltAt(nFrame));
    if (place) {
        place->dfX += m_series.listBeam[n].dfX;
        place->dfY += m_series.listBeam[n].dfY;
    }
    return place;
}

double CPassageGeometry::reach() const
{
    double dfReach = 0;
    for (const FramePlace& beam : m_series.listBeam) {
        for (const double dfX : {0.0, m_series.sizeFrame.width() - 1.0}) {
            for (const double dfY : {0.0, m_series.sizeFrame.height() - 1.0}) {
                const std::array<double, 3> seen = spherePoint(m_series.geometry.plane, m_series.geometry,
                                                               {dfX - beam.dfX, dfY - beam.dfY});
                dfReach = std::max(dfReach, std::sqrt(dot(seen, seen)));
            }
        }
    }
    return dfReach;
}

}  // namespace tessera
