// ED3DWidget: a cloud of peaks in reciprocal space, drawn by OpenGL, with the reciprocal lattice over it.
#pragma once

#include "cloud/camera.h"
#include "cloud/cellframe.h"
#include "cloud/cloudslab.h"
#include "cloud/cloudvertices.h"
#include "cloud/latticegrid.h"
#include "cloud/nearestzone.h"
#include "cloud/pointgroups.h"
#include "cloud/pointpair.h"
#include "cloud/pointsizes.h"
#include "geometry/reciprocalbasis.h"
#include "records/peak3d.h"
#include "records/vec3d.h"

#include <QColor>
#include <QGLWidget>
#include <QHash>
#include <QList>
#include <QStringList>

#include <array>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

class QAction;
class QOpenGLShaderProgram;

namespace tessera {

/// Shows points of reciprocal space (Å⁻¹, laboratory frame) and lets the user turn, select and group them.
///
/// The size of a point grows with the logarithm of its intensity, so that weak and strong reflections are
/// seen in one picture. The camera outlives the points: setPoints() changes groups and selection only.
/// Without an OpenGL context the widget paints a note instead, says so once by contextFailed(), and all that
/// isn't drawing goes on working.
class ED3DWidget : public QGLWidget {
    Q_OBJECT

public:
    /// An empty view that looks along the beam, with the grid and without a lattice.
    explicit ED3DWidget(QWidget* pParent = nullptr);
    /// Frees what belongs to the context.
    ~ED3DWidget() override;

    /// Takes the points, empties the selection and leaves group 0 alone. A list with a negative nID can't be
    /// looked up by nID and leaves the view empty.
    ///
    /// @param listGroup  if not empty, the groups of the points; the first becomes group 0, which takes the
    ///                   points that no other holds. Who listens to the view sees points and groups change in
    ///                   one step
    void setPoints(const QList<Peak3D>& listPeak, const QList<PointGroup>& listGroup = {});
    /// The points shown, in the order that indices of points refer to.
    const QList<Peak3D>& points() const;
    /// Copies dfH, dfK, dfL of each given record to every point of equal nID.
    void setIndices(const QList<Peak3D>& listPeak);

    /// Draws the lattice of a*, b*, c* (Å⁻¹); any other count of vectors: none.
    void setLattice(const QList<Vec3D>& listCell);
    /// Draws as many cells along a*, b*, c*, on both sides of the origin.
    void setLatticeRange(int nH, int nK, int nL);
    /// These three numbers.
    void getLatticeRange(int& nH, int& nK, int& nL) const;
    /// Shows or hides the points of the lattice.
    void setShowLatticePoints(bool bShow);
    /// Whether they are to be seen, as far as there is a lattice.
    bool showLatticePoints() const;
    /// Shows or hides its lines.
    void setShowLatticeLines(bool bShow);
    /// Whether these are to be seen.
    bool showLatticeLines() const;
    /// Shows or hides the grid behind the points.
    void setShowCanvasGrid(bool bShow);
    /// Whether the grid is shown.
    bool showCanvasGrid() const;
    /// Factor on the sizes of the points.
    double pointSizeRatio() const;
    /// Opacity of the points, 0 to 1.
    float pointAlpha() const;
    /// Opacity of the grid, 0 to 1.
    float canvasGridAlpha() const;

    /// Camera as at the start: no turn, no pan, no zoom.
    void resetView();
    /// Turns the direction v (reciprocal space) towards the viewer; any turn before it is dropped.
    void viewAlong(const Vec3D& v);
    /// Turns the scene about the horizontal axis of the screen, degrees.
    void rotateAroundScreenX(double dfAngle);
    /// The same about the vertical axis, degrees.
    void rotateAroundScreenY(double dfAngle);
    /// The same about the axis towards the viewer, degrees.
    void rotateAroundScreenZ(double dfAngle);
    /// Unit vector in reciprocal space that points at the viewer.
    Vec3D getViewDirection() const;
    /// Rotation (16 numbers, column by column), pan and zoom in Å⁻¹.
    void getCamera(float* pfRotation, float& fPanX, float& fPanY, float& fZoom) const;
    /// Takes these numbers from another view; a zoom that comes too close is held back.
    void setCamera(const float* pfRotation, float fPanX, float fPanY, float fZoom);

    /// Inserts a shown group of point indices at nIndex, or at the end where nIndex lies past it.
    void insertPointGroup(int nIndex, const QString& strLabel, const QList<int>& listPoint,
                          const QColor& color);
    /// The same by nID; one that no point has is dropped.
    void insertPointGroupById(int nIndex, const QString& strLabel, const QList<int>& listId,
                              const QColor& color);
    /// Removes the given groups but group 0; their points go back to group 0 where no other group holds them.
    void removePointGroups(const QList<int>& listGroup);
    /// Unites the given groups under label, colour and place of the first of them.
    void mergePointGroups(const QList<int>& listGroup);
    /// Name of a group in tables; false for a bad index. Nobody is told.
    bool setGroupLabel(int nIndex, const QString& strLabel);
    /// Colour of the points of a group; false for a bad index.
    bool setGroupColor(int nIndex, const QColor& color);
    /// Shows or hides the points of a group; false for a bad index.
    bool setGroupVisible(int nIndex, bool bVisible);
    /// Selects no point.
    void clearSelection();
    /// Works out anew what is drawn of the points, and tells it by pointDisplayDataChanged().
    void updatePointGroups();
    /// Label of each group.
    const QStringList& groupLabels() const;
    /// Colour of each group.
    const QList<QColor>& groupColors() const;
    /// Whether each group is shown.
    const QList<bool>& groupsVisible() const;
    /// Indices of the points of each group; a point can be in several.
    const QList<QList<int>>& groupPoints() const;
    /// Indices of the selected points.
    const QList<int>& selectedPoints() const;

    // What another view has chosen: ed3dwidget_choice.cpp
    /// Selects these points in place of those selected, and no ring is drawn; selectionChanged() stays away.
    void selectPoints(const QList<int>& listPoint);
    /// Draws a ring around a point; −1: around none. A ring goes with its points.
    void ringPoint(int nPoint);
    /// The point with the ring, −1: none.
    int ringedPoint() const { return m_nRinged; }
    /// Indices of the points of these numbers, ascending; a number that no point has gives none.
    QList<int> pointsOfIds(const std::vector<int>& vecId);
    /// Whether a point is drawn even when it is not selected: some group that it is in is shown.
    bool isPointInShownGroup(int nPoint) const;
    /// The drawn point nearest to a place of the widget, within some pixels; of equals the one in front, −1:
    /// none.
    int pointAt(const QPoint& pt);
    /// Where a point is drawn, pixels of the widget.
    QPointF placeOfPoint(int nPoint) const;

    // Slabs: ed3dwidget_slab.cpp
    /// Draws and picks only the points near a layer of the lattice that is set; none: all points. Without a
    /// lattice all are drawn. The selection stays as it is, whatever of it is drawn.
    void setSlab(const std::optional<CloudSlab>& slab);
    /// As it was set, whether there is a lattice or not.
    const std::optional<CloudSlab>& slab() const { return m_slab; }
    /// Whether no slab hides a point.
    bool isPointInSlab(int nPoint) const;
    /// The layers that the points reach in a direction u, v, w, from the least to the greatest; 0 and 0
    /// without a lattice.
    std::pair<int, int> slabLevels(const std::array<int, 3>& anDirection) const;

    // Views and distances: ed3dwidget_overlay.cpp
    /// Zooms so that all points drawn are seen however the scene is turned, and takes the pan back. Does
    /// nothing without points.
    void fitView();
    /// The zone of the lattice nearest to the direction of view; none without a lattice.
    std::optional<NearestZone> zoneInView() const;
    /// Turns to that zone, on the shortest way.
    void turnToNearestZone();
    /// u·a + v·b + w·c of the lattice, Å, to look along; none without a lattice.
    std::optional<Vec3D> zoneDirection(const std::array<int, 3>& anIndex) const;
    /// Whether a left drag from point to point measures, as one with the middle button always does.
    void setMeasuring(bool bMeasure) { m_bMeasuring = bMeasure; }
    bool isMeasuring() const { return m_bMeasuring; }  ///< whether it does
    /// Draws a line between two points and tells of them in the view and by textMessage(). Where one of the
    /// numbers is no point, or both are the same, what was measured goes.
    void measure(int nFrom, int nTo);
    /// The two points, or −1 and −1.
    const std::array<int, 2>& measuredPoints() const { return m_anMeasured; }
    /// What the corner of the view says, line by line.
    QStringList overlayLines();

    /// The colour for the next new group; counts over all views for as long as the program runs.
    static QColor nextGroupColor();

    /// The picture as it would be drawn now, in device pixels, also of a view that is covered. Null without a
    /// context. (Hides that of QGLWidget, which reads what the swap of buffers left behind.)
    QImage grabFrameBuffer(bool bWithAlpha = false);
    /// Draws point by point, as is done without shaders and in light, instead of all in one call.
    void setPlainDrawing(bool bPlain);
    /// None without a context, so that a painter draws into the window's own store.
    QPaintEngine* paintEngine() const override;

public slots:
    /// Diffuse light of 0.4 at 10, 0.02 more for each step.
    void setLightIntensity(int l);
    /// Whether a light falls on the scene; the points are then drawn one by one.
    void setLight(bool l);
    /// Whether a shape keeps its proportions where the widget is no square.
    void setAspectRatio(bool a);
    /// Colour behind everything.
    void setBackgroundColor(const QColor& c);
    /// Colour of the grid.
    void setCanvasGridColor(const QColor& c);
    /// Factor on the sizes of the points, which are worked out anew.
    void setPointSizeRatio(double fRatio);
    /// Sorts the sizes of the shown points into classes, and writes them to the debug log.
    void calPointSizes();
    /// Opacity of the points, 0 to 1.
    void setPointAlpha(float fPointAlpha);
    /// Opacity of the grid, 0 to 1.
    void setCanvasGridAlpha(float fCanvasGridAlpha);
    /// Makes the selected points a group of their own, in the next colour.
    void addSelectedPeaksAsNewGroup();
    /// Asks for the colour of the background.
    void changeBackGroundColor();
    /// Asks for the colour of the grid.
    void changeCanvasGridColor();
    /// Clears the selection; there is one way of displaying only.
    void setDisplayMode(QAction* pAction);

signals:
    /// After each rubber band that was drawn.
    void selectionChanged(ED3DWidget* widget);
    /// A click without a drag, on a point or, with −1, beside all of them.
    void pointClicked(ED3DWidget* widget, int nPoint, Qt::KeyboardModifiers modifiers);
    /// A double click has emptied the selection.
    void selectionDropped(ED3DWidget* widget);
    /// Points, groups, selection or colours have changed.
    void pointDisplayDataChanged(ED3DWidget* widget);
    /// There is another lattice, or none any more.
    void latticeChanged(ED3DWidget* widget);
    /// For the status bar.
    void textMessage(QString strMessage);
    /// Once, when there is no OpenGL context to draw with; for the log.
    void contextFailed(QString strMessage);

protected:
    void mousePressEvent(QMouseEvent* pEvent) override;
    void mouseReleaseEvent(QMouseEvent* pEvent) override;
    void mouseDoubleClickEvent(QMouseEvent* pEvent) override;
    void mouseMoveEvent(QMouseEvent* pEvent) override;
    void wheelEvent(QWheelEvent* pEvent) override;
    void keyPressEvent(QKeyEvent* pEvent) override;
    void keyReleaseEvent(QKeyEvent* pEvent) override;
    void contextMenuEvent(QContextMenuEvent* pEvent) override;
    void showEvent(QShowEvent* pEvent) override;
    void paintEvent(QPaintEvent* pEvent) override;
    void resizeEvent(QResizeEvent* pEvent) override;
    void initializeGL() override;
    void resizeGL(int w, int h) override;
    void paintGL() override;
    void glDraw() override;

private:
    /// What a drag of the mouse does.
    enum class MouseMode { None, Pan, Rotate, Zoom, Band, Measure };

    /// What of the lattice a camera sees.
    struct GridOfCamera {
        LatticeGrid grid;
        CCamera camera;
    };

    /// Sets a member that only the drawing reads.
    template <class Value>
    void setShown(Value& member, const Value& value)
    {
        member = value;
        update();
    }
    void reportContextFailure(const QString& strMessage);
    bool makeContextCurrent();
    void showMenu(const QPoint& ptGlobal);
    void askForColor(const QColor& colorNow, void (ED3DWidget::*pSetter)(const QColor&));
    void finishBand(bool bAdd);
    QList<int> pick();
    QPointF placeOfPoint(int nPoint, const QMatrix4x4& matrix) const;
    const CloudVertices& cloudVertices();
    bool isPointDrawn(int nPoint) const;
    bool startMeasuring(const QPoint& pt);
    void measureTo(const QPoint& pt);
    void drawOverlay();

    void drawScene();
    void setDrawingState();
    void drawAxesCross();
    void drawPoints();
    void drawPointsByShader();
    void drawPointsOneByOne();
    void drawCanvasGrid();
    void drawLatticePoints();
    void drawLatticeLines();
    std::vector<Vec3D> latticeInSlab(const std::vector<Vec3D>& vecPlace, size_t nEach) const;
    void drawRubberBand();
    void drawRing();
    const LatticeGrid& latticeGrid(const ReciprocalBasis& basis);

    CCamera m_camera;
    float m_fScale = 1.f;  ///< factor on all coordinates drawn
    int m_nViewWidth = 0;  ///< of the widget, device pixels
    int m_nViewHeight = 0;
    double m_dfViewRatio = 1.0;  ///< device pixels per pixel of the widget, at the last resizeGL()
    bool m_bKeepAspect = true;
    bool m_bLight = false;
    float m_fLightIntensity = 1.f;  ///< 1 is a diffuse light of 0.4
    QColor m_colorBackground = Qt::black;
    QColor m_colorCanvasGrid = Qt::white;

    QList<Peak3D> m_listPoint;
    QHash<int, int> m_hashIdToPoint;  ///< nID to index in m_listPoint; made when it is first asked
    std::vector<std::pair<int, int>> m_vecIdToPoint;  ///< the same with all points of an nID, by nID
    int m_nRinged = -1;                               ///< point with a ring
    std::vector<float> m_pfPointSize;
    CPointGroups m_groups;
    PointDisplay m_display;
    PointSizeClasses m_sizeClasses;
    std::optional<CloudVertices> m_vertices;  ///< none: to be made from points, sizes and display
    double m_dfPointSizeRatio = 2.0;
    float m_fPointAlpha = 0.8f;
    float m_fCanvasGridAlpha = 0.8f;

    std::optional<CloudSlab> m_slab;             ///< none: all points are drawn
    int m_nSlabShown = 0, m_nSlabOf = 0;         ///< points drawn, and that would be without the slab
    std::array<int, 2> m_anMeasured = {-1, -1};  ///< two points; the second is −1 while there is none yet
    QPoint m_ptMeasureEnd;                       ///< of the line while it ends at no point
    bool m_bMeasuring = false;

    std::optional<ReciprocalBasis> m_lattice;  ///< none: no lattice is drawn
    std::optional<CCellFrame> m_cellFrame;     ///< of m_lattice; none where it is none of a cell
    int m_nLatticeRangeH = 1;
    int m_nLatticeRangeK = 1;
    int m_nLatticeRangeL = 1;
    bool m_bShowLatticePoints = false;
    bool m_bShowLatticeLines = false;
    bool m_bShowCanvasGrid = true;
    float m_fLatticePointSize = 5.f;
    QColor m_colorLatticePoint = Qt::green;
    std::optional<GridOfCamera> m_latticeGrid;  ///< none: to be made for lattice and range

    MouseMode m_nMouseMode = MouseMode::None;
    int m_nLastMouseX = 0;
    int m_nLastMouseY = 0;
    QPoint m_ptMousePress;
    bool m_bMouseDragged = false;             ///< the mouse has left the press by more than a click's jitter
    bool m_bGroupKeyHeld = false;             ///< A went down with Control and is still down
    float m_fTrackball[3] = {0.f, 0.f, 1.f};  ///< last trackball vector
    float m_fTrackballAxis[3] = {};           ///< last axis that the mouse turned about
    int m_nBandStartX = 0;
    int m_nBandStartY = 0;
    int m_nBandEndX = 0;
    int m_nBandEndY = 0;

    std::unique_ptr<QOpenGLShaderProgram> m_pPointProgram;  ///< none where shaders don't work
    float m_afPointRange[2] = {1.f, 1.f};                   ///< sizes that the driver draws, pixels
    bool m_bPlainDrawing = false;
    bool m_bInitialized = false;  ///< initializeGL() has run
    bool m_bUsable = true;        ///< the context knows the fixed pipeline
    QSize m_sizeSwapped;          ///< of the widget at the last swap of buffers
    bool m_bFailureReported = false;
};

}  // namespace tessera
