#include "cloud/latticegrid.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace tessera {

namespace {

// The indices from nFirst to nLast, both included.
struct Interval {
    int nFirst, nLast;

    bool isEmpty() const { return nFirst > nLast; }
};

// Limits how many lattice points or lines are drawn, those near the origin first. They are sorted into
// shells: shell n has those of which the greatest absolute value of an index is n. First all are counted by
// add() and addEach(), then limit() is called, then admits() for each point or line.
class CShellCount {
public:
    // Two more elements than the greatest shell's number: for shell 0, and for the end of an addEach().
    explicit CShellCount(int nGreatest) : m_vecCount(size_t(nGreatest) + 2), m_vecChange(m_vecCount.size()) {}

    void add(int nShell, qint64 nCount) { m_vecCount[nShell] += nCount; }
    // Adds one to each shell from nFirst to nLast.
    void addEach(int nFirst, int nLast)
    {
        if (nFirst > nLast) {
            return;
        }
        ++m_vecChange[nFirst];
        m_vecChange[size_t(nLast) + 1]--;
    }
    // Admits whole shells, from the origin outwards, as long as their sum is at most nMost, and of the next
    // shell as many as are then left.
    void limit(qint64 nMost)
    {
        qint64 nEach = 0;
        m_nSpare = nMost;
        for (m_nWhole = 0; size_t(m_nWhole) < m_vecCount.size(); ++m_nWhole) {
            nEach += m_vecChange[m_nWhole];
            const qint64 nShell = m_vecCount[m_nWhole] + nEach;
            if (nShell > m_nSpare) {
                break;
            }
            m_nSpare -= nShell;
        }
    }
    // The last shell from which points or lines may be admitted.
    int lastShell() const { return m_nWhole; }
    // Whether the next point or line of this shell is admitted. In the last shell, which is admitted in part,
    // each call uses up one of the remaining places.
    bool admits(int nShell) { return nShell < m_nWhole || (nShell == m_nWhole && m_nSpare-- > 0); }

private:
    std::vector<qint64> m_vecCount;   // per shell, by add()
    std::vector<qint64> m_vecChange;  // by addEach(): how much more a shell has than the one before
    int m_nWhole = 0;                 // shells below this are admitted whole
    qint64 m_nSpare = 0;              // how many of shell m_nWhole are still admitted
};

// Goes through the rows of the lattice: a row is all points along one basis vector with the same two other
// indices, and one line of the grid. If the lattice is large only rows and points in the view volume are
// taken. The view volume's coordinates are those of OpenGL after the projection, from -1 to 1 along each
// axis. The projection is orthographic, so they are linear in the indices.
class CLatticeWalk {
public:
    CLatticeWalk(const ReciprocalBasis& basis, const int* pnRange, float fScale, const CCamera& camera)
        : m_basis(basis), m_fScale(fScale), m_bClip(latticeGridNeedsCamera(pnRange))
    {
        for (int i = 0; i < 3; ++i) {
            m_anReach[i] = m_anEnd[i] = std::max(pnRange[i], 0);
        }
        const QMatrix4x4 m = camera.projection() * camera.m_fRotation;
        const std::array<Vec3D, 3> aVector = basis.vectors();
        for (int r = 0; r < 3; ++r) {
            for (int i = 0; i < 3; ++i) {
                const Vec3D v = scaled(aVector[i], fScale);
                m_aadfStep[i][r] = double(m(r, 0)) * v.x + double(m(r, 1)) * v.y + double(m(r, 2)) * v.z;
            }
            m_adfOrigin[r] = m(r, 3);
        }
        if (m_bClip) {
            boundByCorners();
        }
    }

    // For each of the three directions, rows are counted by shells first, as only then it is known which of
    // them are within the limits, and added to the grid in a second pass. Each point is in one row of each
    // direction: points are taken from the rows along c* alone (nAlong 2).
    void fill(LatticeGrid& grid) const
    {
        const int nGreatest = *std::max_element(m_anReach, m_anReach + 3);
        for (int nAlong = 0; nAlong < 3; ++nAlong) {
            CShellCount points(nGreatest), lines(nGreatest);
            forEachRow(nAlong, [&](const int*, int nShell, const Interval& row) {
                lines.add(nShell, 1);
                if (nAlong != 2) {
                    return;
                }
                // A row whose other indices reach nShell: its points with |l| up to nShell are in shell
                // nShell, each further point is in the shell of its own |l|.
                points.add(nShell,
                           std::max(std::min(row.nLast, nShell) - std::max(row.nFirst, -nShell) + 1, 0));
                points.addEach(std::max(row.nFirst, nShell + 1), row.nLast);
                points.addEach(std::max(-row.nLast, nShell + 1), -row.nFirst);
            });
            points.limit(g_nMostLatticePoints);
            lines.limit(g_nMostLatticeLines);
            forEachRow(nAlong, [&](const int* pnIndex, int nShell, const Interval& row) {
                int anIndex[3] = {pnIndex[0], pnIndex[1], pnIndex[2]};
                const int nLastShell = points.lastShell();
                if (nAlong == 2 && nShell <= nLastShell) {
                    for (anIndex[2] = std::max(row.nFirst, -nLastShell);
                         anIndex[2] <= std::min(row.nLast, nLastShell); anIndex[2]++) {
                        if (points.admits(std::max(nShell, std::abs(anIndex[2])))) {
                            grid.vecPoint.push_back(place(anIndex));
                        }
                    }
                }
                if (!lines.admits(nShell)) {
                    return;
                }
                // A line is drawn over the whole range, also beyond the view volume.
                for (int nEnd : {m_anEnd[nAlong], -m_anEnd[nAlong]}) {
                    anIndex[nAlong] = nEnd;
                    grid.vecLine[nAlong].push_back(place(anIndex));
                }
            });
        }
    }

private:
    // Å⁻¹, times the scale.
    Vec3D place(const int* pnIndex) const
    {
        return scaled(m_basis.point(pnIndex[0], pnIndex[1], pnIndex[2]), m_fScale);
    }

    // For each row along basis vector nAlong that reaches into the view volume, calls pass() with the indices
    // of the row (0 along it), the greatest absolute value of these, and the interval of the index along the
    // row.
    template <class Pass>
    void forEachRow(int nAlong, Pass pass) const
    {
        const int nFirst = nAlong == 0 ? 1 : 0, nSecond = nAlong == 2 ? 1 : 2;
        int anIndex[3] = {0, 0, 0};
        for (anIndex[nFirst] = -m_anReach[nFirst]; anIndex[nFirst] <= m_anReach[nFirst]; anIndex[nFirst]++) {
            for (anIndex[nSecond] = -m_anReach[nSecond]; anIndex[nSecond] <= m_anReach[nSecond];
                 anIndex[nSecond]++) {
                const Interval interval = visibleInterval(nAlong, anIndex);
                if (!interval.isEmpty()) {
                    pass(anIndex, std::max(std::abs(anIndex[nFirst]), std::abs(anIndex[nSecond])), interval);
                }
            }
        }
    }

    // Which points of a row are within the view volume, and one more to either side. The points of a row are
    // start + n·step in the volume's coordinates, so each of the three coordinates limits n.
    Interval visibleInterval(int nAlong, const int* pnIndex) const
    {
        const int nRange = m_anReach[nAlong];
        if (!m_bClip) {
            return {-nRange, nRange};
        }
        double dfFirst = -nRange, dfLast = nRange;
        for (size_t r = 0; r < 3; ++r) {
            double dfStart = m_adfOrigin[r];
            for (size_t i = 0; i < 3; ++i) {
                dfStart += pnIndex[i] * m_aadfStep[i][r];
            }
            const double dfStep = m_aadfStep[nAlong][r];
            // A row parallel to this pair of faces is inside or outside as a whole; a division by its step
            // would give infinite limits. The margins, far below a pixel, allow for rounding: the matrix is
            // in single precision.
            if (std::abs(dfStep) * nRange < 1e-9) {
                if (std::abs(dfStart) > 1.0 + 1e-6) {
                    return {0, -1};
                }
                continue;
            }
            const double df1 = (-1.0 - dfStart) / dfStep, df2 = (1.0 - dfStart) / dfStep;
            dfFirst = std::max(dfFirst, std::min(df1, df2) - 1.0);
            dfLast = std::min(dfLast, std::max(df1, df2) + 1.0);
        }
        if (dfFirst > dfLast) {
            return {0, -1};
        }
        return {int(std::ceil(dfFirst)), int(std::floor(dfLast))};
    }

    // Limits each index to what can be seen: an index is linear in the view volume's coordinates, so it is
    // greatest in one of the eight corners. The indices of a corner follow from Cramer's rule. Where these
    // are infinite or not determined, as for co-planar basis vectors, the range stays.
    void boundByCorners()
    {
        const auto determinant = [](const double* a, const double* b, const double* c) {
            return a[0] * (b[1] * c[2] - b[2] * c[1]) - a[1] * (b[0] * c[2] - b[2] * c[0]) +
                   a[2] * (b[0] * c[1] - b[1] * c[0]);
        };
        const double dfVolume = determinant(m_aadfStep[0], m_aadfStep[1], m_aadfStep[2]);
        double adfReach[3] = {0, 0, 0};
        for (int nCorner = 0; nCorner < 8; ++nCorner) {
            double adfCorner[3];
            for (int r = 0; r < 3; ++r) {
                adfCorner[r] = (nCorner >> r & 1 ? 1.0 : -1.0) - m_adfOrigin[r];
            }
            for (int i = 0; i < 3; ++i) {
                const double* apRow[3] = {m_aadfStep[0], m_aadfStep[1], m_aadfStep[2]};
                apRow[i] = adfCorner;
                const double dfIndex = determinant(apRow[0], apRow[1], apRow[2]) / dfVolume;
                adfReach[i] = std::isnan(dfIndex) ? HUGE_VAL : std::max(adfReach[i], std::abs(dfIndex));
            }
        }
        for (int i = 0; i < 3; ++i) {
            if (std::isfinite(adfReach[i]) && adfReach[i] + 1.0 < m_anReach[i]) {
                m_anReach[i] = int(adfReach[i] + 1.0);
            }
        }
    }

    const ReciprocalBasis& m_basis;
    const float m_fScale;
    const bool m_bClip;
    int m_anReach[3];         // h, k, l from minus to plus these are looked at
    int m_anEnd[3];           // h, k, l at the ends of the lines: the ranges as asked for
    double m_aadfStep[3][3];  // per basis vector, in the view volume's coordinates
    double m_adfOrigin[3];    // place of the lattice's origin, in the same
};

}  // namespace

float latticeLineAlpha(size_t nLines)
{
    if (nLines <= 9) {
        return 0.5f;
    }
    return float(std::max(1.0 - std::pow(0.5, 3.0 / std::sqrt(double(nLines))), 0.05));
}

bool latticeGridNeedsCamera(const int* pnRange)
{
    double dfCount = 1.0;
    for (int i = 0; i < 3; ++i) {
        dfCount *= 2.0 * std::max(pnRange[i], 0) + 1.0;
    }
    return dfCount > g_nMostLatticePointsWhole;
}

LatticeGrid makeLatticeGrid(const ReciprocalBasis& basis, const int* pnRange, float fScale,
                            const CCamera& camera)
{
    LatticeGrid grid;
    if (isFinite(basis)) {
        CLatticeWalk(basis, pnRange, fScale, camera).fill(grid);
    }
    return grid;
}

}  // namespace tessera
