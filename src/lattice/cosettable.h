// Coset table: the fractions of reciprocal edges between the points of a lattice, and counting around them.
#pragma once

#include "lattice/latticebasis.h"

#include <array>
#include <utility>
#include <vector>

namespace tessera {

/// Whole numbers for h, k, l.
using IndexTriple = std::array<int, 3>;

/// The remainder of a division, from 0 to the divisor − 1 for negative numbers, too.
inline int modulo(int n, int nDivisor)
{
    const int nRest = n % nDivisor;
    return nRest < 0 ? nRest + nDivisor : nRest;
}

/// How far an index may be from a whole number in the search for cosets. With a larger tolerance the
/// smeared points of the lattice itself would reach the cosets.
constexpr double g_dfCosetTolerance = 0.1;

/// The size of the surroundings relative to the window. Their volume is 27/8 − 1 of that of the window, and
/// half of it on the two sides of one axis.
constexpr double g_dfReachOfSurroundings = 1.5;

/// Numbers of points in the window of a place and around it.
struct CosetWindow {
    int nInside = 0;                        ///< points in the window
    int nAround = 0;                        ///< points around it in all directions
    std::array<int, 3> anSide = {0, 0, 0};  ///< points beside it along one axis only

    /// Counts a point.
    /// @param off       distance from the place in indices, at most g_dfReachOfSurroundings windows
    /// @param dfWindow  half the edge of the window
    void add(const Eigen::Vector3d& off, double dfWindow);

    /// The number of points that the density of the surroundings would put into the window. A smear of the
    /// lattice usually runs along one axis and becomes thinner with the distance from the lattice, so the
    /// two sides together have at least as much of it as the window.
    double byChance() const;
};

/// All cosets of one denominator. A coset is a fraction of the reciprocal edges together with its multiples
/// of the same order.
class CCosetTable {
public:
    /// @param nDenominator  2 to 5
    explicit CCosetTable(int nDenominator);

    /// The denominator.
    int denominator() const { return m_nDenominator; }
    /// The smallest numerators of each coset.
    const std::vector<IndexTriple>& firsts() const { return m_listFirst; }
    /// The number of the coset of a triple of numerators; −1 for points of the lattice and for fractions
    /// that have a smaller denominator.
    int cosetOf(const IndexTriple& an) const { return m_vecCoset[place(an)]; }
    /// How many triples of numerators one coset stands for.
    int multiples() const;

private:
    size_t place(const IndexTriple& an) const;

    int m_nDenominator;
    std::vector<int> m_vecCoset;
    std::vector<IndexTriple> m_listFirst;
};

/// The numerators of the fraction next to an index, and the distance of the index from it.
std::pair<IndexTriple, Eigen::Vector3d> nextCoset(const Eigen::Vector3d& index, int nDenominator);

/// The indices of the points as real numbers. Points whose indices are not finite or impossibly large are
/// left out.
std::vector<Eigen::Vector3d> realIndices(const LatticeBasis& basis, const LatticePoints& listPoint);

/// A triangular matrix whose rows of whole numbers span all vectors m for which m·form is a multiple of the
/// denominator.
Eigen::Matrix3d latticeOfMultiples(const IndexTriple& anForm, int nDenominator);

}  // namespace tessera
