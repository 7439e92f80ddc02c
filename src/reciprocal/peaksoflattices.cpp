#include "reciprocal/peaksoflattices.h"

#include "reciprocal/latticepoints.h"

#include <algorithm>

namespace tessera {

namespace {

std::vector<int> countsOf(const DataSet& dataSet)
{
    std::vector<int> vecCount;
    for (const QList<Peak3D>& listPeak : dataSet.m_listPeakFrame) {
        vecCount.push_back(listPeak.size());
    }
    return vecCount;
}

QList<QList<int>> emptyLists(int nCount)
{
    QList<QList<int>> list;
    for (int n = 0; n < nCount; ++n) {
        list.append(QList<int>());
    }
    return list;
}

}  // namespace

CPeaksOfLattices::CPeaksOfLattices(const DataSet& dataSet, const std::vector<int>& vecLabel)
    : m_vecCount(countsOf(dataSet))
{
    const std::vector<PlaceOfPeak> listPlace = placesOfLatticePoints(dataSet);
    for (size_t n = 0; n < vecLabel.size() && vecLabel.size() == listPlace.size(); ++n) {
        const PlaceOfPeak& place = listPlace[n];
        m_hashLattice.insert({place.nFrame, dataSet.m_listPeakFrame[place.nFrame][place.nPeak].nID},
                             vecLabel[n]);
    }
}

bool CPeaksOfLattices::isOf(const DataSet& dataSet) const
{
    return m_vecCount == countsOf(dataSet);
}

int CPeaksOfLattices::latticeOf(const Peak3D& peakOnFrame) const
{
    return m_hashLattice.value({peakOnFrame.nFrame, peakOnFrame.nID}, -1);
}

QList<QList<int>> CPeaksOfLattices::amongPeaks(const QList<Peak3D>& listPeak, int nLattices) const
{
    QList<QList<int>> listPlaces = emptyLists(nLattices);
    for (int n = 0; n < listPeak.size(); ++n) {
        const int nLattice = latticeOf(listPeak[n]);
        if (nLattice >= 0 && nLattice < nLattices) {
            listPlaces[nLattice].append(n);
        }
    }
    return listPlaces;
}

QList<QList<int>> CPeaksOfLattices::amongReflections(const QList<Peak3D>& listReflection,
                                                     const QList<QList<Peak3D>>& listChain,
                                                     int nLattices) const
{
    QList<QList<int>> listPlaces = emptyLists(nLattices);
    for (int n = 0; n < listReflection.size(); ++n) {
        const int nChain = listReflection[n].nID;
        if (nChain < 0 || nChain >= listChain.size()) {
            continue;
        }
        std::vector<int> vecVotes(size_t(nLattices) + 1, 0);  // the last entry counts peaks of no lattice
        for (const Peak3D& peak : listChain[nChain]) {
            const int nLattice = latticeOf(peak);
            ++vecVotes[size_t(nLattice >= 0 && nLattice < nLattices ? nLattice : nLattices)];
        }
        const auto itMost = std::max_element(vecVotes.begin(), vecVotes.end());
        const auto nLattice = int(itMost - vecVotes.begin());
        if (nLattice < nLattices && std::count(vecVotes.begin(), vecVotes.end(), *itMost) == 1) {
            listPlaces[nLattice].append(n);
        }
    }
    return listPlaces;
}

}  // namespace tessera
