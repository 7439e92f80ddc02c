// MainWindow: the hub of the workbench. It owns the data set and every panel; the slots of a subsystem lie in
// that subsystem's wing (src/window/*/mainwindow_*.cpp).
#pragma once

#include "dataset/dataset.h"
#include "frames/peakfilters.h"
#include "frames/suggestpeaksearch.h"
#include "geometry/matrix3.h"
#include "lattice/latticebasis.h"
#include "records/buttonstatus.h"
#include "records/runparameters.h"
#include "road/pagenumbers.h"
#include "window/pages/parameterbindings.h"
#include "window/reciprocal/latticecolors.h"
#include "window/reciprocal/rawgroups.h"
#include "window/road/roadrows.h"
#include "window/rungate.h"
#include "workstate/workstate.h"

#include <QColor>
#include <QLocale>
#include <QMainWindow>
#include <QMap>
#include <QModelIndex>
#include <QPointer>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QComboBox;
class QDockWidget;
class QDoubleSpinBox;
class QMenu;
class QProgressBar;
class QPushButton;
class QSettings;
class QSlider;
class QSpinBox;
class QSplashScreen;
class QTableWidget;
class QToolBox;

namespace tessera {

class BaseImgView;
class CAliveData;
class CellPage;
class ContrastControl;
class CFrameMarks;
class CPixelReadout;
class CurvePlot;
class ED3DWidget;
class ExtractionPage;
class CRunReport;
class FrameGuides;
class FramesPage;
class GeometryControl;
class GuideWindow;
class IntegrationController;
class LatticesDialog;
class MergeController;
class MergingPage;
class MessageEdit;
class OriginalImgScene;
class PeakSearchPage;
class PeakTableView;
class RefinementPage;
class CRoadWork;
class RoadDock;
class SectionsController;
class SelectionController;
class StartController;
class SeriesPictureTitle;
class ShiftPage;
class StatusStrip;
class TabWidget;
class TextDataWidget;
enum class SeriesPictureKind;
enum class WorkStage;
struct AxisSearch;
struct DirectBeamOnFrame;
struct FrameDefects;
struct IndexingResult;
struct IntegrationHost;
struct LatticeLook;
struct PositionRefinementOptions;
struct RoadState;
struct StageStatus;
struct TiltRefinement;
struct WindowMemory;
struct TiltRefinementOptions;
class View3DControl;
class View3DPage;
class WindowActions;
class WindowReport;
class WorkHistory;
class WorkKeeper;
struct Leftover;

/// The workbench: the data set, the views in tabs, the pages in docks, and a slot for each thing that the
/// user can ask for.
///
/// A slot checks, asks, calls one function of the core and shows its result. Runs let waiting events
/// through, so any slot may be called during one: what such a call would change waits for the end of the
/// run, or is refused with a red line (see CRunGate). No exception leaves a slot.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    /// Builds docks, menus, views and pages, reads the settings and shows no frame.
    explicit MainWindow(QWidget* pParent = nullptr);
    /// Stops the play and listens to none of its widgets any more, which go down after it.
    ~MainWindow() override;

    /// Opens projects, images or a text reflection list by the suffix of the first file.
    void openFiles(const QStringList& listFile);
    /// Rereads the recent list into the File menu.
    void updateRecentMenu();
    /// Gives the window's own splash screen its picture.
    void setSplashPixmap(const QPixmap& pixmap);

    // What the user has made, as one value: src/window/history/mainwindow_history.cpp
    /// A copy, which shares its lists. The numbers are those of the members, which may be other ones than
    /// the pages show. Groups are the user's own where those of lattices are shown; the first group of a
    /// view, which takes the points of no other, has no points. A merged view without points has no group.
    WorkState workState() const;
    /// Puts a state into members, pages and views. A camera stays, as contrast, tab and frame do. A state of
    /// another series is shown as one that has been opened.
    /// @return false during a run, with a red line and all as it was
    bool showWorkState(const WorkState& state);
    /// Keeps the work in a folder from now on, step by step, and asks what shall become of the works of
    /// windows that have not come to their end. To be called once, when the window is shown; without it
    /// nothing is kept. See src/window/history/mainwindow_interrupted.cpp.
    void keepWork(const QString& strFolder);

protected:
    void closeEvent(QCloseEvent* pEvent) override;
    void dragEnterEvent(QDragEnterEvent* pEvent) override;
    void dropEvent(QDropEvent* pEvent) override;

public slots:
    // Shell: src/window
    /// Asks for frames and geometry, writes a project file and opens it.
    void newProject();
    /// Asks for files and opens them.
    void open();
    /// Asks which frames of the open project are taken, summed and binned, and opens it anew with them.
    void chooseFrames();
    /// Opens the data set of the menu entry that was chosen.
    void openRecentFile();
    /// Closes the data set: views, tables and pages are as at the start, but for the parameters.
    void closeDataSet();  // src/window/start/mainwindow_start.cpp
    /// Puts the picture of the current tab on the clipboard, of the frame view the whole frame.
    void copyWindow();
    /// The next larger of the scales for the view in the current tab.
    void zoomIn();
    /// The next smaller one.
    void zoomOut();
    /// Draws the frame with the palette that is checked in the menu.
    void paletteChanged();
    /// Opens the guide, where a data set is open at the chapter of the current page.
    void showGuide();
    /// Shows name, version and libraries; a run under way goes on behind the box.
    void about();
    /// Brings actions, frame number, scale and 3D page into line with a tab, and shows its frame.
    /// @param nPageIndex  of the tab, from 0
    void updateControls(int nPageIndex);
    /// Gives the frame view the scale of that place in the list, which is clamped to it.
    void updateScale(int nIndex);
    /// Takes a percentage that was typed: the scale of the list that is nearest to it.
    void scaleTextEntered();
    /// Marks the header of the page that is open, from 0.
    void toolBoxPageChanged(int nIndex);
    /// Shows a text in the status bar until the next one.
    void statusBarMessage(const QString& str);

    // "Solve": src/window/road/mainwindow_road.cpp
    /// Walks the road of the driver on the open project, from the frames to the intensities; without a
    /// project asks for one first. During it: asks it to stop, which keeps what is done.
    void solve();
    /// The same from a stage on, with the numbers of the pages that were changed since; nothing without a
    /// project.
    void solveFrom(RoadStage stageFrom);
    /// Goes to the view that shows the result of a row of the road.
    void showRoadRow(RoadRowKind kind);
    /// Goes to the page with its numbers.
    void showRoadSettings(RoadRowKind kind);
    /// Asks for a file and writes the report of the last "Solve" of this project, or of what the window
    /// holds.
    void saveReport();  // src/window/road/mainwindow_report.cpp

    // What is done, stale or missing: src/window/road/mainwindow_status.cpp
    /// Runs what is stale or missing, one stage after the other, as if the user had gone through the pages; a
    /// stage that does not come to its end ends it. During it: asks it to stop.
    void bringUpToDate();
    /// Shows which stages are done, stale or missing; during a run nothing, as its end does.
    void showWorkStatus();

    // Frame list and navigation: src/window/frames/mainwindow_framelist.cpp
    /// Makes a row per frame: name, stage tilt, beam tilt and overall tilt in degrees. Dialogs start in the
    /// folder of the first frame from then on.
    void fillFileTable();
    /// Loads and shows a frame, from 1, with all that lies on it. A number outside the series is a red line.
    /// During a run the number is kept and the frame shown after it.
    void switchToImgIndex(int nIndex);
    /// Shows the frame of a row, from 0; negative: none.
    void currentFileChangedInFileList(int nCurrentRow);
    /// Draws the image in memory anew, within the contrast limits of the page.
    void refreshImageView();

    // How the frames are looked at: src/window/frames/mainwindow_framelook.cpp
    /// Makes one picture of all frames and shows it in place of the frame, with contrast limits of its own,
    /// until a frame is chosen. A run, see m_bRunning.
    void showSeriesPicture(tessera::SeriesPictureKind kind);

    // Auto play: src/window/frames/mainwindow_autoplay.cpp
    /// Shows one frame after the other at the delay of the page, up to the last one.
    void playImageForward();
    /// The same down to the first one.
    void playImageBackward();
    /// Ends the play.
    void stopImagePlay();
    /// One step of the play; it ends at the end of the series and at the start of a run.
    void playOneImage();
    /// The play goes on with the frame at the other end; the only one ends it.
    void playFromOtherEnd();
    /// Delay between two frames of the play, ms.
    void imagePlayIntervalChanged(int nNewInterval);

    // Side files: src/window/frames/mainwindow_sidefiles.cpp, src/window/reciprocal/mainwindow_cell.cpp
    /// Asks for a file and writes direct beam and shifts, pixels.
    void saveEDShift();
    /// Asks for a file and takes direct beam and shifts from it; peaks that have waited for them are mapped.
    void loadEDShift();
    /// Asks for a peak list, takes its peaks in the place of the data set's, maps and shows them.
    void loadRawPeaks();
    /// Asks for a file and writes the peaks of all frames with the groups of the raw view.
    void saveRawPeaks();
    /// Asks for a file and writes the cell in force.
    void exportUnitCell();
    /// Asks for a file and puts its cell in force.
    void loadUnitCell();

    // The mask: src/window/frames/mainwindow_mask.cpp
    /// Asks for a file of polygons, in pixels, that peak hunting leaves out, and shows them.
    void loadPeakHuntingMask();
    /// Takes all polygons away.
    void clearPeakHuntingMask();
    /// Takes the polygons away that are selected in the table of the page.
    void removeSelectedMaskAreas();
    /// Shows or hides the polygons on the frame; the hunt heeds them either way.
    void showPeakHuntingMask(bool bShow);

    // Defects of the frames: src/window/frames/mainwindow_defects.cpp
    /// Looks at some frames for what is no measurement, and asks whether areas go into the mask and hot
    /// pixels into the list of those that are repaired, and its file. A run, see m_bRunning.
    void findFrameDefects();

    // Numbers that follow from the data: src/window/frames/mainwindow_suggestions.cpp
    /// Measures some frames and offers numbers of the page "Peak Search". A run, see m_bRunning.
    void suggestPeakSearch();
    /// Offers distances and limits of the merging by the peaks that are there.
    void suggestMerging();
    /// Offers a range of cell edges by the distances of the spots.
    void suggestCellRange();
    /// Whether both radii come from the spots: then nobody types them, and they are measured at once.
    void autoRadiiToggled(bool bAuto);

    // Runs: src/window/frames/mainwindow_shiftevaluation.cpp, mainwindow_peakhunting.cpp
    /// Puts the reference region of the size that is checked on the frame, or none. One that the frame has
    /// no room for is named in the status bar.
    void selSizeChanged2();
    /// Tells the place of the reference region in the status bar; empty: takes it away.
    /// @param rectSel  pixels of the frame
    void selRectChanged(QRectF rectSel);
    /// Evaluates the shift of each frame by the reference region. The run shows the regions and has no stop.
    void runShiftEvaluation();
    /// Hunts all frames, maps, shows and merges the peaks. During the run: asks it to stop.
    void runPeakHunting();
    /// Marks the peaks that the hunt would find on the frame in view; nothing is kept.
    void testCurrentPatternForPeaks();
    /// Marks them anew where they are shown.
    void peakHuntingParametersChanged();
    /// Marks the peaks of the frame in view, now and while a hunt goes, or takes the marks off.
    void visualMoniteringPeakHuntingToggled(bool bEnabled);
    /// Writes the frame in view as the hunt smooths it. No dialog; nothing during a run.
    void outputSmoothedImage(const QString& strFileName);

    // Overlay of the frame view: src/window/frameview/mainwindow_marks.cpp
    /// Crosses at positions of the frame, pixels, in the place of those before.
    /// @param nSize  length of the arms, pixels
    void showCrossMarks(const QList<QPointF>& listPos, const QColor& color, int nSize);
    /// Takes the crosses off the frame.
    void clearCrossMarks();
    /// Green circles of the extraction's window radius at positions of the frame, pixels.
    void showCircleMarks(const QList<QPointF>& listPos);
    /// Takes these circles off the frame.
    void clearCircleMarks();
    /// Labels the indexed peaks of the frame in view by h, k, l if the menu says so, else takes labels off.
    void showPeakText();
    /// Takes the labels off the frame.
    void clearTextMarks();
    /// The menu entry for the labels was switched; its own state is what counts.
    void enableShowPeaks(bool bShow);
    /// Shows the pixel under the pointer in the status bar and, with the right button held, beside it.
    /// @param posF  pixels of the frame, its upper left corner (0, 0)
    void mouseMoving(QPointF posF);

    // Mapping and merging: src/window/reciprocal/mainwindow_mapping.cpp
    /// Maps the peaks of all frames into reciprocal space with shifts and geometry as they are now.
    void transformPeaksTo3D();
    /// Shows the mapped peaks within the limits of intensity and resolution in the raw view, with their
    /// groups. During a run this waits for its end.
    void showPeaksIn3D();
    /// Maps and shows them anew after a change of the geometry; during a run after it.
    void recalculate3DPeakPositionsAndUpdateView();
    /// Links the peaks of the group chosen on the page into chains, merges each to a reflection and shows it.
    void peakReduction3D();
    /// Finds azimuth and sense of the rotation axis from the peaks, shows the curve, and asks whether to take
    /// it; a taken one maps the peaks anew. A run, see m_bRunning.
    void findRotationAxis();  // src/window/reciprocal/mainwindow_axis.cpp
    /// Draws the rotation axis through the direct beam of the frame in view, or hides it.
    void showRotationAxisLine();

    // The unit cell: src/window/reciprocal/mainwindow_cell.cpp
    /// Searches a cell by the method of the page, on the reflections of the group chosen there or on all
    /// peaks, and puts it in force. During a search that works on the peaks: asks it to stop.
    void runUnitCellHunting();
    /// Shows the range that follows from the spots, where the page takes it from them.
    void showCellRange();
    /// Asks for a known cell, looks for its orientation and puts what the user chooses in force.
    void searchKnownCell();  // src/window/reciprocal/mainwindow_knowncell.cpp
    /// Puts the cell that was found or made by hand in force and shows it; one under test goes.
    void updateUnitCell();
    /// Shows a, b, c in Å and α, β, γ in degrees of the cell in force, and what is expected on the frame by
    /// it.
    void updateUnitCellInfo();
    /// Shows how many of the peaks fit the cell in force.
    void showCellFit();
    /// Begins the manual way, with a made-up cell where there is none, or leaves it.
    void switchtoManualUnitCellHunting(bool bTrue);
    /// Turns a* into the direction that the current 3D view looks along, at the length of its box in Å⁻¹.
    void unitCellHuntingManualAssignRA();
    /// The same for b*.
    void unitCellHuntingManualAssignRB();
    /// The same for c*.
    void unitCellHuntingManualAssignRC();
    /// Gives a* the length of its box, Å⁻¹.
    void unitCellHuntingManualUpdateRA();
    /// The same for b*.
    void unitCellHuntingManualUpdateRB();
    /// The same for c*.
    void unitCellHuntingManualUpdateRC();

    // Its transformation: src/window/crystal/mainwindow_transformation.cpp
    /// Transforms the cell that was found by the matrix of the page and puts the result in force, for a
    /// test.
    /// @return false, with a red line, when no cell comes out of it
    bool transformUnitCell();
    /// The same for good: the result becomes the cell that was found, and indices of the former one go.
    void transformUnitCellClicked();
    /// Puts the transformed cell in force for a test, or the one that was found back.
    void testUnitCellToggled(bool bChecked);
    /// Takes the matrix from the page; a test under way goes on with it.
    void unitCellTransformatinMatrixEdited();

    // Its lattice: src/window/crystal/mainwindow_lattices.cpp
    /// Shows the window of the lattices and looks at the cell in force.
    void showLattices();
    /// Looks at the cell in force and the mapped peaks: Bravais types, cosets and further lattices, to the
    /// log and the window of the lattices. During the run: asks it to stop.
    void runLatticeAnalysis();
    /// Puts the matrix to the selected type into the fields of the page, for the space chosen there.
    void fillMatrixFromLattices();
    /// Puts the cell that the selected coset asks for in force, and writes it beside the project.
    void takeLongerCell();
    /// Does so with the cell of the selected lattice.
    void chooseLattice();
    /// Shows the peaks of each lattice as a group of both 3D views, or the former groups again.
    void showLatticeColors(bool bShow);

    // Indexing and reflection lists: src/window/crystal/mainwindow_indexing.cpp
    /// Indexes the reflections of the group chosen on the page with the cell in force, and writes what its
    /// boxes ask for.
    void runIndexing();
    /// Asks for a file of reflections h k l and shows them, placed by the cell in force.
    /// @return false when none was chosen or read
    bool loadShelxFile();

    // Point groups: src/window/reciprocal/mainwindow_groups.cpp
    /// Makes the points selected in the current 3D view a group of their own.
    void addSelectedAsNewGroup();
    /// Removes the groups selected in the table of the page; their points stay.
    void removeSelectedPeakGroups();
    /// Unites the groups selected in the table of the page.
    void mergeSelectedPeakGroups();
    /// Asks, and removes all groups but the first.
    void resetSelectedPeakGroups();
    /// Asks for a file and writes the points of the selected groups, of all where none is selected.
    void exportSelectedPeak3D();
    /// Asks for a file and writes where the points of the first group lie, Å⁻¹.
    void exportPeak3D();
    /// Gives the raw view the groups that are in the masks of the peaks, and goes to it.
    void restorePointGroups();
    /// Writes the groups of the raw view into the masks of the peaks.
    void updatePeakGroupsFromView();
    /// Shows or hides the group of a row, or asks for its colour, by the column that was clicked.
    void pointGroupTableCellClicked(int nRow, int nColumn);
    /// Renames the group of a row in the view.
    void pointGroupTableLabelEdidted(int nRow, int nColumn);
    /// Brings the tables of groups into line with a view whose points, groups or selection have changed.
    void ed3dViewPointDisplayDataChanged(ED3DWidget* view);

    // Peak table: src/window/reciprocal/mainwindow_peaktable.cpp
    /// Fills the peak table with these reflections.
    void updatePeakTable(QList<Peak3D> listPeak);
    /// Shows the columns that are checked in the menu of the titles, and hides the others.
    void updatePeakTableColumnVisability();
    /// Puts the selected rows on the clipboard as text with tabulators, without hidden columns.
    void copySelectedReflectionsInPeakTable();
    /// The same for all rows, which are selected by it.
    void copyAllReflectionsInPeakTable();

    // Curve window: src/window/frames/mainwindow_curves.cpp
    /// Draws the intensity of a reflection through the frames.
    /// @param nIndex  its nID
    /// @return false, with a red line, when there is no chain of that number
    bool showPeakInCurve(int nIndex);
    /// The same for the reflection of a row of the peak table.
    void updateCurveWindow(QModelIndex index);
    /// Puts frame numbers and intensities of the curve on the clipboard as text.
    void copyIntensityCurveData();
    /// Puts the picture of the curve on the clipboard.
    void copyIntensityCurveWindow();

    // Measured again on the frames: src/window/frames/mainwindow_remeasurement.cpp. All runs of these three
    // groups go by m_bRunning: a call during one of them stops it.
    /// Fits the direct beam on each frame and writes the results to the log.
    /// @return false when the call stopped another run or was refused, or there are no frames
    bool fitDirectBeam();
    /// Fits the positions of peaks on their frames.
    /// @param peaksSorted  a list per frame
    /// @return the peaks with fitted positions; empty when the run did not begin
    QVector<QList<Peak3D>> refinePeakPosition(const QVector<QList<Peak3D>>& peaksSorted);
    /// The same, changing the peaks themselves.
    /// @return per frame and peak the numbers of the fit
    QVector<std::vector<std::vector<double>>> refinePeakPositionOnFrame(QVector<QList<Peak3D>>& peaksSorted);
    /// Measures the intensities of peaks on their frames; at a regular end these peaks become the
    /// reflections.
    /// @param peaksSorted  a list per frame
    /// @return false when the run did not begin
    bool extractIntensity(QVector<QList<Peak3D>>& peaksSorted);
    /// Fits the positions of the indexed peaks on their frames.
    void runIntensityExtraction();

    // Refinements: src/window/crystal/mainwindow_refinement.cpp
    /// Refines the cell on the d* of the indexed peaks, if asked for after a fit of their positions.
    void runUnitCellRefinement();
    /// Fits for each frame the map from the index differences of peak pairs to their distances on it, and
    /// writes it to the log.
    void refineDirectBeamPosition();
    /// Refines a*, b*, c* on the tilts of the frames of indexed reflections, and writes them to the log; the
    /// cell stays.
    void refineBasisVectors();
    /// The same on the tilts at the tops of the fitted curves, with the frames expected by the refined cell.
    void refineUnitCellUsingFrameNo();

    // Tests: src/window/reciprocal/mainwindow_testruns.cpp
    /// Looks for the azimuth of the rotation axis that the shown peaks fit best, and offers it.
    void testRotationAxis();
    /// Fits the orientation of a cubic cell to the indexed reflections and writes it to the log.
    void testFindCubicCell();
    /// The same on the tilts at the tops of the fitted curves.
    void refineCubicUnitCell();
    /// Writes the positions of the indexed peaks of the frame in view, and the cell as it lies in their
    /// plane, to the log and to a file beside the project.
    void testStreching();
    /// Groups the difference vectors of the shown peaks of the frame in view, and writes the groups to the
    /// log.
    void test2DIndexing();
    /// Shows all reflections up to 1 Å⁻¹ of the cell in force as merged ones.
    void testIndexing();

    // Expected positions: src/window/reciprocal/mainwindow_prediction.cpp
    /// Circles where reflections are expected on the frame in view, or where it has indexed peaks.
    void showEstimatedPeakPosition();
    /// The same anew, where the places follow from the cell.
    void updateExpectedPeakPositionFromOrientationMatrix();

    // Exports: src/window/frames/mainwindow_exports.cpp, src/window/reciprocal/mainwindow_volume.cpp,
    // src/window/frames/mainwindow_exchange.cpp, src/window/view3d/mainwindow_movie.cpp
    /// Asks for a name and writes the frame in view: as shown, or its values, by the format.
    void saveCurrent();
    /// Asks for folder and format and writes all frames as pictures within the contrast limits.
    void saveSeries();
    /// Asks for a folder and writes the sum of the frames of each beam tilt series into it.
    void runUnitCellRefinementFromLoadingData();
    /// Writes all frames as SMV images into the folder of the project. Needs the shifts.
    void exportSMVImages();
    /// A dialog with the programs of other houses that the series can be exported for.
    void exportForOtherPrograms();
    /// Asks for a factor and writes a copy of each frame, scaled by it, beside the frame.
    void exportBinnedFrames();
    /// Asks for an edge in voxels and writes reciprocal space as a volume. Needs the shifts.
    void export3DReciprocalVolmue();
    /// Asks for a name and writes pictures of the 3D view all the way round, one per rotation step.
    void grab3DMovieFrames();

    // The 3D view in the current tab: src/window/view3d/mainwindow_view3d.cpp
    /// Brings the page into line with the view.
    void update3DViewControls();
    /// Factor on the sizes of the points.
    void pointSize3DChanged(double dfNewSize);
    /// Transparency of the points, per cent.
    void pointAlpha3DChanged(int nTransparency);
    /// Transparency of the grid behind the points, per cent; the next start begins with it.
    void canvasGridTransparencyChanged(int nTransparency);
    /// Shows or hides this grid.
    void canvasGridToggled(bool bEnable);
    /// Shows or hides the points of the lattice.
    void unitCellLatticePointsToggled(bool bEnable);
    /// Shows or hides its lines.
    void unitCellLatticeLinesToggled(bool bEnable);
    /// Draws as many cells along a*, b*, c* as the page says.
    void unitCellLatticeRangeChanged();
    /// Looks along a* of the cell in force.
    void rotateAlongRA();
    /// Looks along b*.
    void rotateAlongRB();
    /// Looks along c*.
    void rotateAlongRC();
    /// Looks along a, of the direct cell.
    void rotateAlongA();
    /// Looks along b.
    void rotateAlongB();
    /// Looks along c.
    void rotateAlongC();
    /// Turns the scene about an axis of the screen by the rotation step of the page, degrees: upwards.
    void rotate3DViewUp();
    /// Downwards.
    void rotate3DViewDown();
    /// To the left.
    void rotate3DViewLeft();
    /// To the right.
    void rotate3DViewRight();
    /// Clockwise.
    void rotate3DViewClockwise();
    /// Counter-clockwise.
    void rotate3DViewCounterClockwise();

signals:
    /// After each try to read frame nIndex, from 1, for the view.
    void frameLoaded(int nIndex, bool bLoaded);

private:
    friend class GeometryControl;
    friend class WindowReport;

    // Built once by the constructor, in this order.
    void fillNameMaps();
    void createActions();
    void connectChoices();
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
    void createFrameLook();  // src/window/frames/mainwindow_framelook.cpp
    void create3DView(ED3DWidget*& pView, const QString& strTab);
    void createPeakTable();
    void createHistory();  // src/window/history/mainwindow_history.cpp, with the next two
    void startHistory();
    void showHistory();
    void createRoad();  // src/window/road/mainwindow_road.cpp
    QString projectFile() const;
    bool askForProject();
    RoadOptions roadOptions(RoadStage stageFrom);
    void giveReading(RoadOptions& options);
    void giveMask(const QList<QPoint>& listHotPixelOfFile, RoadOptions& options);
    PageNumbers pageNumbers() const;
    void takeRoadStep(const RoadStep& step, const RoadState& state);
    void showRoadResult(const RoadStep& step, const RoadState& state);
    void createStart();        // src/window/start/mainwindow_start.cpp
    void createStatusStrip();  // src/window/road/mainwindow_status.cpp
    /// The states of all stages by the numbers of the pages, which stay there.
    std::vector<StageStatus> workStatusByPages();
    // What is kept of a project: src/window/mainwindow_memory.cpp
    /// Calls `fn` with the numbers of the pages in the members, and puts these back: a look changes nothing.
    void withPageNumbers(const std::function<void()>& fn);
    WindowMemory windowMemory();
    /// Writes it beside the project, or into the settings where it cannot, if it is another one than before.
    void keepWindowMemory();
    WindowMemory takeWindowMemory(CRunReport& report);
    void mergeAsBefore(const WindowMemory& memory, CRunReport& report);
    void runWorkStage(WorkStage stage);
    void createIntegration();  // src/window/integration/mainwindow_integration.cpp
    void giveIntegrationRuns(IntegrationHost& host);
    void createSections();  // src/window/sections/mainwindow_sections.cpp
    void createCrystals();  // src/window/crystals/mainwindow_crystals.cpp
    // The one selection of the views: src/window/selection/mainwindow_selection.cpp
    void createSelection();
    void createFrameGuides();
    void showChosenFrame(int nFrame);
    /// Draws what lies on the frame in view of rings and chosen spots.
    void showFrameGuides();
    void connectPages();
    void connectFrameControls();
    void connectPeakSearchPage();
    void connectMergingPage();
    void connectCellPage();
    void connectLatticesDialog();
    void connectRefinementPage();
    void connectExtractionPage();
    void connect3DPage();
    void create3DControl();  // src/window/view3d/mainwindow_view3d.cpp
    static QSettings* makeSettings(QObject* pParent = nullptr);
    /// Puts a settings file aside that cannot be read, before anything reads it.
    void checkSettings();
    void readSettings();
    void arrangeDocks();
    void writeSettings();

    /// Copies the panel parameters between widgets and members. Every run begins with true.
    void syncParametersWithControls(bool bFromPanel);
    void bindParameters();
    /// Where the parameters of this window are.
    ParameterRecords parameterRecords();
    void finishTyping();
    /// Connects or cuts the panel signals whose slots recompute something.
    void connectPanelSignals(bool bConnect);
    bool isPanelConnected() const { return !m_listPanelConnection.isEmpty(); }
    /// Has a connection cut with the panel signals.
    void keepPanelConnection(const QMetaObject::Connection& connection);
    void onPanelNumber(const QList<QDoubleSpinBox*>& listSpin, const std::function<void()>& fnChanged);
    void connectGeometrySignals();
    void connectViewSignals();
    void connect3DSignals();

    bool openProject(const QString& strFileName);
    void openImageFiles(const QStringList& listFile);
    bool openReflectionList(const QString& strFileName);
    /// Takes what is left of the old data set off the window, when the core has opened a new one.
    void clearDataSet();
    /// The same, and puts tables and pages to the new one.
    void showDataSetAnew();
    void showFirstFrame();
    /// Sets the controls of the frame number.
    /// @return whether all of them had it already
    bool setFrameControls(int nIndex);
    /// Reads a frame, from 1, as the one in view; false, with a message, when that fails.
    bool loadFrameInView(int nIndex, CRunReport& report);
    /// Shows it with all that lies on it.
    void showLoadedFrame();
    void showOpenedCell();
    void enterRecentSeries(const QStringList& listFile);
    void recentListChanged();

    bool loadShiftFile(const QString& strFileName, QString* pstrReason = nullptr);
    void fillShiftTable();
    void appendShiftRow(const QPointF& ptShift);
    void fillMaskTable();
    /// Shows a mask that has just come, in the table and on the frame.
    void showNewMask();
    void addToMask(const FrameDefects& defects, CRunReport& report);
    void repairHotPixels(const FrameDefects& defects, CRunReport& report);
    /// False, with a red line, without frames.
    bool holdsFrames();
    /// Measures both radii and puts them into record and boxes; they stay where the spots are too few.
    /// @return false when the report asked to stop
    bool findRadii(CRunReport& report);
    /// Shows what is suggested with the reasons, and sets what the user takes.
    /// @param strPage  for the title
    void offerSuggestion(const QString& strPage, const Suggestion& suggestion);
    /// The box of a number with its row in the table of parameters; null where a page has none.
    QDoubleSpinBox* boxOf(const ParameterMember& member) const;
    void askForAxis(const AxisSearch& search);
    // What the menu "Tools" finds: src/window/mainwindow_offers.cpp
    /// Runs `fn` with what it says in a fold of the log.
    void inFold(const QString& strTitle, const std::function<void()>& fn);
    /// Says in one line what a run has found, with a link that takes it; "Undo" of the geometry goes back.
    void offerToTake(const QString& strFound, const std::function<void()>& fnTake);
    void offerAxis(double dfAzimuth);
    void offerBeam(const std::vector<DirectBeamOnFrame>& listBeam);
    void offerCell(const TiltRefinement& refinement);
    /// Says that the rotation axis is not known, if so, and how to find it.
    void tellUnknownAxis(CRunReport& report) const;
    void refreshPeakMarks();
    void showHuntedFrame(const QList<Peak3D>& listPeak);
    void showHuntedPeaks(CRunReport& report);
    /// Takes off the frame what belongs to the frame in view alone, before a run shows other frames.
    void clearFrameMarks();

    // Of the 3D views.
    QList<ED3DWidget*> views3D() const { return {m_pView3DRaw, m_pView3DMerged}; }
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
    void changeHiddenGroups(const ED3DWidget* pView, const std::function<void()>& fnChange);
    /// A row per point group of the view: label, count, colour and, in the panel's table, whether it is
    /// shown.
    void buildGroupTable(QTableWidget* pTable, ED3DWidget* pView, bool bPanelTable);
    /// The rows of the panel's table that hold a selected item, each once, in the order of selection.
    QList<int> selectedPeakGroupRows() const;
    /// The row of the first selected item; without one the first row is made current. A warning and -1 if
    /// there is nothing to choose.
    int selectedGroupRow(QTableWidget* pTable);
    /// The reflections of the group chosen on the cell page; false, with a message, when there are none.
    bool selectReflectionsForProcessing(QList<Peak3D>& listPeak);
    void assignViewingDirection(int nVector);
    void updateManualLength(int nVector);
    enum class CellEdges { Direct, Reciprocal };
    void rotateAlong(CellEdges edges, int nVector);
    double rotationStep();
    void writeMovie(const QStringList& listName, double dfStep, CRunReport& report);
    void turn3DView(void (ED3DWidget::*pTurn)(double), int nSign);
    void startManualCell();
    void showLattice();
    /// Maps the peaks anew where shifts, beam or geometry have changed since, and says so.
    /// @param strThen  a sentence on what that is done for
    void mapPeaksAnew(const QString& strThen, CRunReport& report);
    void searchCellWithButton(const QList<Peak3D>& listSelection);
    /// Writes the cell in force beside the project, where dialogs then start.
    void saveProjectCell(CRunReport& report);
    /// Dialogs start where the project's unit-cell file has been written.
    void startDialogsAtCellFile();
    bool readCellMatrix();
    void mapAnewIfNeeded(CRunReport& report);
    bool isLookOfCell();
    void takeCellOfLattices(const LatticeBasis& matBasis, const QString& strMessage);
    void applyLatticeColors();
    void hideLatticeColors();
    void withoutLatticeColors(const std::function<void()>& fn);
    bool refuseUnderLatticeColors(const ED3DWidget* pView);
    void forgetLattices();
    void showAgeOfLattices();

    /// Sets the contrast limits of the series: those that were kept of it, else by the frame in memory.
    void setAutoContrast();
    /// What is looked at from now on is another series.
    void beginSeriesLook();
    /// Back to the contrast of the frames, one of which comes into view.
    void leaveSeriesPicture();

    /// What all runs that a button starts and stops have in common: stops the play, reads the pages,
    /// takes a second click as the wish to stop, keeps flag and button set while `fnRun` works,
    /// and afterwards shows the frame that was asked for meanwhile.
    /// @param pButton  null for a run without a button of its own
    void runWithButton(bool& bFlag, QPushButton* pButton, const std::function<void(CRunReport&)>& fnRun);
    /// The same, by m_bRunning, for a run of the core that loads frames and shows them.
    /// @return false when the call stopped another run or was refused
    bool runOnFrames(QPushButton* pButton, const std::function<void(CRunReport&)>& fnRun);
    /// Whether the call comes during a run that goes by m_bRunning, which it stops.
    bool stopsRun();
    /// False, with a red line, when there is no peak at all.
    bool holdsPeaks(const QVector<QList<Peak3D>>& vecPeak);
    /// Whether a run over the frames makes sense for these peaks.
    bool canMeasure(const QVector<QList<Peak3D>>& vecPeak);
    PositionRefinementOptions positionOptions(CRunReport& report, CAliveData& alive);
    /// A run on m_listReflectionIndexed; a red line instead if there are none, or if they are of another
    /// cell.
    void withIndexedReflections(const std::function<void(CRunReport&)>& fnRun);
    /// False, with a red line, when the cell in force is not the one that the peaks were indexed with.
    bool holdsIndicesOfCell(CRunReport& report);
    TiltRefinementOptions tiltOptions(CRunReport& report) const;
    void setButtonStatus(QPushButton* pButton, ButtonStatus status);
    QString askSaveImageName(bool bConfirmOverwrite);
    void showInPeakTable(const QList<Peak3D>& listPeak);
    void takeWorkState(const WorkState& state);
    void showSeriesOfState(const SeriesData& series);
    void showPagesOfState(const SeriesData& former);
    void keepStage(const QString& strStage);
    void forgetKeptWork();
    bool restoreWork(Leftover& leftover);
    void showPointsOfState(const WorkState& state, const WorkState& former);
    void showCellOfState();
    void showFrameOfState(const SeriesData& former);
    void runExport(const std::function<void(CRunReport&)>& fnExport);
    bool isRunning() const { return m_gate.isRunning(); }
    /// Whether the call comes from the event pump of a run: what it would change is in use.
    bool isPumping() const { return m_gate.isPumping(); }
    /// Does a piece of a run in a thread, on a copy of the data set that is taken over at its end, while the
    /// window goes on (src/window/mainwindow_alive.cpp). Only within a CRunScope. What fn throws comes out
    /// here, after what it has left was taken over.
    void computeAlive(CRunReport& report, const std::function<void(CAliveData&)>& fn);
    /// For what must not happen under a run: with one under way, says so in log and status bar.
    /// @param strWhat  what was asked for, such as "Opening files"
    bool refuseDuringRun(const QString& strWhat);
    /// For what is drawn on the frame in view: true under a run, which has the image in memory. The frame is
    /// then shown anew after it, with all that lies on it.
    bool isFrameInUse();
    /// Handles waiting events, from which isPumping() keeps what a run has in use.
    void pumpEvents();
    /// Runs `fn` and says in the log what it threw, as when memory runs out: for what has a state to put
    /// back. What other slots throw ends in Application::notify().
    void guarded(const std::function<void()>& fn);
    /// Cuts the signals of the pages, if they are connected: the boxes are set and nothing is computed anew.
    class CQuietPages {
    public:
        explicit CQuietPages(MainWindow& window) : m_window(window), m_bConnected(window.isPanelConnected())
        {
            window.connectPanelSignals(false);
        }
        ~CQuietPages() { m_window.connectPanelSignals(m_bConnected); }
        CQuietPages(const CQuietPages&) = delete;
        CQuietPages& operator=(const CQuietPages&) = delete;

    private:
        MainWindow& m_window;
        bool m_bConnected;
    };
    /// What a run leaves in memory as the image of the frame in view.
    enum class FrameAfterRun {
        Stays,  ///< the image that was there
        Reload  ///< maybe that of another frame: the named one is read again
    };
    /// Makes what happens while it lives a run under way.
    class CRunScope {
    public:
        explicit CRunScope(MainWindow& window, FrameAfterRun frame = FrameAfterRun::Stays);
        ~CRunScope();
        CRunScope(const CRunScope&) = delete;
        CRunScope& operator=(const CRunScope&) = delete;

    private:
        static MainWindow& looked(MainWindow& window);

        MainWindow& m_window;
        FrameAfterRun m_frame;
        int m_nOuterPump;  ///< a run may begin from the events that the end of another one lets through
    };
    /// Does what the user asked for during the run that has just ended.
    void catchUpAfterRun(FrameAfterRun frame);

    DataSet m_dataSet;
    QString m_strWorkingDir;            ///< where every file dialog starts
    bool m_bAutoContrastOnLoad = true;  ///< the next frame shown gives the contrast limits
    PeakHuntingParameters m_hunting;
    MappingParameters m_mapping;
    PeakMergingParameters m_merging;
    CellHuntingParameters m_cellHunting;
    std::optional<CellParameters> m_knownCell;  ///< as it was given last
    IndexingParameters m_indexing;
    ExtractionParameters m_extraction;
    RefinementParameters m_refinement;
    bool m_bConstantBackground = false;  ///< of the fits of peak positions; a setting
    CPeakFilters m_peakFilters;
    QLocale m_locale = QLocale::system();

    QMap<int, QString> m_mapTabName;
    QMap<int, QString> m_mapPageName;
    QMap<int, QString> m_mapColumnName;
    std::vector<double> m_vecScale;
    int m_nScaleIndex = 3;
    int m_nToolBoxPage = 0;
    int m_nPlayDirection = 0;
    CRunGate m_gate;
    bool m_bRunning = false;          ///< a run on known peaks or the beam goes; cleared: it shall stop
    bool m_bHuntingRunning = false;   ///< the same of peak hunting
    bool m_bSearchingCell = false;    ///< the same of a search for the cell
    bool m_bSolving = false;          ///< the same of the road
    WorkKeeper* m_pKeeper = nullptr;  ///< null: nothing is kept
    CRoadRows m_roadRows;
    std::shared_ptr<CRoadWork> m_pRoadWork;    ///< the last road; null: none, or one that could not open
    std::optional<PageNumbers> m_numbersLeft;  ///< that the last road left on the pages
    /// What the last road left of this series; another one is the user's, and goes into the next road.
    struct {
        QList<QPolygonF> listArea;
        QList<QPoint> listHotPixel;
    } m_leftOut;
    QString m_strMaskFile;          ///< that the mask was loaded from; empty: from none
    QList<Peak3D> m_listTablePeak;  ///< what the peak table shows
    CRawGroups m_rawGroups;
    std::unique_ptr<LatticeLook> m_pLatticeLook;  ///< never null
    CLatticeColors m_colorsRaw;
    CLatticeColors m_colorsMerged;
    bool m_bShowingState = false;  ///< controls are being set to a state: their slots read no page
    QList<QMetaObject::Connection> m_listPanelConnection;  ///< empty while the panel signals are cut
    CParameterBindings m_bindings;                         ///< of the pages and the parameters
    double m_dfCanvasGridAlpha = 0.05;                     ///< of the grid in both 3D views
    CMatrix3 m_dfCellMatrix = CMatrix3::identity();        ///< of the transformation of the cell
    QString m_strLatticeHost;  ///< address of the service that the links of unit cells go to
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
    ContrastControl* m_pContrast = nullptr;
    SeriesPictureTitle* m_pSeriesTitle = nullptr;
    TextDataWidget* m_pTextData = nullptr;
    ED3DWidget* m_pView3DRaw = nullptr;
    ED3DWidget* m_pView3DMerged = nullptr;
    QPointer<ED3DWidget> m_pTableView;      ///< the one whose groups the panel's table shows
    QPointer<ED3DWidget> m_pView3DCurrent;  ///< the one that the page "3D View Control" acts on
    PeakTableView* m_pPeakTableView = nullptr;
    CurvePlot* m_pCurvePlot = nullptr;
    QList<QDockWidget*> m_listDock;  ///< "Control", "Messages", "Intensity", "Text Data"
    WindowActions* m_pActions = nullptr;
    QMenu* m_pViewMenu = nullptr;
    QAction* m_pRecentSeparator = nullptr;  ///< before the recent data sets, shown with them

    FramesPage* m_pFramesPage = nullptr;
    ShiftPage* m_pShiftPage = nullptr;
    PeakSearchPage* m_pPeakSearchPage = nullptr;
    MergingPage* m_pMergingPage = nullptr;
    CellPage* m_pCellPage = nullptr;
    RefinementPage* m_pRefinementPage = nullptr;
    ExtractionPage* m_pExtractionPage = nullptr;  ///< a window of its own
    LatticesDialog* m_pLatticesDialog = nullptr;  ///< another
    GeometryControl* m_pGeometry = nullptr;       ///< with a window of its own
    View3DPage* m_pView3DPage = nullptr;
    View3DControl* m_pView3DControl = nullptr;
    IntegrationController* m_pIntegration = nullptr;
    FrameGuides* m_pGuides = nullptr;
    SelectionController* m_pSelection = nullptr;
    SectionsController* m_pSections = nullptr;
    MergeController* m_pCrystals = nullptr;
    int m_nFrameToShow = 0;  ///< of the chosen reflection, from 1, when frames come to the front; 0: none
    RoadDock* m_pRoad = nullptr;
    WorkHistory* m_pHistory = nullptr;
    StartController* m_pStart = nullptr;
    StatusStrip* m_pStatus = nullptr;
    QTimer m_timerStatus;      ///< from a change to its show, so that many are one
    int m_nMergedGroup = -1;   ///< of the peaks that were merged, as the raw view has it; −1: all
    QByteArray m_bytesKept;    ///< of the project that is open, as they were read or written last
    bool m_bUpdating = false;  ///< what is stale is run anew; cleared: it shall stop

    std::unique_ptr<GuideWindow> m_pGuideWindow;  ///< made when it is first asked for

    std::unique_ptr<CFrameMarks> m_pMarks;
    std::unique_ptr<CPixelReadout> m_pPixelReadout;
};

}  // namespace tessera
