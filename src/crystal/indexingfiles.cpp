#include "crystal/indexingfiles.h"

#include "crystal/cellarithmetic.h"
#include "crystal/expectedreflections.h"
#include "crystal/hklfile.h"
#include "crystal/reflectionindices.h"
#include "crystal/textfile.h"
#include "records/resultfile.h"
#include "records/timestamp.h"

namespace tessera {

namespace {

void reportUnwritten(const QString& strFileName, const QString& strReason, CRunReport& report)
{
    report.addMessage(QStringLiteral("Failed to open %1 for writing.").arg(strFileName), Severity::Error);
    report.addMessage(strReason, Severity::Error);
}

}  // namespace

bool outputIndexingResultsToFile(const QList<Peak3D>& listIndexedPeak,
                                 const std::optional<ReciprocalBasis>& basis,
                                 const QList<double>& listOverallTilt, const QString& strProjectDir,
                                 const QString& strProjectName, CRunReport& report, CFileSet* pSet)
{
    const float fDStar = getEffectiveDStar(listIndexedPeak);
    const QList<HKLRef> listObserved = getRoundedHKLRef(listIndexedPeak);
    bool bMissingListed = true;  // false: too many lattice points to list those that were not observed
    const QList<HKLRef> listMissing = missingReflections(
        calAllReflections2(listIndexedPeak, basis, listOverallTilt, report, &bMissingListed), listObserved);
    const QString strHKL = hklFileText(listObserved, listMissing);
    report.addMessage(
        QStringLiteral("Maximum d* including 95% reflections: %L1 Å⁻¹").arg(double(fDStar), 6, 'f', 4));
    if (bMissingListed) {
        report.addMessage(QStringLiteral("No. of reflections not observed: %L1").arg(listMissing.size()));
    }

    const QString strBase = strProjectDir + QStringLiteral("/") + strProjectName;
    const QString strHKLFile = strBase + resultSuffix(ResultFile::Reflections);
    QString strReason;
    const bool bHKLWritten = writeTextFile(strHKLFile, strHKL, &strReason, pSet);
    if (!bHKLWritten) {
        reportUnwritten(strHKLFile, strReason, report);
    } else if (!pSet) {
        tellHKLWritten(strHKLFile, report);
    }

    const QString strP4PFile = strBase + resultSuffix(ResultFile::P4P);
    QString strP4P;  // stays empty without a cell; a, b, c in Å, angles in degrees
    if (const std::optional<CellParameters> cell = basis ? cellParameters(*basis) : std::nullopt) {
        strP4P = QStringLiteral("CELL %1 %2 %3 %4 %5 %6\n")
                     .arg(cell->a, 8, 'f', 3)
                     .arg(cell->b, 8, 'f', 3)
                     .arg(cell->c, 8, 'f', 3)
                     .arg(cell->alpha, 8, 'f', 2)
                     .arg(cell->beta, 8, 'f', 2)
                     .arg(cell->gamma, 8, 'f', 2);
    }
    const bool bP4PWritten = writeTextFile(strP4PFile, strP4P, &strReason, pSet);
    if (!bP4PWritten) {
        reportUnwritten(strP4PFile, strReason, report);
    } else if (!pSet && !strP4P.isEmpty()) {
        tellP4PWritten(strP4PFile, report);
    }
    return bHKLWritten && bP4PWritten;
}

void tellHKLWritten(const QString& strHKLFile, CRunReport& report)
{
    report.addMessage(QStringLiteral("%1>HKL file written: %2").arg(currentTimeStamp(), strHKLFile));
}

void tellP4PWritten(const QString& strP4PFile, CRunReport& report)
{
    report.addMessage(QStringLiteral("%1>p4p file written: %2").arg(currentTimeStamp(), strP4PFile));
}

}  // namespace tessera
