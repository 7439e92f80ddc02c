// The drawing of ED3DWidget.
#include "view3d/ed3dwidget.h"
#include "view3d/gldrawing.h"

#include <QOpenGLShaderProgram>

#include <algorithm>
#include <cmath>

namespace tessera {

void ED3DWidget::drawScene()
{
    if (m_dfViewRatio != devicePixelRatioF()) {  // the window went to another screen
        resizeGL(int(width() * devicePixelRatioF()), int(height() * devicePixelRatioF()));
    }
    int anViewport[4];
    squareViewport(m_nViewWidth, m_nViewHeight, m_bKeepAspect, anViewport);
    glViewport(anViewport[0], anViewport[1], anViewport[2], anViewport[3]);
    glClearColor(float(m_colorBackground.redF()), float(m_colorBackground.greenF()),
                 float(m_colorBackground.blueF()), 1.f);
    glClear(GL_COLOR_BUFFER_BIT);
    if (m_bLight) {
        const float fDiffuse = 0.4f * m_fLightIntensity;
        const float afDiffuse[4] = {fDiffuse, fDiffuse, fDiffuse, fDiffuse};
        for (GLenum i = 0; i < 4; ++i) {
            glLightfv(GL_LIGHT0 + i, GL_DIFFUSE, afDiffuse);
        }
        glEnable(GL_LIGHTING);
    }
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glMultMatrixf(m_camera.m_fRotation.constData());
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    drawAxesCross();
    setDrawingState();  // the letters' painter leaves its own
    if (!m_camera.isFlat()) {
        glMatrixMode(GL_PROJECTION);
        glLoadMatrixf(m_camera.projection().constData());
        glMatrixMode(GL_MODELVIEW);
        // There is no depth: what is drawn later covers what was before, and nothing is to cover a peak.
        if (m_bShowLatticeLines) {
            drawLatticeLines();
        }
        if (m_bShowLatticePoints) {
            drawLatticePoints();
        }
        drawPoints();
        if (m_bShowCanvasGrid) {
            drawCanvasGrid();
        }
        drawRing();
        if (m_nMouseMode == MouseMode::Band) {
            drawRubberBand();
        }
    }
    glMatrixMode(GL_MODELVIEW);
    glPopMatrix();
    glDisable(GL_LIGHTING);
    if (!m_camera.isFlat()) {
        drawOverlay();
    }
}

void ED3DWidget::setDrawingState()
{
    glEnable(GL_POINT_SMOOTH);
    glEnable(GL_LINE_STIPPLE);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glEnable(GL_ALPHA_TEST);
}

void ED3DWidget::drawAxesCross()
{
    const double w = std::max(width(), 1), h = std::max(height(), 1), b = m_camera.m_fViewBound;
    const double dfUnit = b / std::max(w, h);  // half a pixel of the widget
    const double dfX = w * dfUnit - 120 * dfUnit, dfY = h * dfUnit - 120 * dfUnit;
    const float fLength = float(100 * dfUnit);
    glOrtho(dfX - b, dfX + b, dfY - b, dfY + b, -b, b);
    glMatrixMode(GL_MODELVIEW);
    glLineWidth(float(m_dfViewRatio));
    for (int nAxis = 0; nAxis < 3; ++nAxis) {
        const float afAxis[3] = {nAxis == 0 ? 1.f : 0.f, nAxis == 1 ? 1.f : 0.f, nAxis == 2 ? 1.f : 0.f};
        glColor4f(afAxis[0], afAxis[1], afAxis[2], 1.f);
        glBegin(GL_LINES);
        glVertex3f(0.f, 0.f, 0.f);
        glVertex3f(fLength * afAxis[0], fLength * afAxis[1], fLength * afAxis[2]);
        glEnd();
    }
    glColor4f(1.f, 1.f, 1.f, 1.f);
    const double dfLetter = 1.1 * 100 * dfUnit;
    renderText(dfLetter, 0.0, 0.0, QStringLiteral("x"));
    renderText(0.0, dfLetter, 0.0, QStringLiteral("y"));
    renderText(0.0, 0.0, dfLetter, QStringLiteral("z"));
}

void ED3DWidget::drawPoints()
{
    if (m_pPointProgram && !m_bPlainDrawing && !m_bLight) {
        drawPointsByShader();
    } else {
        drawPointsOneByOne();
    }
}

void ED3DWidget::drawPointsByShader()
{
    const CloudVertices& vertices = cloudVertices();
    if (vertices.vecVertex.empty()) {
        return;
    }
    if (!m_pPointProgram->bind()) {
        drawPointsOneByOne();
        return;
    }
    m_pPointProgram->setUniformValue("fFactor", m_camera.sizeFactor() * float(m_dfViewRatio));
    m_pPointProgram->setUniformValue("vecRange", m_afPointRange[0], m_afPointRange[1]);
    const GLsizei nStride = sizeof(CloudVertex);
    const CloudVertex* pFirst = vertices.vecVertex.data();
    glEnable(GL_VERTEX_PROGRAM_POINT_SIZE);
    glEnableClientState(GL_VERTEX_ARRAY);
    glEnableClientState(GL_COLOR_ARRAY);
    glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    glVertexPointer(3, GL_FLOAT, nStride, &pFirst->x);
    glColorPointer(4, GL_FLOAT, nStride, &pFirst->r);
    glTexCoordPointer(1, GL_FLOAT, nStride, &pFirst->fSize);
    drawInBatches(GL_POINTS, vertices.vecVertex.size());
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    glDisableClientState(GL_COLOR_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
    glDisable(GL_VERTEX_PROGRAM_POINT_SIZE);
    m_pPointProgram->release();
}

void ED3DWidget::drawPointsOneByOne()
{
    const float fFactor = m_camera.sizeFactor() * float(m_dfViewRatio);
    for (const CloudVertex& vertex : cloudVertices().vecVertex) {
        glPointSize(std::max(fFactor * vertex.fSize, 1e-6f));  // 0 is an error and keeps the size before
        glColor4fv(&vertex.r);
        glBegin(GL_POINTS);
        glVertex3fv(&vertex.x);
        glEnd();
    }
}

void ED3DWidget::drawCanvasGrid()
{
    glPushMatrix();
    glLoadIdentity();
    for (int i = -40; i <= 40; ++i) {
        const bool bFifth = i % 5 == 0;
        const float t = -0.1f * float(i);
        glLineWidth(float((bFifth ? 2.0 : 1.0) * m_dfViewRatio));
        setGlColor(m_colorCanvasGrid, bFifth ? std::min(1.f, 1.5f * m_fCanvasGridAlpha) : m_fCanvasGridAlpha);
        glBegin(GL_LINES);
        glVertex3f(t, 4.f, 0.f);
        glVertex3f(t, -4.f, 0.f);
        glVertex3f(-4.f, t, 0.f);
        glVertex3f(4.f, t, 0.f);
        glEnd();
    }
    glPopMatrix();
}

void ED3DWidget::drawRubberBand()
{
    int anViewport[4];
    squareViewport(m_nViewWidth, m_nViewHeight, m_bKeepAspect, anViewport);
    const QMatrix4x4 projection = m_camera.projection();
    // The corners projected back from the window.
    const auto sceneX = [&](int nX) {
        const double dfVolume = 2.0 * (nX * m_dfViewRatio - anViewport[0]) / std::max(anViewport[2], 1) - 1.0;
        return float((dfVolume - projection(0, 3)) / projection(0, 0));
    };
    const auto sceneY = [&](int nY) {
        const double dfWindow = m_nViewHeight - nY * m_dfViewRatio;
        const double dfVolume = 2.0 * (dfWindow - anViewport[1]) / std::max(anViewport[3], 1) - 1.0;
        return float((dfVolume - projection(1, 3)) / projection(1, 1));
    };
    const float afX[2] = {sceneX(m_nBandStartX), sceneX(m_nBandEndX)};
    const float afY[2] = {sceneY(m_nBandStartY), sceneY(m_nBandEndY)};
    glPushMatrix();
    glLoadIdentity();
    glLineWidth(float(m_dfViewRatio));
    glLineStipple(GLint(std::lround(3 * m_dfViewRatio)), 0xAAAA);
    glColor4f(1.f, 1.f, 0.f, 0.8f);
    glBegin(GL_LINE_STRIP);
    glVertex3f(afX[0], afY[0], 0.f);
    glVertex3f(afX[1], afY[0], 0.f);
    glVertex3f(afX[1], afY[1], 0.f);
    glVertex3f(afX[0], afY[1], 0.f);
    glVertex3f(afX[0], afY[0], 0.f);
    glEnd();
    glLineStipple(1, 0xFFFF);
    glPopMatrix();
}

}  // namespace tessera
