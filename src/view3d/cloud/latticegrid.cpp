#include "view3d/cloud/latticegrid.h"

#include <algorithm>
#include <cmath>

namespace {

// The interval of a whole number.
struct Interval {
    int nFirst, nLast;

    bool isEmpty() const { return nFirst > nLast; }
};

class CLatticeWalk {
public:
    CLatticeWalk(const QList<Vec3D>& listCell, const int* pnRange, float fScale, const CCamera& camera)
        : m_listCell(listCell), m_fScale(fScale), m_bClip(latticeGridNeedsCamera(pnRange))
    {
        for (int i = 0; i < 3; i++)
            m_anRange[i] = m_anEnd[i] = std::max(pnRange[i], 0);
        const Matrix4 m = multiplied(camera.projection(), camera.m_fRotation);
        for (size_t r = 0; r < 3; r++) {
            for (size_t i = 0; i < 3; i++) {
                const Vec3D v = scaled(listCell[int(i)], fScale);
                m_aadfStep[i][r] = double(m[r]) * v.x + double(m[4 + r]) * v.y + double(m[8 + r]) * v.z;
            }
            m_adfOrigin[r] = m[12 + r];
        }
    }

    // Makes the ranges smaller until points and lines can be held.
    void limit()
    {
        if (!m_bClip)
            return;
        boundByCorners();
        while (isTooMuch())
            for (int& nRange : m_anRange)
                nRange = nRange * 4 / 5;
    }

    void fill(LatticeGrid& grid) const
    {
        for (int nAlong = 0; nAlong < 3; nAlong++)
            forEachRow(nAlong, [&](const int* pnIndex, const Interval& interval) {
                int anIndex[3] = {pnIndex[0], pnIndex[1], pnIndex[2]};
                if (nAlong == 2)
                    for (anIndex[2] = interval.nFirst; anIndex[2] <= interval.nLast; anIndex[2]++)
                        grid.vecPoint.push_back(place(anIndex));
                for (int nEnd : {m_anEnd[nAlong], -m_anEnd[nAlong]}) {
                    anIndex[nAlong] = nEnd;
                    grid.vecLine[nAlong].push_back(place(anIndex));
                }
                return true;
            });
    }

private:
    Vec3D place(const int* pnIndex) const
    {
        return scaled(scaled(m_listCell[0], float(pnIndex[0])) + scaled(m_listCell[1], float(pnIndex[1])) +
                          scaled(m_listCell[2], float(pnIndex[2])),
                      m_fScale);
    }

    // Calls pass(index with 0 along the row, interval along the row) for each row of points that reaches
    // into the view volume, until it returns false.
    template <class Pass>
    void forEachRow(int nAlong, Pass pass) const
    {
        const int nFirst = nAlong == 0 ? 1 : 0, nSecond = nAlong == 2 ? 1 : 2;
        int anIndex[3] = {0, 0, 0};
        for (anIndex[nFirst] = -m_anRange[nFirst]; anIndex[nFirst] <= m_anRange[nFirst]; anIndex[nFirst]++)
            for (anIndex[nSecond] = -m_anRange[nSecond]; anIndex[nSecond] <= m_anRange[nSecond];
                 anIndex[nSecond]++) {
                const Interval interval = visibleInterval(nAlong, anIndex);
                if (!interval.isEmpty() && !pass(anIndex, interval))
                    return;
            }
    }

    // The lattice points of a row within the view volume, and one to either side: its points are
    // origin + n·step in the volume's coordinates, in which it reaches from -1 to 1.
    Interval visibleInterval(int nAlong, const int* pnIndex) const
    {
        const int nRange = m_anRange[nAlong];
        if (!m_bClip)
            return {-nRange, nRange};
        double dfFirst = -nRange, dfLast = nRange;
        for (size_t r = 0; r < 3; r++) {
            double dfStart = m_adfOrigin[r];
            for (size_t i = 0; i < 3; i++)
                dfStart += pnIndex[i] * m_aadfStep[i][r];
            const double dfStep = m_aadfStep[nAlong][r];
            if (std::abs(dfStep) * nRange < 1e-9) {
                if (std::abs(dfStart) > 1.0 + 1e-6)
                    return {0, -1};
                continue;
            }
            const double df1 = (-1.0 - dfStart) / dfStep, df2 = (1.0 - dfStart) / dfStep;
            dfFirst = std::max(dfFirst, std::min(df1, df2) - 1.0);
            dfLast = std::min(dfLast, std::max(df1, df2) + 1.0);
        }
        if (dfFirst > dfLast)
            return {0, -1};
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
        for (int nCorner = 0; nCorner < 8; nCorner++) {
            double adfCorner[3];
            for (int r = 0; r < 3; r++)
                adfCorner[r] = (nCorner >> r & 1 ? 1.0 : -1.0) - m_adfOrigin[r];
            for (int i = 0; i < 3; i++) {
                const double* apRow[3] = {m_aadfStep[0], m_aadfStep[1], m_aadfStep[2]};
                apRow[i] = adfCorner;
                adfReach[i] =
                    std::max(adfReach[i], std::abs(determinant(apRow[0], apRow[1], apRow[2]) / dfVolume));
            }
        }
        for (int i = 0; i < 3; i++)
            if (std::isfinite(adfReach[i]) && adfReach[i] + 1.0 < m_anRange[i])
                m_anRange[i] = int(adfReach[i] + 1.0);
    }

    bool isTooMuch() const
    {
        bool bTooMuch = false;
        for (int nAlong = 2; nAlong >= 0 && !bTooMuch; nAlong--) {
            int nPoints = 0, nLines = 0;
            forEachRow(nAlong, [&](const int*, const Interval& interval) {
                nPoints += interval.nLast - interval.nFirst + 1;
                bTooMuch = nPoints > g_nMostLatticePoints || ++nLines > g_nMostLatticeLines;
                return !bTooMuch;
            });
        }
        return bTooMuch;
    }

    const QList<Vec3D>& m_listCell;
    const float m_fScale;
    const bool m_bClip;
    int m_anRange[3];         // of the indices looked at
    int m_anEnd[3];           // of the lines' ends
    double m_aadfStep[3][3];  // per basis vector, in the view volume's coordinates
    double m_adfOrigin[3];
};

}  // namespace

bool latticeGridNeedsCamera(const int* pnRange)
{
    double dfCount = 1.0;
    for (int i = 0; i < 3; i++)
        dfCount *= 2.0 * std::max(pnRange[i], 0) + 1.0;
    return dfCount > g_nMostLatticePoints;
}

LatticeGrid makeLatticeGrid(const QList<Vec3D>& listCell, const int* pnRange, float fScale,
                            const CCamera& camera)
{
    LatticeGrid grid;
    if (listCell.size() != 3)
        return grid;
    for (const Vec3D& v : listCell)
        if (!std::isfinite(v.x) || !std::isfinite(v.y) || !std::isfinite(v.z))
            return grid;
    CLatticeWalk walk(listCell, pnRange, fScale, camera);
    walk.limit();
    walk.fill(grid);
    return grid;
}
