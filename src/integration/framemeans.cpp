#include "integration/framemeans.h"

#include "integration/equivalents.h"
#include "integration/errormodel.h"
#include "integration/fadedframes.h"
#include "integration/knotcurve.h"
#include "integration/lorentzfactor.h"
#include "integration/resolutionbins.h"

#include <Eigen/Dense>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tessera {

namespace {

struct Entry {
    double dfFrame = 0;
    double dfSquare = 0;  ///< E²
    double dfNoise = 0;   ///< its variance due to the sigma
    double dfShare = 1;   ///< Friedel mates count as one reflection together
    double dfWeight = 1;  ///< the share, reduced if noise dominates
};

ObservationSymmetry friedelAlone()
{
    ObservationSymmetry plain;
    plain.ops = gemmi::symops_from_hall("-P 1");
    return plain;
}

std::vector<Entry> entriesOf(const std::vector<Observation>& listObservation)
{
    const EquivalentGroups groups = groupEquivalents(listObservation, friedelAlone());
    std::vector<double> listDStar;
    std::vector<double> listIntensity;
    for (const int n : groups.listMember) {
        listDStar.push_back(listObservation[n].dfDStar);
        listIntensity.push_back(listObservation[n].corrected());
    }
    const CResolutionMean resolutionMean(listDStar, listIntensity);
    std::vector<Entry> listEntry;
    for (const int n : groups.listMember) {
        const Observation& observation = listObservation[n];
        const double dfMean = resolutionMean.mean(observation.dfDStar);
        const double dfSigma = observation.correctedSigma() / dfMean;
        listEntry.push_back({observation.dfFrame, observation.corrected() / dfMean, dfSigma * dfSigma,
                             1.0 / groups.sizeOf(groups.listGroup[n]), 1});
    }
    return listEntry;
}

/// Models the mean of E² along the series as exp(curve), for random walks of the curve with different step
/// widths.
///
/// Uses the quasi-likelihood for a variance proportional to the square of the mean, as in Wilson's
/// distributions (McCullagh & Nelder, Generalized Linear Models, 1989, chapters 8 and 9); the proportionality
/// factor is estimated from the data. The steps between coefficients have a normal prior. Step widths are
/// compared by the marginal likelihood of the coefficients in Laplace's approximation.
class CMeanFit {
public:
    CMeanFit(std::vector<Entry> listEntry, int nFrames, int nIntervals)
        : m_listEntry(std::move(listEntry)), m_curve(0, nFrames - 1, nIntervals)
    {}

    /// Determines weights and breadth with the widest steps.
    void learn(double dfFreest)
    {
        for (int nRound = 0; nRound < 3; ++nRound) {
            fit(dfFreest);
            double dfSquares = 0;
            double dfWeights = 0;
            for (const Entry& entry : m_listEntry) {
                const double df = relative(entry) - 1;
                dfSquares += entry.dfWeight * df * df;
                dfWeights += entry.dfWeight;
            }
            m_dfBreadth = std::clamp(dfSquares / std::max(1.0, dfWeights - m_curve.coefficientCount()), 0.1,
                                     10.0);
            for (Entry& entry : m_listEntry) {
                const double dfNoise = entry.dfNoise * std::exp(-2 * m_curve.value(entry.dfFrame));
                entry.dfWeight = entry.dfShare * m_dfBreadth / (m_dfBreadth + dfNoise);
            }
        }
    }

    /// @param dfLiberty  standard deviation of the curve from the first to the last frame, natural logarithm
    /// @return -2 log likelihood, up to a constant
    double fit(double dfLiberty)
    {
        const int nMostSteps = 40;
        const int nCoefficients = m_curve.coefficientCount();
        const double dfStiffness = (nCoefficients - 1) / (dfLiberty * dfLiberty);
        std::fill(m_curve.coefficients().begin(), m_curve.coefficients().end(), 0.0);
        Eigen::MatrixXd matNormal;
        for (int nStep = 0; nStep < nMostSteps; ++nStep) {
            Eigen::VectorXd vecRight = Eigen::VectorXd::Zero(nCoefficients);
            matNormal = Eigen::MatrixXd::Zero(nCoefficients, nCoefficients);
            addEntries(matNormal, vecRight);
            addWalk(dfStiffness, matNormal, vecRight);
            Eigen::VectorXd vecStep = matNormal.ldlt().solve(vecRight);
            const double dfLongest = vecStep.cwiseAbs().maxCoeff();
            if (!std::isfinite(dfLongest)) {
                return std::numeric_limits<double>::infinity();
            }
            vecStep /= std::max(1.0, 2 * dfLongest);
            for (int n = 0; n < nCoefficients; ++n) {
                m_curve.coefficients()[n] += vecStep(n);
            }
            if (dfLongest < 1e-5) {
                break;
            }
        }
        const double dfDeterminant = matNormal.ldlt().vectorD().array().log().sum();
        return misfit(dfStiffness) + dfDeterminant - (nCoefficients - 1) * std::log(dfStiffness);
    }

    double logarithm(double dfFrame) const { return m_curve.value(dfFrame); }

private:
    /// E² over its mean, truncated so that a few strong reflections do not determine a frame.
    double relative(const Entry& entry) const
    {
        return std::min(m_dfMost, entry.dfSquare * std::exp(-m_curve.value(entry.dfFrame)));
    }

    void addEntries(Eigen::MatrixXd& matNormal, Eigen::VectorXd& vecRight) const
    {
        for (const Entry& entry : m_listEntry) {
            const CKnotCurve::Basis basis = m_curve.basis(entry.dfFrame);
            const double dfWeight = entry.dfWeight / m_dfBreadth;
            const double dfSlope = dfWeight * (relative(entry) - 1);
            for (size_t i = 0; i < 4; ++i) {
                vecRight(basis.nFirst + int(i)) += dfSlope * basis.aWeight[i];
                for (size_t j = 0; j < 4; ++j) {
                    matNormal(basis.nFirst + int(i), basis.nFirst + int(j)) += dfWeight * basis.aWeight[i] *
                                                                               basis.aWeight[j];
                }
            }
        }
    }

    void addWalk(double dfStiffness, Eigen::MatrixXd& matNormal, Eigen::VectorXd& vecRight) const
    {
        for (int n = 1; n < m_curve.coefficientCount(); ++n) {
            const double dfDifference = stepOf(n);
            matNormal(n, n) += dfStiffness;
            matNormal(n - 1, n - 1) += dfStiffness;
            matNormal(n, n - 1) -= dfStiffness;
            matNormal(n - 1, n) -= dfStiffness;
            vecRight(n) -= dfStiffness * dfDifference;
            vecRight(n - 1) += dfStiffness * dfDifference;
        }
    }

    double stepOf(int n) const
    {
        const std::vector<double>& listCoefficient = m_curve.coefficients();
        return listCoefficient[n] - listCoefficient[size_t(n) - 1];
    }

    /// -2 times the integral of the score, plus the prior.
    double misfit(double dfStiffness) const
    {
        double dfSum = 0;
        for (const Entry& entry : m_listEntry) {
            const double dfLog = m_curve.value(entry.dfFrame);
            const double df = entry.dfSquare * std::exp(-dfLog);
            // Where E² is truncated the score is constant, so its integral is linear.
            dfSum += 2 * entry.dfWeight / m_dfBreadth *
                     (df < m_dfMost ? df + dfLog : m_dfMost + dfLog + m_dfMost * std::log(df / m_dfMost));
        }
        for (int n = 1; n < m_curve.coefficientCount(); ++n) {
            dfSum += dfStiffness * stepOf(n) * stepOf(n);
        }
        return dfSum;
    }

    const double m_dfMost = 4;
    std::vector<Entry> m_listEntry;
    CKnotCurve m_curve;
    double m_dfBreadth = 1;  ///< variance of E² over the square of its mean
};

}  // namespace

std::vector<double> frameMeanScales(const std::vector<Observation>& listObservation, int nFrames)
{
    std::vector<double> listScale(size_t(std::max(0, nFrames)), 1.0);
    std::vector<Entry> listEntry = entriesOf(listObservation);
    const size_t nFewest = 100;
    if (listEntry.size() < nFewest || nFrames < 2) {
        return listScale;
    }
    const int nIntervals = std::clamp(std::min(int(listEntry.size() / 40), nFrames / 3), 1, 60);
    CMeanFit fit(std::move(listEntry), nFrames, nIntervals);
    const double dfFreest = 3;
    fit.learn(dfFreest);
    // The curve must be twenty times as likely as a straight line: -2 ln(1/20).
    const double dfStraight = 0.001;
    double dfLeast = fit.fit(dfStraight) - 6;
    double dfBest = 0;
    double dfFree = dfFreest;
    while (dfFree > 0.03) {
        const double dfHere = fit.fit(dfFree);
        if (dfHere < dfLeast) {
            dfLeast = dfHere;
            dfBest = dfFree;
        }
        dfFree /= 2;
    }
    if (dfBest == 0) {
        return listScale;
    }
    fit.fit(dfBest);
    double dfLogs = 0;
    for (int n = 0; n < nFrames; ++n) {
        dfLogs += fit.logarithm(n) / nFrames;
    }
    for (int n = 0; n < nFrames; ++n) {
        listScale[n] = std::clamp(std::exp(dfLogs - fit.logarithm(n)), 0.05, 20.0);
    }
    return listScale;
}

void putFrameScales(const std::vector<double>& listScale, std::vector<Observation>& listObservation)
{
    for (Observation& observation : listObservation) {
        if (listScale.empty() || !std::isfinite(observation.dfFrame)) {
            continue;
        }
        const double dfFrame = std::clamp(observation.dfFrame, 0.0, double(listScale.size() - 1));
        const auto nBefore = size_t(dfFrame);
        const size_t nAfter = std::min(nBefore + 1, listScale.size() - 1);
        const double dfPart = dfFrame - double(nBefore);
        observation.dfScale = (1 - dfPart) * listScale[nBefore] + dfPart * listScale[nAfter];
    }
}

void scaleByFrameMeans(std::vector<Observation>& listObservation, int nFrames)
{
    for (Observation& observation : listObservation) {
        observation.dfScale = 1;
        observation.dfSigmaFactor = 1;
        observation.nFlags &= ~unsigned(FlagOutlier);
    }
    applyLorentzFactor(listObservation);
    const std::vector<double> listScale = frameMeanScales(listObservation, nFrames);
    putFrameScales(listScale, listObservation);
    // The last frames of a damaged crystal show only noise, which a large scale would amplify.
    const std::vector<char> listFaded = fadedFrames(listScale, std::vector<char>(listScale.size(), 1));
    for (Observation& observation : listObservation) {
        if (!listFaded.empty() && std::isfinite(observation.dfFrame)) {
            const double dfFrame = std::clamp(observation.dfFrame, 0.0, double(listFaded.size() - 1));
            observation.nFlags |= listFaded[size_t(std::lround(dfFrame))] ? unsigned(FlagOutlier) : 0u;
        }
    }
    const EquivalentGroups groups = groupEquivalents(listObservation, friedelAlone());
    applyErrorModel(groups, fitErrorModel(listObservation, groups), listObservation);
}

}  // namespace tessera
