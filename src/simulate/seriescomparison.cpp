#include "simulate/seriescomparison.h"

#include "simulate/structurefactor.h"
#include "simulate/truthfile.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace tessera {

namespace {
// The matrix with whole elements, and how far the given one lies from it.
Matrix3 roundedMatrix(const Matrix3& mat, double& dfMisfit)
{
    Matrix3 result = mat;
    dfMisfit = 0;
    for (Vector3& row : result)
        for (double& df : row) {
            const double dfWhole = std::round(df);
            dfMisfit = std::max(dfMisfit, std::abs(df - dfWhole));
            df = dfWhole;
        }
    return result;
}

bool isPrimitiveVector(const Vector3& vec)
{
    return std::gcd(std::gcd(int(vec[0]), int(vec[1])), int(vec[2])) == 1;
}

constexpr double g_dfLargestMisfit = 0.2;

// Sorted by frame, the spots or peaks of each.
template <typename T>
std::vector<std::vector<T>> byFrame(const std::vector<T>& list, int nFrames)
{
    std::vector<std::vector<T>> listFrame(nFrames);
    for (const T& item : list)
        if (item.nFrame >= 0 && item.nFrame < nFrames)
            listFrame[item.nFrame].push_back(item);
    return listFrame;
}

template <typename T>
bool isWithin(const T& item, double dfX, double dfY, double dfRadius)
{
    return (item.dfX - dfX) * (item.dfX - dfX) + (item.dfY - dfY) * (item.dfY - dfY) <= dfRadius * dfRadius;
}

// Where spots lie on top of each other a peak stands for the strongest, not for a faint one that
// happens to be nearer.
const TruthSpot* strongestSpot(const std::vector<TruthSpot>& list, double dfX, double dfY, double dfRadius)
{
    const TruthSpot* pBest = nullptr;
    for (const TruthSpot& spot : list)
        if (isWithin(spot, dfX, dfY, dfRadius) && (!pBest || spot.dfCounts > pBest->dfCounts))
            pBest = &spot;
    return pBest;
}

// Rows of blank-separated words without comments; false when the file does not open.
bool readRows(const QString& strFileName, std::vector<QStringList>& listRow)
{
    QFile file(strFileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return false;
    QString strText = QString::fromUtf8(file.readAll());
    if (strText.startsWith(QChar(0xfeff)))
        strText.remove(0, 1);
    for (const QString& strLine : strText.split(QLatin1Char('\n'))) {
        const QString str = strLine.simplified();
        if (!str.isEmpty() && !str.startsWith(QLatin1Char('#')))
            listRow.push_back(str.split(QLatin1Char(' ')));
    }
    return true;
}

bool readCell(const QString& strFileName, Matrix3& mat)
{
    std::vector<QStringList> listRow;
    if (!readRows(strFileName, listRow) || listRow.size() < 3)
        return false;
    for (int i = 0; i < 3; ++i) {
        if (listRow[i].size() < 4)
            return false;
        for (int j = 0; j < 3; ++j) {
            bool bGood = false;
            mat[i][j] = listRow[i][j + 1].toDouble(&bGood);
            if (!bGood)
                return false;
        }
    }
    return true;
}

QString relationText(LatticeMatch::Relation relation)
{
    switch (relation) {
        case LatticeMatch::Same:
            return QStringLiteral("same");
        case LatticeMatch::Centred:
            return QStringLiteral("centred");
        case LatticeMatch::Supercell:
            return QStringLiteral("supercell");
        case LatticeMatch::Subcell:
            return QStringLiteral("subcell");
        default:
            return QStringLiteral("none");
    }
}

QJsonObject readSummary(const QString& strSummary)
{
    QFile file(strSummary);
    if (strSummary.isEmpty() || !file.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(file.readAll()).object();
}

// A refined cell of a driver's summary, Å and degrees.
bool readRefinedCell(const QJsonValue& value, std::array<double, 6>& adfCell)
{
    const QJsonArray array = value.toObject()[QStringLiteral("parameters")].toArray();
    for (int i = 0; i < 6; ++i)
        adfCell[size_t(i)] = array.at(i).toDouble();
    return array.size() == 6;
}

}  // namespace

LatticeMatch matchLattice(const Matrix3& matFound, const Matrix3& matTrue, const Matrix3& matPrimitive)
{
    LatticeMatch match;
    const Matrix3 matTruePrimitive = matPrimitive * matTrue;
    if (!(std::abs(determinantOf(matFound)) > 1e-9))
        return match;
    // Found basis on the primitive one: whole numbers when it holds lattice points only.
    const Matrix3 matRatio = matFound * inverseOf(matTruePrimitive);
    double dfMisfit = 0;
    const Matrix3 matWhole = roundedMatrix(matRatio, dfMisfit);
    const int nWhole = int(std::lround(std::abs(determinantOf(matWhole))));
    Matrix3 matFoundOnPrimitive;  // exact
    if (dfMisfit < g_dfLargestMisfit && nWhole >= 1) {
        match.relation = nWhole == 1 ? LatticeMatch::Same : LatticeMatch::Subcell;
        match.nIndex = nWhole;
        match.dfMisfit = dfMisfit;
        matFoundOnPrimitive = matWhole;
    } else {
        // The other way round: every true point has whole indices on the found basis.
        const Matrix3 matBack = roundedMatrix(inverseOf(matRatio), dfMisfit);
        const int nBack = int(std::lround(std::abs(determinantOf(matBack))));
        if (!(dfMisfit < g_dfLargestMisfit) || nBack < 2)
            return match;
        // The rows of its transpose are the found direct axes on the true primitive direct cell.
        const Matrix3 matDirect = transposed(matBack);
        const bool bTrueAxes = std::all_of(matDirect.begin(), matDirect.end(), isPrimitiveVector);
        match.relation = bTrueAxes && nBack <= 4 ? LatticeMatch::Centred : LatticeMatch::Supercell;
        match.nIndex = nBack;
        match.dfMisfit = dfMisfit;
        matFoundOnPrimitive = inverseOf(matBack);
    }
    match.matToTrue = matFoundOnPrimitive * matPrimitive;
    match.adfCell = cellOfReciprocalBasis(inverseOf(match.matToTrue) * matFound);
    match.adfTrueCell = cellOfReciprocalBasis(matTrue);
    match.errors = errorsOfCell(cellOfReciprocalBasis(matFound), match, matTrue);
    return match;
}

CellErrors errorsOfCell(const std::array<double, 6>& adfCell, const LatticeMatch& match,
                        const Matrix3& matTrue)
{
    const std::array<double, 6> adfBrought = cellOfReciprocalBasis(inverseOf(match.matToTrue) *
                                                                   reciprocalBasisOfCell(adfCell));
    const std::array<double, 6> adfTrue = cellOfReciprocalBasis(matTrue);
    CellErrors errors;
    for (int i = 0; i < 3; ++i) {
        errors.adfLength[i] = 100 * (adfBrought[i] / adfTrue[i] - 1);
        errors.adfAngle[i] = adfBrought[3 + i] - adfTrue[3 + i];
    }
    return errors;
}

SeriesComparison compareWithTruth(const SimulatedSeries& truth, const std::vector<ReadPeak>& listPeak,
                                  const std::vector<ReadPeak>& listIndexed, const Matrix3* pmatFound,
                                  double dfRadius)
{
    SeriesComparison comparison;
    const int nFrames = truth.parameters.nFrames;
    const auto listSpot = byFrame(truth.listSpot, nFrames);
    const auto listPeakFrame = byFrame(listPeak, nFrames);
    comparison.nPeaks = int(listPeak.size());
    comparison.nIndexed = int(listIndexed.size());
    comparison.bCellRead = pmatFound != nullptr;
    if (pmatFound)
        comparison.lattice = matchLattice(*pmatFound, truth.matBasis, truth.matPrimitive);

    for (const ReadPeak& peak : listIndexed) {
        const TruthSpot* pSpot = peak.nFrame >= 0 && peak.nFrame < nFrames
                                     ? strongestSpot(listSpot[peak.nFrame], peak.dfX, peak.dfY, dfRadius)
                                     : nullptr;
        if (!pSpot) {
            ++comparison.nIndexedStray;
            continue;
        }
        const Vector3 vec = Vector3{double(peak.nH), double(peak.nK), double(peak.nL)} *
                            comparison.lattice.matToTrue;
        const bool bRight = comparison.lattice.relation != LatticeMatch::None &&
                            lengthOf(vec - Vector3{double(pSpot->nH), double(pSpot->nK), double(pSpot->nL)}) <
                                1e-6;
        ++(bRight ? comparison.nIndexedRight : comparison.nIndexedWrong);
    }

    for (int n = 0; n < nFrames; ++n)
        for (const TruthSpot& spot : listSpot[n]) {
            const bool bFound = std::any_of(
                listPeakFrame[n].begin(), listPeakFrame[n].end(),
                [&](const ReadPeak& peak) { return isWithin(peak, spot.dfX, spot.dfY, dfRadius); });
            for (int i = 0; i < 3; ++i)
                if (spot.dfSignalToNoise >= comparison.adfRatio[i]) {
                    ++comparison.anSpots[i];
                    comparison.anFound[i] += bFound;
                }
        }
    return comparison;
}

bool compareSeriesFiles(const QString& strTruthFile, const QString& strBase, const QString& strSummary,
                        SeriesComparison& comparison, QString& strError)
{
    SimulatedSeries truth;
    if (!readTruthFile(strTruthFile, truth, strError))
        return false;
    std::vector<QStringList> listRow;
    if (!readRows(strBase + QStringLiteral(".pk"), listRow)) {
        strError = QStringLiteral("cannot open %1.pk").arg(strBase);
        return false;
    }
    std::vector<ReadPeak> listPeak, listIndexed;
    for (const QStringList& row : listRow)
        if (row.size() >= 6)
            listPeak.push_back({row[1].toInt(), row[3].toDouble(), row[4].toDouble(), 0, 0, 0});
    listRow.clear();
    readRows(strBase + QStringLiteral(".ipf"), listRow);
    for (const QStringList& row : listRow)
        if (row.size() >= 7)
            listIndexed.push_back({row[0].toInt() - 1, row[5].toDouble(), row[6].toDouble(), row[1].toInt(),
                                   row[2].toInt(), row[3].toInt()});
    Matrix3 matFound{};
    const bool bCell = readCell(strBase + QStringLiteral(".uc"), matFound);
    comparison = compareWithTruth(truth, listPeak, listIndexed, bCell ? &matFound : nullptr);
    std::array<double, 6> adfRefined;
    if (comparison.lattice.relation == LatticeMatch::None)
        return true;
    const QJsonObject summary = readSummary(strSummary);
    if (readRefinedCell(summary[QStringLiteral("refined")], adfRefined)) {
        comparison.bRefined = true;
        comparison.refined = errorsOfCell(adfRefined, comparison.lattice, truth.matBasis);
    }
    const QJsonObject pairs = summary[QStringLiteral("peakPairs")].toObject();
    for (auto it = pairs.begin(); it != pairs.end(); ++it)
        if (readRefinedCell(it.value(), adfRefined))
            comparison.mapPairs[it.key()] = errorsOfCell(adfRefined, comparison.lattice, truth.matBasis);
    return true;
}

QJsonObject comparisonToJson(const SeriesComparison& comparison)
{
    const auto array = [](const auto& list) {
        QJsonArray result;
        for (double df : list)
            result.append(df);
        return result;
    };
    QJsonArray arrayFound;
    for (int i = 0; i < 3; ++i)
        arrayFound.append(QJsonObject{{QStringLiteral("snr"), comparison.adfRatio[i]},
                                      {QStringLiteral("spots"), comparison.anSpots[i]},
                                      {QStringLiteral("found"), comparison.anFound[i]},
                                      {QStringLiteral("share"), comparison.foundShare(i)}});
    QJsonObject pairs;
    for (const auto& [strName, errors] : comparison.mapPairs)
        pairs[strName] = QJsonObject{{QStringLiteral("lengthErrorPercent"), array(errors.adfLength)},
                                     {QStringLiteral("angleErrorDegrees"), array(errors.adfAngle)}};
    const LatticeMatch& lattice = comparison.lattice;
    return {{QStringLiteral("cellRead"), comparison.bCellRead},
            {QStringLiteral("latticeRight"), lattice.isRight()},
            {QStringLiteral("relation"), relationText(lattice.relation)},
            {QStringLiteral("volumeRatio"), lattice.nIndex},
            {QStringLiteral("misfit"), lattice.dfMisfit},
            {QStringLiteral("cell"), array(lattice.adfCell)},
            {QStringLiteral("lengthErrorPercent"), array(lattice.errors.adfLength)},
            {QStringLiteral("angleErrorDegrees"), array(lattice.errors.adfAngle)},
            {QStringLiteral("refinedLengthErrorPercent"), array(comparison.refined.adfLength)},
            {QStringLiteral("refinedAngleErrorDegrees"), array(comparison.refined.adfAngle)},
            {QStringLiteral("refined"), comparison.bRefined},
            {QStringLiteral("peakPairs"), pairs},
            {QStringLiteral("peaks"), comparison.nPeaks},
            {QStringLiteral("indexed"), comparison.nIndexed},
            {QStringLiteral("indexedRight"), comparison.nIndexedRight},
            {QStringLiteral("indexedWrong"), comparison.nIndexedWrong},
            {QStringLiteral("indexedStray"), comparison.nIndexedStray},
            {QStringLiteral("rightShare"), comparison.rightShare()},
            {QStringLiteral("found"), arrayFound}};
}

static QString cellText(const QString& strHead, const std::array<double, 6>& adfCell)
{
    QString str = strHead + QStringLiteral("   ");
    for (size_t i = 0; i < 6; ++i)
        str += QStringLiteral(" %1%2").arg(adfCell[i], 8, 'f', i < 3 ? 4 : 3).arg(i < 3 ? " Å" : "°");
    return str + QLatin1Char('\n');
}

static QString errorsText(const QString& strHead, const CellErrors& errors)
{
    return QStringLiteral("%1  a %2 %  b %3 %  c %4 %  alpha %5°  beta %6°  gamma %7°\n")
        .arg(strHead)
        .arg(errors.adfLength[0], 0, 'f', 3)
        .arg(errors.adfLength[1], 0, 'f', 3)
        .arg(errors.adfLength[2], 0, 'f', 3)
        .arg(errors.adfAngle[0], 0, 'f', 3)
        .arg(errors.adfAngle[1], 0, 'f', 3)
        .arg(errors.adfAngle[2], 0, 'f', 3);
}

QString comparisonToText(const SeriesComparison& comparison)
{
    const LatticeMatch& lattice = comparison.lattice;
    QString str = QStringLiteral("lattice  %1 (%2, volume ratio %3, misfit %4)\n")
                      .arg(lattice.isRight() ? QStringLiteral("right") : QStringLiteral("WRONG"),
                           comparison.bCellRead ? relationText(lattice.relation) : QStringLiteral("no cell"))
                      .arg(lattice.nIndex)
                      .arg(lattice.dfMisfit, 0, 'f', 3);
    if (lattice.relation != LatticeMatch::None) {
        str += cellText(QStringLiteral("found"), lattice.adfCell);
        str += cellText(QStringLiteral("true "), lattice.adfTrueCell);
    }
    str += errorsText(QStringLiteral("errors "), lattice.errors);
    if (comparison.bRefined)
        str += errorsText(QStringLiteral("refined"), comparison.refined);
    for (const auto& [strName, errors] : comparison.mapPairs)
        str += errorsText(QStringLiteral("pairs, ") + strName, errors);
    str += QStringLiteral("indices  %1 of %2 right (%3 %), %4 wrong, %5 at no true spot\n")
               .arg(comparison.nIndexedRight)
               .arg(comparison.nIndexed)
               .arg(100 * comparison.rightShare(), 0, 'f', 2)
               .arg(comparison.nIndexedWrong)
               .arg(comparison.nIndexedStray);
    for (int i = 0; i < 3; ++i)
        str += QStringLiteral("found    %1 of %2 spots with a ratio of %3 and more (%4 %)\n")
                   .arg(comparison.anFound[i])
                   .arg(comparison.anSpots[i])
                   .arg(comparison.adfRatio[i])
                   .arg(100 * comparison.foundShare(i), 0, 'f', 2);
    return str;
}

}  // namespace tessera
