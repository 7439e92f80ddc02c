#include "window/integration/predicteddiscs.h"

#include "integration/passagegeometry.h"
#include "integration/reflectionflags.h"
#include "window/integration/disccolors.h"

#include <QCoreApplication>
#include <QLineF>
#include <QLocale>

#include <cmath>

namespace tessera {

namespace {

QString tr(const char* pszText)
{
    return QCoreApplication::translate("PredictedDiscs", pszText);
}

bool isOnFrame(const Observation& observation, int nFrame)
{
    if (observation.nLastFrame < observation.nFirstFrame) {
        return std::lround(observation.dfFrame) == nFrame;
    }
    return observation.nFirstFrame <= nFrame && nFrame <= observation.nLastFrame;
}

/// Where an observation lies on a frame of its passage, scene coordinates.
QPointF centreOnFrame(const Observation& observation, const CPassageGeometry& passages, int nFrame)
{
    const double dfToCentre = 0.5;  // raw pixels count from the centre of the first one
    const FramePlace place = passages.placeOn(observation.anIndex, nFrame).value_or(observation.place);
    return {place.dfX + dfToCentre, place.dfY + dfToCentre};
}

}  // namespace

QString intensityText(double dfIntensity, double dfSigma, const QLocale& locale)
{
    const int nDecimals = dfSigma >= 10 ? 0 : dfSigma >= 1 ? 1 : 2;
    return locale.toString(dfIntensity, 'f', nDecimals) + QStringLiteral(" ± ") +
           locale.toString(dfSigma, 'f', nDecimals);
}

QStringList describeObservation(const Observation& observation, const QLocale& locale)
{
    QStringList listLine;
    listLine.append(tr("h k l = %1 %2 %3")
                        .arg(observation.anIndex[0])
                        .arg(observation.anIndex[1])
                        .arg(observation.anIndex[2]));
    listLine.append(
        observation.isMeasured()
            ? tr("I = %1").arg(intensityText(observation.corrected(), observation.correctedSigma(), locale))
            : tr("not measured"));
    QString strWhere = tr("d = %1 Å").arg(locale.toString(1 / observation.dfDStar, 'f', 3));
    if (observation.nLastFrame >= observation.nFirstFrame) {
        strWhere += tr(", frames %1 to %2").arg(observation.nFirstFrame + 1).arg(observation.nLastFrame + 1);
    }
    listLine.append(strWhere);
    const QStringList listFlag = reflectionFlagNames(observation.nFlags);
    if (!listFlag.isEmpty()) {
        listLine.append(tr("flags: %1").arg(listFlag.join(QStringLiteral(", "))));
    }
    return listLine;
}

std::vector<PredictedDisc> discsOnFrame(const IntegrationResult& result, int nFrame, const QLocale& locale)
{
    std::vector<PredictedDisc> listDisc;
    const CPassageGeometry passages(result.series);
    const std::vector<Observation>& listObservation = result.integrated.listObservation;
    for (size_t n = 0; n < listObservation.size(); ++n) {
        const Observation& observation = listObservation[n];
        if (isOnFrame(observation, nFrame)) {
            listDisc.push_back({int(n), centreOnFrame(observation, passages, nFrame),
                                discColor(observation.nFlags),
                                describeObservation(observation, locale).join(QLatin1Char('\n'))});
        }
    }
    return listDisc;
}

int observationAt(const std::vector<PredictedDisc>& listDisc, const QPointF& ptScene, double dfRadius)
{
    int nBest = -1;
    double dfBest = dfRadius;
    for (const PredictedDisc& disc : listDisc) {
        const double dfDistance = QLineF(disc.ptCentre, ptScene).length();
        if (dfDistance <= dfBest) {
            dfBest = dfDistance;
            nBest = disc.nObservation;
        }
    }
    return nBest;
}

double discRadius(const IntegrationResult& result)
{
    const double dfUsual = 4;  // pixels, where nothing was learned
    return result.integrated.model.dfDiscRadius > 0 ? result.integrated.model.dfDiscRadius : dfUsual;
}

}  // namespace tessera
