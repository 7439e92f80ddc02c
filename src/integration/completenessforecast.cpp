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

/// Finds the further rotations that bring points of reciprocal space onto the Ewald sphere.
///
/// Angles of rotation inside this class are those of the crystal in the laboratory frame of
/// DiffractionGeometry, that is, tilts after scale and offset of the refined geometry were applied.
class CFurtherTurn {
public:
    CFurtherTurn(const SeriesGeometry& series, const ObservationSymmetry& symmetry, double dfLeastSpeed)
        : m_dfLeastSpeed(dfLeastSpeed),
          m_dfScale(std::max(1e-6, std::abs(series.geometry.turn.scale))),
          m_dfHalfWavelength(series.geometry.dfWavelength / 2)
    {
        const DiffractionGeometry& geometry = series.geometry;
        // As in turnToLaboratory().
        const auto rotationAt = [&](double dfTilt) {
            return geometry.turn.offset + geometry.dfMiddleTilt +
                   geometry.turn.scale * (dfTilt - geometry.dfMiddleTilt);
        };
        m_dfFirst = rotationAt(series.listTilt.front());
        m_dfLast = rotationAt(series.listTilt.back());
        m_nSense = m_dfLast < m_dfFirst ? -1 : 1;
        // The axis lies in the plane of x and z; its y is 0.
        const double dfOut = radians(geometry.turn.outOfPlane);
        m_dfAxisX = std::cos(dfOut);
        m_dfAxisZ = std::sin(dfOut);
        // Multiplies indices of the cell in force, and yields conventional ones.
        Eigen::Matrix3d matToConventional;
        for (int nRow = 0; nRow < 3; ++nRow) {
            for (int n = 0; n < 3; ++n) {
                matToConventional(nRow, n) = symmetry.anTransform[nRow][n];
            }
            const DoubleVector& axis = geometry.aBasis[nRow];
            m_matBasis.col(nRow) = Eigen::Vector3d(axis.data());
        }
        m_matBasis *= (matToConventional / std::max(1, symmetry.nDenominator)).inverse();
    }

    /// Reduces both rotations to those at which the reflection crosses the Ewald sphere, if these are
    /// smaller.
    /// @param anIndex    conventional indices
    /// @param dfAtEnd    rotation to be added after the last frame, degrees on the scale of the tilts
    /// @param dfAtStart  rotation to be added before the first frame, likewise
    void reduceToCrossings(const std::array<int, 3>& anIndex, double& dfAtEnd, double& dfAtStart) const
    {
        const Eigen::Vector3d g = m_matBasis * Eigen::Vector3d(anIndex[0], anIndex[1], anIndex[2]);
        // During a rotation by φ about the axis u, the z of the point g is A·cos φ + B·sin φ + C with
        // A = g_z − C, B = −u_x·g_y and C = u_z·(u·g). The point is on the sphere where z = |g|²·λ/2.
        const double dfAlong = m_dfAxisX * g.x() + m_dfAxisZ * g.z();
        const double dfCos = g.z() - m_dfAxisZ * dfAlong;
        const double dfSin = -m_dfAxisX * g.y();
        const double dfAmplitude = std::hypot(dfCos, dfSin);
        const double dfHeight = g.squaredNorm() * m_dfHalfWavelength - m_dfAxisZ * dfAlong;
        // The derivative of z at the crossing, Å⁻¹ per degree, which is also that of the excitation error. It
        // is 0 if the point never reaches the sphere.
        const double dfSpeed = radians(
            std::sqrt(std::max(0.0, dfAmplitude * dfAmplitude - dfHeight * dfHeight)));
        if (!(dfSpeed > 0) || dfSpeed < m_dfLeastSpeed) {
            return;
        }
        // The point is highest at dfTop, and on the sphere at the same angle before and behind that.
        const double dfTop = degrees(std::atan2(dfSin, dfCos));
        const double dfFromTop = degrees(std::acos(dfHeight / dfAmplitude));
        for (const double dfCrossing : {dfTop - dfFromTop, dfTop + dfFromTop}) {
            dfAtEnd = std::min(dfAtEnd, onTiltScale((dfCrossing - m_dfLast) * m_nSense));
            dfAtStart = std::min(dfAtStart, onTiltScale((m_dfFirst - dfCrossing) * m_nSense));
        }
    }

private:
    /// A rotation of the crystal reduced to 0 to 360 degrees, as a difference of tilts of the series.
    double onTiltScale(double dfRotation) const
    {
        return (dfRotation - 360 * std::floor(dfRotation / 360)) / m_dfScale;
    }

    double m_dfLeastSpeed;       ///< slower crossings do not count, Å⁻¹ per degree
    double m_dfScale;            ///< degrees of rotation per degree of tilt, above 0
    double m_dfHalfWavelength;   ///< Å
    double m_dfFirst = 0;        ///< rotation at the first frame, degrees
    double m_dfLast = 0;         ///< rotation at the last frame, degrees
    int m_nSense = 1;            ///< 1: the rotation increases along the series; −1: it decreases
    double m_dfAxisX = 1;        ///< unit vector of the rotation axis, laboratory frame
    double m_dfAxisZ = 0;        ///< likewise
    Eigen::Matrix3d m_matBasis;  ///< conventional indices to Å⁻¹, laboratory frame at tilt 0
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
    return QStringLiteral("No further rotation about this axis gives %1: at most %2.")
        .arg(strGoal, percent(forecast.dfBest));
}

/// The rotation at which the number of measured reflections reaches the goal; infinite if none up to
/// g_dfFurthest does.
/// @param listTurn   for each missing reflection the rotation that measures it, degrees, ascending
/// @param nNow       number of reflections that are measured already
/// @param dfGoal     fraction of nPossible
double turnForGoal(const std::vector<double>& listTurn, int nNow, double dfGoal, int nPossible)
{
    // The small number keeps rounding of the product from adding a reflection.
    const int nMissing = int(std::ceil(dfGoal * nPossible - 1e-9)) - nNow;
    if (nMissing <= 0) {
        return 0;
    }
    const bool bReached = size_t(nMissing) <= listTurn.size() &&
                          listTurn[size_t(nMissing) - 1] <= g_dfFurthest;
    return bReached ? listTurn[size_t(nMissing) - 1] : std::numeric_limits<double>::infinity();
}

/// Appends the completeness at each whole degree to the curve. The lists are those of turnForGoal().
void putCurve(const std::vector<double>& listAtEnd, const std::vector<double>& listAtStart, int nNow,
              int nPossible, CompletenessForecast& forecast)
{
    const auto completeness = [&](const std::vector<double>& list, double dfTurn) {
        return double(nNow + (std::upper_bound(list.begin(), list.end(), dfTurn) - list.begin())) / nPossible;
    };
    for (int n = 0; n <= int(g_dfFurthest); ++n) {
        forecast.listCurve.push_back({double(n), completeness(listAtEnd, n), completeness(listAtStart, n)});
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
    int nReachable = 0;               // missing now, but crosses the sphere somewhere in a full turn
    std::vector<double> listAtEnd;    // per missing reflection: degrees to add after the last frame
    std::vector<double> listAtStart;  // the same before the first frame
    forEachPossibleReflection(symmetry, cell, dfDMin, [&](const std::array<int, 3>& anIndex, double) {
        ++nPossible;
        if (setMeasured.count(anIndex) > 0) {
            ++nNow;
            return;
        }
        listAtEnd.push_back(std::numeric_limits<double>::infinity());
        listAtStart.push_back(std::numeric_limits<double>::infinity());
        for (const std::array<int, 3>& anImage : unit.equivalents(anIndex)) {
            turn.reduceToCrossings(anImage, listAtEnd.back(), listAtStart.back());
        }
        nReachable += std::isfinite(listAtEnd.back()) ? 1 : 0;
    });
    if (nPossible == 0) {
        return forecast;
    }
    std::sort(listAtEnd.begin(), listAtEnd.end());
    std::sort(listAtStart.begin(), listAtStart.end());
    forecast.dfNow = double(nNow) / nPossible;
    forecast.dfBest = double(nNow + nReachable) / nPossible;
    forecast.dfMoreAtEnd = turnForGoal(listAtEnd, nNow, dfGoal, nPossible);
    forecast.dfMoreAtStart = turnForGoal(listAtStart, nNow, dfGoal, nPossible);
    putCurve(listAtEnd, listAtStart, nNow, nPossible, forecast);
    forecast.strText = textOf(forecast);
    return forecast;
}

}  // namespace tessera
