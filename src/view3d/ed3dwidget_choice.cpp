// What ED3DWidget has for a selection that several views share: clicks on points, and a ring.
#include "records/pi.h"
#include "view3d/ed3dwidget.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const double g_dfReach = 6;   // pixels of the widget between a click and its point
const double g_dfRadius = 9;  // of the ring, pixels of the widget
const int g_nRingCorners = 32;

}  // namespace

void ED3DWidget::selectPoints(const QList<int>& listPoint)
{
    m_nRinged = -1;
    if (listPoint != m_groups.selected()) {
        m_groups.select(listPoint, false);
        updatePointGroups();
    }
    update();
}

void ED3DWidget::ringPoint(int nPoint)
{
    setShown(m_nRinged, nPoint >= 0 && nPoint < m_listPoint.size() ? nPoint : -1);
}

QList<int> ED3DWidget::pointsOfIds(const std::vector<int>& vecId)
{
    if (m_vecIdToPoint.empty()) {
        m_vecIdToPoint.reserve(m_listPoint.size());
        for (int i = 0; i < m_listPoint.size(); ++i) {
            m_vecIdToPoint.emplace_back(m_listPoint.at(i).nID, i);
        }
        std::sort(m_vecIdToPoint.begin(), m_vecIdToPoint.end());
    }
    QList<int> listPoint;
    for (int nId : vecId) {
        for (auto it = std::lower_bound(m_vecIdToPoint.begin(), m_vecIdToPoint.end(), std::make_pair(nId, 0));
             it != m_vecIdToPoint.end() && it->first == nId; ++it) {
            listPoint.append(it->second);
        }
    }
    std::sort(listPoint.begin(), listPoint.end());
    listPoint.erase(std::unique(listPoint.begin(), listPoint.end()), listPoint.end());
    return listPoint;
}

bool ED3DWidget::isPointInShownGroup(int nPoint) const
{
    const QList<QList<int>>& listGroup = m_groups.points();
    for (int g = 0; g < listGroup.size(); ++g) {
        if (m_groups.visible().at(g) && listGroup.at(g).contains(nPoint)) {
            return true;
        }
    }
    return false;
}

int ED3DWidget::pointAt(const QPoint& pt)
{
    if (m_camera.isFlat()) {
        return -1;
    }
    const Vec3D towardsViewer = m_camera.viewDirection();
    const QMatrix4x4 matrix = m_camera.projection() * m_camera.m_fRotation;
    int nBest = -1;
    double dfBest = g_dfReach;
    float fFront = 0;
    for (int nPoint : cloudVertices().m_pnPickName) {
        const QPointF ptOff = placeOfPoint(nPoint, matrix) - pt;
        const double df = std::hypot(ptOff.x(), ptOff.y());
        const float fDepth = dot(towardsViewer, m_listPoint.at(nPoint).point());
        if (df < dfBest || (df == dfBest && nBest >= 0 && fDepth > fFront)) {
            nBest = nPoint;
            dfBest = df;
            fFront = fDepth;
        }
    }
    return nBest;
}

QPointF ED3DWidget::placeOfPoint(int nPoint) const
{
    return placeOfPoint(nPoint, m_camera.projection() * m_camera.m_fRotation);
}

/// @param m  from the scene to the view volume
QPointF ED3DWidget::placeOfPoint(int nPoint, const QMatrix4x4& m) const
{
    int anViewport[4];
    squareViewport(width(), height(), m_bKeepAspect, anViewport);
    const Vec3D v = scaled(m_listPoint.at(nPoint).point(), m_fScale);
    const double dfX = double(m(0, 0) * v.x + m(0, 1) * v.y + m(0, 2) * v.z + m(0, 3));
    const double dfY = double(m(1, 0) * v.x + m(1, 1) * v.y + m(1, 2) * v.z + m(1, 3));
    // The viewport reaches as far over the widget's top as below its bottom.
    return {anViewport[0] + (dfX + 1) / 2 * anViewport[2], anViewport[1] + (1 - dfY) / 2 * anViewport[3]};
}

void ED3DWidget::drawRing()
{
    if (m_nRinged < 0 || m_nRinged >= m_listPoint.size() || !isPointInSlab(m_nRinged)) {
        return;
    }
    const QMatrix4x4 projection = m_camera.projection();
    const QMatrix4x4& turn = m_camera.m_fRotation;
    const Vec3D v = scaled(m_listPoint.at(m_nRinged).point(), m_fScale);
    const float fX = turn(0, 0) * v.x + turn(0, 1) * v.y + turn(0, 2) * v.z;
    const float fY = turn(1, 0) * v.x + turn(1, 1) * v.y + turn(1, 2) * v.z;
    int anViewport[4];
    squareViewport(m_nViewWidth, m_nViewHeight, m_bKeepAspect, anViewport);
    const double dfRadius = g_dfRadius * m_dfViewRatio;
    const double dfRadiusX = 2 * dfRadius / (std::max(anViewport[2], 1) * double(projection(0, 0)));
    const double dfRadiusY = 2 * dfRadius / (std::max(anViewport[3], 1) * double(projection(1, 1)));
    glPushMatrix();
    glLoadIdentity();
    // Yellow on a dark ground, which is seen over white points as well.
    for (const bool bGround : {true, false}) {
        glLineWidth(float((bGround ? 5 : 2) * m_dfViewRatio));
        glColor4f(bGround ? 0.f : 1.f, bGround ? 0.f : 1.f, 0.f, 1.f);
        glBegin(GL_LINE_LOOP);
        for (int i = 0; i < g_nRingCorners; ++i) {
            const double dfAngle = 2 * g_dfPi * i / g_nRingCorners;
            glVertex3f(fX + float(dfRadiusX * std::cos(dfAngle)), fY + float(dfRadiusY * std::sin(dfAngle)),
                       0.f);
        }
        glEnd();
    }
    glPopMatrix();
}

}  // namespace tessera
