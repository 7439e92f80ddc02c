#include "crystals/joblines.h"

#include "crystals/cellrelation.h"
#include "road/reporttables.h"

#include <QFileInfo>

#include <cmath>

namespace tessera {

namespace {

/// The known compound of a group, "quartz (edges off by 0.12 %, angles by 0.05°)", with the next one that
/// fits; "no known cell" where none fits, and empty where no cells are known.
QString knownText(const CompoundGroup& compound, const CrystalsJobResult& result)
{
    if (!compound.known) {
        return result.listKnown.empty() ? QString() : QStringLiteral("no known cell");
    }
    QString strText = QStringLiteral("%1 (edges off by %2 %, angles by %3°)")
                          .arg(result.listKnown[compound.known->nKnown].strName,
                               QString::number(compound.known->dfLengths, 'f', 2),
                               QString::number(compound.known->dfAngles, 'f', 2));
    if (!compound.known->strNext.isEmpty()) {
        strText += QStringLiteral(", next to it %1").arg(compound.known->strNext);
    }
    return strText;
}

/// The quality of merged intensities; figures that are not finite are left out.
QString qualityLine(const ShellQuality& quality)
{
    const QString strLimit = QStringLiteral("to %1 Å").arg(quality.dfDMin, 0, 'f', 2);
    QStringList listPart = {
        QStringLiteral("%1 observations of %2 reflections").arg(quality.nObserved).arg(quality.nUnique)};
    const auto put = [&listPart](const char* pszText, double dfValue, int nDecimals) {
        if (std::isfinite(dfValue)) {
            listPart.append(QString::fromUtf8(pszText).arg(dfValue, 0, 'f', nDecimals));
        }
    };
    put("%1 % complete", 100 * quality.dfCompleteness, 1);
    // The limit is that of all observations together, so single crystals may not reach it.
    listPart.last() += QLatin1Char(' ') + strLimit;
    put("Rint %1", quality.dfRInt, 3);
    put("CC1/2 %1", quality.dfCcHalf, 3);
    put("I/σ %1", quality.dfIOverSigma, 1);
    return listPart.join(QStringLiteral(", "));
}

/// "space group I a -3 d (230), as likely: ..."; empty where no space groups were ranked.
QString groupText(const IntegrationResult& merged)
{
    if (!merged.spaceGroup) {
        return {};
    }
    // Likelihoods are printed with two decimals and are not more accurate: a difference of a twentieth is not
    // significant.
    const double dfEqual = 0.95;
    QStringList listEqual;
    for (const SpaceGroupCandidate& other : merged.spaceGroups.listCandidate) {
        if (other.nNumber != merged.spaceGroup->nNumber &&
            other.dfLikelihood > dfEqual * merged.spaceGroup->dfLikelihood) {
            listEqual.append(other.strName);
        }
    }
    QString strText = QStringLiteral("space group %1 (%2)")
                          .arg(merged.spaceGroup->strName, QString::number(merged.spaceGroup->nNumber));
    if (!listEqual.isEmpty()) {
        strText += QStringLiteral(", as likely: %1").arg(listEqual.join(QStringLiteral(", ")));
    }
    return strText;
}

/// One term of an index, such as "+1/2h"; empty for a factor of 0. The denominators are those that centrings,
/// and two of them after one another, give. The factors are products of matrices with such fractions and are
/// off by rounding alone, far less than the 0.01 that is allowed.
/// @param bFirst  whether it begins the index, so that there is no plus before it
QString termText(double dfFactor, const char* pszLetter, bool bFirst)
{
    for (const int nDenominator : {1, 2, 3, 4, 6}) {
        const double dfNumerator = dfFactor * nDenominator;
        const int n = int(std::lround(dfNumerator));
        if (n == 0 || std::abs(dfNumerator - n) > 0.01) {
            continue;
        }
        QString strText = n < 0 ? QStringLiteral("-") : bFirst ? QString() : QStringLiteral("+");
        if (nDenominator > 1) {
            strText += QStringLiteral("%1/%2").arg(std::abs(n)).arg(nDenominator);
        } else if (std::abs(n) > 1) {
            strText += QString::number(std::abs(n));
        }
        return strText + QLatin1String(pszLetter);
    }
    return {};
}

/// The lines of one group.
void tellGroup(const CompoundGroup& compound, const CrystalsJobResult& result, CRunReport& report)
{
    const QString strKnown = knownText(compound, result);
    QString strLine = QStringLiteral("%1: %2, reduced cell %3")
                          .arg(compound.strName, counted(compound.crystalCount(), "crystal"),
                               cellText(compound.cellMean, compound.cellSpread));
    if (!strKnown.isEmpty()) {
        strLine += QStringLiteral("; ") + strKnown;
    }
    report.addMessage(strLine + QLatin1Char('.'));
    const QString strRelation = relationLine(compound, result);
    if (!strRelation.isEmpty()) {
        report.addMessage(strRelation, Severity::Warning);
    }
    for (const int nMember : compound.group.listMember) {
        const CrystalFate& fate = result.listFate[nMember];
        if (!fate.bUsed && compound.isMerged()) {
            report.addMessage(QStringLiteral("%1: %2 is left out. %3")
                                  .arg(compound.strName,
                                       result.listCrystal[nMember].strFolder + QLatin1Char('/') +
                                           result.listCrystal[nMember].strName,
                                       fate.strReason),
                              Severity::Warning);
        }
    }
    for (const QString& strKind : otherKindLines(compound, result)) {
        report.addMessage(QStringLiteral("%1: %2").arg(compound.strName, strKind), Severity::Warning);
    }
    if (!compound.isMerged()) {
        report.addMessage(
            QStringLiteral("%1: not merged. %2").arg(compound.strName, compound.outcome.strReason));
        return;
    }
    const IntegrationResult& merged = compound.merged.result;
    report.addMessage(QStringLiteral("%1: %2 of %3 merged, Laue class %4, cell %5: %6.")
                          .arg(compound.strName, QString::number(compound.usedCount()),
                               QString::number(compound.crystalCount()), merged.chosen.strClass,
                               cellText(compound.cell, merged.cellErrors),
                               qualityLine(merged.quality.overall)));
    if (merged.spaceGroup) {
        report.addMessage(QStringLiteral("%1: %2.").arg(compound.strName, groupText(merged)));
    }
}

/// The line of one group in the summary.
QString summaryLine(const CompoundGroup& compound, const CrystalsJobResult& result)
{
    QString strLine = compound.strName + QStringLiteral(": ");
    if (compound.known) {
        strLine += result.listKnown[compound.known->nKnown].strName + QStringLiteral(", ");
    }
    const QString strCrystals = counted(compound.crystalCount(), "crystal");
    if (!compound.isMerged()) {
        return strLine + QStringLiteral("%1, not merged").arg(strCrystals);
    }
    const IntegrationResult& merged = compound.merged.result;
    strLine += QStringLiteral("%1 of %2 merged, %3")
                   .arg(QString::number(compound.usedCount()), strCrystals,
                        qualityLine(merged.quality.overall));
    if (merged.spaceGroup) {
        strLine += QStringLiteral("; ") + groupText(merged);
    }
    return strLine;
}

}  // namespace

QString counted(int nCount, const char* pszWhat)
{
    return QStringLiteral("%1 %2%3").arg(nCount).arg(QLatin1String(pszWhat),
                                                     nCount == 1 ? QString() : QStringLiteral("s"));
}

void tellRead(int nFolders, const CrystalsJobResult& result, CRunReport& report)
{
    report.addMessage(
        QStringLiteral("Read %1 in %2 of results.")
            .arg(counted(int(result.listCrystal.size()), "crystal"), counted(nFolders, "folder")));
    for (const UnreadCrystal& unread : result.listUnread) {
        report.addMessage(QStringLiteral("Not read: %1. %2").arg(unread.strName, unread.strReason),
                          Severity::Warning);
    }
    for (const QString& strNote : result.listNote) {
        report.addMessage(strNote, Severity::Warning);
    }
}

void tellGroups(const CrystalsJobResult& result, CRunReport& report)
{
    for (size_t n = 0; n < result.listCrystal.size(); ++n) {
        if (result.listFate[n].nGroup < 0) {
            report.addMessage(QStringLiteral("%1/%2 is in no group. %3")
                                  .arg(result.listCrystal[n].strFolder, result.listCrystal[n].strName,
                                       result.listFate[n].strReason),
                              Severity::Warning);
        }
    }
    for (const CompoundGroup& compound : result.listGroup) {
        tellGroup(compound, result, report);
    }
}

QStringList summaryOf(const CrystalsJobResult& result)
{
    const size_t nManyGroups = 20;  // of more groups, single crystals would hide the others in the log
    QStringList listLine;
    int nSingles = 0;
    for (const CompoundGroup& compound : result.listGroup) {
        if (result.listGroup.size() > nManyGroups && compound.crystalCount() == 1) {
            ++nSingles;
            continue;
        }
        listLine.append(summaryLine(compound, result));
    }
    if (nSingles > 0) {
        listLine.append(QStringLiteral("%1 of one crystal.").arg(counted(nSingles, "group")));
    }
    listLine.append(QStringLiteral("%1 read, %2 merged in %3 of %4; not read: %5.")
                        .arg(counted(int(result.listCrystal.size()), "crystal"))
                        .arg(result.usedCount())
                        .arg(result.mergedCount())
                        .arg(counted(int(result.listGroup.size()), "group"))
                        .arg(result.listUnread.size()));
    return listLine;
}

QString relationLine(const CompoundGroup& compound, const CrystalsJobResult& result)
{
    const CompoundGroup& first = result.listGroup.front();
    if (compound.known || &compound == &first) {
        return {};
    }
    // A lattice just beyond the tolerance may be of the same compound, measured badly. One that is off by
    // more than twice the tolerance is taken for another compound.
    const CellTolerance& tolerance = compound.group.tolerance;
    const CellTolerance wide = {2 * tolerance.dfLengths, 2 * tolerance.dfAngles};
    const bool bRelated = relationBetween(compound.group.reference, first.group.reference, tolerance).nTimes >
                              1 ||
                          !settingsBetween(compound.group.reference, first.group.reference, wide).empty();
    return bRelated ? QStringLiteral("%1, compared with %2: %3")
                          .arg(compound.strName, first.strName, compound.group.strRelation)
                    : QString();
}

QStringList otherKindLines(const CompoundGroup& compound, const CrystalsJobResult& result)
{
    QStringList listLine;
    for (const std::vector<int>& listKind : compound.merged.listOtherKind) {
        QStringList listName;
        for (const int n : listKind) {
            listName.append(result.listCrystal[n].strName);
        }
        listLine.append(QStringLiteral("%1 were left out, but agree among themselves: they may be of another "
                                       "compound with this lattice.")
                            .arg(listName.join(QStringLiteral(", "))));
    }
    return listLine;
}

QString settingText(const CompoundGroup& compound, const SettledCrystal& settled)
{
    const ObservationSymmetry& symmetry = compound.merged.result.chosen.symmetry;
    // From the crystal's own cell to the reduced cell of the group (matIndices), then to the conventional
    // one.
    Eigen::Matrix3d mat;
    for (int nRow = 0; nRow < 3; ++nRow) {
        for (int n = 0; n < 3; ++n) {
            mat(nRow, n) = double(symmetry.anTransform[nRow][n]) / std::max(1, symmetry.nDenominator);
        }
    }
    mat = mat * settled.matIndices;
    QStringList listPart;
    for (int nRow = 0; nRow < 3; ++nRow) {
        QString strPart;
        const char* const apszLetter[] = {"h", "k", "l"};
        for (int n = 0; n < 3; ++n) {
            strPart += termText(mat(nRow, n), apszLetter[n], strPart.isEmpty());
        }
        listPart.append(strPart.isEmpty() ? QStringLiteral("0") : strPart);
    }
    return listPart.join(QLatin1Char(','));
}

}  // namespace tessera
