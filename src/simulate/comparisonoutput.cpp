// The comparison as JSON for scripts and as text for reading.
#include "simulate/seriescomparison.h"

#include <QJsonArray>

#include <utility>

namespace tessera {

namespace {
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

QString cellText(const QString& strHead, const std::array<double, 6>& adfCell)
{
    QString str = strHead + QStringLiteral("   ");
    for (size_t i = 0; i < 6; ++i) {
        str += QStringLiteral(" %1%2").arg(adfCell[i], 8, 'f', i < 3 ? 4 : 3).arg(i < 3 ? " Å" : "°");
    }
    return str + QLatin1Char('\n');
}

QString errorsText(const QString& strHead, const CellErrors& errors)
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

QJsonObject proposalToJson(const LatticeProposal& proposal)
{
    const auto type = [](const BravaisType& one) {
        return QJsonObject{{QStringLiteral("system"), one.strSystem},
                           {QStringLiteral("centring"), one.strCentring},
                           {QStringLiteral("symbol"), one.symbol()}};
    };
    QJsonObject object{{QStringLiteral("true"), type(proposal.typeTrue)}};
    if (!proposal.bRead) {
        return object;
    }
    object[QStringLiteral("proposed")] = type(proposal.typeProposed);
    object[QStringLiteral("systemRight")] = proposal.bSystemRight;
    object[QStringLiteral("centringRight")] = proposal.bCentringRight;
    object[QStringLiteral("right")] = proposal.isRight();
    object[QStringLiteral("amongCandidates")] = proposal.bAmongCandidates;
    if (proposal.bMatrixRead) {
        object[QStringLiteral("spansTrueLattice")] = proposal.bSpans;
    }
    return object;
}

template <size_t N>
QJsonArray numbersToJson(const std::array<double, N>& adf)
{
    QJsonArray array;
    for (const double df : adf) {
        array.append(df);
    }
    return array;
}

/// The true spots found, by the ratio of their intensity to its error.
QJsonArray foundToJson(const SeriesComparison& comparison)
{
    QJsonArray array;
    for (int i = 0; i < 3; ++i) {
        array.append(QJsonObject{{QStringLiteral("snr"), comparison.adfRatio[i]},
                                 {QStringLiteral("spots"), comparison.anSpots[i]},
                                 {QStringLiteral("found"), comparison.anFound[i]},
                                 {QStringLiteral("share"), comparison.foundShare(i)}});
    }
    return array;
}

/// The cells from peak pairs, which have their errors alone.
QJsonObject pairsToJson(const SeriesComparison& comparison)
{
    QJsonObject object;
    for (const auto& [strName, errors] : comparison.mapPairs) {
        object[strName] = QJsonObject{{QStringLiteral("lengthErrorPercent"), numbersToJson(errors.adfLength)},
                                      {QStringLiteral("angleErrorDegrees"), numbersToJson(errors.adfAngle)}};
    }
    return object;
}

/// What was judged of the intensities; files that were not there have no entry.
QJsonObject allIntensitiesToJson(const SeriesComparison& comparison)
{
    QJsonObject intensities;
    for (const auto& [strName, object] :
         {std::make_pair(QStringLiteral("integrated"), intensitiesToJson(comparison.integrated)),
          std::make_pair(QStringLiteral("merged"), intensitiesToJson(comparison.merged)),
          std::make_pair(QStringLiteral("symmetry"), symmetryToJson(comparison.symmetry))}) {
        if (!object.isEmpty()) {
            intensities[strName] = object;
        }
    }
    return intensities;
}

QJsonArray latticesToJson(const SeriesComparison& comparison)
{
    QJsonArray array;
    for (const LatticeShare& share : comparison.listLattice) {
        array.append(QJsonObject{{QStringLiteral("latticeRight"), share.match.isRight()},
                                 {QStringLiteral("relation"), relationText(share.match.relation)},
                                 {QStringLiteral("volumeRatio"), share.match.nIndex},
                                 {QStringLiteral("misfit"), share.match.dfMisfit},
                                 {QStringLiteral("spots"), share.nSpots},
                                 {QStringLiteral("found"), share.nFound},
                                 {QStringLiteral("recall"), share.foundShare()},
                                 {QStringLiteral("hunted"), share.nHunted},
                                 {QStringLiteral("indexed"), share.nIndexed},
                                 {QStringLiteral("indexedRight"), share.nRight},
                                 {QStringLiteral("rightShare"), share.rightShare()}});
    }
    return array;
}

QString proposalText(const LatticeProposal& proposal)
{
    const auto word = [](bool bRight) { return bRight ? QStringLiteral("right") : QStringLiteral("WRONG"); };
    const auto name = [](const BravaisType& type) {
        return QStringLiteral("%1 %2").arg(type.strSystem, type.strCentring);
    };
    QString str = QStringLiteral("type     %1, proposed %2: system %3, centring %4%5")
                      .arg(name(proposal.typeTrue), name(proposal.typeProposed), word(proposal.bSystemRight),
                           word(proposal.bCentringRight),
                           proposal.isRight()          ? QString()
                           : proposal.bAmongCandidates ? QStringLiteral(", but among the candidates")
                                                       : QStringLiteral(", nor among the candidates"));
    if (proposal.bMatrixRead) {
        str += proposal.bSpans ? QStringLiteral("; spans the true lattice")
                               : QStringLiteral("; does NOT span the true lattice");
    }
    return str + QLatin1Char('\n');
}

QString huntText(const SeriesComparison& comparison)
{
    return QStringLiteral(
               "peaks    %1 of %2 at a true spot within %3 pixels (%4 %; %5 % by chance), %6 at a spot "
               "that has one already; %7 more at the direct beam\n")
        .arg(comparison.nPeaksTrue)
        .arg(comparison.nPeaks - comparison.nPeaksAtBeam)
        .arg(comparison.dfRadius)
        .arg(100 * comparison.precision(), 0, 'f', 2)
        .arg(100 * comparison.dfChance, 0, 'f', 1)
        .arg(comparison.nPeaksRepeated)
        .arg(comparison.nPeaksAtBeam);
}

QString latticesText(const SeriesComparison& comparison)
{
    QString str;
    for (size_t n = 0; n < comparison.listLattice.size(); ++n) {
        const LatticeShare& share = comparison.listLattice[n];
        str += QStringLiteral(
                   "crystal %1: %2, %3 of %4 spots found (%5 %), %6 of %7 indices right (%8 %) of %9 "
                   "hunted peaks\n")
                   .arg(n + 1)
                   .arg(relationText(share.match.relation))
                   .arg(share.nFound)
                   .arg(share.nSpots)
                   .arg(100 * share.foundShare(), 0, 'f', 2)
                   .arg(share.nRight)
                   .arg(share.nIndexed)
                   .arg(100 * share.rightShare(), 0, 'f', 2)
                   .arg(share.nHunted);
    }
    return str;
}
}  // namespace

QJsonObject comparisonToJson(const SeriesComparison& comparison)
{
    const LatticeMatch& lattice = comparison.lattice;
    QJsonObject root{
        {QStringLiteral("cellRead"), comparison.bCellRead},
        {QStringLiteral("latticeRight"), lattice.isRight()},
        {QStringLiteral("relation"), relationText(lattice.relation)},
        {QStringLiteral("volumeRatio"), lattice.nIndex},
        {QStringLiteral("misfit"), lattice.dfMisfit},
        {QStringLiteral("cell"), numbersToJson(lattice.adfCell)},
        {QStringLiteral("lengthErrorPercent"), numbersToJson(lattice.errors.adfLength)},
        {QStringLiteral("angleErrorDegrees"), numbersToJson(lattice.errors.adfAngle)},
        {QStringLiteral("refinedLengthErrorPercent"), numbersToJson(comparison.refined.adfLength)},
        {QStringLiteral("refinedAngleErrorDegrees"), numbersToJson(comparison.refined.adfAngle)},
        {QStringLiteral("refined"), comparison.bRefined},
        {QStringLiteral("peakPairs"), pairsToJson(comparison)},
        {QStringLiteral("peaks"), comparison.nPeaks},
        {QStringLiteral("indexed"), comparison.nIndexed},
        {QStringLiteral("indexedRight"), comparison.nIndexedRight},
        {QStringLiteral("indexedWrong"), comparison.nIndexedWrong},
        {QStringLiteral("indexedStray"), comparison.nIndexedStray},
        {QStringLiteral("rightShare"), comparison.rightShare()},
        {QStringLiteral("found"), foundToJson(comparison)},
        {QStringLiteral("matchRadius"), comparison.dfRadius},
        {QStringLiteral("recall"), comparison.recall()},
        {QStringLiteral("precision"), comparison.precision()},
        {QStringLiteral("precisionByChance"), comparison.dfChance},
        {QStringLiteral("peaksTrue"), comparison.nPeaksTrue},
        {QStringLiteral("peaksRepeated"), comparison.nPeaksRepeated},
        {QStringLiteral("peaksAtBeam"), comparison.nPeaksAtBeam},
        {QStringLiteral("bravais"), proposalToJson(comparison.proposal)}};
    const QJsonObject geometry = geometryToJson(comparison.geometry);
    if (!geometry.isEmpty()) {
        root[QStringLiteral("geometry")] = geometry;
    }
    const QJsonObject intensities = allIntensitiesToJson(comparison);
    if (!intensities.isEmpty()) {
        root[QStringLiteral("intensities")] = intensities;
    }
    if (comparison.listLattice.size() > 1) {
        root[QStringLiteral("foundLattice")] = lattice.relation == LatticeMatch::None
                                                   ? 0
                                                   : comparison.nFoundLattice + 1;
        root[QStringLiteral("lattices")] = latticesToJson(comparison);
    }
    return root;
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
    if (comparison.bRefined) {
        str += errorsText(QStringLiteral("refined"), comparison.refined);
    }
    for (const auto& [strName, errors] : comparison.mapPairs) {
        str += errorsText(QStringLiteral("pairs, ") + strName, errors);
    }
    str += geometryToText(comparison.geometry);
    str += QStringLiteral("indices  %1 of %2 right (%3 %), %4 wrong, %5 at no true spot\n")
               .arg(comparison.nIndexedRight)
               .arg(comparison.nIndexed)
               .arg(100 * comparison.rightShare(), 0, 'f', 2)
               .arg(comparison.nIndexedWrong)
               .arg(comparison.nIndexedStray);
    for (int i = 0; i < 3; ++i) {
        str += QStringLiteral("found    %1 of %2 spots with a ratio of %3 and more (%4 %)\n")
                   .arg(comparison.anFound[i])
                   .arg(comparison.anSpots[i])
                   .arg(comparison.adfRatio[i])
                   .arg(100 * comparison.foundShare(i), 0, 'f', 2);
    }
    str += huntText(comparison);
    if (comparison.proposal.bRead) {
        str += proposalText(comparison.proposal);
    }
    if (comparison.listLattice.size() > 1) {
        str += latticesText(comparison);
    }
    str += intensitiesToText(QStringLiteral("integrated"), comparison.integrated);
    str += intensitiesToText(QStringLiteral("merged  "), comparison.merged);
    str += symmetryToText(comparison.symmetry);
    return str;
}

}  // namespace tessera
