#include "reciprocal/peaktable.h"

#include "crystal/reflectionindices.h"
#include "reciprocal/geometry/angles.h"
#include "reciprocal/mapping.h"

#include <cmath>

namespace {

/// Two decimals, none for a frame number that is whole to within a thousandth.
QString frameText(double dfFrame, const QLocale& locale)
{
    const bool bFraction = std::fabs(dfFrame - std::trunc(dfFrame)) > 0.001;
    return locale.toString(dfFrame, 'f', bFraction ? 2 : 0);
}

}  // namespace

QVector<QVector<QString>> peakTableRows(const QList<Peak3D>& listPeak, const DataSet& dataSet,
                                        double dfIndexThreshold, const QLocale& locale)
{
    const BeamCentres centres = beamCentres(dataSet);
    QVector<QVector<QString>> vecRow;
    vecRow.reserve(listPeak.size());
    for (const Peak3D& peak : listPeak) {
        QVector<QString> vecCell(g_nPeakTableColumns);
        vecCell[0] = QString::number(peak.nID);
        vecCell[1] = QString::number(peak.dfH, 'f', 2);
        vecCell[2] = QString::number(peak.dfK, 'f', 2);
        vecCell[3] = QString::number(peak.dfL, 'f', 2);
        bool bAllowed = true;
        if (isCloseToInteger(peak, float(dfIndexThreshold))) {
            const int nH = roundIndex(peak.dfH), nK = roundIndex(peak.dfK), nL = roundIndex(peak.dfL);
            vecCell[4] = QString::number(nH);
            vecCell[5] = QString::number(nK);
            vecCell[6] = QString::number(nL);
            bAllowed = (nH == 0 && nK == 0 && nL == 0) || !dataSet.m_spaceGroup.isAbsent(nH, nK, nL);
        } else {
            vecCell[4] = vecCell[5] = vecCell[6] = QStringLiteral("*");
        }
        vecCell[7] = locale.toString(peak.dfIPoint, 'f', 1);
        vecCell[8] = locale.toString(peak.dfIntFit, 'f', 1);
        vecCell[9] = locale.toString(peak.dfDStar == 0 ? 0.0 : 1 / peak.dfDStar, 'f', 2);
        vecCell[10] = locale.toString(peak.dfDStar, 'f', 3);
        vecCell[11] = QString::number(peak.nFrame + 1);
        vecCell[12] = frameText(peak.dfFrameFit, locale);
        vecCell[13] = locale.toString(peak.dfHalfWidth, 'f', 2);
        const QPointF ptRaw(peak.dfX2D, peak.dfY2D);
        const double dfDistance = double(
            calDistanceToRotationAxis(centres, dataSet.m_dfRotationAxis, peak.nFrame, ptRaw));
        vecCell[14] = locale.toString(dfDistance, 'f', 1);
        vecCell[15] = locale.toString(dfDistance * peak.dfHalfWidth, 'f', 1);
        const QPointF ptCentred = calPeak2DPosCenterCorrected(centres, peak.nFrame, ptRaw);
        vecCell[16] = locale.toString(screenAzimuth360(ptCentred.x(), ptCentred.y()), 'f', 1);
        vecCell[17] = locale.toString(
            double(calAngleToRotationAxis(centres, dataSet.m_dfRotationAxis, peak.nFrame, peak)), 'f', 1);
        vecCell[18] = locale.toString(peak.dfX2D, 'g', 6);
        vecCell[19] = locale.toString(peak.dfY2D, 'g', 6);
        vecCell[20] = locale.toString(ptCentred.x(), 'f', 2);
        vecCell[21] = locale.toString(ptCentred.y(), 'f', 2);
        vecCell[22] = locale.toString(peak.dfX2DCorrected, 'f', 2);
        vecCell[23] = locale.toString(peak.dfY2DCorrected, 'f', 2);
        vecCell[24] = QString::number(bAllowed ? 1 : 0);
        vecCell[25] = QString::number(peak.nRGroup);
        vecRow.append(vecCell);
    }
    return vecRow;
}
