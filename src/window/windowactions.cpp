#include "window/windowactions.h"

#include "window/pages/controltips.h"

#include <QActionGroup>
#include <QApplication>
#include <QIcon>
#include <QKeySequence>
#include <QMenu>
#include <QShortcutEvent>
#include <QWidget>

namespace tessera {

namespace {

// A key that is written out, a standard key of the platform, or none.
struct Key {
    Key() = default;
    Key(const char* pchKey) : pchText(pchKey) {}
    Key(QKeySequence::StandardKey nKey) : nStandard(nKey) {}

    const char* pchText = nullptr;
    QKeySequence::StandardKey nStandard = QKeySequence::UnknownKey;
};

struct Row {
    const char* pchText;
    const char* pchTip;
    const char* pchIcon;
    Key key;
};

QAction* makeAction(QObject* pParent, const Row& row)
{
    auto* pAction = new QAction(QString::fromUtf8(row.pchText), pParent);
    if (row.pchTip) {
        pAction->setStatusTip(QString::fromUtf8(row.pchTip));
    }
    if (row.pchIcon) {
        pAction->setIcon(QIcon(QStringLiteral(":/images/%1.png").arg(QLatin1String(row.pchIcon))));
    }
    if (row.key.pchText) {
        pAction->setShortcut(QKeySequence(QLatin1String(row.key.pchText)));
    } else if (row.key.nStandard != QKeySequence::UnknownKey) {
        pAction->setShortcuts(row.key.nStandard);
    }
    pAction->setEnabled(false);
    return pAction;
}

// Whether Qt listens to the keys of an action at all as the widgets stand that show it.
bool listens(const QAction* pAction)
{
    const QWidget* pFocus = QApplication::focusWidget();
    for (const QWidget* pWidget : pAction->associatedWidgets()) {
        if (qobject_cast<const QMenu*>(pWidget)) {
            return true;
        }
        if (!pWidget->isVisible() || !pWidget->isEnabled()) {
            continue;
        }
        switch (pAction->shortcutContext()) {
            case Qt::WidgetShortcut:
                if (pWidget == pFocus) {
                    return true;
                }
                break;
            case Qt::WidgetWithChildrenShortcut:
                if (pFocus && (pWidget == pFocus || pWidget->isAncestorOf(pFocus))) {
                    return true;
                }
                break;
            default:
                return true;
        }
    }
    return false;
}

// Whether the keyboard is with a widget that the action belongs to, bars and menus aside.
bool hasFocus(const QAction* pAction)
{
    const QWidget* pFocus = QApplication::focusWidget();
    if (!pFocus) {
        return false;
    }
    for (const QWidget* pWidget : pAction->associatedWidgets()) {
        if (!pWidget->isWindow() && (pWidget == pFocus || pWidget->isAncestorOf(pFocus))) {
            return true;
        }
    }
    return false;
}

}  // namespace

WindowActions::WindowActions(QObject* pParent) : QObject(pParent)
{
    const struct {
        QAction* WindowActions::*ppAction;
        Row row;
    } aSingle[] = {
        {&WindowActions::m_pNewProject,
         {"&New Project...", "Make a project file from the frames of a series", nullptr, "Ctrl+Shift+N"}},
        {&WindowActions::m_pSolve, {"S&olve", "From the frames to the intensities", "run", "F5"}},
        {&WindowActions::m_pOpen,
         {"&Open...", "Open an existing file", "open_document_32", QKeySequence::Open}},
        {&WindowActions::m_pFrames,
         {"&Frames of the Series...", "Choose which frames are taken, summed and binned", nullptr, {}}},
        {&WindowActions::m_pClose,
         {"&Close Project", "Close the data set, and show what was opened before", nullptr, "Ctrl+W"}},
        {&WindowActions::m_pSaveCurrent,
         {"&Save Current Image", "Save current image to file", "save_32", QKeySequence::Save}},
        {&WindowActions::m_pSaveSeries,
         {"&Save Image Series", "Save current image series to files", "saveseries_32", "Ctrl+Shift+S"}},
        {&WindowActions::m_pMovieFrames,
         {"&Export Frames for Movie...", "&Export frames for making movie", "movies", "Ctrl+Shift+M"}},
        {&WindowActions::m_pScaledFrames,
         {"&Export Scaled Frames...", "&Export frames after scaling", nullptr, "Ctrl+Shift+B"}},
        {&WindowActions::m_pReciprocalVolume,
         {"&Export Reciprocal Space...", "&Export reciprocal space as a volume in a stacked MRC file",
          nullptr, "Ctrl+Shift+R"}},
        {&WindowActions::m_pSmvImages,
         {"Export S&MV Images...", "Export image frames in SMV format for &MOSFLM and XDS", nullptr,
          "Ctrl+Shift+M"}},
        {&WindowActions::m_pOtherPrograms,
         {"Export for Other &Programs...",
          "Export for XDS, DIALS, PETS and dynamical refinement",
          nullptr,
          {}}},
        {&WindowActions::m_pSections,
         {"Sec&tions...", "Show planes of reciprocal space such as hk0, from the frames", nullptr, {}}},
        {&WindowActions::m_pMergeCrystals,
         {"Merge Cr&ystals...", "Merge the results of many series", nullptr, {}}},
        {&WindowActions::m_pReport,
         {"Repor&t...", "Write what was done and found as a page for a browser", nullptr, {}}},
        {&WindowActions::m_pExit, {"E&xit", "Quit", "exit", "Ctrl+Q"}},
        {&WindowActions::m_pUndo, {"&Undo", "Take the last step back", nullptr, "Ctrl+Z"}},
        {&WindowActions::m_pRedo,
         {"&Redo", "Make the step again that was taken back last", nullptr, "Ctrl+Shift+Z"}},
        {&WindowActions::m_pCopyWindow,
         {"Copy Window", "Copy window to clipboard", nullptr, QKeySequence::Copy}},
        {&WindowActions::m_pZoomIn, {"Zoom &In", "Zoom in", "zoomin", QKeySequence::ZoomIn}},
        {&WindowActions::m_pZoomOut, {"Zoom &Out", "Zoom out", "zoomout", QKeySequence::ZoomOut}},
        {&WindowActions::m_pGuide,
         {"&Guide", "Show the guide, at the page of the tool box that is open", nullptr,
          QKeySequence::HelpContents}},
        {&WindowActions::m_pAbout, {"A&bout %1...", nullptr, "tessera", "Ctrl+P"}},
        {&WindowActions::m_pAboutQt, {"About Qt...", nullptr, "qtlogo-64", {}}},
        {&WindowActions::m_pShowPeakLabels, {"Show Peak Labels", nullptr, nullptr, QKeySequence::Refresh}},
        {&WindowActions::m_pGroupReset, {"Reset", nullptr, nullptr, QKeySequence::Delete}},
        {&WindowActions::m_pGroupMerge, {"Merge Selections", nullptr, nullptr, {}}},
        {&WindowActions::m_pGroupResetAll, {"Reset All", nullptr, nullptr, {}}},
        {&WindowActions::m_pGroupExport, {"Export...", nullptr, nullptr, {}}},
        {&WindowActions::m_pCurveCopyData, {"Copy Data", nullptr, nullptr, "Ctrl+D"}},
        {&WindowActions::m_pCurveCopyWindow, {"Copy Window", nullptr, nullptr, QKeySequence::Cut}},
        {&WindowActions::m_pTableCopySelected, {"Copy Selected", nullptr, nullptr, {}}},
        {&WindowActions::m_pTableCopyAll, {"Copy All", nullptr, nullptr, {}}},
        {&WindowActions::m_pExtractionWindow,
         {"&Intensity Extraction...", "Show the window of the intensity extraction", nullptr, {}}},
        {&WindowActions::m_pExtractIntensity,
         {"&Extract Intensities",
          "Measure the intensities of the indexed peaks again on the frames",
          nullptr,
          {}}},
        {&WindowActions::m_pFitDirectBeam,
         {"&Fit Direct Beam",
          "Fit the direct beam on each frame and compare it with its expected position",
          nullptr,
          {}}},
        {&WindowActions::m_pRefineDirectBeam,
         {"Refine &Direct Beam Position",
          "Fit the differences of indexed peaks frame by frame",
          nullptr,
          {}}},
        {&WindowActions::m_pTestRotationAxis,
         {"Test Rotation &Axis",
          "Estimate the rotation axis from where the shown peaks appear",
          nullptr,
          {}}},
        {&WindowActions::m_pFindRotationAxis,
         {"Find &Rotation Axis",
          "Find azimuth and sense of the rotation axis from the peaks of all frames",
          nullptr,
          {}}},
        {&WindowActions::m_pLattices,
         {"&Lattices...", "Look at the symmetry of the unit cell, and for further lattices", nullptr, {}}},
        {&WindowActions::m_pRefineGeometry,
         {"&Geometry Refinement...",
          "Refine axis, distortion and beam together with the cell against the indexed peaks",
          nullptr,
          {}}},
        {&WindowActions::m_pRefineBasis,
         {"Refine &Basis Vectors",
          "Refine the unit cell against the tilts of the indexed reflections",
          nullptr,
          {}}},
        {&WindowActions::m_pRefineFrameNo,
         {"Refine Cell by Frame &Numbers",
          "Refine the unit cell against the fitted frame numbers and list the expected frames",
          nullptr,
          {}}},
        {&WindowActions::m_pExportPeaks,
         {"Export &Peaks...", "Export the ungrouped points of the 3D view to a file", nullptr, {}}},
        {&WindowActions::m_pTestFindCubic,
         {"Find &Cubic Cell", "Fit the orientation of a cubic cell to the indexed reflections", nullptr, {}}},
        {&WindowActions::m_pTestRefineCubic,
         {"&Refine Cubic Cell",
          "Fit the orientation of a cubic cell to the tilts of the reflections",
          nullptr,
          {}}},
        {&WindowActions::m_pTestStretching,
         {"Test &Stretching",
          "List distances and azimuths of the indexed peaks of the frame in view",
          nullptr,
          {}}},
        {&WindowActions::m_pTestPlane,
         {"Test &2D Indexing",
          "Compare difference vectors of the frame in view with a cubic cell",
          nullptr,
          {}}},
        {&WindowActions::m_pTestIndexing,
         {"Show Calculated &Lattice", "Show all reflections of the unit cell in 3D", nullptr, {}}},
        {&WindowActions::m_pStopRun, {"&Stop", "Stop the run under way", "stop", {}}},
    };
    for (const auto& single : aSingle) {
        this->*single.ppAction = makeAction(this, single.row);
        watch(this->*single.ppAction);
    }
    m_pAbout->setText(m_pAbout->text().arg(QStringLiteral("Tessera")));
    const struct {
        QAction* pAction;
        const char* pchText;
    } aExplained[] = {
        {m_pSolve,
         "Walks the whole road, from the frames to the cell and the intensities, and judges each step. "
         "During "
         "it: stops, which keeps what is done."},
        {m_pNewProject,
         "Makes the project file of a series from its frames, their tilts, the voltage of the microscope, "
         "the pixel size and the rotation axis, and opens it."},
        {m_pOpen, "Opens a project (.ed3d), frames, or a text list of reflections."},
        {m_pFrames,
         "Opens the project anew with a part of its frames, with neighbouring frames summed, or with pixels "
         "binned. The files stay as they are."},
        {m_pSaveCurrent,
         "Saves the image in view: as .mrc the values of the frame, as a picture what the contrast limits "
         "make of them."},
        {m_pSaveSeries, "Saves all frames as pictures, with the contrast limits in force."},
        {m_pMovieFrames,
         "Saves pictures of the 3D view all around, one for each rotation step. The key does so in a 3D "
         "view; elsewhere it exports SMV images."},
        {m_pScaledFrames, "Saves all frames enlarged or reduced, as .mrc files beside the frames."},
        {m_pReciprocalVolume, "Puts all frames into one volume of reciprocal space, an .mrc stack."},
        {m_pSmvImages,
         "Saves the frames with the drift taken out, for programs that integrate frames themselves: one .img "
         "file for each in the folder of the project. In a 3D view the key makes a movie instead."},
        {m_pOtherPrograms,
         "Writes what other programs go on with: instructions for XDS, geometry and indexed peaks for DIALS, "
         "a "
         "list of frames for PETS, intensities by frames for dynamical refinement, with the frames that they "
         "read."},
        {m_pSections,
         "Opens the window of planes of reciprocal space, hk0 and any other layer, as pictures made from all "
         "frames: absences, diffuse streaks and twins show themselves there. Needs a cell and shifts."},
        {m_pMergeCrystals,
         "Opens the window that merges the results of many crystals: tells the compounds apart by their "
         "lattices, brings the crystals of each to one setting and one scale, leaves out what makes them "
         "worse, "
         "and writes the files of structure solution. The open project stays as it is."},
        {m_pReport,
         "Writes a page for a browser, one file that needs no other: the judgements of the last \"Solve\", "
         "or else what the window holds, with tables, curves, three frames and the command that makes it "
         "again."},
        {m_pUndo,
         "Takes the last step back, with all that followed from it; \"Steps\" lists them. Files on disk are "
         "not "
         "undone. A text that is being typed has its own undo until Return."},
        {m_pRedo, "Makes the step again that was taken back last."},
        {m_pZoomIn,
         "Shows the frame larger by one step of the list of factors beside it. For the eye: nothing is "
         "measured on the enlarged picture."},
        {m_pZoomOut, "Shows the frame smaller by one step of the list of factors beside it."},
        {m_pExit, "Closes the program. Results are on disk already; settings are kept."},
        {m_pAbout, "Version of the program and the libraries that it uses."},
        {m_pAboutQt, "Version of the Qt library."},
        {m_pShowPeakLabels,
         "Writes the indices of the indexed peaks on the frame: red where the reflection is strongest, green "
         "elsewhere."},
        {m_pGroupReset, "Removes the selected groups; their points return to \"Unlabeled\"."},
        {m_pGroupMerge, "Joins the selected groups."},
        {m_pGroupResetAll, "Removes all groups but the first."},
        {m_pGroupExport, "Writes the points of the selected groups to a text file."},
        {m_pCurveCopyData, "Copies the points of the curve as text."},
        {m_pCurveCopyWindow, "Copies a picture of the curve."},
        {m_pTableCopySelected, "Copies the selected rows as text."},
        {m_pTableCopyAll, "Copies all rows as text."},
        {m_pExtractionWindow,
         "Opens the window that draws circles on the frame where the cell in force predicts reflections, and "
         "that sets disc and ring, pixels, of \"Extract Intensities\". With a good cell, beam and axis the "
         "circles lie on the peaks."},
        {m_pExtractIntensity,
         "Sums the pixels of each indexed peak again, counts, in the disc and ring of \"Intensity "
         "Extraction\". The merged list and the peak table become these peaks, one for each peak of a frame; "
         "merge again for the reflections. The cell stays."},
        {m_pFitDirectBeam,
         "Fits the direct beam within 50 pixels of its expected place on each frame, without pixels of 3000 "
         "counts and more. The log lists expected and fitted place and their difference, pixels. Good: some "
         "tenths of a pixel. A difference that grows along the series: measure the shifts again, with "
         "another region. Nothing is changed."},
        {m_pRefineDirectBeam,
         "Fits, frame by frame, how the distances of two indexed peaks, pixels, follow from the differences "
         "of their indices; the direct beam does not enter. Pairs by the \"d* Range\" of \"Unit Cell "
         "Refinement\". Good: small errors, and maps that change evenly from frame to frame. To the log "
         "alone: beam and cell stay."},
        {m_pTestRotationAxis,
         "Looks where reflections begin to show, which is rarely near the axis. Of the numbers in the log "
         "take \"Max Angle un-weighted\" or \"Max Angle Weighted\": the azimuth of the axis, degrees, right "
         "to a few with many peaks; the axis may also be this number less 180. What is called \"Tilt Axis\" "
         "there holds only for an axis near 50 degrees and may be a right angle off. \"Rotation Axis At\" "
         "stays: type it in."},
        {m_pFindRotationAxis,
         "Maps the peaks with every azimuth of the axis and looks where their lattice is sharpest; needs "
         "peaks "
         "and shifts of all frames, neither axis nor cell. \"Intensity\" shows sharpness against azimuth: "
         "good is one narrow maximum, with a lower one 180 degrees away, which is the other sense of "
         "rotation. The axis is set if you take it. \"Stop\" ends the run."},
        {m_pLattices,
         "Looks at the cell in force: the Bravais types that it fits, with the matrix to each conventional "
         "cell, the conditions that its reflections keep, longer cells, and the lattices of twins and "
         "neighbours in the peaks that it leaves over. Nothing is changed before you choose it."},
        {m_pRefineGeometry,
         "Fits the cell together with the rotation axis, the direct beam, the distortion of the lens and the "
         "tilts to the indexed peaks, and shows what is left of each. Nothing is changed before \"Apply\" "
         "there."},
        {m_pRefineBasis,
         "Fits a*, b*, c* so that reflections of 500 counts and more, 100 pixels and more from the axis, "
         "come at the tilts of their frames. Good: the first number of \"Sum of Err^2 of tilt before and "
         "after\", degrees squared, is at most a few times the second. If, with the axis right to a degree, "
         "it is ten times as large or more and all signs of a*, b*, c* turn round, the sense of rotation "
         "is wrong: add 180 degrees to the axis. To the log alone: the cell in force stays."},
        {m_pRefineFrameNo,
         "Fits a*, b*, c* to the tilts at the tops of the curves through the frames, reflections of 100 "
         "counts and more, and lists expected tilts. Good: an \"Averaged error\" well below the tilt step, "
         "degrees. Tilts hardly tell the common scale of the cell: it is wrong by the factor by which "
         "\"Wavelength\" is. To the log alone: the cell in force stays."},
        {m_pExportPeaks,
         "Writes the points of the 3D view in front that are in no group of their own (\"Unlabeled\") to a "
         "text file."},
        {m_pTestFindCubic,
         "Fits the orientation of a cubic cell of 12 Å (garnet) to the points of the indexed reflections. To "
         "the log alone: the cell in force stays."},
        {m_pTestRefineCubic,
         "Fits the orientation of a cubic cell of 12 Å (garnet) to the tilts at the tops of the curves. To "
         "the log alone: the cell in force stays."},
        {m_pTestStretching,
         "Writes distances, pixels, and azimuths, degrees, of the indexed peaks of the frame in view to the "
         "log and to NAME_pos.txt beside the project. Where the net is square and the frame undistorted, "
         "equal orders have equal distances in all directions."},
        {m_pTestPlane,
         "Groups the difference vectors of the shown peaks of the frame in view, and compares their lengths "
         "with the d* of a cubic cell of 20.734 Å. To the log alone."},
        {m_pTestIndexing,
         "Shows the reflections up to 1 Å⁻¹ that the cell in force could have as points in the merged view, "
         "in the place of the merged reflections."},
        {m_pStopRun,
         "Ends the run under way once the frame or step that it is at is done; the log says so. Results that "
         "a run replaces at its end stay the former ones. The shift evaluation cannot be stopped."},
    };
    for (const auto& explained : aExplained) {
        explain(explained.pAction, QString::fromUtf8(explained.pchText));
    }
    m_pShowPeakLabels->setCheckable(true);
    // The key deletes, so it must not be heard from other parts of the window.
    m_pGroupReset->setShortcutContext(Qt::WidgetWithChildrenShortcut);

    const auto makeExclusive = [this](const QList<Row>& listRow) {
        QList<QAction*> listAction;
        auto* pGroup = new QActionGroup(this);
        for (const Row& row : listRow) {
            QAction* pAction = makeAction(this, row);
            pAction->setCheckable(true);
            pGroup->addAction(pAction);
            watch(pAction);
            listAction.append(pAction);
        }
        listAction.first()->setChecked(true);
        return listAction;
    };
    m_listPalette = makeExclusive(
        {{"Grey", "Show images in grey scale", "grey", "Ctrl+G"},
         {"Inversed Grey", "Show images in inversed grey scale", "inversedgrey", "Ctrl+I"},
         {"Blue-red", "Show images in blue-red scale", "bluered", "Ctrl+B"},
         {"Red-blue", "Show images in red-blue scale", "redblue", "Ctrl+R"}});
    explain(m_listPalette[0],
            tr("Weak is black, strong is white, between \"Min.\" and \"Max.\" of the contrast. "
               "Colours are for the eye: no measurement looks at them."));
    explain(m_listPalette[1],
            tr("Weak is white, strong is black, as on a film. Often the best for weak spots."));
    explain(m_listPalette[2],
            tr("Weak is blue, over cyan, green and yellow to red for strong. Shows steps of the background "
               "that grey hides."));
    explain(m_listPalette[3],
            tr("Weak is red, over yellow, green and cyan to blue for strong: blue-red turned round."));
    m_listSelection = makeExclusive(
        {{"Select None", "Select none for processing", "selection_noneb", "Ctrl+0"},
         {"Select 64×64", "Select a 64×64 area for processing", "selection64b", "Ctrl+1"},
         {"Select 128×128", "Select a 128×128 area for processing", "selection128b", "Ctrl+2"},
         {"Select 256×256", "Select a 256×256 area for processing", "selection256b", "Ctrl+3"},
         {"Select 512×512", "Select a 512×512 area for processing", "selection512b", "Ctrl+4"},
         {"Select 1024×1024", "Select a 1024×1024 area for processing", "selection1024b", "Ctrl+5"}});

    explain(m_listSelection[0], tr("Takes the yellow square off the frame. The shift evaluation needs one."));
    const int anSide[] = {64, 128, 256, 512, 1024};
    for (int i = 0; i < 5; ++i) {
        explain(
            m_listSelection[i + 1],
            tr("Puts a square of %1 × %1 pixels on the frame, whose pixels are compared from frame to frame "
               "to find the drift. Drag it until the direct beam is near its red cross. Good: the beam with "
               "room for its drift on all sides, and few strong reflections. Too small and the beam leaves "
               "it; too large and the shifts follow reflections that come and go.")
                .arg(anSide[i]));
    }

    for (int i = 0; i < 20; ++i) {
        m_listRecent.append(makeAction(this, {"", nullptr, nullptr, {}}));
        m_listRecent.last()->setVisible(false);
    }
}

void WindowActions::setReady(QAction* pAction)
{
    m_listReady.append(pAction);
    pAction->setEnabled(true);
}

void WindowActions::setInForce(QAction* pAction, bool bInForce)
{
    pAction->setEnabled(bInForce && m_listReady.contains(pAction));
}

void WindowActions::watch(QAction* pAction)
{
    m_listWatched.append(pAction);
    pAction->installEventFilter(this);
}

QAction* WindowActions::actionForKey(const QKeySequence& key) const
{
    QAction* pBest = nullptr;
    int nBest = -1;
    for (QAction* pAction : m_listWatched) {
        if (!pAction->isEnabled() || !pAction->isVisible() || !pAction->shortcuts().contains(key) ||
            !listens(pAction)) {
            continue;
        }
        const int nScore = (pAction->shortcuts().size() == 1 ? 100 : 0) + (hasFocus(pAction) ? 10 : 0) +
                           rank(pAction);
        if (nScore > nBest) {
            pBest = pAction;
            nBest = nScore;
        }
    }
    return pBest;
}

bool WindowActions::eventFilter(QObject* pObject, QEvent* pEvent)
{
    if (pEvent->type() == QEvent::Shortcut) {
        const auto* pShortcut = static_cast<QShortcutEvent*>(pEvent);
        if (pShortcut->isAmbiguous()) {
            if (QAction* pAction = actionForKey(pShortcut->key())) {
                pAction->trigger();
            }
            return true;
        }
    }
    return QObject::eventFilter(pObject, pEvent);
}

int WindowActions::checkedIndex(const QList<QAction*>& listAction)
{
    for (int i = 0; i < listAction.size(); ++i) {
        if (listAction[i]->isChecked()) {
            return i;
        }
    }
    return 0;
}

// The frames of a movie, which are in force beside a 3D view alone, go before the SMV images; the menus
// before what belongs to a widget that is not in use; a dock's switch before the about box, which has its
// menu.
int WindowActions::rank(const QAction* pAction) const
{
    if (pAction == m_pAbout) {
        return 0;
    }
    if (pAction == m_pMovieFrames) {
        return 3;
    }
    for (const QWidget* pWidget : pAction->associatedWidgets()) {
        if (qobject_cast<const QMenu*>(pWidget)) {
            return 2;
        }
    }
    return 1;
}

}  // namespace tessera
