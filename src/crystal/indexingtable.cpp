#include "crystal/indexingtable.h"

#include "crystal/reflectionindices.h"

#include <QString>

namespace tessera {

void outputIndexingResultsToWindow(const QList<Peak3D>& listPeakIndexed, CRunReport& report)
{
    const QString strHead = QString::asprintf("%4s [%8s,%8s,%8s] (%6s,%6s,%6s) (%4s,%4s,%4s) %10s %8s\n",
                                              "No.", "x", "y", "z", "h.", "k.", "l.", "h", "k", "l",
                                              "Intensity", "d-value");
    const QString strRule(strHead.size(), QLatin1Char('-'));
    QString strText = strRule + QLatin1Char('\n') + strHead + strRule + QLatin1Char('\n');
    int nNumber = 0;
    for (const Peak3D& peak : listPeakIndexed) {
        strText += QString::asprintf(
            "%4d (%8.5f,%8.5f,%8.5f) [%6.2f,%6.2f,%6.2f] (%4d,%4d,%4d) %10.1f %8.3f Å  \n", ++nNumber,
            double(peak.fX3D), double(peak.fY3D), double(peak.fZ3D), peak.dfH, peak.dfK, peak.dfL,
            roundIndex(peak.dfH), roundIndex(peak.dfK), roundIndex(peak.dfL), peak.dfIPoint,
            1 / peak.dfDStar);
    }
    report.addMessage(strText + strRule);
}

}  // namespace tessera
