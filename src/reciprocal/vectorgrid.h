// CVectorGrid: points of reciprocal space sorted into cubes, for the search of near neighbours.
#pragma once

#include "records/vec3d.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tessera {

/// Sorts points into cubes of a given side. Two points within that side of each other lie in the same cube
/// or in cubes that touch.
///
/// Only cubes that hold points take memory. Far points are drawn in to the border of the countable cubes,
/// which keeps neighbours neighbours. Points that are not finite are in no cube.
class CVectorGrid {
public:
    /// @param dfSide  of the cubes, Å⁻¹; what is not above 0 counts as 1
    CVectorGrid(const std::vector<Vec3D>& vecPoint, double dfSide);

    /// A cube's place in point order, or some cubes that follow each other.
    struct Range {
        int nBegin = 0;
        int nEnd = 0;
    };

    int cellCount() const { return int(m_vecCell.size()); }  ///< cubes that hold points
    /// The points of a cube, as a range of order().
    Range cell(int nCell) const { return m_vecCell[nCell]; }
    /// Indices of the points, cube by cube, ascending within a cube.
    const std::vector<int>& order() const { return m_vecOrder; }
    /// The cube of a point, −1 for a point that is not finite.
    int cellOfPoint(int nPoint) const { return m_vecCellOfPoint[nPoint]; }
    /// Up to nine ranges of cubes around and including a cube: those of a range follow each other in order(),
    /// too. Replaces the content of `vecRange`.
    void neighbours(int nCell, std::vector<Range>& vecRange) const;

    /// The same for one cube after the other, in ascending order: each step costs little.
    class CWalk {
    public:
        explicit CWalk(const CVectorGrid& grid) : m_grid(grid) {}
        void neighbours(int nCell, std::vector<Range>& vecRange);

    private:
        const CVectorGrid& m_grid;
        std::array<int, 9> m_anBegin{};  ///< of each row around the last cube, the first one not before it
        int m_nLast = -1;
    };

private:
    std::vector<int> m_vecOrder;
    static uint64_t rowBefore(uint64_t nKey, int nRow);

    std::vector<Range> m_vecCell;
    std::vector<uint64_t> m_vecKey;  ///< of each cube, ascending
    std::vector<int> m_vecCellOfPoint;
};

}  // namespace tessera
