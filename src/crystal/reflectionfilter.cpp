#include "crystal/reflectionfilter.h"

#include <QString>

namespace tessera {

QList<Peak3D> filterReflections(const QList<Peak3D>& listPeak, double dfdRA, double dfInt,
                                const FramePositionGeometry& geometry, CRunReport& report)
{
    const int nTilts = geometry.listOverallTilt.size();
    if (nTilts < 2) {
        report.addMessage(QStringLiteral("Count of overall tilt is %1 in filterReflections.").arg(nTilts),
                          Severity::Error);
        return {};
    }
    const double dfStep = geometry.listOverallTilt[1] - geometry.listOverallTilt[0];
    QList<Peak3D> listKept;
    for (const Peak3D& peak : listPeak) {
        const float fDistance = calDistanceToRotationAxis(geometry.centres, geometry.dfRotationAxis,
                                                          peak.nFrame, QPointF(peak.dfX2D, peak.dfY2D));
        const double dfBehind = peak.dfFrameFit - (double(peak.nFrame) + 1);
        if (double(fDistance) > dfdRA && peak.dfIPoint > dfInt && dfBehind < 2.0) {
            listKept.append(peak);
            listKept.last().dfTiltFit = peak.dfFrameTilt + dfBehind * dfStep;
        }
    }
    report.addMessage(
        QStringLiteral(
            "Filtering gvecPeak: %1 remained after filtering %2 reflections with dRA=%3 and Int=%4.")
            .arg(listKept.size())
            .arg(listPeak.size())
            .arg(dfdRA)
            .arg(dfInt));
    return listKept;
}

}  // namespace tessera
