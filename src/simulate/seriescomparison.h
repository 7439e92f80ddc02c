// SeriesComparison: results of a series held against its truth.
#pragma once

#include "simulate/simulatedseries.h"

#include <QJsonObject>
#include <QString>

#include <map>
#include <vector>

namespace tessera {

/// A peak as the peak list (.pk) or the list of indexed peaks (.ipf) tells it.
struct ReadPeak {
    int nFrame = 0;  ///< from 0
    double dfX = 0, dfY = 0;
    int nH = 0, nK = 0, nL = 0;
};

/// Deviations of a cell from the true one, both in the true setting.
struct CellErrors {
    std::array<double, 3> adfLength{};  ///< per cent
    std::array<double, 3> adfAngle{};   ///< degrees
};

/// How the lattice that a reciprocal basis spans stands to the true one.
struct LatticeMatch {
    enum Relation {
        None,       ///< no cell, or one without a simple relation to the true one
        Same,       ///< another basis of the same lattice
        Centred,    ///< a centred cell: the true lattice, on axes that are true lattice vectors
        Supercell,  ///< a direct axis is a multiple of a true one: all reflections index, but too many
                    ///< indices
        Subcell     ///< the direct cell is too small: only some reflections index
    };
    Relation relation = None;
    int nIndex = 0;       ///< ratio of the volumes
    Matrix3 matToTrue{};  ///< row of found indices times this = indices on the true conventional cell
    std::array<double, 6> adfCell{};      ///< the found cell brought to the true setting
    std::array<double, 6> adfTrueCell{};  ///< Å, degrees
    CellErrors errors;
    double dfMisfit = 0;  ///< largest distance of a matrix element from a whole number
    bool isRight() const { return relation == Same || relation == Centred; }
};

/// The deviations of a cell (Å, degrees) that stands in the setting of the found basis.
CellErrors errorsOfCell(const std::array<double, 6>& adfCell, const LatticeMatch& match,
                        const Matrix3& matTrue);

/// Finds the integer matrix between the found and the true lattice. Both bases stand in the same
/// laboratory frame, so elements are rounded where they lie; a misfit of 0.2 or more is no match.
/// @param matFound      a*, b*, c* in the rows, Å⁻¹
/// @param matTrue       the true conventional basis
/// @param matPrimitive  rows of indices of the true primitive reciprocal basis
LatticeMatch matchLattice(const Matrix3& matFound, const Matrix3& matTrue, const Matrix3& matPrimitive);

/// Shares are 0 to 1; counts stand beside them so that an empty share shows.
struct SeriesComparison {
    LatticeMatch lattice;
    bool bCellRead = false;
    bool bRefined = false;  ///< a summary with a refined cell was given
    CellErrors refined;
    std::map<QString, CellErrors> mapPairs;  ///< of the cells from peak pairs, by their names in the summary
    int nPeaks = 0;                          ///< in the peak list
    int nIndexed = 0;                        ///< rows of the .ipf file
    int nIndexedRight = 0;  ///< with the indices of the strongest truth spot within the radius
    int nIndexedWrong = 0;
    int nIndexedStray = 0;                      ///< no truth spot within the radius
    std::array<double, 3> adfRatio{5, 10, 20};  ///< signal-to-noise limits
    std::array<int, 3> anSpots{};               ///< truth spots at or above each limit
    std::array<int, 3> anFound{};               ///< of these, with a peak within the radius
    double rightShare() const { return nIndexed > 0 ? double(nIndexedRight) / nIndexed : 0; }
    double foundShare(int nLimit) const
    {
        return anSpots[nLimit] > 0 ? double(anFound[nLimit]) / anSpots[nLimit] : 0;
    }
};

/// Compares lists already read. dfRadius in pixels.
SeriesComparison compareWithTruth(const SimulatedSeries& truth, const std::vector<ReadPeak>& listPeak,
                                  const std::vector<ReadPeak>& listIndexed, const Matrix3* pmatFound,
                                  double dfRadius = 3);

/// Reads BASE.pk, BASE.uc and BASE.ipf, whatever of them exists, and compares.
/// @param strSummary  a summary of tessera-batch with the refined cells of the same run; may be empty
/// @return false with a reason when the truth or the peak list cannot be read
bool compareSeriesFiles(const QString& strTruthFile, const QString& strBase, const QString& strSummary,
                        SeriesComparison& comparison, QString& strError);

/// For scripts and for reading.
QJsonObject comparisonToJson(const SeriesComparison& comparison);
QString comparisonToText(const SeriesComparison& comparison);

}  // namespace tessera
