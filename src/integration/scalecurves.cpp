#include "integration/scalecurves.h"

#include <Eigen/Dense>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>

namespace tessera {

namespace {

const double g_dfPriorSigma = 0.7;  // of a coefficient (natural logarithm)
const double g_dfCauchy = 3;        // sigmas at which the weight of a deviation is one half

double squareOf(const Observation& observation)
{
    return observation.dfDStar * observation.dfDStar / 4;
}

/// The contribution of an observation to the fit of its group.
struct Term {
    double dfModelRow = 0;  ///< exp(-u), the observed intensity over the true one
    double dfObserved = 0;
    double dfSigma = 1;
    double dfWeight = 1;
    std::array<int, 8> anParameter = {};
    std::array<double, 8> aDerivative = {};  ///< derivatives of u
};

class CScaleFit {
public:
    CScaleFit(const std::vector<Observation>& listObservation, const EquivalentGroups& groups,
              const ErrorModel& errors, bool bDecay, ScaleCurves& curves)
        : m_listObservation(listObservation),
          m_groups(groups),
          m_errors(errors),
          m_bDecay(bDecay),
          m_curves(curves),
          m_nScale(curves.scale.coefficientCount()),
          m_nParameters(m_nScale + (bDecay ? curves.decay.coefficientCount() : 0))
    {}

    int run()
    {
        const int nMostSteps = 20;
        for (int n = 0; n < nMostSteps; ++n) {
            collect();
            if (m_nUsed == 0 || step() < 1e-4) {
                break;
            }
        }
        return m_nUsed;
    }

    /// -2 log likelihood of the members of each group; 0 for a single member.
    std::vector<double> misfits() const
    {
        std::vector<double> listMisfit;
        listMisfit.reserve(m_groups.count());
        for (int nGroup = 0; nGroup < m_groups.count(); ++nGroup) {
            listMisfit.push_back(m_groups.sizeOf(nGroup) < 2 ? 0 : misfitOf(nGroup));
        }
        return listMisfit;
    }

private:
    double misfitOf(int nGroup) const
    {
        std::vector<Term> listTerm;
        for (int n = m_groups.listStart[nGroup]; n < m_groups.listStart[size_t(nGroup) + 1]; ++n) {
            listTerm.push_back(termOf(m_listObservation[size_t(m_groups.listMember[n])]));
        }
        const double dfMean = meanOf(listTerm, m_errors);
        double dfSum = 0;
        for (const Term& term : listTerm) {
            const double dfModel = dfMean * term.dfModelRow;
            const double dfVariance = m_errors.variance(term.dfSigma, dfModel);
            const double df = term.dfObserved - dfModel;
            dfSum += std::log(dfVariance) + 4 * std::log1p(df * df / (3 * dfVariance));
        }
        return dfSum;
    }

    Term termOf(const Observation& observation) const
    {
        Term term;
        const double dfLog = m_curves.logarithm(observation.dfFrame, observation.dfDStar);
        term.dfModelRow = std::exp(-dfLog);
        term.dfObserved = observation.dfIntensity * observation.dfLorentz;
        term.dfSigma = observation.dfSigma * observation.dfLorentz;
        const double dfPlace = (squareOf(observation) - m_curves.dfMiddle) / m_curves.dfHalfRange;
        const CKnotCurve::Basis scale = m_curves.scale.basis(observation.dfFrame);
        const CKnotCurve::Basis decay = m_curves.decay.basis(observation.dfFrame);
        for (size_t n = 0; n < 4; ++n) {
            term.anParameter[n] = scale.nFirst + int(n);
            term.aDerivative[n] = scale.aWeight[n];
            term.anParameter[n + 4] = m_nScale + decay.nFirst + int(n);
            term.aDerivative[n + 4] = decay.aWeight[n] * dfPlace;
        }
        return term;
    }

    /// The true intensity: starts from the median, followed by iterated weighted means.
    static double meanOf(std::vector<Term>& listTerm, const ErrorModel& errors)
    {
        std::vector<double> listValue;
        listValue.reserve(listTerm.size());
        for (const Term& term : listTerm) {
            listValue.push_back(term.dfObserved / term.dfModelRow);
        }
        std::sort(listValue.begin(), listValue.end());
        const size_t n = listValue.size();
        double dfMean = (listValue[(n - 1) / 2] + listValue[n / 2]) / 2;
        for (int nRound = 0; nRound < 3; ++nRound) {
            double dfAbove = 0;
            double dfBelow = 0;
            for (Term& term : listTerm) {
                const double dfModel = dfMean * term.dfModelRow;
                const double dfVariance = errors.variance(term.dfSigma, dfModel);
                const double df = (term.dfObserved - dfModel) / g_dfCauchy;
                term.dfWeight = 1 / (dfVariance + df * df);
                dfAbove += term.dfWeight * term.dfObserved * term.dfModelRow;
                dfBelow += term.dfWeight * term.dfModelRow * term.dfModelRow;
            }
            dfMean = dfAbove / dfBelow;
        }
        return dfMean;
    }

    void collect()
    {
        m_matNormal = Eigen::MatrixXd::Zero(m_nParameters, m_nParameters);
        m_vecRight = Eigen::VectorXd::Zero(m_nParameters);
        m_vecCross = Eigen::VectorXd::Zero(m_nParameters);
        m_nUsed = 0;
        std::vector<Term> listTerm;
        for (int nGroup = 0; nGroup < m_groups.count(); ++nGroup) {
            if (m_groups.sizeOf(nGroup) < 2) {
                continue;
            }
            listTerm.clear();
            for (int n = m_groups.listStart[nGroup]; n < m_groups.listStart[size_t(nGroup) + 1]; ++n) {
                const Observation& observation = m_listObservation[size_t(m_groups.listMember[n])];
                if ((observation.nFlags & FlagOutlier) == 0) {
                    listTerm.push_back(termOf(observation));
                }
            }
            if (listTerm.size() > 1) {
                addGroup(listTerm);
            }
        }
    }

    /// The normal equations of a group with its true intensity eliminated (Schur complement).
    void addGroup(std::vector<Term>& listTerm)
    {
        const double dfMean = meanOf(listTerm, m_errors);
        if (!(dfMean > 0)) {
            return;  // a reflection without intensity does not determine scales
        }
        std::vector<int> listTouched;
        double dfOfMean = 0;
        const size_t nEntries = m_bDecay ? 8 : 4;
        for (const Term& term : listTerm) {
            const double dfModel = dfMean * term.dfModelRow;
            const double dfResidual = term.dfObserved - dfModel;
            dfOfMean += term.dfWeight * term.dfModelRow * term.dfModelRow;
            for (size_t i = 0; i < nEntries; ++i) {
                const double df = term.dfWeight * dfModel * term.aDerivative[i];
                const int nRow = term.anParameter[i];
                m_vecRight(nRow) -= df * dfResidual;
                m_vecCross(nRow) -= df * term.dfModelRow;
                listTouched.push_back(nRow);
                for (size_t j = 0; j < nEntries; ++j) {
                    m_matNormal(nRow, term.anParameter[j]) += df * dfModel * term.aDerivative[j];
                }
            }
        }
        std::sort(listTouched.begin(), listTouched.end());
        listTouched.erase(std::unique(listTouched.begin(), listTouched.end()), listTouched.end());
        for (const int nRow : listTouched) {
            for (const int nColumn : listTouched) {
                m_matNormal(nRow, nColumn) -= m_vecCross(nRow) * m_vecCross(nColumn) / dfOfMean;
            }
        }
        for (const int nRow : listTouched) {
            m_vecCross(nRow) = 0;
        }
        m_nUsed += int(listTerm.size());
    }

    void addPriors(const std::vector<double>& listCoefficient, int nFirst)
    {
        const double dfOwn = 1 / (g_dfPriorSigma * g_dfPriorSigma);
        const double dfNext = 1 / (m_curves.dfStep * m_curves.dfStep);
        for (size_t n = 0; n < listCoefficient.size(); ++n) {
            const int nRow = nFirst + int(n);
            m_matNormal(nRow, nRow) += dfOwn;
            m_vecRight(nRow) -= dfOwn * listCoefficient[n];
            if (n == 0) {
                continue;
            }
            const double dfDifference = listCoefficient[n] - listCoefficient[n - 1];
            m_matNormal(nRow, nRow) += dfNext;
            m_matNormal(nRow - 1, nRow - 1) += dfNext;
            m_matNormal(nRow, nRow - 1) -= dfNext;
            m_matNormal(nRow - 1, nRow) -= dfNext;
            m_vecRight(nRow) -= dfNext * dfDifference;
            m_vecRight(nRow - 1) += dfNext * dfDifference;
        }
    }

    /// @return the greatest change of a coefficient
    double step()
    {
        addPriors(m_curves.scale.coefficients(), 0);
        if (m_bDecay) {
            addPriors(m_curves.decay.coefficients(), m_nScale);
        }
        Eigen::VectorXd vecStep = m_matNormal.ldlt().solve(m_vecRight);
        const double dfLongest = vecStep.cwiseAbs().maxCoeff();
        if (!std::isfinite(dfLongest)) {
            return 0;
        }
        const double dfMost = 0.5;  // step of a logarithm up to which the linearization is useful
        if (dfLongest > dfMost) {
            vecStep *= dfMost / dfLongest;
        }
        for (int n = 0; n < m_nParameters; ++n) {
            if (n < m_nScale) {
                m_curves.scale.coefficients()[n] += vecStep(n);
            } else {
                m_curves.decay.coefficients()[n - m_nScale] += vecStep(n);
            }
        }
        return dfLongest;
    }

    const std::vector<Observation>& m_listObservation;
    const EquivalentGroups& m_groups;
    const ErrorModel& m_errors;
    bool m_bDecay;
    ScaleCurves& m_curves;
    int m_nScale;
    int m_nParameters;
    int m_nUsed = 0;
    Eigen::MatrixXd m_matNormal;
    Eigen::VectorXd m_vecRight;
    Eigen::VectorXd m_vecCross;  ///< cross terms of the present group; 0 between groups
};

/// Divides the groups pseudo-randomly into halves, so that no class of indices stays together.
EquivalentGroups halfOf(const EquivalentGroups& groups, bool bOther)
{
    EquivalentGroups half;
    half.listGroup.assign(groups.listGroup.size(), -1);
    for (int nGroup = 0; nGroup < groups.count(); ++nGroup) {
        const std::uint32_t nCoin = std::uint32_t(nGroup) * 2654435761u;
        if (((nCoin >> 16 & 1u) != 0) != bOther) {
            continue;
        }
        half.listStart.push_back(int(half.listMember.size()));
        half.listIndex.push_back(groups.listIndex[nGroup]);
        for (int n = groups.listStart[nGroup]; n < groups.listStart[size_t(nGroup) + 1]; ++n) {
            half.listMember.push_back(groups.listMember[n]);
            half.listGroup[size_t(half.listMember.back())] = half.count() - 1;
        }
    }
    half.listStart.push_back(int(half.listMember.size()));
    return half;
}

/// Whether one is less than the other by more than the standard error of the difference.
bool isClearlyLess(const std::vector<double>& listOne, const std::vector<double>& listOther)
{
    double dfSum = 0;
    double dfSquares = 0;
    for (size_t n = 0; n < listOne.size(); ++n) {
        const double df = listOne[n] - listOther[n];
        dfSum += df;
        dfSquares += df * df;
    }
    return dfSum < -std::sqrt(dfSquares);
}

}  // namespace

double ScaleCurves::logarithm(double dfFrame, double dfDStar) const
{
    const double dfPlace = (dfDStar * dfDStar / 4 - dfMiddle) / dfHalfRange;
    return scale.value(dfFrame) + decay.value(dfFrame) * dfPlace;
}

double ScaleCurves::scaleAtZero(double dfFrame) const
{
    return logarithm(dfFrame, 0);
}

double ScaleCurves::decayB(double dfFrame) const
{
    return decay.value(dfFrame) / (2 * dfHalfRange);
}

std::optional<ScaleCurves> emptyScaleCurves(const std::vector<Observation>& listObservation,
                                            const EquivalentGroups& groups, int nFrames)
{
    int nPartners = 0;
    double dfLeast = std::numeric_limits<double>::infinity();
    double dfMost = 0;
    for (int nGroup = 0; nGroup < groups.count(); ++nGroup) {
        if (groups.sizeOf(nGroup) > 1) {
            const int nFirst = groups.listMember[size_t(groups.listStart[nGroup])];
            nPartners += groups.sizeOf(nGroup);
            dfLeast = std::min(dfLeast, squareOf(listObservation[nFirst]));
            dfMost = std::max(dfMost, squareOf(listObservation[nFirst]));
        }
    }
    const int nFewest = 20;
    if (nPartners < nFewest || nFrames < 2) {
        return std::nullopt;
    }
    const int nMostIntervals = 100;
    const int nScale = std::clamp(std::min({nPartners / 40, 12 + nPartners / 200, nFrames / 3}), 1,
                                  nMostIntervals);
    const int nDecay = std::clamp(std::min(nPartners / 600, nFrames / 10), 1, nMostIntervals / 10);
    return ScaleCurves{CKnotCurve(0, nFrames - 1, nScale), CKnotCurve(0, nFrames - 1, nDecay),
                       (dfLeast + dfMost) / 2, std::max((dfMost - dfLeast) / 2, 1e-6)};
}

int fitScaleCurves(const std::vector<Observation>& listObservation, const EquivalentGroups& groups,
                   const ErrorModel& errors, bool bDecay, ScaleCurves& curves)
{
    return CScaleFit(listObservation, groups, errors, bDecay, curves).run();
}

CurveChoice chooseCurves(const std::vector<Observation>& listObservation, const EquivalentGroups& groups,
                         const ErrorModel& errors, bool bDecay, const ScaleCurves& curves)
{
    const std::array<EquivalentGroups, 2> aHalf = {halfOf(groups, false), halfOf(groups, true)};
    const auto unseenMisfits = [&](const CurveChoice& choice) {
        std::vector<double> listMisfit;
        for (size_t n = 0; n < 2; ++n) {
            ScaleCurves tried = curves;
            tried.dfStep = choice.dfStep;
            if (choice.bScale) {
                fitScaleCurves(listObservation, aHalf[n], errors, choice.bDecay, tried);
            }
            const std::vector<double> list =
                CScaleFit(listObservation, aHalf[1 - n], errors, choice.bDecay, tried).misfits();
            listMisfit.insert(listMisfit.end(), list.begin(), list.end());
        }
        return listMisfit;
    };
    CurveChoice best;
    std::vector<double> listBest = unseenMisfits(best);
    const double dfStiff = 0.03;
    const double dfFree = curves.dfStep;
    for (const CurveChoice& choice : {CurveChoice{true, false, dfStiff}, CurveChoice{true, false, dfFree},
                                      CurveChoice{true, true, dfStiff}, CurveChoice{true, true, dfFree}}) {
        if (choice.bDecay && !bDecay) {
            continue;
        }
        std::vector<double> listMisfit = unseenMisfits(choice);
        if (isClearlyLess(listMisfit, listBest)) {
            best = choice;
            listBest = std::move(listMisfit);
        }
    }
    return best;
}

}  // namespace tessera
