// The lattice that ED3DWidget draws behind its points.
#include "view3d/ed3dwidget.h"
#include "view3d/gldrawing.h"

#include <algorithm>

namespace tessera {

void ED3DWidget::setLattice(const QList<Vec3D>& listCell)
{
    m_lattice = basisFromList(listCell);
    m_cellFrame = CCellFrame::of(m_lattice);
    m_latticeGrid.reset();
    if (m_slab) {
        m_vertices.reset();
    }
    update();
    emit latticeChanged(this);
}

void ED3DWidget::setLatticeRange(int nH, int nK, int nL)
{
    m_nLatticeRangeH = nH;
    m_nLatticeRangeK = nK;
    m_nLatticeRangeL = nL;
    m_latticeGrid.reset();
    update();
}

void ED3DWidget::getLatticeRange(int& nH, int& nK, int& nL) const
{
    nH = m_nLatticeRangeH;
    nK = m_nLatticeRangeK;
    nL = m_nLatticeRangeL;
}

const LatticeGrid& ED3DWidget::latticeGrid(const ReciprocalBasis& basis)
{
    const int anRange[3] = {m_nLatticeRangeH, m_nLatticeRangeK, m_nLatticeRangeL};
    if (!m_latticeGrid || (!(m_latticeGrid->camera == m_camera) && latticeGridNeedsCamera(anRange))) {
        m_latticeGrid = GridOfCamera{makeLatticeGrid(basis, anRange, m_fScale, m_camera), m_camera};
    }
    return m_latticeGrid->grid;
}

/// The places within the slab: other layers of the lattice would cover it.
/// @param nEach  places that are kept or left out together: 2 for the ends of lines
std::vector<Vec3D> ED3DWidget::latticeInSlab(const std::vector<Vec3D>& vecPlace, size_t nEach) const
{
    return placesInSlab(vecPlace, nEach, *m_cellFrame, *m_slab);
}

void ED3DWidget::drawLatticePoints()
{
    if (!m_lattice) {
        return;
    }
    glPointSize(float(m_fLatticePointSize * m_dfViewRatio));
    setGlColor(m_colorLatticePoint, 1.f);
    const std::vector<Vec3D>& vecPoint = latticeGrid(*m_lattice).vecPoint;
    if (m_slab && m_cellFrame) {
        drawArray(GL_POINTS, latticeInSlab(vecPoint, 1));
    } else {
        drawArray(GL_POINTS, vecPoint);
    }
}

void ED3DWidget::drawLatticeLines()
{
    if (!m_lattice) {
        return;
    }
    const LatticeGrid& grid = latticeGrid(*m_lattice);
    glLineWidth(float(m_dfViewRatio));
    for (int i : {2, 1, 0}) {
        const auto draw = [i](const std::vector<Vec3D>& vecLine) {
            glColor4f(i == 0 ? 1.f : 0.f, i == 1 ? 1.f : 0.f, i == 2 ? 1.f : 0.f,
                      latticeLineAlpha(vecLine.size() / 2));
            drawArray(GL_LINES, vecLine);
        };
        if (m_slab && m_cellFrame) {
            draw(latticeInSlab(grid.vecLine[i], 2));
        } else {
            draw(grid.vecLine[i]);
        }
    }
    glLineWidth(float(std::min(3.0 * m_camera.sizeFactor() * m_dfViewRatio, 1000.0)));
    const std::array<Vec3D, 3> aVector = m_lattice->vectors();
    for (int i = 0; i < 3; ++i) {
        const Vec3D v = scaled(aVector[i], m_fScale);
        glColor4f(i == 0 ? 1.f : 0.f, i == 1 ? 1.f : 0.f, i == 2 ? 1.f : 0.f, 1.f);
        glBegin(GL_LINES);
        glVertex3f(0.f, 0.f, 0.f);
        glVertex3f(v.x, v.y, v.z);
        glEnd();
    }
}

}  // namespace tessera
