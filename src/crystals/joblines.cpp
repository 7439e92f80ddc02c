#include "crystals/joblines.h"

#include "crystals/cellrelation.h"
#include "road/reporttables.h"

#include <QFileInfo>

#include <cmath>

namespace tessera {

namespace {

/// "quartz, off by 0.12 of the tolerance"
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
    listPart.last() += QLatin1Char(' ') + strLimit;  // of the crystal that reaches farthest
    put("Rint %1", quality.dfRInt, 3);
    put("CC1/2 %1", quality.dfCcHalf, 3);
    put("I/σ %1", quality.dfIOverSigma, 1);
    return listPart.join(QStringLiteral(", "));
}

/// "space group I a -3 d (230); as likely: ..."; empty where none was ranked
QString groupText(const IntegrationResult& merged)
{
    if (!merged.spaceGroup) {
        return {};
    }
    const double dfEqual = 0.95;  // likelihoods are told with two decimals
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

/// A coefficient before a letter, as "+1/2h"; nothing for 0.
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
    const size_t nMostSingles = 20;
    QStringList listLine;
    int nSingles = 0;
    for (const CompoundGroup& compound : result.listGroup) {
        if (result.listGroup.size() > nMostSingles && compound.crystalCount() == 1) {
            ++nSingles;
            continue;
        }
        const QString strCompound = compound.known ? result.listKnown[compound.known->nKnown].strName +
                                                         QStringLiteral(", ")
                                                   : QString();
        listLine.append(
            QStringLiteral("%1: %2%3")
                .arg(
                    compound.strName, strCompound,
                    compound.isMerged()
                        ? QStringLiteral("%1 of %2 merged, %3")
                              .arg(compound.usedCount())
                              .arg(counted(compound.crystalCount(), "crystal"),
                                   qualityLine(compound.merged.result.quality.overall) +
                                       (compound.merged.result.spaceGroup
                                            ? QStringLiteral("; ") + groupText(compound.merged.result)
                                            : QString()))
                        : QStringLiteral("%1, not merged").arg(counted(compound.crystalCount(), "crystal"))));
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
    // Beyond twice the tolerance a lattice that is near says nothing: it is another compound.
    const CellTolerance& tolerance = compound.group.tolerance;
    const CellTolerance wide = {2 * tolerance.dfLengths, 2 * tolerance.dfAngles};
    const bool bNear = relationBetween(compound.group.reference, first.group.reference, tolerance).nTimes >
                           1 ||
                       !settingsBetween(compound.group.reference, first.group.reference, wide).empty();
    return bNear ? QStringLiteral("%1, held against %2: %3")
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
