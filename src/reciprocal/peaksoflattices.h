// Peaks of lattices: which of several lattices each peak, and each reflection merged of peaks, belongs to.
#pragma once

#include "dataset/dataset.h"

#include <QHash>
#include <QList>

#include <utility>
#include <vector>

namespace tessera {

/// The lattice of each peak, as LatticesOfPoints tells it of latticePoints(), by frame and nID.
///
/// It keeps no peaks: isOf() says whether those of a data set may still be the ones that it was made for.
class CPeaksOfLattices {
public:
    /// Knows no peak of any lattice.
    CPeaksOfLattices() = default;
    /// @param vecLabel  for each of placesOfLatticePoints() the number of its lattice from 0, −1 for none;
    ///                  another count of labels tells nothing
    CPeaksOfLattices(const DataSet& dataSet, const std::vector<int>& vecLabel);

    /// Whether the data set has as many peaks on each frame as when this was made.
    bool isOf(const DataSet& dataSet) const;
    /// Number of the lattice of a peak, −1 for none.
    int latticeOf(const Peak3D& peakOnFrame) const;
    /// Of each lattice the places in a list of peaks of m_listPeakFrame.
    QList<QList<int>> amongPeaks(const QList<Peak3D>& listPeak, int nLattices) const;
    /// Of each lattice the places in a list of merged reflections and peaks of streaks. The lattice that most
    /// peaks of its chain belong to is a reflection's own, and none where as many belong to another or none.
    QList<QList<int>> amongReflections(const QList<Peak3D>& listReflection,
                                       const QList<QList<Peak3D>>& listChain, int nLattices) const;

private:
    QHash<std::pair<int, int>, int> m_hashLattice;  ///< of frame and nID
    std::vector<int> m_vecCount;                    ///< peaks per frame
};

}  // namespace tessera
