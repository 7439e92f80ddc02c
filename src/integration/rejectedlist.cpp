#include "integration/rejectedlist.h"

#include "integration/reflectionflags.h"

#include <cmath>
#include <map>

namespace tessera {

namespace {

QByteArray numberOrEmpty(double dfValue, char chFormat, int nDecimals)
{
    return std::isfinite(dfValue) ? QByteArray::number(dfValue, chFormat, nDecimals) : QByteArray();
}

}  // namespace

QByteArray rejectedText(const IntegrationResult& result, ObservedOn on)
{
    const bool bFrames = on == ObservedOn::Frames;
    std::map<int, const RejectedObservation*> mapOutlier;
    for (const RejectedObservation& rejected : result.scaling.listRejected) {
        mapOutlier[rejected.nObservation] = &rejected;
    }
    QByteArray bytes = bFrames ? "h,k,l,frame,x,y,intensity,sigma,deviation,why\n"
                               : "h,k,l,crystal,intensity,sigma,deviation,why\n";
    const std::vector<Observation>& list = result.integrated.listObservation;
    for (size_t n = 0; n < list.size(); ++n) {
        const Observation& observation = list[n];
        if ((observation.nFlags & g_nExcludingFlags) == 0) {
            continue;
        }
        for (const int nIndex : conventionalIndex(result.chosen.symmetry, observation.anIndex)) {
            bytes += QByteArray::number(nIndex) + ',';
        }
        bytes += numberOrEmpty(observation.dfFrame + 1, 'f', bFrames ? 1 : 0) + ',';
        if (bFrames) {
            bytes += numberOrEmpty(observation.place.dfX, 'f', 1) + ',';
            bytes += numberOrEmpty(observation.place.dfY, 'f', 1) + ',';
        }
        if (observation.isMeasured()) {
            bytes += numberOrEmpty(observation.corrected(), 'g', 6) + ',';
            bytes += numberOrEmpty(observation.correctedSigma(), 'g', 6) + ',';
        } else {
            bytes += ",,";
        }
        const auto outlier = mapOutlier.find(int(n));
        QStringList listWhy = reflectionFlagNames(observation.nFlags);
        if (outlier != mapOutlier.end()) {
            bytes += numberOrEmpty(outlier->second->dfDeviation, 'f', 1);
            if (!outlier->second->strWhy.isEmpty()) {
                listWhy.append(outlier->second->strWhy);
            }
        }
        // The field is quoted because of commas; the names contain no quotation marks.
        bytes += ",\"" +
                 listWhy.join(QStringLiteral("; ")).replace(QLatin1Char('"'), QLatin1Char('\'')).toUtf8() +
                 "\"\n";
    }
    return bytes;
}

}  // namespace tessera
