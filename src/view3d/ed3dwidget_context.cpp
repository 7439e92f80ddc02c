// The OpenGL context of ED3DWidget, and its behaviour without one.
#include "view3d/ed3dwidget.h"

#include <QOpenGLContext>
#include <QOpenGLShaderProgram>
#include <QPainter>
#include <QWindow>

#include <algorithm>

namespace tessera {

namespace {

// The fixed pipeline draws all points of one call in the same size. This shader gives each point its own
// size, which it gets as the texture coordinate, since the arrays of the fixed pipeline have no better place
// for it. fFactor: magnification by zoom and screen. vecRange: least and greatest size that the driver draws,
// in device pixels.
const char g_acPointShader[] =
    "uniform float fFactor;\n"
    "uniform vec2 vecRange;\n"
    "void main()\n"
    "{\n"
    "    gl_Position = ftransform();\n"
    "    gl_FrontColor = gl_Color;\n"
    "    gl_PointSize = clamp(fFactor * gl_MultiTexCoord0.x, vecRange.x, vecRange.y);\n"
    "}\n";

}  // namespace

void ED3DWidget::reportContextFailure(const QString& strMessage)
{
    if (m_bFailureReported) {
        return;
    }
    m_bFailureReported = true;
    emit contextFailed(strMessage);
}

bool ED3DWidget::makeContextCurrent()
{
    if (!isValid() || !m_bUsable) {
        return false;
    }
    makeCurrent();
    return QOpenGLContext::currentContext() == context()->contextHandle();
}

QPaintEngine* ED3DWidget::paintEngine() const
{
    // Without OpenGL the widget is painted like any QWidget. NOLINTNEXTLINE(bugprone-parent-virtual-call)
    return isValid() ? QGLWidget::paintEngine() : QWidget::paintEngine();
}

void ED3DWidget::showEvent(QShowEvent* pEvent)
{
    QGLWidget::showEvent(pEvent);
    if (!isValid()) {
        reportContextFailure(tr("There is no OpenGL context for the 3D view. It stays empty."));
    }
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
    if (makeContextCurrent()) {
        QGLWidget::resizeEvent(pEvent);
    }
}

void ED3DWidget::glDraw()
{
    if (makeContextCurrent()) {
        QGLWidget::glDraw();
    } else {
        reportContextFailure(m_bUsable
                                 ? tr("The OpenGL context of the 3D view is lost. It stays empty.")
                                 : tr("The OpenGL context of the 3D view has no fixed-function pipeline. "
                                      "It stays empty."));
    }
}

QImage ED3DWidget::grabFrameBuffer(bool bWithAlpha)
{
    if (!makeContextCurrent()) {
        return QImage();
    }
    if (!m_bInitialized) {
        glInit();
        resizeGL(int(width() * devicePixelRatioF()), int(height() * devicePixelRatioF()));
    }
    if (!m_bUsable) {
        return QImage();
    }
    drawScene();
    // Some drivers give the buffers a new size only when they are swapped. So after a change of size the
    // scene is drawn twice; a window that is not exposed cannot swap.
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
    // Neither OpenGL ES nor a core profile has the fixed pipeline; a context that is lost has no version.
    m_bUsable = pContext && !pContext->isOpenGLES() &&
                pContext->format().profile() != QSurfaceFormat::CoreProfile && glGetString(GL_VERSION);
    if (!m_bUsable) {
        return;
    }
    glClearColor(float(m_colorBackground.redF()), float(m_colorBackground.greenF()),
                 float(m_colorBackground.blueF()), 1.f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    // Four lights infinitely far away (w = 0), in two opposite pairs, so that no side of the scene is dark:
    // from the upper right and the lower left, and from front and back. As the model-view matrix is the
    // identity here, they stay with the viewer when the scene turns. Their colour is set before each drawing.
    const float aafPosition[4][4] = {{1, 1, 0, 0}, {-1, -1, 0, 0}, {-0.1f, -0.1f, 1, 0}, {0.1f, 0.1f, -1, 0}};
    const float afAmbient[4] = {0.1f, 0.1f, 0.1f, 1.f};
    glLightfv(GL_LIGHT0, GL_AMBIENT, afAmbient);
    for (GLenum i = 0; i < 4; ++i) {
        glLightfv(GL_LIGHT0 + i, GL_POSITION, aafPosition[i]);
        glEnable(GL_LIGHT0 + i);
    }
    glEnable(GL_COLOR_MATERIAL);  // otherwise light ignores the colours of the points
    setDrawingState();

    // Mesa's software renderers draw smooth points smaller than 2 pixels in the size 2 if all have one size.
    // If each has its own size, they draw them smaller, and some of the points are missing.
    glGetFloatv(GL_SMOOTH_POINT_SIZE_RANGE, m_afPointRange);
    const QByteArray strRenderer(reinterpret_cast<const char*>(glGetString(GL_RENDERER)));
    if (strRenderer.contains("llvmpipe") || strRenderer.contains("softpipe")) {
        m_afPointRange[0] = std::max(m_afPointRange[0], 2.f);
    }

    m_pPointProgram.reset();
    if (QOpenGLShaderProgram::hasOpenGLShaderPrograms(pContext)) {
        m_pPointProgram = std::make_unique<QOpenGLShaderProgram>();
        if (!m_pPointProgram->addShaderFromSourceCode(QOpenGLShader::Vertex, g_acPointShader) ||
            !m_pPointProgram->link()) {
            m_pPointProgram.reset();
        }
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
    if (!m_bUsable) {
        return;
    }
    drawScene();
    glFlush();
    swapBuffers();
    m_sizeSwapped = size();
}

}  // namespace tessera
