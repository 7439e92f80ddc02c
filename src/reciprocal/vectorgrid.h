// CVectorGrid: points of reciprocal space sorted into cubes, for the search of near neighbours.
#pragma once

#include "records/vec3d.h"

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
    CVectorGrid(const std::vector<Vec3D>& vecPoint, double dfSide);

    /// A cube's place in point order.
    struct Range {
        int nBegin = 0;
        int nEnd = 0;
    };

    int cellCount() const { return int(m_vecCell.size()); }
    /// The points of a cube, as a range of order().
    Range cell(int nCell) const { return m_vecCell[size_t(nCell)]; }
    /// Indices of the points, cube by cube, ascending within a cube.
    const std::vector<int>& order() const { return m_vecOrder; }
    /// The cube of a point, −1 for a point that is not finite.
    int cellOfPoint(int nPoint) const { return m_vecCellOfPoint[size_t(nPoint)]; }
    /// The cubes around and including `nCell`, up to 27; replaces the content of `vecNeighbour`.
    void neighbours(int nCell, std::vector<int>& vecNeighbour) const;

private:
    std::vector<int> m_vecOrder;
    std::vector<Range> m_vecCell;
    std::vector<uint64_t> m_vecKey;  ///< of each cube, ascending
    std::vector<int> m_vecCellOfPoint;
};

}  // namespace tessera
