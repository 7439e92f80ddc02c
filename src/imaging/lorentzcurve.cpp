#include "imaging/lorentzcurve.h"

#include "imaging/lmdiffit.h"

#include <limits>
#include <vector>

namespace tessera {

namespace {

double lorentz(double dfI, double dfCentre, double dfC, double dfFrame)
{
    return dfI / ((dfFrame - dfCentre) * (dfFrame - dfCentre) / (dfC * dfC) + 1.0);
}

int curveResiduals(void* pContext, int m, int, const double* p, double* pResidual, int nFlag)
{
    if (nFlag == 0) {
        return 0;
    }
    const auto& listPoint = *static_cast<const QList<QPointF>*>(pContext);
    for (int i = 0; i < m; ++i) {
        pResidual[i] = lorentz(p[0], p[1], p[2], listPoint[i].x()) - listPoint[i].y();
    }
    return 0;
}

}  // namespace

int fitLorentzCurve(const QList<QPointF>& listPoint, double adfPara[3], double adfErr[3])
{
    std::vector<double> vecPara(adfPara, adfPara + 3);
    QList<QPointF> listOwn = listPoint;  // shared, not copied; the context pointer is not const
    CLmdifFit fit;
    const int nInfo = fit.Run(curveResiduals, listOwn.size(), vecPara, &listOwn);
    for (std::size_t i = 0; i < 3; ++i) {
        adfPara[i] = vecPara[i];
        adfErr[i] = i < fit.StdErr().size() ? fit.StdErr()[i] : std::numeric_limits<double>::infinity();
    }
    return nInfo;
}

QVector<QPointF> calcFittedCurveData(double dfI, double dfFrame, double dfC, QPointF ptFrameRange)
{
    constexpr int nPoints = 1000;
    const double dfStep = (ptFrameRange.y() - ptFrameRange.x()) / nPoints;
    QVector<QPointF> vecPoint;
    vecPoint.reserve(nPoints);
    for (int i = 0; i < nPoints; ++i) {
        const double dfF = ptFrameRange.x() + i * dfStep;
        vecPoint.append(QPointF(dfF, lorentz(dfI, dfFrame, dfC, dfF)));
    }
    return vecPoint;
}

}  // namespace tessera
