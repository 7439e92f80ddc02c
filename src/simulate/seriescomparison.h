// SeriesComparison: results of a series held against its truth.
#pragma once

#include "simulate/intensityjudgement.h"
#include "simulate/latticematch.h"
#include "simulate/latticeproposal.h"
#include "simulate/refinedgeometry.h"
#include "simulate/simulatedseries.h"
#include "simulate/symmetryjudgement.h"

#include <QJsonObject>
#include <QString>

#include <map>
#include <optional>
#include <vector>

namespace tessera {

/// A peak as the peak list (.pk) or the list of indexed peaks (.ipf) tells it.
struct ReadPeak {
    int nFrame = 0;  ///< from 0
    double dfX = 0, dfY = 0;
    int nH = 0, nK = 0, nL = 0;
};

/// What was found of one of the crystals of a series.
struct LatticeShare {
    LatticeMatch match;  ///< of the found cell with its lattice
    int nSpots = 0;      ///< truth spots of a signal-to-noise ratio of 5 and more
    int nFound = 0;      ///< of these, with a peak within the radius
    int nHunted = 0;     ///< found peaks whose strongest spot belongs to this crystal
    int nIndexed = 0;    ///< indexed peaks with its indices, or else whose strongest spot is of it
    int nRight = 0;      ///< of these, with its indices
    double foundShare() const { return nSpots > 0 ? double(nFound) / nSpots : 0; }
    double rightShare() const { return nIndexed > 0 ? double(nRight) / nIndexed : 0; }
};

/// Shares are 0 to 1; counts stand beside them so that an empty share shows.
struct SeriesComparison {
    LatticeMatch lattice;   ///< with the crystal whose lattice was found
    int nFoundLattice = 0;  ///< which of the crystals that is, from 0; 0 too where it is neither
    bool bCellRead = false;
    bool bRefined = false;  ///< a summary with a refined cell was given
    CellErrors refined;
    std::map<QString, CellErrors> mapPairs;  ///< of the cells from peak pairs, by their names in the summary
    LatticeProposal proposal;                ///< system and centring, if the summary has them
    RefinedGeometry geometry;                ///< refined by the summary and BASE_refined.uc
    IntensityJudgement integrated, merged;   ///< of BASE_integrated.hkl and BASE_merged.hkl
    SymmetryJudgement symmetry;              ///< that the summary proposes by the intensities
    double dfRadius = 0;                     ///< pixels, within which a peak belongs to a spot
    int nPeaks = 0;                          ///< in the peak list
    int nPeaksAtBeam = 0;                    ///< on the direct beam, which is no spot of the truth
    int nPeaksTrue = 0;                      ///< with a truth spot of any strength within the radius
    int nPeaksRepeated = 0;                  ///< of these, beyond the first at their strongest spot
    double dfChance = 0;  ///< share of peaks that would have a spot near if they lay anywhere on their frames
    int nIndexed = 0;     ///< rows of the .ipf file
    int nIndexedRight = 0;  ///< with the indices of the strongest truth spot within the radius
    int nIndexedWrong = 0;
    int nIndexedStray = 0;                      ///< no truth spot within the radius
    std::array<double, 3> adfRatio{5, 10, 20};  ///< signal-to-noise limits
    std::array<int, 3> anSpots{};               ///< truth spots at or above each limit
    std::array<int, 3> anFound{};               ///< of these, with a peak within the radius
    std::vector<LatticeShare> listLattice;      ///< one or two
    double rightShare() const { return nIndexed > 0 ? double(nIndexedRight) / nIndexed : 0; }
    double foundShare(int nLimit) const
    {
        return anSpots[nLimit] > 0 ? double(anFound[nLimit]) / anSpots[nLimit] : 0;
    }
    /// Share of the spots of a ratio of 5 and more, told of the counts in the spot's disc, that were hunted.
    double recall() const { return foundShare(0); }
    /// Share of the hunted peaks that are spots, those on the direct beam set apart.
    double precision() const
    {
        return nPeaks > nPeaksAtBeam ? double(nPeaksTrue) / (nPeaks - nPeaksAtBeam) : 0;
    }
};

/// Pixels within which a peak belongs to a spot: two sigma of the spot, and three at least, as peaks are
/// hunted on whole pixels. A spot has sunk to a seventh of its height there, so what lies farther out is no
/// summit of it; noise and rounding move a peak of a ratio of 5 by less than one pixel, an overlapping
/// neighbour by up to 2.5.
double matchRadius(const SimulatedSeries& truth);

/// Compares lists already read. Of two crystals the found cell is held against that which it fits better.
SeriesComparison compareWithTruth(const SimulatedSeries& truth, const std::vector<ReadPeak>& listPeak,
                                  const std::vector<ReadPeak>& listIndexed, const Matrix3* pmatFound);

/// Reads BASE.pk, BASE.uc, BASE.ipf, BASE_refined.uc, BASE_integrated.hkl and BASE_merged.hkl with the cell
/// of BASE.ins or BASE.cif, whatever of them exists, and compares.
/// @param strSummary  a summary of tessera-batch with the refined cells and geometry of the same run, and the
///                    system and centring that it proposes; may be empty
/// @return nothing, with a reason, when the truth or the peak list cannot be read
std::optional<SeriesComparison> compareSeriesFiles(const QString& strTruthFile, const QString& strBase,
                                                   const QString& strSummary, QString& strError);

/// For scripts and for reading.
QJsonObject comparisonToJson(const SeriesComparison& comparison);
QString comparisonToText(const SeriesComparison& comparison);

}  // namespace tessera
