// MainWindow: the hub of the workbench. It owns the data set and every panel; the slots of a
// subsystem lie in that subsystem's folder (mainwindow_*.cpp).
#pragma once

#include "dataset/dataset.h"
#include "frames/peakfilters.h"
#include "geometry/matrix3.h"
#include "records/buttonstatus.h"
#include "records/hklref.h"
#include "records/runparameters.h"

#include <QColor>
#include <QLocale>
#include <QMainWindow>
#include <QMap>
#include <QModelIndex>
#include <QPointer>
#include <QTimer>

#include <functional>
#include <memory>
#include <vector>

class QComboBox;
class QDockWidget;
class QGraphicsLineItem;
class QGraphicsPolygonItem;
class QProgressBar;
class QPushButton;
class QSettings;
class QSlider;
class QSpinBox;
class QSplashScreen;
class QTableView;
class QTableWidget;
class QToolBox;
class QwtPlot;
class QwtPlotCurve;
class QwtPlotMarker;

namespace tessera {

class BaseImgView;
class CellPage;
class CircleItem;
class CrossItem;
class ED3DWidget;
class ExtractionPage;
class CRunReport;
class FramesPage;
class GuideWindow;
class MergingPage;
class MessageEdit;
class MySortFilterProxyModel;
class OriginalImgScene;
class PeakSearchPage;
class RefinementPage;
class ShiftPage;
class TabWidget;
class TableModel;
class TextDataWidget;
class TextItem;
struct IndexingResult;
struct PointGroup;
struct PositionRefinementOptions;
struct TiltRefinementOptions;
class View3DPage;
class WindowActions;
class WindowReport;

class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(QWidget* pParent = nullptr);
    ~MainWindow() override;

    /// Opens projects, images or a text reflection list by the suffix of the first file.
    void openFiles(const QStringList& listFile);
    /// Rereads the recent list into the File menu.
    void updateRecentMenu();
    /// Gives the window's own splash screen its picture.
    void setSplashPixmap(const QPixmap& pixmap);

protected:
    void closeEvent(QCloseEvent* pEvent) override;
    void dragEnterEvent(QDragEnterEvent* pEvent) override;
    void dropEvent(QDropEvent* pEvent) override;

public slots:
    // Shell: src/window
    void newProject();
    void open();
    void openRecentFile();
    void copyWindow();
    void zoomIn();
    void zoomOut();
    void paletteChanged();
    void showGuide();
    void about();
    void updateControls(int nPageIndex);
    void updateScale(int nIndex);
    void scaleTextEntered();
    void toolBoxPageChanged(int nIndex);
    void statusBarMessage(const QString& str);

    // Frame list and navigation: src/frames/mainwindow_framelist.cpp
    void fillFileTable();
    void switchToImgIndex(int nIndex);
    void currentFileChangedInFileList(int nCurrentRow);
    void refreshImageView();
    void playImageForward();
    void playImageBackward();
    void stopImagePlay();
    void playOneImage();
    void imagePlayIntervalChanged(int nNewInterval);

    // Side files: src/frames/mainwindow_sidefiles.cpp, src/reciprocal/mainwindow_cell.cpp
    void saveEDShift();
    void loadEDShift();
    void loadRawPeaks();
    void saveRawPeaks();
    void exportUnitCell();
    void loadUnitCell();
    void loadPeakHuntingMask();
    void clearPeakHuntingMask();
    void showPeakHuntingMask(bool bShow);

    // Runs: src/frames/mainwindow_shiftevaluation.cpp, mainwindow_peakhunting.cpp
    void selSizeChanged2();
    void selRectChanged(QRectF rectSel);
    void runShiftEvaluation();
    void runPeakHunting();
    void testCurrentPatternForPeaks();
    void peakHuntingParametersChanged();
    void visualMoniteringPeakHuntingToggled(bool bEnabled);
    void outputSmoothedImage(const QString& strFileName);

    // Overlay of the frame view: src/frameview/mainwindow_marks.cpp
    void showCrossMarks(const QList<QPointF>& listPos, const QColor& color, int nSize);
    void clearCrossMarks();
    void showCircleMarks(const QList<QPointF>& listPos);
    void clearCircleMarks();
    void showPeakText();
    void clearTextMarks();
    void enableShowPeaks(bool bShow);
    void mouseMoving(QPointF posF);

    // Mapping and merging: src/reciprocal/mainwindow_mapping.cpp
    void transformPeaksTo3D();
    void showPeaksIn3D();
    void recalculate3DPeakPositionsAndUpdateView();
    void peakReduction3D();
    void showRotationAxisLine();

    // The unit cell: src/reciprocal/mainwindow_cell.cpp
    void runUnitCellHunting();
    void updateUnitCell();
    void updateUnitCellInfo();
    void switchtoManualUnitCellHunting(bool bTrue);
    void unitCellHuntingManualAssignRA();
    void unitCellHuntingManualAssignRB();
    void unitCellHuntingManualAssignRC();
    void unitCellHuntingManualUpdateRA();
    void unitCellHuntingManualUpdateRB();
    void unitCellHuntingManualUpdateRC();

    // Its transformation: src/crystal/mainwindow_transformation.cpp
    bool transformUnitCell();
    void transformUnitCellClicked();
    void testUnitCellToggled(bool bChecked);
    void unitCellTransformatinMatrixEdited();

    // Indexing and reflection lists: src/crystal/mainwindow_indexing.cpp
    void runIndexing();
    bool loadShelxFile();

    // Point groups: src/reciprocal/mainwindow_groups.cpp
    void addSelectedAsNewGroup();
    void removeSelectedPeakGroups();
    void mergeSelectedPeakGroups();
    void resetSelectedPeakGroups();
    void exportSelectedPeak3D();
    void exportPeak3D();
    void restorePointGroups();
    void updatePeakGroupsFromView();
    void pointGroupTableCellClicked(int nRow, int nColumn);
    void pointGroupTableLabelEdidted(int nRow, int nColumn);
    void ed3dViewPointDisplayDataChanged(ED3DWidget* view);

    // Peak table: src/reciprocal/mainwindow_peaktable.cpp
    void updatePeakTable(QList<Peak3D> listPeak);
    void updatePeakTableColumnVisability();
    void copySelectedReflectionsInPeakTable();
    void copyAllReflectionsInPeakTable();

    // Curve window: src/frames/mainwindow_curves.cpp
    bool showPeakInCurve(int nIndex);
    void updateCurveWindow(QModelIndex index);
    void copyIntensityCurveData();
    void copyIntensityCurveWindow();

    // Measured again on the frames: src/frames/mainwindow_remeasurement.cpp. All runs of these three groups
    // go by m_bRunning: a call during one of them stops it.
    bool fitDirectBeam();
    QVector<QList<Peak3D>> refinePeakPosition(const QVector<QList<Peak3D>>& peaksSorted);
    QVector<std::vector<std::vector<double>>> refinePeakPositionOnFrame(QVector<QList<Peak3D>>& peaksSorted);
    bool extractIntensity(QVector<QList<Peak3D>>& peaksSorted);
    void runIntensityExtraction();
    void runUnitCellRefinementFromLoadingData();

    // Refinements: src/crystal/mainwindow_refinement.cpp
    void runUnitCellRefinement();
    void refineDirectBeamPosition();
    void refineBasisVectors();
    void refineUnitCellUsingFrameNo();

    // Tests: src/reciprocal/mainwindow_testruns.cpp
    void testRotationAxis();
    void testFindCubicCell();
    void refineCubicUnitCell();
    void testStreching();
    void test2DIndexing();
    void testIndexing();

    // Expected positions: src/reciprocal/mainwindow_prediction.cpp
    void showEstimatedPeakPosition();
    void updateExpectedPeakPositionFromOrientationMatrix();

    // Exports: src/frames/mainwindow_exports.cpp, src/reciprocal/mainwindow_volume.cpp,
    // src/view3d/mainwindow_movie.cpp
    void saveCurrent();
    void saveSeries();
    void exportSMVImages();
    void exportBinnedFrames();
    void export3DReciprocalVolmue();
    void grab3DMovieFrames();

    // The 3D view in the current tab: src/view3d/mainwindow_view3d.cpp
    void update3DViewControls();
    void pointSize3DChanged(double dfNewSize);
    void pointAlpha3DChanged(int nTransparency);
    void canvasGridTransparencyChanged(int nTransparency);
    void canvasGridToggled(bool bEnable);
    void unitCellLatticePointsToggled(bool bEnable);
    void unitCellLatticeLinesToggled(bool bEnable);
    void unitCellLatticeRangeChanged();
    void rotateAlongRA();
    void rotateAlongRB();
    void rotateAlongRC();
    void rotateAlongA();
    void rotateAlongB();
    void rotateAlongC();
    void rotate3DViewUp();
    void rotate3DViewDown();
    void rotate3DViewLeft();
    void rotate3DViewRight();
    void rotate3DViewClockwise();
    void rotate3DViewCounterClockwise();

signals:
    /// After each try to read frame nIndex, from 1, for the view.
    void frameLoaded(int nIndex, bool bLoaded);

private:
    friend class WindowReport;

    // Built once by the constructor, in this order.
    void fillNameMaps();
    void createActions();
    void createMenus();
    void createToolsMenu();  // src/window/mainwindow_tools.cpp
    void createControlDock();
    void createOtherDocks();
    void createCurvePlot();
    QDockWidget* addDock(QWidget* pContent, const QString& strTitle, Qt::DockWidgetArea area,
                         const QIcon& icon, const QString& strKey);
    void createToolBar();
    void createStatusBar();
    void createViews();
    void create3DView(ED3DWidget*& pView, const QString& strTab);
    void createPeakTable();
    void connectPages();
    void connect3DPage();
    static QSettings* makeSettings(QObject* pParent = nullptr);
    /// Puts a settings file aside that cannot be read, before anything reads it.
    void checkSettings();
    void readSettings();
    void arrangeDocks();
    void writeSettings();

    /// Copies the panel parameters between widgets and members. Every run begins with true.
    void syncParametersWithControls(bool bFromPanel);
    void finishTyping();
    /// Connects or cuts the panel signals whose slots recompute something.
    void connectPanelSignals(bool bConnect);

    bool openProject(const QString& strFileName);
    void openImageFiles(const QStringList& listFile);
    bool openReflectionList(const QString& strFileName);
    /// Takes what is left of the old data set off the window, when the core has opened a new one.
    void clearDataSet();
    void showFirstFrame();
    void showOpenedCell();
    void enterRecentSeries(const QStringList& listFile);

    bool loadShiftFile(const QString& strFileName, QString* pstrReason = nullptr);
    void fillShiftTable();
    void appendShiftRow(const QPointF& ptShift);
    void fillMaskTable();
    void makeMaskItems();
    void clearMaskItems();
    void refreshPeakMarks();
    void showEstimatedMarks(const QList<QPointF>& listPos);
    /// Takes off the frame what belongs to the frame in view alone, before a run shows other frames.
    void clearFrameMarks();
    /// Status text and, with bLabel, the pixel label for a place on the frame; both go where there is no
    /// value.
    void showPixelReadout(const QPointF& ptF, bool bLabel);
    /// The same place again where one of the two is in sight, after another frame has come into view.
    void renewPixelReadout();
    void clearPixelReadout();
    void hidePixelLabel();
    /// Whether the status bar shows the pixel that was read last.
    bool showsPixelStatus() const;

    // Of the 3D views.
    QList<ED3DWidget*> views3D() const { return {m_pView3DRaw, m_pView3DMerged}; }
    void keepRawGroups();
    void forgetRawGroups();
    void showInRawView(const QList<Peak3D>& listPeak);
    void showInRawView(const QList<Peak3D>& listPeak, const QList<PointGroup>& listGroup);
    /// Maps peaks that have waited for the shifts, now that both agree, and shows them in the raw view.
    void mapWaitingPeaks();
    /// Groups of the raw view after the masks of the peaks, within the limits. False when they don't fit.
    bool restoreRawGroups();
    /// Shows reflections, seen as the raw view is, with the peaks of streaks as a group of their own.
    void showInMergedView(const QList<Peak3D>& listPeak, const QList<int>& listStreak);
    void showIndexing(const IndexingResult& result);
    /// Makes a list of reflections that is no result of merging the merged list, and shows it.
    void showReflectionList(const QList<Peak3D>& listPeak);
    std::vector<char> groupFlags(int nGroup) const;
    void changeHiddenGroups(const ED3DWidget* pView, const std::function<void()>& fnChange);
    /// A row per point group of the view: label, count, colour and, in the panel's table, whether it is
    /// shown.
    void buildGroupTable(QTableWidget* pTable, ED3DWidget* pView, bool bPanelTable);
    /// The rows of the panel's table that hold a selected item, each once, in the order of selection.
    QList<int> selectedPeakGroupRows() const;
    /// The row of the first selected item; without one the first row is made current. A warning and -1 if
    /// there is nothing to choose.
    int selectedGroupRow(QTableWidget* pTable);
    /// The reflections of the group chosen on the cell page; false when the user has been told why not.
    bool selectReflectionsForProcessing(QList<Peak3D>& listPeak);
    void assignViewingDirection(int nVector);
    void updateManualLength(int nVector);
    void rotateAlong(int nVector, bool bReciprocal);
    double rotationStep();
    void turn3DView(void (ED3DWidget::*pTurn)(double), int nSign);
    void startManualCell();
    void clearCurve();
    void showLattice();
    bool readCellMatrix();

    /// Sets the contrast limits from the frame in memory.
    void setAutoContrast();

    /// What all runs that a button starts and stops have in common: stops the play, reads the pages,
    /// takes a second click as the wish to stop, holds the flag and the button while `fnRun` works,
    /// and afterwards shows the frame that was asked for meanwhile.
    /// @param pButton  null for a run without a button of its own
    void runWithButton(bool& bFlag, QPushButton* pButton, const std::function<void(CRunReport&)>& fnRun);
    /// The same for a run of the core that loads frames, holds m_bRunning itself and shows frames.
    /// @return false when the call stopped another run or was refused
    bool runOnFrames(QPushButton* pButton, const std::function<void(CRunReport&)>& fnRun);
    /// Whether the call comes during a run that goes by m_bRunning, which it stops.
    bool stopsRun();
    /// False, with a red line, when there is no peak at all.
    bool holdsPeaks(const QVector<QList<Peak3D>>& vecPeak);
    /// Whether a run over the frames makes sense for these peaks.
    bool canMeasure(const QVector<QList<Peak3D>>& vecPeak);
    PositionRefinementOptions positionOptions(CRunReport& report);
    /// A run on m_listReflectionIndexed; a red line instead if there are none, or if they are of another
    /// cell.
    void withIndexedReflections(const std::function<void(CRunReport&)>& fnRun);
    /// False, with a red line, when the cell in force is not the one that the peaks were indexed with.
    bool holdsIndicesOfCell(CRunReport& report);
    TiltRefinementOptions tiltOptions(CRunReport& report) const;
    void setButtonStatus(QPushButton* pButton, ButtonStatus status);
    QString askSaveImageName(bool bConfirmOverwrite);
    void runExport(const std::function<void(CRunReport&)>& fnExport);
    bool isRunning() const { return m_nRunDepth > 0; }
    /// Whether the call comes from the event pump of a run: what it would change is in use.
    bool isPumping() const { return m_nRunDepth > 0 && m_nPumpDepth > 0; }
    /// For what must not happen under a run: with one under way, says so in log and status bar.
    /// @param strWhat  what was asked for, such as "Opening files"
    bool refuseDuringRun(const QString& strWhat);
    /// For what is drawn on the frame in view: true under a run, which has the image in memory. The frame is
    /// then shown anew after it, with all that lies on it.
    bool isFrameInUse();
    /// Handles waiting events, from which isPumping() keeps what a run has in use.
    void pumpEvents();
    /// Runs `fn` and says in the log what it threw, as when memory runs out: no exception leaves a slot.
    void guarded(const std::function<void()>& fn);
    /// Makes what happens while it lives a run under way.
    class CRunScope {
    public:
        explicit CRunScope(MainWindow& window, bool bReload = false);
        ~CRunScope();
        CRunScope(const CRunScope&) = delete;
        CRunScope& operator=(const CRunScope&) = delete;

    private:
        MainWindow& m_window;
        bool m_bReload;
        int m_nOuterPump;  ///< a run may begin from the events that the end of another one lets through
    };
    /// What the user asked for during the run that has just ended.
    /// @param bReload  the run may have left other images in memory than the frame that is named
    void catchUpAfterRun(bool bReload);

    DataSet m_dataSet;
    PeakHuntingParameters m_hunting;
    MappingParameters m_mapping;
    PeakMergingParameters m_merging;
    CellHuntingParameters m_cellHunting;
    IndexingParameters m_indexing;
    ExtractionParameters m_extraction;
    RefinementParameters m_refinement;
    bool m_bConstantBackground = false;     ///< of the fits of peak positions; a setting
    QList<Peak3D> m_listReflectionIndexed;  ///< merged reflections that the last indexing left
    QList<Vec3D> m_listCellIndexed;         ///< the cell that they were indexed with
    CPeakFilters m_peakFilters;
    QLocale m_locale = QLocale::system();

    QMap<int, QString> m_mapTabName;
    QMap<int, QString> m_mapPageName;
    QMap<int, QString> m_mapColumnName;
    std::vector<double> m_vecScale;
    int m_nScaleIndex = 3;
    int m_nToolBoxPage = 0;
    int m_nPlayDirection = 0;
    int m_nRunDepth = 0;               ///< runs under way, one inside the other
    int m_nPumpDepth = 0;              ///< reports that are handling events for a run
    int m_nFrameAsked = 0;             ///< frame number asked for during a run; 0 none
    bool m_bCloseAsked = false;        ///< the window was closed during a run
    bool m_bRemapAsked = false;        ///< a mapping parameter was changed during a run
    bool m_bEndCellTestAsked = false;  ///< what a cell is tested with was changed during a run
    bool m_bShowAsked = false;         ///< a limit of what is shown in 3D was changed during a run
    bool m_bRegionAsked = false;       ///< a reference region was chosen during a run
    /// Groups of the raw view while other points stand in it; the masks of the peaks tell who is in them.
    struct KeptGroups {
        QStringList listLabel;
        QList<QColor> listColor;
        QList<bool> listVisible;
    };
    KeptGroups m_keptGroups;
    /// the points of the raw view are peaks of m_listPeakFrame as it stands
    bool m_bRawViewHoldsPeaks = false;
    bool m_bPanelConnected = false;
    QList<QMetaObject::Connection> m_listPanelConnection;
    std::vector<double> m_vecSynced;    ///< the parameters as they last went between pages and members
    double m_dfCanvasGridAlpha = 0.05;  ///< of the grid in both 3D views
    CMatrix3 m_dfCellMatrix = CMatrix3::identity();  ///< of the transformation of the cell
    QString m_strLatticeHost;      ///< address of the service that the links of unit cells go to
    QList<Vec3D> m_listTextPoint;  ///< the text reflection list opened last: Å⁻¹
    QList<HKLRef> m_listTextReflection;
    QTimer m_timerPlay;
    std::unique_ptr<QSplashScreen> m_pSplash;

    TabWidget* m_pTabWidget = nullptr;
    QToolBox* m_pToolBox = nullptr;
    MessageEdit* m_pMessageEdit = nullptr;
    QProgressBar* m_pProgressBar = nullptr;
    QSlider* m_pFrameSlider = nullptr;
    QSpinBox* m_pFrameSpin = nullptr;
    QComboBox* m_pScaleCombo = nullptr;
    OriginalImgScene* m_pFrameScene = nullptr;
    BaseImgView* m_pFrameView = nullptr;
    TextDataWidget* m_pTextData = nullptr;
    QGraphicsLineItem* m_pAxisLine = nullptr;
    ED3DWidget* m_pView3DRaw = nullptr;
    ED3DWidget* m_pView3DMerged = nullptr;
    QPointer<ED3DWidget> m_pTableView;      ///< the one whose groups the panel's table shows
    QPointer<ED3DWidget> m_pView3DCurrent;  ///< the one that the page "3D View Control" acts on
    QTableView* m_pPeakTableView = nullptr;
    TableModel* m_pPeakTableModel = nullptr;
    QList<QAction*> m_listColumnAction;  ///< one per column of the peak table
    QByteArray m_bytesColumnLayout;      ///< of the peak table when it last had rows
    QwtPlot* m_pCurvePlot = nullptr;
    QwtPlotCurve* m_pCurve = nullptr;
    QList<QwtPlotMarker*> m_listCurveMarker;  ///< starts of beam tilt series; owned
    QList<QDockWidget*> m_listDock;           ///< "Control", "Messages", "Intensity", "Text Data"
    WindowActions* m_pActions = nullptr;
    QAction* m_pRecentSeparator = nullptr;  ///< before the recent data sets, shown with them

    FramesPage* m_pFramesPage = nullptr;
    ShiftPage* m_pShiftPage = nullptr;
    PeakSearchPage* m_pPeakSearchPage = nullptr;
    MergingPage* m_pMergingPage = nullptr;
    CellPage* m_pCellPage = nullptr;
    RefinementPage* m_pRefinementPage = nullptr;
    ExtractionPage* m_pExtractionPage = nullptr;  ///< a window of its own
    View3DPage* m_pView3DPage = nullptr;

    std::unique_ptr<GuideWindow> m_pGuideWindow;  ///< made when it is first asked for

    QPointF m_ptPixelRead;     ///< the place on the frame that was read last
    QString m_strPixelStatus;  ///< what the status bar said of it

    QList<CrossItem*> m_listCrossMark;
    QList<CircleItem*> m_listCircleMark;
    QList<CircleItem*> m_listEstimatedMark;
    QList<TextItem*> m_listTextMark;
    QList<QGraphicsPolygonItem*> m_listMaskItem;
};

}  // namespace tessera
