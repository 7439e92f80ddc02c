#include "crystal/indexedpeaklist.h"

#include "crystal/reflectionindices.h"
#include "crystal/textfile.h"
#include "records/resultfile.h"
#include "records/timestamp.h"

namespace tessera {

bool writeIndexedPeakList(const QVector<QList<Peak3D>>& vecPeakOnFrame, const QString& strFileName,
                          QString* pstrReason, CFileSet* pSet)
{
    QString strText = QStringLiteral("# Frame.no    H    K    L    d*    x    y     I_point    I_2D\n");
    for (int nFrame = 0; nFrame < vecPeakOnFrame.size(); ++nFrame) {
        for (const Peak3D& peak : vecPeakOnFrame[nFrame]) {
            strText += QStringLiteral("%1 %2 %3 %4 %5 %6 %7 %8 %9\n")
                           .arg(nFrame + 1, 4)
                           .arg(truncatedInt(peak.dfH), 4)
                           .arg(truncatedInt(peak.dfK), 4)
                           .arg(truncatedInt(peak.dfL), 4)
                           .arg(peak.dfDStar, 10, 'f', 6)
                           .arg(truncatedInt(peak.dfX2D), 5)
                           .arg(truncatedInt(peak.dfY2D), 5)
                           .arg(peak.dfIPoint, 10, 'f', 1)
                           .arg(peak.dfI2D, 10, 'f', 1);
        }
    }
    return writeTextFile(strFileName, strText, pstrReason, pSet);
}

bool outputIndexedReflectionsOnFrames(const QVector<QList<Peak3D>>& vecPeakIndexedOnFrame,
                                      const QString& strProjectDir, const QString& strProjectName,
                                      CRunReport& report, CFileSet* pSet)
{
    const QString strFile = strProjectDir + QStringLiteral("/") + strProjectName +
                            resultSuffix(ResultFile::IndexedPeaks);
    QString strReason;
    const bool bWritten = writeIndexedPeakList(vecPeakIndexedOnFrame, strFile, &strReason, pSet);
    if (!bWritten) {
        report.addMessage(QStringLiteral("%1>Failed to save file: %2").arg(currentTimeStamp(), strFile));
    } else if (!pSet) {
        tellIndexedPeaksWritten(strFile, report);
    }
    if (!strReason.isEmpty()) {
        report.addMessage(strReason, Severity::Error);
    }
    return bWritten;
}

void tellIndexedPeaksWritten(const QString& strFile, CRunReport& report)
{
    report.addMessage(QStringLiteral("%1>List of the indexed peaks on the frames output to file: %2")
                          .arg(currentTimeStamp(), strFile));
}

}  // namespace tessera
