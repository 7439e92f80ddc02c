#include "cloud/latticegrid.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace tessera {

namespace {

// The interval of a whole number.
struct Interval {
    int nFirst, nLast;

    bool isEmpty() const { return nFirst > nLast; }
};

// How many points or lines are in each shell n: those whose greatest index is n or -n.
class CShellCount {
public:
    explicit CShellCount(int nGreatest) : m_vecCount(size_t(nGreatest) + 2), m_vecChange(m_vecCount.size()) {}

    void add(int nShell, qint64 nCount) { m_vecCount[nShell] += nCount; }
    // Adds one to each of these shells.
    void addEach(int nFirst, int nLast)
    {
        if (nFirst > nLast) {
            return;
        }
        ++m_vecChange[nFirst];
        m_vecChange[size_t(nLast) + 1]--;
    }
    // Admits the shells from the origin on whose sum is at most nMost, and of the next shell as many as are
    // then left. Each admits() call takes one.
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
    // The last shell of which anything is admitted.
    int lastShell() const { return m_nWhole; }
    bool admits(int nShell) { return nShell < m_nWhole || (nShell == m_nWhole && m_nSpare-- > 0); }

private:
    std::vector<qint64> m_vecCount;   // per shell
    std::vector<qint64> m_vecChange;  // by addEach(): how much more a shell has than the one before
    int m_nWhole = 0;
    qint64 m_nSpare = 0;
};

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
                for (int nEnd : {m_anEnd[nAlong], -m_anEnd[nAlong]}) {
                    anIndex[nAlong] = nEnd;
                    grid.vecLine[nAlong].push_back(place(anIndex));
                }
            });
        }
    }

private:
    Vec3D place(const int* pnIndex) const
    {
        return scaled(m_basis.point(pnIndex[0], pnIndex[1], pnIndex[2]), m_fScale);
    }

    // Calls pass(index with 0 along the row, greatest index, interval along the row) for each row of points
    // that reaches into the view volume.
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

    // The lattice points of a row within the view volume, and one to either side: its points are
    // origin + n·step in the volume's coordinates, in which it reaches from -1 to 1.
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

    // No index can be seen that none of the view volume's corners reaches.
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
                adfReach[i] = std::max(adfReach[i],
                                       std::abs(determinant(apRow[0], apRow[1], apRow[2]) / dfVolume));
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
    int m_anReach[3];         // of the indices looked at
    int m_anEnd[3];           // of the lines' ends
    double m_aadfStep[3][3];  // per basis vector, in the view volume's coordinates
    double m_adfOrigin[3];
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
