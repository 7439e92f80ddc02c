#include "simulate/intensityjudgement.h"

#include "simulate/cellsetting.h"
#include "simulate/equivalentindices.h"

#include <QFile>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <set>

namespace tessera {

namespace {
using Index = std::array<int, 3>;
constexpr double g_dfNone = std::numeric_limits<double>::quiet_NaN();
constexpr double g_dfObserved = 2;  // sigmas

struct TrueReflection {
    double dfBare = 0, dfValue = 0, dfDStar = 0;
};

std::map<Index, TrueReflection> trueReflections(const SimulatedSeries& truth)
{
    std::map<Index, TrueReflection> mapTrue;
    for (size_t i = 0; i < truth.listReflection.size(); ++i) {
        const Reflection& r = truth.listReflection[i];
        mapTrue[{r.nH, r.nK, r.nL}] = {r.dfSquareF, r.dfSquareF * truth.listArea[i], r.dfDStar};
    }
    return mapTrue;
}

// Indices on the true cell; none where they are not whole.
bool bringOver(const Index& anFound, const Matrix3& mat, Index& anTrue)
{
    const Vector3 vec = Vector3{double(anFound[0]), double(anFound[1]), double(anFound[2])} * mat;
    for (size_t i = 0; i < 3; ++i) {
        anTrue[i] = int(std::lround(vec[i]));
        if (std::abs(vec[i] - anTrue[i]) > 1e-6) {
            return false;
        }
    }
    return true;
}

// A line of the list and the intensity that the truth has for it; 0 if the truth does not have the
// reflection.
struct MatchedLine {
    Index anIndex{};
    bool bOnTruth = false;
    double dfIntensity = 0, dfSigma = 0, dfDStar = 0;
    TrueReflection truth;
    bool isObserved() const { return dfIntensity > g_dfObserved * dfSigma; }
};

std::vector<MatchedLine> matchLines(const std::vector<ReflectionLine>& listLine, const Matrix3& mat,
                                    const std::map<Index, TrueReflection>& mapTrue)
{
    std::vector<MatchedLine> listMatched;
    for (const ReflectionLine& line : listLine) {
        if (!(line.dfSigma > 0)) {
            continue;
        }
        MatchedLine matched;
        matched.dfIntensity = line.dfIntensity;
        matched.dfSigma = line.dfSigma;
        if (bringOver(line.anIndex, mat, matched.anIndex)) {
            const auto it = mapTrue.find(matched.anIndex);
            matched.bOnTruth = it != mapTrue.end();
            matched.truth = matched.bOnTruth ? it->second : TrueReflection{};
        }
        listMatched.push_back(matched);
    }
    return listMatched;
}

double correlation(const std::vector<MatchedLine>& list, double TrueReflection::*pValue)
{
    double dfN = 0, dfX = 0, dfY = 0;
    for (const MatchedLine& line : list) {
        if (line.isObserved()) {
            ++dfN;
            dfX += line.dfIntensity;
            dfY += line.truth.*pValue;
        }
    }
    double dfXX = 0, dfXY = 0, dfYY = 0;
    for (const MatchedLine& line : list) {
        if (line.isObserved()) {
            const double x = line.dfIntensity - dfX / dfN, y = line.truth.*pValue - dfY / dfN;
            dfXX += x * x;
            dfXY += x * y;
            dfYY += y * y;
        }
    }
    return dfXX > 0 && dfYY > 0 ? dfXY / std::sqrt(dfXX * dfYY) : g_dfNone;
}

double median(std::vector<double> list)
{
    if (list.empty()) {
        return g_dfNone;
    }
    std::sort(list.begin(), list.end());
    return (list[(list.size() - 1) / 2] + list[list.size() / 2]) / 2;
}

// The reflections that crossed the sphere wholly, with the best expected signal-to-noise ratio of their
// passages.
std::map<Index, double> crossedReflections(const SimulatedSeries& truth, int nLattice,
                                           const CEquivalentIndices& equivalents)
{
    std::map<Index, double> mapCrossed;
    for (const Crossing& crossing : truth.listCrossing) {
        if (crossing.bInside && crossing.nLattice == nLattice) {
            double& df = mapCrossed[equivalents.standFor({crossing.nH, crossing.nK, crossing.nL})];
            df = std::max(df, crossing.dfSignalToNoise);
        }
    }
    return mapCrossed;
}

int coverage(const std::vector<MatchedLine>& list, const std::map<Index, double>& mapCrossed,
             const CEquivalentIndices& equivalents)
{
    std::set<Index> setHit;
    for (const MatchedLine& line : list) {
        const Index anIndex = equivalents.standFor(line.anIndex);
        if (line.bOnTruth && mapCrossed.count(anIndex) > 0) {
            setHit.insert(anIndex);
        }
    }
    return int(setHit.size());
}

void judgeCompleteness(const std::vector<MatchedLine>& list, const std::map<Index, double>& mapCrossed,
                       const CEquivalentIndices& equivalents, const Matrix3& matTrue,
                       IntensityJudgement& judgement)
{
    double dfMost = 0;
    for (const MatchedLine& line : list) {
        dfMost = std::max(dfMost, line.truth.dfDStar);
    }
    judgement.dfDMin = dfMost > 0 ? 1 / dfMost : g_dfNone;
    std::map<Index, bool> mapMeasured;
    for (const MatchedLine& line : list) {
        if (line.bOnTruth) {
            bool& bObserved = mapMeasured[equivalents.standFor(line.anIndex)];
            bObserved = bObserved || line.isObserved();
        }
    }
    for (const auto& [anIndex, dfRatio] : mapCrossed) {
        const auto it = mapMeasured.find(anIndex);
        const bool bMeasured = it != mapMeasured.end(), bExpected = dfRatio >= g_dfObserved;
        ++judgement.nCrossed;
        judgement.nCrossedMeasured += bMeasured;
        judgement.nCrossedObserved += bMeasured && it->second;
        judgement.nExpected += bExpected;
        judgement.nExpectedMeasured += bExpected && bMeasured;
        const Vector3 vecIndex{double(anIndex[0]), double(anIndex[1]), double(anIndex[2])};
        const bool bWithin = lengthOf(vecIndex * matTrue) <= dfMost * (1 + 1e-9);
        judgement.nWithin += bWithin;
        judgement.nWithinMeasured += bWithin && bMeasured;
    }
}

double rOnF(const std::vector<MatchedLine>& list)
{
    double dfCross = 0, dfSquare = 0, dfSum = 0, dfDeviation = 0;
    for (const MatchedLine& line : list) {
        if (line.isObserved()) {
            dfCross += std::sqrt(line.dfIntensity * line.truth.dfValue);
            dfSquare += line.truth.dfValue;
            dfSum += std::sqrt(line.dfIntensity);
        }
    }
    for (const MatchedLine& line : list) {
        if (line.isObserved()) {
            dfDeviation += std::abs(std::sqrt(line.dfIntensity) -
                                    dfCross / dfSquare * std::sqrt(line.truth.dfValue));
        }
    }
    return dfSum > 0 && dfSquare > 0 ? dfDeviation / dfSum : g_dfNone;
}

// Slope of ln(I / true) against d*²/2, weighted by (I/sigma)².
double decayLeft(const std::vector<MatchedLine>& list)
{
    double dfW = 0, dfX = 0, dfY = 0, dfXX = 0, dfXY = 0;
    for (const MatchedLine& line : list) {
        const double dfRatio = line.dfIntensity / line.dfSigma;
        if (dfRatio > 10 && line.truth.dfValue > 0) {
            const double w = dfRatio * dfRatio, x = line.truth.dfDStar * line.truth.dfDStar / 2,
                         y = std::log(line.dfIntensity / line.truth.dfValue);
            dfW += w;
            dfX += w * x;
            dfY += w * y;
            dfXX += w * x * x;
            dfXY += w * x * y;
        }
    }
    const double dfSpread = dfW * dfXX - dfX * dfX;
    return dfSpread > 0 ? -(dfW * dfXY - dfX * dfY) / dfSpread : g_dfNone;
}

// Fills in everything that depends on the scale.
void judgeDeviations(const std::vector<MatchedLine>& list, IntensityJudgement& judgement)
{
    double dfCross = 0, dfSquare = 0;
    for (const MatchedLine& line : list) {
        dfCross += line.dfIntensity * line.truth.dfValue / (line.dfSigma * line.dfSigma);
        dfSquare += line.truth.dfValue * line.truth.dfValue / (line.dfSigma * line.dfSigma);
    }
    judgement.dfScale = dfCross / dfSquare;
    std::vector<std::array<double, 2>> listTrue;
    std::vector<JudgedReflection> listJudged;
    std::vector<double> listSquare, listRatio;
    double dfSum = 0;
    for (const MatchedLine& line : list) {
        const JudgedReflection judged{line.anIndex, line.dfIntensity, line.dfSigma,
                                      judgement.dfScale * line.truth.dfValue};
        listSquare.push_back(judged.deviation() * judged.deviation());
        listRatio.push_back(line.dfIntensity / line.dfSigma);
        dfSum += listSquare.back();
        listTrue.push_back({judged.dfTrue, line.dfSigma});
        listJudged.push_back(judged);
    }
    judgement.dfMeanSquare = list.empty() ? g_dfNone : dfSum / double(list.size());
    judgement.dfMedianSquare = median(listSquare) / 0.4549;
    judgement.dfMedianRatio = median(listRatio);
    judgement.dfRForetold = foretoldR(listTrue);
    std::stable_sort(listJudged.begin(), listJudged.end(),
                     [](const JudgedReflection& a, const JudgedReflection& b) {
                         return std::abs(a.deviation()) > std::abs(b.deviation());
                     });
    listJudged.resize(std::min<size_t>(10, listJudged.size()));
    judgement.listWorst = listJudged;
}
}  // namespace

double foretoldR(const std::vector<std::array<double, 2>>& listTrueAndSigma)
{
    constexpr double dfFarthest = 6;  // sigmas, beyond which a normal distribution has nothing left
    constexpr int nSteps = 48;        // of Simpson's rule, a quarter of a sigma each
    double dfDeviation = 0, dfSum = 0;
    for (const auto& [dfTrue, dfSigma] : listTrueAndSigma) {
        const double t = dfTrue / dfSigma, dfFirst = std::max(g_dfObserved, t - dfFarthest);
        const double dfStep = (t + dfFarthest - dfFirst) / nSteps, dfRoot = std::sqrt(dfSigma);
        for (int n = 0; dfStep > 0 && n <= nSteps; ++n) {
            const double x = dfFirst + n * dfStep;
            const double dfWeight = (n == 0 || n == nSteps ? 1
                                     : n % 2 == 1          ? 4
                                                           : 2) *
                                    dfStep / 3 * std::exp(-(x - t) * (x - t) / 2);
            dfDeviation += dfWeight * dfRoot * std::abs(std::sqrt(x) - std::sqrt(t));
            dfSum += dfWeight * dfRoot * std::sqrt(x);
        }
    }
    return dfSum > 0 ? dfDeviation / dfSum : g_dfNone;
}

IntensityJudgement judgeIntensities(const std::vector<ReflectionLine>& listLine,
                                    const std::array<double, 6>& adfCell, const SimulatedSeries& truth,
                                    int nLattice, ListedReflections listed)
{
    IntensityJudgement judgement;
    const auto mapTrue = trueReflections(truth);
    const bool bMerged = listed == ListedReflections::Merged;
    const CEquivalentIndices equivalents(
        bMerged && truth.parameters.nSupercell == 1 ? truth.parameters.strCrystal : QString());
    const auto mapCrossed = crossedReflections(truth, nLattice, equivalents);
    std::vector<MatchedLine> listBest;
    double dfBest = -2;
    int nBest = -1;
    for (const Matrix3& mat : settingsNear(adfCell, truth.basis(nLattice), truth.matPrimitive)) {
        std::vector<MatchedLine> list = matchLines(listLine, mat, mapTrue);
        const double df = correlation(list, &TrueReflection::dfValue);
        const int nCoverage = coverage(list, mapCrossed, equivalents);
        const double dfRank = std::isfinite(df) ? df : -1;
        if (dfRank > dfBest + 1e-6 || (dfRank > dfBest - 1e-6 && nCoverage > nBest)) {
            dfBest = dfRank;
            nBest = nCoverage;
            judgement.matToTrue = mat;
            listBest = std::move(list);
        }
    }
    if (nBest < 0) {
        judgement.strWhy = QStringLiteral("its cell does not describe the true lattice");
        return judgement;
    }
    judgement.bRead = true;
    judgement.nLines = int(listBest.size());
    judgement.nWithoutSigma = int(listLine.size() - listBest.size());
    for (const MatchedLine& line : listBest) {
        judgement.nObserved += line.isObserved();
        judgement.nOffTruth += !line.bOnTruth;
    }
    judgement.dfCorrelation = correlation(listBest, &TrueReflection::dfValue);
    judgement.dfCorrelationBare = correlation(listBest, &TrueReflection::dfBare);
    judgement.dfR = rOnF(listBest);
    judgement.dfDecayLeft = decayLeft(listBest);
    judgeDeviations(listBest, judgement);
    judgeCompleteness(listBest, mapCrossed, equivalents, truth.basis(nLattice), judgement);
    return judgement;
}

IntensityJudgement judgeIntensityFile(const QString& strHklFile, const QString& strBase,
                                      const SimulatedSeries& truth, int nLattice, ListedReflections listed)
{
    IntensityJudgement judgement;
    if (!QFile::exists(strHklFile)) {
        return judgement;
    }
    const std::optional<std::vector<ReflectionLine>> listLine = readReflectionLines(strHklFile,
                                                                                    judgement.strWhy);
    if (!listLine) {
        return judgement;
    }
    std::optional<std::array<double, 6>> adfCell = readCellOfStructureFile(strBase + QStringLiteral(".ins"));
    if (!adfCell) {
        adfCell = readCellOfStructureFile(strBase + QStringLiteral(".cif"));
    }
    if (!adfCell) {
        judgement.strWhy = QStringLiteral("no cell in %1.ins or .cif").arg(strBase);
        return judgement;
    }
    return judgeIntensities(*listLine, *adfCell, truth, nLattice, listed);
}

}  // namespace tessera
