#include "road/finespots.h"

#include "frames/spotcentres.h"
#include "frames/spotsize.h"
#include "refinement/geometryofseries.h"

#include <optional>
#include <utility>

namespace tessera {

namespace {

bool moveToCentres(const DataSet& dataSet, QVector<QList<Peak3D>>& vecPeak, int nJobs, CRunReport& report)
{
    const std::optional<SpotSize> size = measureSpotSize(dataSet, report, nJobs).size;
    return size && moveToSpotCentres(dataSet, vecPeak, size->dfSigma, report, nJobs).finished();
}

}  // namespace

std::vector<GeometrySpot> fineSpots(DataSet& dataSet, int nJobs, CRunReport& report)
{
    std::vector<GeometrySpot> listSpot = geometrySpots(dataSet);
    QVector<QList<Peak3D>> vecPeak = dataSet.m_vecPeakIndexedOnFrame;
    if (listSpot.empty()) {
        return listSpot;
    }
    if (!moveToCentres(dataSet, vecPeak, nJobs, report)) {
        report.addMessage(
            QStringLiteral("The centres of the spots could not be measured: the geometry is fitted to the "
                           "hunted pixels."));
        return listSpot;
    }
    std::swap(dataSet.m_vecPeakIndexedOnFrame, vecPeak);
    const std::vector<GeometrySpot> listFine = geometrySpots(dataSet);
    std::swap(dataSet.m_vecPeakIndexedOnFrame, vecPeak);
    for (size_t n = 0; n < listSpot.size() && listFine.size() == listSpot.size(); ++n) {
        listSpot[n].finePlace = listFine[n].place;
    }
    return listSpot;
}

}  // namespace tessera
