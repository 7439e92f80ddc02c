#include "road/finespots.h"

#include "frames/spotcentres.h"
#include "frames/spotsize.h"
#include "refinement/geometryofseries.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <utility>

namespace tessera {

namespace {

bool moveToCentres(const DataSet& dataSet, QVector<QList<Peak3D>>& vecPeak, int nJobs, CRunReport& report)
{
    std::optional<SpotSize> size;
    return measureSpotSize(dataSet, report, size, nJobs) && size &&
           moveToSpotCentres(dataSet, vecPeak, size->dfSigma, report, nJobs).finished();
}

/// The hunted peaks that are not among the indexed ones, which stand at the same pixels.
QVector<QList<Peak3D>> otherPeaks(const DataSet& dataSet)
{
    const QVector<QList<Peak3D>>& vecIndexed = dataSet.m_vecPeakIndexedOnFrame;
    QVector<QList<Peak3D>> vecOther(vecIndexed.size());
    for (int nFrame = 0; nFrame < std::min(vecIndexed.size(), dataSet.m_listPeakFrame.size()); ++nFrame) {
        std::set<std::pair<double, double>> setIndexed;
        for (const Peak3D& peak : vecIndexed[nFrame]) {
            setIndexed.emplace(peak.dfX2D, peak.dfY2D);
        }
        for (const Peak3D& peak : dataSet.m_listPeakFrame[nFrame]) {
            if (setIndexed.count({peak.dfX2D, peak.dfY2D}) == 0) {
                vecOther[nFrame].append(peak);
            }
        }
    }
    return vecOther;
}

/// The spots of other peaks than those that the data set has as indexed ones.
std::vector<GeometrySpot> spotsOf(DataSet& dataSet, QVector<QList<Peak3D>> vecPeak)
{
    std::swap(dataSet.m_vecPeakIndexedOnFrame, vecPeak);
    std::vector<GeometrySpot> listSpot = geometrySpots(dataSet);
    std::swap(dataSet.m_vecPeakIndexedOnFrame, vecPeak);
    return listSpot;
}

}  // namespace

std::vector<GeometrySpot> fineSpots(DataSet& dataSet, int nJobs, CRunReport& report)
{
    std::vector<GeometrySpot> listSpot = geometrySpots(dataSet);
    if (listSpot.empty()) {
        return listSpot;
    }
    QVector<QList<Peak3D>> vecPeak = otherPeaks(dataSet);
    std::vector<GeometrySpot> listOther = spotsOf(dataSet, vecPeak);
    for (GeometrySpot& spot : listOther) {
        spot.bIndexed = false;
    }
    // Both kinds on one way through the frames: of each frame first the indexed ones.
    for (int nFrame = 0; nFrame < vecPeak.size(); ++nFrame) {
        vecPeak[nFrame] = dataSet.m_vecPeakIndexedOnFrame[nFrame] + vecPeak[nFrame];
    }
    std::vector<GeometrySpot> listAll;
    const auto earlier = [](const GeometrySpot& one, const GeometrySpot& other) {
        return one.nFrame < other.nFrame;
    };
    std::merge(listSpot.begin(), listSpot.end(), listOther.begin(), listOther.end(),
               std::back_inserter(listAll), earlier);
    if (!moveToCentres(dataSet, vecPeak, nJobs, report)) {
        report.addMessage(
            QStringLiteral("The centres of the spots could not be measured: the geometry is fitted to the "
                           "hunted pixels."));
        return listAll;
    }
    const std::vector<GeometrySpot> listFine = spotsOf(dataSet, vecPeak);
    for (size_t n = 0; n < listAll.size() && listFine.size() == listAll.size(); ++n) {
        listAll[n].finePlace = listFine[n].place;
    }
    return listAll;
}

}  // namespace tessera
