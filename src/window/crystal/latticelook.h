// LatticeLook: what is known of the lattice that was looked at last, and how it reads.
#pragma once

#include "geometry/matrix3.h"
#include "lattice/latticeanalysis.h"
#include "reciprocal/peaksoflattices.h"
#include "records/vec3d.h"

#include <QList>
#include <QStringList>

#include <vector>

namespace tessera {

/// The types and what the points say belong to one cell; the further lattices, and which peaks are whose,
/// to the cell that they were searched beside, which may be another of them.
struct LatticeLook {
    QList<Vec3D> listCell;  ///< a*, b*, c* that types and cosets belong to; empty: nothing was looked at
    LatticeAnalysis analysis;
    CPeaksOfLattices peaks;  ///< by the labels of analysis.lattices
};

/// A longer cell that the points between those of the lattice ask for.
struct LongerCell {
    QString strText;  ///< the line of tellWholeLattice()
    LatticeBasis matBasis;
};

/// The lines of tellWholeLattice() that name no coset.
QStringList linesWithoutCosets(const LatticeWithCosets& whole);
/// Those that do, with the cells that they ask for. A coset that was taken leads to the lattice with all of
/// those taken.
std::vector<LongerCell> longerCells(const LatticeWithCosets& whole);

/// A line for each lattice, that of the first and those of tellFurtherLattices().
QStringList tellLattices(const LatticesOfPoints& lattices);

/// The matrix of the page of the cell that leads to a type, by the axes of real or of reciprocal space.
CMatrix3 pageMatrix(const LatticeType& type, bool bReciprocal);

/// "a+b, 1/2 b-1/2 c, c": new axes of those of the cell.
QString axesText(const Eigen::Matrix3d& matTransform);

/// Whether this is the type that is proposed.
bool isProposed(const LatticeAnalysis& analysis, const LatticeType& type);

/// The table of types as lines of the log.
QStringList tableOfTypes(const LatticeAnalysis& analysis);

}  // namespace tessera
