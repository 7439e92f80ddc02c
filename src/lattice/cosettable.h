// Windows between the points of a lattice: which fraction of an edge a place is next to, and what lies round
// it.
#pragma once

#include "lattice/latticebasis.h"

#include <array>
#include <utility>
#include <vector>

namespace tessera {

/// Three whole numbers that belong to h, k, l.
using IndexTriple = std::array<int, 3>;

/// The rest of a division, 0 to the divisor less one.
inline int modulo(int n, int nDivisor)
{
    const int nRest = n % nDivisor;
    return nRest < 0 ? nRest + nDivisor : nRest;
}

/// How far an index may lie from a whole number where cosets are told apart: more would let the smear of the
/// lattice itself reach them.
constexpr double g_dfCosetTolerance = 0.1;

/// The surroundings of a window reach half as far again: 27/8 − 1 of its volume, or half of it on the two
/// sides of one axis.
constexpr double g_dfReachOfSurroundings = 1.5;

/// Points in the window of a place, and round it.
struct CosetWindow {
    int nInside = 0;
    int nAround = 0;                        ///< in all directions
    std::array<int, 3> anSide = {0, 0, 0};  ///< off along one axis alone

    /// @param off       from the place, in indices, within g_dfReachOfSurroundings windows
    /// @param dfWindow  half the edge of the window
    void add(const Eigen::Vector3d& off, double dfWindow);

    /// What the density of the surroundings puts into the window. Smear of the lattice runs along one axis as
    /// a rule, and thins out from the lattice, so that both sides together have no less of it.
    double byChance() const;
};

/// All cosets of one denominator. A coset is a fraction of the reciprocal edges together with its multiples
/// of the same order.
class CCosetTable {
public:
    explicit CCosetTable(int nDenominator);

    int denominator() const { return m_nDenominator; }
    /// The first numerators of each coset.
    const std::vector<IndexTriple>& firsts() const { return m_listFirst; }
    /// −1 for points of the lattice and for numerators of a smaller denominator.
    int cosetOf(const IndexTriple& an) const { return m_vecCoset[place(an)]; }
    /// Numerators that one coset stands for.
    int multiples() const;

private:
    size_t place(const IndexTriple& an) const;

    int m_nDenominator;
    std::vector<int> m_vecCoset;
    std::vector<IndexTriple> m_listFirst;
};

/// The numerators of the fraction next to an index, and how far the index lies from it.
std::pair<IndexTriple, Eigen::Vector3d> nextCoset(const Eigen::Vector3d& index, int nDenominator);

/// The real indices of the points; those that are no numbers, or beyond all sense, are left out.
std::vector<Eigen::Vector3d> realIndices(const LatticeBasis& basis, const LatticePoints& listPoint);

/// Rows of whole numbers that span the vectors m with m·form a multiple of the denominator, as a triangle.
Eigen::Matrix3d latticeOfMultiples(const IndexTriple& anForm, int nDenominator);

}  // namespace tessera
