#include "view3d/ed3dwidget.h"

#include <QAction>
#include <QColorDialog>
#include <QLoggingCategory>
#include <QOpenGLShaderProgram>
#include <QWindow>

#include <algorithm>

namespace tessera {

namespace {

Q_LOGGING_CATEGORY(g_logView3D, "tessera.view3d")

}  // namespace

ED3DWidget::ED3DWidget(QWidget* pParent) : QGLWidget(pParent)
{
    setAutoBufferSwap(false);
    setAutoFillBackground(false);  // a painter would clear what OpenGL has drawn
    setFocusPolicy(Qt::ClickFocus);
    auto* pBackground = new QAction(tr("Background Color..."), this);
    connect(pBackground, &QAction::triggered, this, &ED3DWidget::changeBackGroundColor);
    pBackground->setWhatsThis(tr("Chooses the colour behind the points."));
    addAction(pBackground);
    auto* pGrid = new QAction(tr("Canvas Grid Color..."), this);
    connect(pGrid, &QAction::triggered, this, &ED3DWidget::changeCanvasGridColor);
    pGrid->setWhatsThis(tr("Chooses the colour of the grid in the background."));
    addAction(pGrid);
    auto* pReset = new QAction(tr("Reset View"), this);
    pReset->setShortcut(QKeySequence(QStringLiteral("Ctrl+Home")));
    connect(pReset, &QAction::triggered, this, &ED3DWidget::resetView);
    pReset->setWhatsThis(tr("Resets rotation, shift and zoom."));
    addAction(pReset);
    if (!isValid()) {  // a widget like any other: painted into the window's store
        setAttribute(Qt::WA_PaintOnScreen, false);
        setAttribute(Qt::WA_NoSystemBackground, false);
        if (windowHandle()) {
            windowHandle()->setSurfaceType(QSurface::RasterSurface);
        }
    }
}

ED3DWidget::~ED3DWidget()
{
    if (m_pPointProgram) {
        makeContextCurrent();
    }
}

void ED3DWidget::setPoints(const QList<Peak3D>& listPeak, const QList<PointGroup>& listGroup)
{
    m_listPoint = listPeak;
    for (const Peak3D& peak : listPeak) {
        if (peak.nID < 0) {
            m_listPoint.clear();
            break;
        }
    }
    m_hashIdToPoint = {};
    m_vecIdToPoint.clear();
    m_nRinged = -1;
    m_anMeasured = {-1, -1};
    m_sizeClasses = PointSizeClasses();
    m_pfPointSize.clear();
    m_groups.reset(m_listPoint.size());
    m_groups.setGroups(listGroup);
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
    for (int i = 0; i < listPeak.size(); ++i) {
        hashGiven.insert(listPeak[i].nID, i);
    }
    for (Peak3D& peak : m_listPoint) {
        const auto it = hashGiven.constFind(peak.nID);
        if (it != hashGiven.constEnd()) {
            peak.setHKL(listPeak[*it].dfH, listPeak[*it].dfK, listPeak[*it].dfL);
        }
    }
}

void ED3DWidget::setShowLatticePoints(bool bShow)
{
    setShown(m_bShowLatticePoints, bShow);
}

bool ED3DWidget::showLatticePoints() const
{
    return m_bShowLatticePoints;
}

void ED3DWidget::setShowLatticeLines(bool bShow)
{
    setShown(m_bShowLatticeLines, bShow);
}

bool ED3DWidget::showLatticeLines() const
{
    return m_bShowLatticeLines;
}

void ED3DWidget::setShowCanvasGrid(bool bShow)
{
    setShown(m_bShowCanvasGrid, bShow);
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
    std::copy(m_camera.m_fRotation.constData(), m_camera.m_fRotation.constData() + 16, pfRotation);
    fPanX = m_camera.m_fPanX;
    fPanY = m_camera.m_fPanY;
    fZoom = m_camera.m_fZoom;
}

void ED3DWidget::setCamera(const float* pfRotation, float fPanX, float fPanY, float fZoom)
{
    std::copy(pfRotation, pfRotation + 16, m_camera.m_fRotation.data());
    m_camera.m_fPanX = fPanX;
    m_camera.m_fPanY = fPanY;
    m_camera.setZoom(fZoom);
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
    if (m_hashIdToPoint.isEmpty()) {
        m_hashIdToPoint.reserve(m_listPoint.size());
        for (int i = 0; i < m_listPoint.size(); ++i) {
            m_hashIdToPoint.insert(m_listPoint.at(i).nID, i);
        }
    }
    QList<int> listPoint;
    listPoint.reserve(listId.size());
    for (int nId : listId) {
        listPoint.append(m_hashIdToPoint.value(nId, -1));
    }
    insertPointGroup(nIndex, strLabel, listPoint, color);
}

void ED3DWidget::removePointGroups(const QList<int>& listGroup)
{
    if (m_groups.removeGroups(listGroup)) {
        updatePointGroups();
    }
}

void ED3DWidget::mergePointGroups(const QList<int>& listGroup)
{
    if (m_groups.mergeGroups(listGroup)) {
        updatePointGroups();
    }
}

bool ED3DWidget::setGroupLabel(int nIndex, const QString& strLabel)
{
    return m_groups.setLabel(nIndex, strLabel);
}

bool ED3DWidget::setGroupColor(int nIndex, const QColor& color)
{
    if (!m_groups.setColor(nIndex, color)) {
        return false;
    }
    updatePointGroups();
    return true;
}

bool ED3DWidget::setGroupVisible(int nIndex, bool bVisible)
{
    if (!m_groups.setVisible(nIndex, bVisible)) {
        return false;
    }
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
    if (m_groups.groupCount() == 0) {
        return;
    }
    m_groups.makeDisplay(m_display);
    m_vertices.reset();
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
    setShown(m_fLightIntensity, float(((l - 10) * 0.02 + 0.4) / 0.4));
}

void ED3DWidget::setLight(bool l)
{
    setShown(m_bLight, l);
}

void ED3DWidget::setAspectRatio(bool a)
{
    setShown(m_bKeepAspect, a);
}

void ED3DWidget::setBackgroundColor(const QColor& c)
{
    setShown(m_colorBackground, c);
}

void ED3DWidget::setCanvasGridColor(const QColor& c)
{
    setShown(m_colorCanvasGrid, c);
}

void ED3DWidget::setPointSizeRatio(double fRatio)
{
    m_dfPointSizeRatio = fRatio;
    if (m_listPoint.isEmpty()) {
        return;
    }
    m_pfPointSize = pointSizes(m_listPoint, fRatio);
    m_vertices.reset();
    update();
}

void ED3DWidget::calPointSizes()
{
    m_sizeClasses = pointSizeClasses(m_pfPointSize, m_display.m_pbPointVisible);
    qCDebug(g_logView3D) << "Point size range:" << m_sizeClasses.fSmallest << " - "
                         << m_sizeClasses.fGreatest;
    int nTotal = 0;
    for (size_t k = 0; k < m_sizeClasses.m_fSizeClass.size(); ++k) {
        qCDebug(g_logView3D) << "Point sizes #" << k << ":" << m_sizeClasses.m_fSizeClass[k];
    }
    for (size_t k = 0; k < m_sizeClasses.m_nSizeClassCount.size(); ++k) {
        nTotal += m_sizeClasses.m_nSizeClassCount[k];
        qCDebug(g_logView3D) << k << ":" << m_sizeClasses.m_nSizeClassCount[k];
    }
    qCDebug(g_logView3D) << "Total:" << nTotal;
}

void ED3DWidget::setPointAlpha(float fPointAlpha)
{
    m_fPointAlpha = fPointAlpha;
    m_vertices.reset();
    update();
}

void ED3DWidget::setCanvasGridAlpha(float fCanvasGridAlpha)
{
    setShown(m_fCanvasGridAlpha, fCanvasGridAlpha);
}

void ED3DWidget::addSelectedPeaksAsNewGroup()
{
    if (m_groups.addSelectedAsNewGroup()) {
        updatePointGroups();
    }
}

void ED3DWidget::changeBackGroundColor()
{
    askForColor(m_colorBackground, &ED3DWidget::setBackgroundColor);
}

void ED3DWidget::changeCanvasGridColor()
{
    askForColor(m_colorCanvasGrid, &ED3DWidget::setCanvasGridColor);
}

// open() and not exec(), whose event loop would hold up a run that handles events.
void ED3DWidget::askForColor(const QColor& colorNow, void (ED3DWidget::*pSetter)(const QColor&))
{
    auto* pDialog = new QColorDialog(colorNow, this);
    pDialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(pDialog, &QColorDialog::colorSelected, this, [this, pSetter](const QColor& color) {
        if (color.isValid()) {
            (this->*pSetter)(color);
        }
    });
    pDialog->open();
}

void ED3DWidget::setDisplayMode(QAction*)
{
    clearSelection();
}

void ED3DWidget::setPlainDrawing(bool bPlain)
{
    setShown(m_bPlainDrawing, bPlain);
}

}  // namespace tessera
