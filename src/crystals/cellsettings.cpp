#include "crystals/cellsettings.h"

#include "geometry/angles.h"
#include "integration/unitcell.h"
#include "lattice/cellreduction.h"

#include <Eigen/LU>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

/// The distance, in units of the tolerance, of lattices that have nothing in common.
constexpr double g_dfFarApart = 10;

/// Rows: the axes of a primitive cell, in coordinates along the axes of the centred cell. All have a positive
/// determinant, 1/(lattice points per centred cell).
Eigen::Matrix3d primitiveAxes(char chCentring)
{
    const double dfThird = 1.0 / 3;
    Eigen::Matrix3d mat = Eigen::Matrix3d::Identity();
    switch (chCentring) {
        case 'A':
            mat << 1, 0, 0, 0, 0.5, -0.5, 0, 0.5, 0.5;
            break;
        case 'B':
            mat << 0.5, 0, -0.5, 0, 1, 0, 0.5, 0, 0.5;
            break;
        case 'C':
            mat << 0.5, -0.5, 0, 0.5, 0.5, 0, 0, 0, 1;
            break;
        case 'I':
            mat << -0.5, 0.5, 0.5, 0.5, -0.5, 0.5, 0.5, 0.5, -0.5;
            break;
        case 'F':
            mat << 0, 0.5, 0.5, 0.5, 0, 0.5, 0.5, 0.5, 0;
            break;
        case 'R':
            mat << 2 * dfThird, dfThird, dfThird, -dfThird, dfThird, dfThird, -dfThird, -2 * dfThird, dfThird;
            break;
        default:
            break;
    }
    return mat;
}

/// A vector of the lattice.
struct LatticeVector {
    Eigen::Vector3i an;   ///< coordinates along the axes of the basis, each -1, 0 or 1
    Eigen::Vector3d vec;  ///< Å
    double dfLength = 0;  ///< Å
};

/// The 26 vectors with coordinates -1, 0 and 1. The axes of every reduced basis of the lattice are among
/// them.
std::vector<LatticeVector> shortVectors(const LatticeBasis& basis)
{
    std::vector<LatticeVector> list;
    for (int n = 0; n < 27; ++n) {
        LatticeVector vector;
        vector.an = {n / 9 - 1, n / 3 % 3 - 1, n % 3 - 1};
        vector.vec = basis.transpose() * vector.an.cast<double>();
        vector.dfLength = vector.vec.norm();
        if (!vector.an.isZero()) {
            list.push_back(vector);
        }
    }
    return list;
}

/// The angle between two vectors in degrees.
double angleBetween(const LatticeVector& one, const LatticeVector& other)
{
    const double dfCosine = one.vec.dot(other.vec) / (one.dfLength * other.dfLength);
    return std::acos(std::clamp(dfCosine, -1.0, 1.0)) * 180 / g_dfPi;
}

/// Goes through all right-handed bases of short vectors of one lattice whose edges and angles are close to
/// those of the basis of another. It chooses a, then b, then c, and gives up as soon as an edge or angle is
/// too far off.
class CSettingSearch {
public:
    CSettingSearch(const LatticeBasis& from, const LatticeBasis& to, const CellTolerance& tolerance)
        : m_listVector(shortVectors(from)), m_to(cellOf(to)), m_tolerance(tolerance)
    {
        for (size_t n = 0; n < 3; ++n) {
            const double dfEdge = m_to.numbers()[n];
            for (const LatticeVector& vector : m_listVector) {
                const double dfOff = 100 * std::abs(vector.dfLength - dfEdge) /
                                     ((vector.dfLength + dfEdge) / 2);
                m_avecLengthOff[n].push_back(dfOff);
            }
        }
    }

    /// @param dfMost  in units of the tolerance; bases beyond it are skipped
    /// @param fn      gets matrix, % and ° of each, and returns the new dfMost
    template <typename Fn>
    void run(double dfMost, Fn fn) const
    {
        const size_t nVectors = m_listVector.size();
        for (size_t a = 0; a < nVectors; ++a) {
            for (size_t b = 0; lengthOff(0, a) <= dfMost && b < nVectors; ++b) {
                if (lengthOff(1, b) > dfMost || angleOff(m_to.gamma, a, b) > dfMost) {
                    continue;
                }
                for (size_t c = 0; c < nVectors; ++c) {
                    if (lengthOff(2, c) > dfMost || angleOff(m_to.alpha, b, c) > dfMost ||
                        angleOff(m_to.beta, a, c) > dfMost) {
                        continue;
                    }
                    CellSetting setting;
                    setting.matAxes.row(0) = m_listVector[a].an;
                    setting.matAxes.row(1) = m_listVector[b].an;
                    setting.matAxes.row(2) = m_listVector[c].an;
                    // Other determinants: -1 is left-handed, 0 spans no cell, and greater ones are
                    // sublattices.
                    if (setting.matAxes.determinant() == 1) {
                        setting.dfLengths = std::max(
                            {m_avecLengthOff[0][a], m_avecLengthOff[1][b], m_avecLengthOff[2][c]});
                        setting.dfAngles = m_tolerance.dfAngles *
                                           std::max({angleOff(m_to.gamma, a, b), angleOff(m_to.alpha, b, c),
                                                     angleOff(m_to.beta, a, c)});
                        dfMost = fn(setting);
                    }
                }
            }
        }
    }

private:
    /// The difference of a vector's length from an edge (0, 1, 2: a, b, c), in units of the tolerance.
    double lengthOff(size_t nEdge, size_t nVector) const
    {
        return m_avecLengthOff[nEdge][nVector] / m_tolerance.dfLengths;
    }
    /// The difference of the angle between two vectors from an angle (degrees), in units of the tolerance.
    double angleOff(double dfAngle, size_t nOne, size_t nOther) const
    {
        return std::abs(angleBetween(m_listVector[nOne], m_listVector[nOther]) - dfAngle) /
               m_tolerance.dfAngles;
    }

    std::vector<LatticeVector> m_listVector;  ///< of the lattice that is transformed
    CellParameters m_to;                      ///< the cell to be reached
    CellTolerance m_tolerance;
    /// For each edge of m_to: the difference of the length of each vector from it, % of the mean of both.
    std::array<std::vector<double>, 3> m_avecLengthOff;
};

/// Settings of a symmetric lattice differ only by rounding: settings that are equal within this tolerance get
/// a fixed order, with the least changed axes first.
bool isBefore(const CellSetting& one, const CellSetting& other)
{
    const double dfStep = 1e-4;  // of misfit(); far above rounding errors
    const long nOne = std::lround(one.misfit() / dfStep), nOther = std::lround(other.misfit() / dfStep);
    if (nOne != nOther) {
        return nOne < nOther;
    }
    // The trace is 3 for axes that stay as they are, and less the more they change.
    if (one.matAxes.trace() != other.matAxes.trace()) {
        return one.matAxes.trace() > other.matAxes.trace();
    }
    const int *pnOne = one.matAxes.data(), *pnOther = other.matAxes.data();
    return std::lexicographical_compare(pnOther, pnOther + 9, pnOne, pnOne + 9);
}

}  // namespace

double CellSetting::misfit() const
{
    const CellTolerance tolerance;
    return std::max(dfLengths / tolerance.dfLengths, dfAngles / tolerance.dfAngles);
}

LatticeBasis directBasisOf(const CellParameters& cell)
{
    LatticeBasis basis = LatticeBasis::Zero();
    const std::optional<gemmi::UnitCell> unitCell = unitCellOf(cell);
    for (int n = 0; unitCell && n < 3; ++n) {
        const gemmi::Vec3 axis = unitCell->orthogonalize(gemmi::Fractional(n == 0, n == 1, n == 2));
        basis.row(n) << axis.x, axis.y, axis.z;
    }
    return basis;
}

ReducedCell reducedCell(const CellParameters& cell, char chCentring)
{
    ReducedCell reduced;
    reduced.basis.setZero();
    reduced.matIndices.setIdentity();
    const LatticeBasis basis = directBasisOf(cell);
    if (basis.isZero()) {
        return reduced;
    }
    const LatticeBasis niggli = niggliBasis(primitiveAxes(chCentring) * basis);
    if (niggli.isZero()) {
        return reduced;
    }
    // Indices are transformed by the same matrix as the axes. Its elements are whole numbers, halves or
    // thirds, depending on the centring, and rounding to sixths removes the errors of the reduction.
    const double dfParts = 6;
    reduced.matIndices = (dfParts * niggli * basis.inverse()).array().round().matrix() / dfParts;
    reduced.basis = niggli;
    reduced.cell = cellOf(niggli);
    return reduced;
}

std::vector<CellSetting> settingsBetween(const LatticeBasis& from, const LatticeBasis& to,
                                         const CellTolerance& tolerance)
{
    std::vector<CellSetting> list;
    CSettingSearch(from, to, tolerance).run(1, [&](const CellSetting& setting) {
        list.push_back(setting);
        return 1.0;  // the limit stays, as all settings within the tolerance are wanted
    });
    std::stable_sort(list.begin(), list.end(), isBefore);
    return list;
}

double latticeDistance(const LatticeBasis& first, const LatticeBasis& second, const CellTolerance& tolerance)
{
    double dfLeast = g_dfFarApart;
    CSettingSearch(first, second, tolerance).run(dfLeast, [&](const CellSetting& setting) {
        dfLeast = std::min(dfLeast, std::max(setting.dfLengths / tolerance.dfLengths,
                                             setting.dfAngles / tolerance.dfAngles));
        return dfLeast;  // only closer settings are of interest from here on
    });
    return dfLeast;
}

}  // namespace tessera
