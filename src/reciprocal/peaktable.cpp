#include "reciprocal/peaktable.h"

#include "crystal/reflectionindices.h"
#include "reciprocal/geometry/angles.h"
#include "reciprocal/mapping.h"

#include <cmath>
#include <iterator>

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
        QString strH = QStringLiteral("*"), strK = strH, strL = strH;
        bool bAllowed = true;
        if (isCloseToInteger(peak, float(dfIndexThreshold))) {
            const int nH = roundIndex(peak.dfH), nK = roundIndex(peak.dfK), nL = roundIndex(peak.dfL);
            strH = QString::number(nH);
            strK = QString::number(nK);
            strL = QString::number(nL);
            bAllowed = (nH == 0 && nK == 0 && nL == 0) || !dataSet.m_spaceGroup.isAbsent(nH, nK, nL);
        }
        const QPointF ptRaw(peak.dfX2D, peak.dfY2D);
        const QPointF ptCentred = calPeak2DPosCenterCorrected(centres, peak.nFrame, ptRaw);
        const double dfAxis = dataSet.m_dfRotationAxis;
        const double dfDistance = double(calDistanceToRotationAxis(centres, dfAxis, peak.nFrame, ptRaw));
        const double dfAngle = double(calAngleToRotationAxis(centres, dfAxis, peak.nFrame, peak));
        const auto fixed = [&locale](double df, int nDecimals) {
            return locale.toString(df, 'f', nDecimals);
        };
        const QString aCell[] = {QString::number(peak.nID),
                                 QString::number(peak.dfH, 'f', 2),
                                 QString::number(peak.dfK, 'f', 2),
                                 QString::number(peak.dfL, 'f', 2),
                                 strH,
                                 strK,
                                 strL,
                                 fixed(peak.dfIPoint, 1),
                                 fixed(peak.dfIntFit, 1),
                                 fixed(peak.dfDStar == 0 ? 0.0 : 1 / peak.dfDStar, 2),
                                 fixed(peak.dfDStar, 3),
                                 QString::number(peak.nFrame + 1),
                                 frameText(peak.dfFrameFit, locale),
                                 fixed(peak.dfHalfWidth, 2),
                                 fixed(dfDistance, 1),
                                 fixed(dfDistance * peak.dfHalfWidth, 1),
                                 fixed(screenAzimuth360(ptCentred.x(), ptCentred.y()), 1),
                                 fixed(dfAngle, 1),
                                 locale.toString(peak.dfX2D, 'g', 6),
                                 locale.toString(peak.dfY2D, 'g', 6),
                                 fixed(ptCentred.x(), 2),
                                 fixed(ptCentred.y(), 2),
                                 fixed(peak.dfX2DCorrected, 2),
                                 fixed(peak.dfY2DCorrected, 2),
                                 QString::number(bAllowed ? 1 : 0),
                                 QString::number(peak.nRGroup)};
        static_assert(std::size(aCell) == g_nPeakTableColumns, "each column has its text");
        vecRow.append(QVector<QString>(std::begin(aCell), std::end(aCell)));
    }
    return vecRow;
}
