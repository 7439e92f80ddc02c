#include "integration/completenessforecast.h"

#include "integration/asymmetricunit.h"
#include "integration/possiblereflections.h"

#include "geometry/angles.h"

#include <Eigen/Dense>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

namespace tessera {

namespace {

const double g_dfFurthest = 180;  // greatest additional rotation, degrees

/// Finds the rotations at which points of reciprocal space cross the Ewald sphere.
class CFurtherTurn {
public:
    CFurtherTurn(const SeriesGeometry& series, const ObservationSymmetry& symmetry, double dfLeastSpeed)
        : m_dfLeastSpeed(dfLeastSpeed),
          m_dfScale(std::max(1e-6, std::abs(series.geometry.turn.scale))),
          m_dfHalfWavelength(series.geometry.dfWavelength / 2)
    {
        const DiffractionGeometry& geometry = series.geometry;
        const auto turnOf = [&](double dfTilt) {
            return geometry.turn.offset + geometry.dfMiddleTilt +
                   geometry.turn.scale * (dfTilt - geometry.dfMiddleTilt);
        };
        m_dfFirst = turnOf(series.listTilt.front());
        m_dfLast = turnOf(series.listTilt.back());
        m_nSense = m_dfLast < m_dfFirst ? -1 : 1;
        const double dfOut = radians(geometry.turn.outOfPlane);
        m_dfAxisX = std::cos(dfOut);
        m_dfAxisZ = std::sin(dfOut);
        Eigen::Matrix3d matToForce;
        for (int nRow = 0; nRow < 3; ++nRow) {
            for (int n = 0; n < 3; ++n) {
                matToForce(nRow, n) = symmetry.anTransform[nRow][n];
            }
            const DoubleVector& axis = geometry.aBasis[nRow];
            m_matBasis.col(nRow) = Eigen::Vector3d(axis.data());
        }
        m_matBasis *= (matToForce / std::max(1, symmetry.nDenominator)).inverse();
    }

    /// The smallest additional rotation to a crossing after the last frame, and before the first, degrees;
    /// infinite if there is none.
    void meet(const std::array<int, 3>& anIndex, double& dfAtEnd, double& dfAtStart) const
    {
        const Eigen::Vector3d g = m_matBasis * Eigen::Vector3d(anIndex[0], anIndex[1], anIndex[2]);
        // The height of the rotating point equals that of the sphere: A cos + B sin + C = |g|² λ / 2.
        const double dfAlong = m_dfAxisX * g.x() + m_dfAxisZ * g.z();
        const double dfCos = g.z() - m_dfAxisZ * dfAlong;
        const double dfSin = -m_dfAxisX * g.y();
        const double dfReach = std::hypot(dfCos, dfSin);
        const double dfHeight = g.squaredNorm() * m_dfHalfWavelength - m_dfAxisZ * dfAlong;
        const double dfSpeed = radians(std::sqrt(std::max(0.0, dfReach * dfReach - dfHeight * dfHeight)));
        if (!(dfSpeed > 0) || dfSpeed < m_dfLeastSpeed) {
            return;
        }
        const double dfMiddle = degrees(std::atan2(dfSin, dfCos));
        const double dfHalf = degrees(std::acos(dfHeight / dfReach));
        for (const double dfTurn : {dfMiddle - dfHalf, dfMiddle + dfHalf}) {
            dfAtEnd = std::min(dfAtEnd, ahead((dfTurn - m_dfLast) * m_nSense));
            dfAtStart = std::min(dfAtStart, ahead((m_dfFirst - dfTurn) * m_nSense));
        }
    }

private:
    /// A rotation reduced to 0 to 360 degrees, on the tilt scale of the series.
    double ahead(double dfTurn) const { return (dfTurn - 360 * std::floor(dfTurn / 360)) / m_dfScale; }

    double m_dfLeastSpeed;
    double m_dfScale;
    double m_dfHalfWavelength;
    double m_dfFirst = 0;
    double m_dfLast = 0;
    int m_nSense = 1;
    double m_dfAxisX = 1;
    double m_dfAxisZ = 0;
    Eigen::Matrix3d m_matBasis;  ///< conventional indices to the laboratory frame at tilt 0
};

QString percent(double df)
{
    return QStringLiteral("%1%").arg(100 * df, 0, 'f', 0);
}

QString textOf(const CompletenessForecast& forecast)
{
    if (forecast.dfNow >= forecast.dfGoal) {
        return QStringLiteral("The data are complete to %1.").arg(percent(forecast.dfNow));
    }
    const double dfEnd = std::ceil(forecast.dfMoreAtEnd);
    const double dfStart = std::ceil(forecast.dfMoreAtStart);
    const QString strGoal = percent(forecast.dfGoal);
    if (std::isfinite(dfEnd) && std::isfinite(dfStart)) {
        return QStringLiteral("%1 more degrees after the last frame, or %2 before the first, give %3.")
            .arg(dfEnd)
            .arg(dfStart)
            .arg(strGoal);
    }
    if (std::isfinite(dfEnd)) {
        return QStringLiteral("%1 more degrees after the last frame give %2.").arg(dfEnd).arg(strGoal);
    }
    if (std::isfinite(dfStart)) {
        return QStringLiteral("%1 more degrees before the first frame give %2.").arg(dfStart).arg(strGoal);
    }
    return QStringLiteral("No further turn about this axis gives %1: at most %2.")
        .arg(strGoal, percent(forecast.dfBest));
}

/// The smallest rotation, of a sorted list, at which the count reaches the goal.
double turnForGoal(const std::vector<double>& listTurn, int nNow, double dfGoal, int nPossible)
{
    const int nMissing = int(std::ceil(dfGoal * nPossible - 1e-9)) - nNow;
    if (nMissing <= 0) {
        return 0;
    }
    const bool bReached = size_t(nMissing) <= listTurn.size() &&
                          listTurn[size_t(nMissing) - 1] <= g_dfFurthest;
    return bReached ? listTurn[size_t(nMissing) - 1] : std::numeric_limits<double>::infinity();
}

void putCurve(const std::vector<double>& listAtEnd, const std::vector<double>& listAtStart, int nNow,
              int nPossible, CompletenessForecast& forecast)
{
    const auto share = [&](const std::vector<double>& list, double dfTurn) {
        return double(nNow + (std::upper_bound(list.begin(), list.end(), dfTurn) - list.begin())) / nPossible;
    };
    for (int n = 0; n <= int(g_dfFurthest); ++n) {
        forecast.listCurve.push_back({double(n), share(listAtEnd, n), share(listAtStart, n)});
    }
}

}  // namespace

CompletenessForecast forecastCompleteness(const std::vector<MergedReflection>& listMerged,
                                          const SeriesGeometry& series, const ObservationSymmetry& symmetry,
                                          const CellParameters& cell, double dfDMin, double dfLeastSpeed,
                                          double dfGoal)
{
    CompletenessForecast forecast;
    forecast.dfGoal = dfGoal;
    forecast.dfNow = forecast.dfBest = std::numeric_limits<double>::quiet_NaN();
    forecast.dfMoreAtEnd = forecast.dfMoreAtStart = std::numeric_limits<double>::infinity();
    if (series.listTilt.empty()) {
        return forecast;
    }
    std::set<std::array<int, 3>> setMeasured;
    for (const MergedReflection& merged : listMerged) {
        setMeasured.insert(merged.anIndex);
    }
    const CFurtherTurn turn(series, symmetry, dfLeastSpeed);
    const CAsymmetricUnit unit(symmetry.ops);
    int nPossible = 0;
    int nNow = 0;
    int nBest = 0;
    std::vector<double> listAtEnd;
    std::vector<double> listAtStart;
    forEachPossibleReflection(symmetry, cell, dfDMin, [&](const std::array<int, 3>& anIndex, double) {
        ++nPossible;
        if (setMeasured.count(anIndex) > 0) {
            ++nNow;
            return;
        }
        listAtEnd.push_back(std::numeric_limits<double>::infinity());
        listAtStart.push_back(std::numeric_limits<double>::infinity());
        for (const std::array<int, 3>& anImage : unit.equivalents(anIndex)) {
            turn.meet(anImage, listAtEnd.back(), listAtStart.back());
        }
        nBest += std::isfinite(listAtEnd.back()) ? 1 : 0;
    });
    if (nPossible == 0) {
        return forecast;
    }
    std::sort(listAtEnd.begin(), listAtEnd.end());
    std::sort(listAtStart.begin(), listAtStart.end());
    forecast.dfNow = double(nNow) / nPossible;
    forecast.dfBest = double(nNow + nBest) / nPossible;
    forecast.dfMoreAtEnd = turnForGoal(listAtEnd, nNow, dfGoal, nPossible);
    forecast.dfMoreAtStart = turnForGoal(listAtStart, nNow, dfGoal, nPossible);
    putCurve(listAtEnd, listAtStart, nNow, nPossible, forecast);
    forecast.strText = textOf(forecast);
    return forecast;
}

}  // namespace tessera
