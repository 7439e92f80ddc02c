#include "simulate/seriescomparison.h"

#include "simulate/truthfile.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <cmath>
#include <set>

namespace tessera {

namespace {
// Sorted by frame, the spots or peaks of each.
template <typename T>
std::vector<std::vector<T>> byFrame(const std::vector<T>& list, int nFrames)
{
    std::vector<std::vector<T>> listFrame(nFrames);
    for (const T& item : list) {
        if (item.nFrame >= 0 && item.nFrame < nFrames) {
            listFrame[item.nFrame].push_back(item);
        }
    }
    return listFrame;
}

template <typename T>
bool isWithin(const T& item, double dfX, double dfY, double dfRadius)
{
    return (item.dfX - dfX) * (item.dfX - dfX) + (item.dfY - dfY) * (item.dfY - dfY) <= dfRadius * dfRadius;
}

// Where spots overlap a peak is that of the strongest, not of a faint one that happens to be nearer. Looks at
// the spots of one lattice or, below 0, of all.
const TruthSpot* strongestSpot(const std::vector<TruthSpot>& list, double dfX, double dfY, double dfRadius,
                               int nLattice = -1)
{
    const TruthSpot* pBest = nullptr;
    for (const TruthSpot& spot : list) {
        if ((nLattice < 0 || spot.nLattice == nLattice) && isWithin(spot, dfX, dfY, dfRadius) &&
            (!pBest || spot.dfCounts > pBest->dfCounts)) {
            pBest = &spot;
        }
    }
    return pBest;
}

// The order of matches: right ones first, then those with some relation, then by how closely they fit.
bool isBetter(const LatticeMatch& a, const LatticeMatch& b)
{
    const auto rank = [](const LatticeMatch& match) {
        return match.isRight() ? 0 : match.relation != LatticeMatch::None ? 1 : 2;
    };
    return rank(a) != rank(b) ? rank(a) < rank(b) : a.dfMisfit < b.dfMisfit;
}

bool hasIndices(const ReadPeak& peak, const LatticeMatch& match, const TruthSpot& spot)
{
    const Vector3 vec = Vector3{double(peak.nH), double(peak.nK), double(peak.nL)} * match.matToTrue;
    return match.relation != LatticeMatch::None &&
           lengthOf(vec - Vector3{double(spot.nH), double(spot.nK), double(spot.nL)}) < 1e-6;
}

// If spots of two crystals coincide, the indices of either are right.
void judgeIndexed(const std::vector<std::vector<TruthSpot>>& listSpot,
                  const std::vector<ReadPeak>& listIndexed, SeriesComparison& comparison)
{
    for (const ReadPeak& peak : listIndexed) {
        const bool bFrame = peak.nFrame >= 0 && peak.nFrame < int(listSpot.size());
        const TruthSpot* pSpot = nullptr;
        bool bRight = false;
        for (size_t n = 0; bFrame && n < comparison.listLattice.size(); ++n) {
            const TruthSpot* pOwn = strongestSpot(listSpot[peak.nFrame], peak.dfX, peak.dfY,
                                                  comparison.dfRadius, int(n));
            const bool bOwnRight = pOwn && hasIndices(peak, comparison.listLattice[n].match, *pOwn);
            if (pOwn && !bRight && (bOwnRight || !pSpot || pOwn->dfCounts > pSpot->dfCounts)) {
                pSpot = pOwn;
            }
            bRight = bRight || bOwnRight;
        }
        if (!pSpot) {
            ++comparison.nIndexedStray;
            continue;
        }
        ++(bRight ? comparison.nIndexedRight : comparison.nIndexedWrong);
        LatticeShare& share = comparison.listLattice[pSpot->nLattice];
        ++share.nIndexed;
        share.nRight += bRight;
    }
}

// The hunted peaks: at the beam, at a spot, or at nothing.
void judgeHunted(const SimulatedSeries& truth, const std::vector<std::vector<TruthSpot>>& listSpot,
                 const std::vector<std::vector<ReadPeak>>& listPeak, SeriesComparison& comparison)
{
    const SimulationParameters& p = truth.parameters;
    const double dfDisc = 3.14159265358979323846 * comparison.dfRadius * comparison.dfRadius;
    double dfChance = 0;
    for (size_t n = 0; n < listPeak.size(); ++n) {
        std::set<const TruthSpot*> setHit;
        const std::array<double, 2> shift = n < truth.listShift.size() ? truth.listShift[n]
                                                                       : std::array<double, 2>{};
        int nFrame = 0;
        for (const ReadPeak& peak : listPeak[n]) {
            const TruthSpot* pSpot = strongestSpot(listSpot[n], peak.dfX, peak.dfY, comparison.dfRadius);
            if (!pSpot &&
                isWithin(peak, p.dfCenterX + shift[0], p.dfCenterY + shift[1], comparison.dfRadius)) {
                ++comparison.nPeaksAtBeam;
                continue;
            }
            ++nFrame;
            if (!pSpot) {
                continue;
            }
            ++comparison.nPeaksTrue;
            ++comparison.listLattice[pSpot->nLattice].nHunted;
            comparison.nPeaksRepeated += !setHit.insert(pSpot).second;
        }
        // Discs at random overlap, so the share of the frame that they leave falls by the exponential.
        dfChance += nFrame *
                    (1 - std::exp(-double(listSpot[n].size()) * dfDisc / (double(p.nSize) * p.nSize)));
    }
    const int nJudged = comparison.nPeaks - comparison.nPeaksAtBeam;
    comparison.dfChance = nJudged > 0 ? dfChance / nJudged : 0;
}

// The truth spots that have a peak.
void countFound(const std::vector<std::vector<TruthSpot>>& listSpot,
                const std::vector<std::vector<ReadPeak>>& listPeak, SeriesComparison& comparison)
{
    for (size_t n = 0; n < listSpot.size(); ++n) {
        for (const TruthSpot& spot : listSpot[n]) {
            const bool bFound = std::any_of(
                listPeak[n].begin(), listPeak[n].end(), [&](const ReadPeak& peak) {
                    return isWithin(peak, spot.dfX, spot.dfY, comparison.dfRadius);
                });
            for (size_t i = 0; i < 3; ++i) {
                if (spot.dfSignalToNoise >= comparison.adfRatio[i]) {
                    ++comparison.anSpots[i];
                    comparison.anFound[i] += bFound;
                }
            }
            if (spot.dfSignalToNoise >= comparison.adfRatio[0]) {
                LatticeShare& share = comparison.listLattice[spot.nLattice];
                ++share.nSpots;
                share.nFound += bFound;
            }
        }
    }
}

// Rows of blank-separated words without comments; false when the file does not open.
bool readRows(const QString& strFileName, std::vector<QStringList>& listRow)
{
    QFile file(strFileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return false;
    }
    QString strText = QString::fromUtf8(file.readAll());
    if (strText.startsWith(QChar(0xfeff))) {
        strText.remove(0, 1);
    }
    for (const QString& strLine : strText.split(QLatin1Char('\n'))) {
        const QString str = strLine.simplified();
        if (!str.isEmpty() && !str.startsWith(QLatin1Char('#'))) {
            listRow.push_back(str.split(QLatin1Char(' ')));
        }
    }
    return true;
}

bool readCell(const QString& strFileName, Matrix3& mat)
{
    std::vector<QStringList> listRow;
    if (!readRows(strFileName, listRow) || listRow.size() < 3) {
        return false;
    }
    for (int i = 0; i < 3; ++i) {
        if (listRow[i].size() < 4) {
            return false;
        }
        for (int j = 0; j < 3; ++j) {
            bool bGood = false;
            mat[i][j] = listRow[i][j + 1].toDouble(&bGood);
            if (!bGood) {
                return false;
            }
        }
    }
    return true;
}

QJsonObject readSummary(const QString& strSummary)
{
    QFile file(strSummary);
    if (strSummary.isEmpty() || !file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return QJsonDocument::fromJson(file.readAll()).object();
}

// A refined cell of a driver's summary, Å and degrees.
bool readRefinedCell(const QJsonValue& value, std::array<double, 6>& adfCell)
{
    const QJsonArray array = value.toObject()[QStringLiteral("parameters")].toArray();
    for (int i = 0; i < 6; ++i) {
        adfCell[i] = array.at(i).toDouble();
    }
    return array.size() == 6;
}

}  // namespace

double matchRadius(const SimulatedSeries& truth)
{
    return std::max(3.0, 2 * truth.parameters.dfSpotSigma);
}

SeriesComparison compareWithTruth(const SimulatedSeries& truth, const std::vector<ReadPeak>& listPeak,
                                  const std::vector<ReadPeak>& listIndexed, const Matrix3* pmatFound)
{
    SeriesComparison comparison;
    const int nFrames = truth.parameters.nFrames;
    const auto listSpot = byFrame(truth.listSpot, nFrames);
    comparison.dfRadius = matchRadius(truth);
    comparison.nPeaks = int(listPeak.size());
    comparison.nIndexed = int(listIndexed.size());
    comparison.bCellRead = pmatFound != nullptr;
    comparison.listLattice.resize(truth.latticeCount());
    for (int n = 0; pmatFound && n < truth.latticeCount(); ++n) {
        LatticeMatch& match = comparison.listLattice[n].match;
        match = matchLattice(*pmatFound, truth.basis(n), truth.matPrimitive);
        if (n == 0 || isBetter(match, comparison.lattice)) {
            comparison.lattice = match;
            comparison.nFoundLattice = n;
        }
    }
    judgeIndexed(listSpot, listIndexed, comparison);
    judgeHunted(truth, listSpot, byFrame(listPeak, nFrames), comparison);
    countFound(listSpot, byFrame(listPeak, nFrames), comparison);
    return comparison;
}

std::optional<SeriesComparison> compareSeriesFiles(const QString& strTruthFile, const QString& strBase,
                                                   const QString& strSummary, QString& strError)
{
    SimulatedSeries truth;
    if (!readTruthFile(strTruthFile, truth, strError)) {
        return {};
    }
    std::vector<QStringList> listRow;
    if (!readRows(strBase + QStringLiteral(".pk"), listRow)) {
        strError = QStringLiteral("cannot open %1.pk").arg(strBase);
        return {};
    }
    std::vector<ReadPeak> listPeak, listIndexed;
    for (const QStringList& row : listRow) {
        if (row.size() >= 6) {
            listPeak.push_back({row[1].toInt(), row[3].toDouble(), row[4].toDouble(), 0, 0, 0});
        }
    }
    listRow.clear();
    readRows(strBase + QStringLiteral(".ipf"), listRow);
    for (const QStringList& row : listRow) {
        if (row.size() >= 7) {
            listIndexed.push_back({row[0].toInt() - 1, row[5].toDouble(), row[6].toDouble(), row[1].toInt(),
                                   row[2].toInt(), row[3].toInt()});
        }
    }
    Matrix3 matFound{};
    const bool bCell = readCell(strBase + QStringLiteral(".uc"), matFound);
    SeriesComparison comparison = compareWithTruth(truth, listPeak, listIndexed, bCell ? &matFound : nullptr);
    const QJsonObject summary = readSummary(strSummary);
    const Matrix3& matTrue = truth.basis(comparison.nFoundLattice);
    comparison.proposal = judgeProposal(summary[QStringLiteral("lattice")].toObject(),
                                        bCell ? &matFound : nullptr, matTrue, truth.matPrimitive,
                                        trueBravaisType(truth));
    Matrix3 matRefined{};
    const bool bRefinedBasis = readCell(strBase + QStringLiteral("_refined.uc"), matRefined);
    comparison.geometry = judgeGeometry(summary[QStringLiteral("geometry")].toObject(),
                                        bRefinedBasis ? &matRefined : nullptr, truth,
                                        comparison.nFoundLattice);
    comparison.integrated = judgeIntensityFile(strBase + QStringLiteral("_integrated.hkl"), strBase, truth,
                                               comparison.nFoundLattice, ListedReflections::EachIndex);
    comparison.merged = judgeIntensityFile(strBase + QStringLiteral("_merged.hkl"), strBase, truth,
                                           comparison.nFoundLattice, ListedReflections::Merged);
    comparison.symmetry = judgeSymmetry(
        summary[QStringLiteral("quality")].toObject(),
        truth.parameters.nSupercell > 1 ? QString() : truth.parameters.strCrystal);
    std::array<double, 6> adfRefined;
    if (comparison.lattice.relation == LatticeMatch::None) {
        return comparison;
    }
    if (readRefinedCell(summary[QStringLiteral("refined")], adfRefined)) {
        comparison.bRefined = true;
        comparison.refined = errorsOfCell(adfRefined, comparison.lattice, matTrue);
    }
    const QJsonObject pairs = summary[QStringLiteral("peakPairs")].toObject();
    for (auto it = pairs.begin(); it != pairs.end(); ++it) {
        if (readRefinedCell(it.value(), adfRefined)) {
            comparison.mapPairs[it.key()] = errorsOfCell(adfRefined, comparison.lattice, matTrue);
        }
    }
    return comparison;
}

}  // namespace tessera
