#include "view3d/ed3dwidget.h"

#include <QAction>
#include <QColorDialog>
#include <QContextMenuEvent>
#include <QLoggingCategory>
#include <QMenu>
#include <QMouseEvent>
#include <QOpenGLContext>
#include <QOpenGLShaderProgram>
#include <QPainter>
#include <QWheelEvent>
#include <QWindow>

#include <algorithm>
#include <cmath>

namespace {

Q_LOGGING_CATEGORY(g_logView3D, "tessera.view3d", QtWarningMsg)

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

// A list of coordinates in one call, in the colour that is set.
void drawArray(GLenum eMode, const std::vector<Vec3D>& vecPoint)
{
    static_assert(sizeof(Vec3D) == 3 * sizeof(float), "three floats in a row");
    if (vecPoint.empty())
        return;
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, GL_FLOAT, 0, vecPoint.data());
    glDrawArrays(eMode, 0, GLsizei(vecPoint.size()));
    glDisableClientState(GL_VERTEX_ARRAY);
}

}  // namespace

ED3DWidget::ED3DWidget(QWidget* pParent) : QGLWidget(pParent)
{
    setAutoBufferSwap(false);
    setFocusPolicy(Qt::ClickFocus);
    auto* pBackground = new QAction(tr("Background Color..."), this);
    connect(pBackground, &QAction::triggered, this, &ED3DWidget::changeBackGroundColor);
    addAction(pBackground);
    auto* pGrid = new QAction(tr("Canvas Grid Color..."), this);
    connect(pGrid, &QAction::triggered, this, &ED3DWidget::changeCanvasGridColor);
    addAction(pGrid);
    if (!isValid()) {  // a widget like any other: painted into the window's store
        setAttribute(Qt::WA_PaintOnScreen, false);
        setAttribute(Qt::WA_NoSystemBackground, false);
        if (windowHandle())
            windowHandle()->setSurfaceType(QSurface::RasterSurface);
    }
}

ED3DWidget::~ED3DWidget()
{
    if (m_pPointProgram)
        makeContextCurrent();
}

void ED3DWidget::setPoints(const QList<Peak3D>& listPeak)
{
    m_listPoint = listPeak;
    for (const Peak3D& peak : listPeak)
        if (peak.nID < 0) {
            m_listPoint.clear();
            break;
        }
    m_hashIdToPoint.clear();
    m_hashIdToPoint.reserve(m_listPoint.size());
    int nPoint = 0;
    for (const Peak3D& peak : qAsConst(m_listPoint))
        m_hashIdToPoint.insert(peak.nID, nPoint++);
    m_sizeClasses = PointSizeClasses();
    m_pfPointSize.clear();
    m_groups.reset(m_listPoint.size());
    setPointSizeRatio(m_dfPointSizeRatio);
    updatePointGroups();
}

const QList<Peak3D>& ED3DWidget::points() const
{
    return m_listPoint;
}

void ED3DWidget::setIndices(const QList<Peak3D>& listPeak)
{
    QHash<int, int> hashGiven;
    for (int i = 0; i < listPeak.size(); i++)
        hashGiven.insert(listPeak[i].nID, i);
    for (Peak3D& peak : m_listPoint) {
        const auto it = hashGiven.constFind(peak.nID);
        if (it != hashGiven.constEnd())
            peak.setHKL(listPeak[*it].dfH, listPeak[*it].dfK, listPeak[*it].dfL);
    }
}

void ED3DWidget::setLattice(const QList<Vec3D>& listCell)
{
    m_listCell = listCell.size() == 3 ? listCell : QList<Vec3D>();
    m_bLatticeGridValid = false;
    update();
}

void ED3DWidget::setLatticeRange(int nH, int nK, int nL)
{
    m_anLatticeRange[0] = nH;
    m_anLatticeRange[1] = nK;
    m_anLatticeRange[2] = nL;
    m_bLatticeGridValid = false;
    update();
}

void ED3DWidget::getLatticeRange(int& nH, int& nK, int& nL) const
{
    nH = m_anLatticeRange[0];
    nK = m_anLatticeRange[1];
    nL = m_anLatticeRange[2];
}

void ED3DWidget::setShowLatticePoints(bool bShow)
{
    m_bShowLatticePoints = bShow;
    update();
}

bool ED3DWidget::showLatticePoints() const
{
    return m_bShowLatticePoints;
}

void ED3DWidget::setShowLatticeLines(bool bShow)
{
    m_bShowLatticeLines = bShow;
    update();
}

bool ED3DWidget::showLatticeLines() const
{
    return m_bShowLatticeLines;
}

void ED3DWidget::setShowCanvasGrid(bool bShow)
{
    m_bShowCanvasGrid = bShow;
    update();
}

bool ED3DWidget::showCanvasGrid() const
{
    return m_bShowCanvasGrid;
}

double ED3DWidget::pointSizeRatio() const
{
    return m_dfPointSizeRatio;
}

float ED3DWidget::pointAlpha() const
{
    return m_fPointAlpha;
}

float ED3DWidget::canvasGridAlpha() const
{
    return m_fCanvasGridAlpha;
}

void ED3DWidget::resetView()
{
    m_camera.reset();
    update();
}

void ED3DWidget::viewAlong(const Vec3D& v)
{
    m_camera.viewAlong(v);
    update();
}

void ED3DWidget::rotateAroundScreenX(double dfAngle)
{
    m_camera.rotateAroundScreen(0, dfAngle);
    update();
}

void ED3DWidget::rotateAroundScreenY(double dfAngle)
{
    m_camera.rotateAroundScreen(1, dfAngle);
    update();
}

void ED3DWidget::rotateAroundScreenZ(double dfAngle)
{
    m_camera.rotateAroundScreen(2, dfAngle);
    update();
}

Vec3D ED3DWidget::getViewDirection() const
{
    return m_camera.viewDirection();
}

void ED3DWidget::getCamera(float* pfRotation, float& fPanX, float& fPanY, float& fZoom) const
{
    std::copy(m_camera.m_fRotation.begin(), m_camera.m_fRotation.end(), pfRotation);
    fPanX = m_camera.m_fPanX;
    fPanY = m_camera.m_fPanY;
    fZoom = m_camera.m_fZoom;
}

void ED3DWidget::setCamera(const float* pfRotation, float fPanX, float fPanY, float fZoom)
{
    std::copy(pfRotation, pfRotation + 16, m_camera.m_fRotation.begin());
    m_camera.m_fPanX = fPanX;
    m_camera.m_fPanY = fPanY;
    m_camera.m_fZoom = fZoom;
    update();
}

void ED3DWidget::insertPointGroup(int nIndex, const QString& strLabel, const QList<int>& listPoint,
                                  const QColor& color)
{
    m_groups.insertGroup(nIndex, strLabel, listPoint, color);
    updatePointGroups();
}

void ED3DWidget::insertPointGroupById(int nIndex, const QString& strLabel, const QList<int>& listId,
                                      const QColor& color)
{
    QList<int> listPoint;
    listPoint.reserve(listId.size());
    for (int nId : listId)
        listPoint.append(m_hashIdToPoint.value(nId, -1));
    insertPointGroup(nIndex, strLabel, listPoint, color);
}

void ED3DWidget::removePointGroups(const QList<int>& listGroup)
{
    if (m_groups.removeGroups(listGroup))
        updatePointGroups();
}

void ED3DWidget::mergePointGroups(const QList<int>& listGroup)
{
    if (m_groups.mergeGroups(listGroup))
        updatePointGroups();
}

bool ED3DWidget::setGroupLabel(int nIndex, const QString& strLabel)
{
    return m_groups.setLabel(nIndex, strLabel);
}

bool ED3DWidget::setGroupColor(int nIndex, const QColor& color)
{
    if (!m_groups.setColor(nIndex, color))
        return false;
    updatePointGroups();
    return true;
}

bool ED3DWidget::setGroupVisible(int nIndex, bool bVisible)
{
    if (!m_groups.setVisible(nIndex, bVisible))
        return false;
    updatePointGroups();
    return true;
}

void ED3DWidget::clearSelection()
{
    m_groups.clearSelection();
    updatePointGroups();
}

void ED3DWidget::updatePointGroups()
{
    if (m_groups.groupCount() == 0)
        return;
    m_groups.makeDisplay(m_display);
    m_bVerticesValid = false;
    update();
    emit pointDisplayDataChanged(this);
}

const QStringList& ED3DWidget::groupLabels() const
{
    return m_groups.labels();
}

const QList<QColor>& ED3DWidget::groupColors() const
{
    return m_groups.colors();
}

const QList<bool>& ED3DWidget::groupsVisible() const
{
    return m_groups.visible();
}

const QList<QList<int>>& ED3DWidget::groupPoints() const
{
    return m_groups.points();
}

const QList<int>& ED3DWidget::selectedPoints() const
{
    return m_groups.selected();
}

QColor ED3DWidget::nextGroupColor()
{
    return CPointGroups::nextGroupColor();
}

void ED3DWidget::setLightIntensity(int l)
{
    m_fLightIntensity = float(((l - 10) * 0.02 + 0.4) / 0.4);
    update();
}

void ED3DWidget::setLight(bool l)
{
    m_bLight = l;
    update();
}

void ED3DWidget::setAspectRatio(bool a)
{
    m_bKeepAspect = a;
    update();
}

void ED3DWidget::setBackgroundColor(QColor c)
{
    m_colorBackground = c;
    update();
}

void ED3DWidget::setCanvasGridColor(QColor c)
{
    m_colorCanvasGrid = c;
    update();
}

void ED3DWidget::setPointSizeRatio(double fRatio)
{
    m_dfPointSizeRatio = fRatio;
    if (m_listPoint.isEmpty())
        return;
    m_pfPointSize = pointSizes(m_listPoint, fRatio);
    m_bVerticesValid = false;
    update();
}

void ED3DWidget::calPointSizes()
{
    m_sizeClasses = pointSizeClasses(m_pfPointSize, m_display.m_pbPointVisible);
    qCDebug(g_logView3D) << "Point size range:" << m_sizeClasses.fSmallest << " - " << m_sizeClasses.fGreatest;
    size_t nTotal = 0;
    for (size_t k = 0; k < m_sizeClasses.m_fSizeClass.size(); k++)
        qCDebug(g_logView3D) << "Point sizes #" << k << ":" << m_sizeClasses.m_fSizeClass[k];
    for (size_t k = 0; k < m_sizeClasses.m_pnSizeClass.size(); k++) {
        nTotal += m_sizeClasses.m_pnSizeClass[k].size();
        qCDebug(g_logView3D) << k << ":" << m_sizeClasses.m_pnSizeClass[k].size();
    }
    qCDebug(g_logView3D) << "Total:" << nTotal;
}

void ED3DWidget::setPointAlpha(float fPointAlpha)
{
    m_fPointAlpha = fPointAlpha;
    m_bVerticesValid = false;
    update();
}

void ED3DWidget::setCanvasGridAlpha(float fCanvasGridAlpha)
{
    m_fCanvasGridAlpha = fCanvasGridAlpha;
    update();
}

void ED3DWidget::addSelectedPeaksAsNewGroup()
{
    if (m_groups.addSelectedAsNewGroup())
        updatePointGroups();
}

void ED3DWidget::changeBackGroundColor()
{
    const QColor color = QColorDialog::getColor(m_colorBackground, this);
    if (color.isValid())
        setBackgroundColor(color);
}

void ED3DWidget::changeCanvasGridColor()
{
    const QColor color = QColorDialog::getColor(m_colorCanvasGrid, this);
    if (color.isValid())
        setCanvasGridColor(color);
}

void ED3DWidget::setPlainDrawing(bool bPlain)
{
    m_bPlainDrawing = bPlain;
    update();
}

// ---- Mouse and keys

void ED3DWidget::mousePressEvent(QMouseEvent* pEvent)
{
    setFocus();
    m_nLastMouseX = pEvent->x();
    m_nLastMouseY = pEvent->y();
    m_ptMousePress = pEvent->pos();
    if (pEvent->button() == Qt::LeftButton && pEvent->modifiers() & Qt::ControlModifier) {
        m_nMouseMode = ModeBand;
        m_nBandStartX = m_nBandEndX = pEvent->x();
        m_nBandStartY = m_nBandEndY = pEvent->y();
    } else if (pEvent->button() == Qt::LeftButton && pEvent->modifiers() & Qt::ShiftModifier) {
        m_nMouseMode = ModePan;
        setCursor(Qt::SizeAllCursor);
    } else if (pEvent->button() == Qt::LeftButton) {
        m_nMouseMode = ModeRotate;
        m_vecTrackball = trackballVector(pEvent->x(), pEvent->y(), width(), height());
        setCursor(Qt::CrossCursor);
    } else if (pEvent->button() == Qt::RightButton) {
        m_nMouseMode = ModeZoom;
        setCursor(Qt::SizeVerCursor);
    }
}

void ED3DWidget::mouseReleaseEvent(QMouseEvent* pEvent)
{
    const int nMode = m_nMouseMode;
    m_nMouseMode = ModeNone;
    setCursor(Qt::ArrowCursor);
    if (nMode == ModeBand) {
        finishBand(pEvent->modifiers() & Qt::ShiftModifier);
        update();
    }
    // The menu waits for the release, as a press with the right button may become a zoom.
    if (nMode == ModeZoom && pEvent->button() == Qt::RightButton && pEvent->pos() == m_ptMousePress)
        showMenu(pEvent->globalPos());
}

void ED3DWidget::mouseDoubleClickEvent(QMouseEvent*)
{
    clearSelection();
}

void ED3DWidget::mouseMoveEvent(QMouseEvent* pEvent)
{
    const float fX = float(pEvent->x() - m_nLastMouseX), fY = float(pEvent->y() - m_nLastMouseY);
    const float fWidth = float(std::max(width(), 1)), fHeight = float(std::max(height(), 1));
    m_nLastMouseX = pEvent->x();
    m_nLastMouseY = pEvent->y();
    switch (m_nMouseMode) {
    case ModePan:
        m_camera.m_fPanX += 3.f * fX / fWidth;
        m_camera.m_fPanY -= 3.f * fY / fHeight;
        break;
    case ModeRotate: {
        const Vec3D v = trackballVector(pEvent->x(), pEvent->y(), width(), height());
        m_camera.rotateTrackball(m_vecTrackball, v);
        m_vecTrackball = v;
        break;
    }
    case ModeZoom:
        m_camera.m_fZoom += 3.f * fY / fHeight;
        break;
    case ModeBand:
        m_nBandEndX = pEvent->x();
        m_nBandEndY = pEvent->y();
        break;
    default:
        return;
    }
    update();
}

void ED3DWidget::wheelEvent(QWheelEvent* pEvent)
{
    m_camera.m_fZoom -= float(pEvent->angleDelta().y()) / float(std::max(height(), 1));
    pEvent->accept();
    update();
}

void ED3DWidget::keyPressEvent(QKeyEvent* pEvent)
{
    QWidget::keyPressEvent(pEvent);
}

void ED3DWidget::keyReleaseEvent(QKeyEvent* pEvent)
{
    if (pEvent->key() == Qt::Key_A && pEvent->modifiers() == Qt::ControlModifier)
        addSelectedPeaksAsNewGroup();
    else
        QWidget::keyReleaseEvent(pEvent);
}

void ED3DWidget::contextMenuEvent(QContextMenuEvent* pEvent)
{
    if (pEvent->reason() != QContextMenuEvent::Mouse)
        showMenu(pEvent->globalPos());
}

void ED3DWidget::showMenu(const QPoint& ptGlobal)
{
    auto* pMenu = new QMenu(this);
    pMenu->setAttribute(Qt::WA_DeleteOnClose);
    pMenu->addActions(actions());
    pMenu->popup(ptGlobal);
}

void ED3DWidget::finishBand(bool bAdd)
{
    if (m_nBandStartX == m_nBandEndX || m_nBandStartY == m_nBandEndY)
        return;
    const QList<int> listPicked = pick();
    m_groups.select(listPicked, bAdd);
    if (listPicked.size() == 1) {
        const Peak3D& peak = m_listPoint.at(listPicked.first());
        emit textMessage(QStringLiteral("ID=%L1, h.k.l.=(%L2,%L3,%L4),xyz=[%L5,%L6,%L7]; I=%L8, d=%L9, "
                                        "No.frame=%L10, xy=(%L11,%L12)")
                             .arg(peak.nID)
                             .arg(peak.dfH, 0, 'f', 2)
                             .arg(peak.dfK, 0, 'f', 2)
                             .arg(peak.dfL, 0, 'f', 2)
                             .arg(peak.fX3D, 0, 'f', 5)
                             .arg(peak.fY3D, 0, 'f', 5)
                             .arg(peak.fZ3D, 0, 'f', 5)
                             .arg(peak.dfIPoint, 0, 'f', 1)
                             .arg(1.0 / peak.dfDStar, 0, 'f', 3)
                             .arg(peak.nFrame + 1)
                             .arg(peak.dfX2D, 0, 'g')
                             .arg(peak.dfY2D, 0, 'g'));
    } else {
        emit textMessage(QStringLiteral("%L1 selected").arg(listPicked.size()));
    }
    updatePointGroups();
    emit selectionChanged(this);
}

QList<int> ED3DWidget::pick()
{
    const double dfRatio = devicePixelRatioF();
    const auto device = [dfRatio](int n) { return int(std::lround(n * dfRatio)); };
    int anViewport[4];
    squareViewport(int(width() * dfRatio), int(height() * dfRatio), m_bKeepAspect, anViewport);
    return pickPoints(cloudVertices(), m_camera,
                      bandRegion(device(m_nBandStartX), device(m_nBandStartY), device(m_nBandEndX),
                                 device(m_nBandEndY), anViewport));
}

const CloudVertices& ED3DWidget::cloudVertices()
{
    if (!m_bVerticesValid)
        m_vertices = makeCloudVertices(m_listPoint, m_pfPointSize, m_display, m_fPointAlpha, m_fScale);
    m_bVerticesValid = true;
    return m_vertices;
}

// ---- Context

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
        reportContextFailure(m_bUsable ? tr("The OpenGL context of the 3D view is lost. It stays empty.")
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
    if (m_sizeSwapped != size() && windowHandle() && windowHandle()->isExposed()) {  // some drivers take up a new size at the swap only
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

// ---- Drawing

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
        const float afDiffuse[4] = {fDiffuse, fDiffuse, fDiffuse, 1.f};  // alpha comes from the material alone
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
    // A thousand at a time: smooth points of one call cost Mesa's software renderer more, the more they are.
    const GLsizei nCount = GLsizei(vertices.vecVertex.size()), nBatch = 1024;
    for (GLint nFirst = 0; nFirst < nCount; nFirst += nBatch)
        glDrawArrays(GL_POINTS, nFirst, std::min(nBatch, nCount - nFirst));
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

const LatticeGrid& ED3DWidget::latticeGrid()
{
    if (!m_bLatticeGridValid || latticeGridNeedsCamera(m_anLatticeRange))
        m_latticeGrid = makeLatticeGrid(m_listCell, m_anLatticeRange, m_fScale, m_camera);
    m_bLatticeGridValid = true;
    return m_latticeGrid;
}

void ED3DWidget::drawLatticePoints()
{
    if (m_listCell.size() != 3)
        return;
    glPointSize(float(m_fLatticePointSize * m_dfViewRatio));
    setColor(m_colorLatticePoint, 1.f);
    drawArray(GL_POINTS, latticeGrid().vecPoint);
}

void ED3DWidget::drawLatticeLines()
{
    if (m_listCell.size() != 3)
        return;
    const LatticeGrid& grid = latticeGrid();
    glLineWidth(float(m_dfViewRatio));
    for (int i : {2, 1, 0}) {
        glColor4f(i == 0 ? 1.f : 0.f, i == 1 ? 1.f : 0.f, i == 2 ? 1.f : 0.f, 0.5f);
        drawArray(GL_LINES, grid.vecLine[i]);
    }
    glLineWidth(float(std::min(3.0 * m_camera.sizeFactor() * m_dfViewRatio, 1000.0)));
    for (int i = 0; i < 3; i++) {
        const Vec3D v = scaled(m_listCell[i], m_fScale);
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
