// The drawing of ED3DWidget and its OpenGL context.
#include "view3d/ed3dwidget.h"

#include <QOpenGLContext>
#include <QOpenGLShaderProgram>
#include <QPainter>
#include <QWindow>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

// The fixed pipeline knows one size for all points of a call; this gives each its own. The size comes as
// texture coordinate, fixed arrays have no better place for it.
const char g_acPointShader[] =
    "uniform float fFactor;\n"
    "uniform vec2 vecRange;\n"
    "void main()\n"
    "{\n"
    "    gl_Position = ftransform();\n"
    "    gl_FrontColor = gl_Color;\n"
    "    gl_PointSize = clamp(fFactor * gl_MultiTexCoord0.x, vecRange.x, vecRange.y);\n"
    "}\n";

void setColor(const QColor& color, float fAlpha)
{
    glColor4f(float(color.redF()), float(color.greenF()), float(color.blueF()), fAlpha);
}

// A thousand at a time: smooth points of one call cost Mesa's software renderer more, the more they are.
void drawInBatches(GLenum eMode, size_t nCount)
{
    const size_t nBatch = 1024;
    for (size_t nFirst = 0; nFirst < nCount; nFirst += nBatch)
        glDrawArrays(eMode, GLint(nFirst), GLsizei(std::min(nBatch, nCount - nFirst)));
}

// A list of coordinates in the colour that is set.
void drawArray(GLenum eMode, const std::vector<Vec3D>& vecPoint)
{
    static_assert(sizeof(Vec3D) == 3 * sizeof(float), "three floats in a row");
    if (vecPoint.empty())
        return;
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, GL_FLOAT, 0, vecPoint.data());
    drawInBatches(eMode, vecPoint.size());
    glDisableClientState(GL_VERTEX_ARRAY);
}

}  // namespace

void ED3DWidget::reportContextFailure(const QString& strMessage)
{
    if (m_bFailureReported)
        return;
    m_bFailureReported = true;
    emit contextFailed(strMessage);
}

bool ED3DWidget::makeContextCurrent()
{
    if (!isValid() || !m_bUsable)
        return false;
    makeCurrent();
    return QOpenGLContext::currentContext() == context()->contextHandle();
}

QPaintEngine* ED3DWidget::paintEngine() const
{
    // Without OpenGL the widget paints as a plain one. NOLINTNEXTLINE(bugprone-parent-virtual-call)
    return isValid() ? QGLWidget::paintEngine() : QWidget::paintEngine();
}

void ED3DWidget::showEvent(QShowEvent* pEvent)
{
    QGLWidget::showEvent(pEvent);
    if (!isValid())
        reportContextFailure(tr("There is no OpenGL context for the 3D view. It stays empty."));
}

void ED3DWidget::paintEvent(QPaintEvent* pEvent)
{
    if (isValid()) {
        QGLWidget::paintEvent(pEvent);
        return;
    }
    QPainter painter(this);
    painter.fillRect(rect(), m_colorBackground);
    painter.setPen(Qt::gray);
    painter.drawText(rect().adjusted(10, 10, -10, -10), Qt::AlignCenter | Qt::TextWordWrap,
                     tr("There is no OpenGL context to draw with."));
}

void ED3DWidget::resizeEvent(QResizeEvent* pEvent)
{
    if (makeContextCurrent())
        QGLWidget::resizeEvent(pEvent);
}

void ED3DWidget::glDraw()
{
    if (makeContextCurrent())
        QGLWidget::glDraw();
    else
        reportContextFailure(m_bUsable
                                 ? tr("The OpenGL context of the 3D view is lost. It stays empty.")
                                 : tr("The OpenGL context of the 3D view has no fixed-function pipeline. "
                                      "It stays empty."));
}

QImage ED3DWidget::grabFrameBuffer(bool bWithAlpha)
{
    if (!makeContextCurrent())
        return QImage();
    if (!m_bInitialized) {
        glInit();
        resizeGL(int(width() * devicePixelRatioF()), int(height() * devicePixelRatioF()));
    }
    if (!m_bUsable)
        return QImage();
    drawScene();
    // Some drivers take up a new size at the swap only.
    if (m_sizeSwapped != size() && windowHandle() && windowHandle()->isExposed()) {
        swapBuffers();
        m_sizeSwapped = size();
        drawScene();
    }
    return QGLWidget::grabFrameBuffer(bWithAlpha);
}

void ED3DWidget::initializeGL()
{
    m_bInitialized = true;
    QOpenGLContext* pContext = QOpenGLContext::currentContext();
    m_bUsable = pContext && !pContext->isOpenGLES() &&
                pContext->format().profile() != QSurfaceFormat::CoreProfile && glGetString(GL_VERSION);
    if (!m_bUsable)
        return;
    glClearColor(float(m_colorBackground.redF()), float(m_colorBackground.greenF()),
                 float(m_colorBackground.blueF()), 1.f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    const float aafPosition[4][4] = {{1, 1, 0, 0}, {-1, -1, 0, 0}, {-0.1f, -0.1f, 1, 0}, {0.1f, 0.1f, -1, 0}};
    const float afAmbient[4] = {0.1f, 0.1f, 0.1f, 1.f};
    glLightfv(GL_LIGHT0, GL_AMBIENT, afAmbient);
    for (GLenum i = 0; i < 4; i++) {
        glLightfv(GL_LIGHT0 + i, GL_POSITION, aafPosition[i]);
        glEnable(GL_LIGHT0 + i);
    }
    glEnable(GL_COLOR_MATERIAL);  // else all groups look alike in the light
    setDrawingState();

    // Mesa's software renderers draw smooth points of a fixed size below 2 as of 2, but those with a size of
    // their own so small that some are missing.
    glGetFloatv(GL_SMOOTH_POINT_SIZE_RANGE, m_afPointRange);
    const QByteArray strRenderer(reinterpret_cast<const char*>(glGetString(GL_RENDERER)));
    if (strRenderer.contains("llvmpipe") || strRenderer.contains("softpipe"))
        m_afPointRange[0] = std::max(m_afPointRange[0], 2.f);

    m_pPointProgram.reset();
    if (QOpenGLShaderProgram::hasOpenGLShaderPrograms(pContext)) {
        m_pPointProgram = std::make_unique<QOpenGLShaderProgram>();
        if (!m_pPointProgram->addShaderFromSourceCode(QOpenGLShader::Vertex, g_acPointShader) ||
            !m_pPointProgram->link())
            m_pPointProgram.reset();
    }
}

void ED3DWidget::resizeGL(int w, int h)
{
    m_nViewWidth = w;
    m_nViewHeight = h;
    m_dfViewRatio = devicePixelRatioF();
}

void ED3DWidget::paintGL()
{
    if (!m_bUsable)
        return;
    drawScene();
    glFlush();
    swapBuffers();
    m_sizeSwapped = size();
}

void ED3DWidget::drawScene()
{
    if (m_dfViewRatio != devicePixelRatioF())  // the window went to another screen
        resizeGL(int(width() * devicePixelRatioF()), int(height() * devicePixelRatioF()));
    int anViewport[4];
    squareViewport(m_nViewWidth, m_nViewHeight, m_bKeepAspect, anViewport);
    glViewport(anViewport[0], anViewport[1], anViewport[2], anViewport[3]);
    glClearColor(float(m_colorBackground.redF()), float(m_colorBackground.greenF()),
                 float(m_colorBackground.blueF()), 1.f);
    glClear(GL_COLOR_BUFFER_BIT);
    if (m_bLight) {
        const float fDiffuse = 0.4f * m_fLightIntensity;
        const float afDiffuse[4] = {fDiffuse, fDiffuse, fDiffuse, fDiffuse};
        for (GLenum i = 0; i < 4; i++)
            glLightfv(GL_LIGHT0 + i, GL_DIFFUSE, afDiffuse);
        glEnable(GL_LIGHTING);
    }
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glMultMatrixf(m_camera.m_fRotation.data());
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    drawAxesCross();
    setDrawingState();  // the letters' painter leaves its own
    if (!m_camera.isFlat()) {
        glMatrixMode(GL_PROJECTION);
        glLoadMatrixf(m_camera.projection().data());
        glMatrixMode(GL_MODELVIEW);
        drawPoints();
        if (m_bShowCanvasGrid)
            drawCanvasGrid();
        if (m_bShowLatticePoints)
            drawLatticePoints();
        if (m_bShowLatticeLines)
            drawLatticeLines();
        drawRing();
        if (m_nMouseMode == ModeBand)
            drawRubberBand();
    }
    glMatrixMode(GL_MODELVIEW);
    glPopMatrix();
    glDisable(GL_LIGHTING);
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
    for (int nAxis = 0; nAxis < 3; nAxis++) {
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
    if (m_pPointProgram && !m_bPlainDrawing && !m_bLight)
        drawPointsByShader();
    else
        drawPointsOneByOne();
}

void ED3DWidget::drawPointsByShader()
{
    const CloudVertices& vertices = cloudVertices();
    if (vertices.vecVertex.empty())
        return;
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
    for (int i = -40; i <= 40; i++) {
        const bool bFifth = i % 5 == 0;
        const float t = -0.1f * float(i);
        glLineWidth(float((bFifth ? 2.0 : 1.0) * m_dfViewRatio));
        setColor(m_colorCanvasGrid, bFifth ? std::min(1.f, 1.5f * m_fCanvasGridAlpha) : m_fCanvasGridAlpha);
        glBegin(GL_LINES);
        glVertex3f(t, 4.f, 0.f);
        glVertex3f(t, -4.f, 0.f);
        glVertex3f(-4.f, t, 0.f);
        glVertex3f(4.f, t, 0.f);
        glEnd();
    }
    glPopMatrix();
}

const LatticeGrid& ED3DWidget::latticeGrid(const ReciprocalBasis& basis)
{
    const int anRange[3] = {m_nLatticeRangeH, m_nLatticeRangeK, m_nLatticeRangeL};
    if (!m_latticeGrid || (!(m_latticeGrid->camera == m_camera) && latticeGridNeedsCamera(anRange)))
        m_latticeGrid = GridOfCamera{makeLatticeGrid(basis, anRange, m_fScale, m_camera), m_camera};
    return m_latticeGrid->grid;
}

void ED3DWidget::drawLatticePoints()
{
    if (!m_lattice)
        return;
    glPointSize(float(m_fLatticePointSize * m_dfViewRatio));
    setColor(m_colorLatticePoint, 1.f);
    drawArray(GL_POINTS, latticeGrid(*m_lattice).vecPoint);
}

void ED3DWidget::drawLatticeLines()
{
    if (!m_lattice)
        return;
    const LatticeGrid& grid = latticeGrid(*m_lattice);
    glLineWidth(float(m_dfViewRatio));
    for (int i : {2, 1, 0}) {
        glColor4f(i == 0 ? 1.f : 0.f, i == 1 ? 1.f : 0.f, i == 2 ? 1.f : 0.f, 0.5f);
        drawArray(GL_LINES, grid.vecLine[i]);
    }
    glLineWidth(float(std::min(3.0 * m_camera.sizeFactor() * m_dfViewRatio, 1000.0)));
    const std::array<Vec3D, 3> aVector = m_lattice->vectors();
    for (int i = 0; i < 3; i++) {
        const Vec3D v = scaled(aVector[i], m_fScale);
        glColor4f(i == 0 ? 1.f : 0.f, i == 1 ? 1.f : 0.f, i == 2 ? 1.f : 0.f, 1.f);
        glBegin(GL_LINES);
        glVertex3f(0.f, 0.f, 0.f);
        glVertex3f(v.x, v.y, v.z);
        glEnd();
    }
}

void ED3DWidget::drawRubberBand()
{
    int anViewport[4];
    squareViewport(m_nViewWidth, m_nViewHeight, m_bKeepAspect, anViewport);
    const Matrix4 projection = m_camera.projection();
    // The corners projected back from the window.
    const auto sceneX = [&](int nX) {
        const double dfVolume = 2.0 * (nX * m_dfViewRatio - anViewport[0]) / std::max(anViewport[2], 1) - 1.0;
        return float((dfVolume - projection[12]) / projection[0]);
    };
    const auto sceneY = [&](int nY) {
        const double dfWindow = m_nViewHeight - nY * m_dfViewRatio;
        const double dfVolume = 2.0 * (dfWindow - anViewport[1]) / std::max(anViewport[3], 1) - 1.0;
        return float((dfVolume - projection[13]) / projection[5]);
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
