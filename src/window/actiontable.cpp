#include "window/actiontable.h"

#include <cstddef>

namespace tessera {

namespace {

template <std::size_t nRows>
constexpr ActionRows rowsOf(const ActionRow (&aRow)[nRows])
{
    return {aRow, aRow + nRows};
}

constexpr ActionRow g_aSingle[] = {
    {&WindowActions::m_pNewProject, "&New Project...", "Make a project file from the frames of a series",
     nullptr, "Ctrl+Shift+N",
     "Makes the project file of a series from its frames, their tilts, the voltage of the microscope, the "
     "pixel size and the rotation axis, and opens it."},
    {&WindowActions::m_pSolve, "S&olve", "From the frames to the intensities", "run", "F5",
     "Runs all steps from the frames to the cell and the intensities, and judges each. During the run: "
     "stops, and keeps the finished steps."},
    {&WindowActions::m_pOpen, "&Open...", "Open an existing file", "open_document_32", QKeySequence::Open,
     "Opens a project (.ed3d), frames, or a text list of reflections."},
    {&WindowActions::m_pFrames,
     "&Frames of the Series...",
     "Choose which frames are taken, summed and binned",
     nullptr,
     {},
     "Opens the project anew with a part of its frames, with neighbouring frames summed, or with pixels "
     "binned. The files stay as they are."},
    {&WindowActions::m_pClose, "&Close Project", "Close the data set, and show what was opened before",
     nullptr, "Ctrl+W", nullptr},
    {&WindowActions::m_pSaveCurrent, "&Save Current Image", "Save current image to file", "save_32",
     QKeySequence::Save,
     "Saves the image in view: as .mrc the values of the frame, as a picture the grey values within the "
     "contrast limits."},
    {&WindowActions::m_pSaveSeries, "&Save Image Series", "Save current image series to files",
     "saveseries_32", "Ctrl+Shift+S", "Saves all frames as pictures, with the contrast limits in force."},
    {&WindowActions::m_pMovieFrames, "&Export Frames for Movie...", "&Export frames for making movie",
     "movies", "Ctrl+Shift+M",
     "Saves pictures of the 3D view all around, one for each rotation step. The key does so in a 3D view; "
     "elsewhere it exports SMV images."},
    {&WindowActions::m_pScaledFrames, "&Export Scaled Frames...", "&Export frames after scaling", nullptr,
     "Ctrl+Shift+B", "Saves all frames enlarged or reduced, as .mrc files beside the frames."},
    {&WindowActions::m_pReciprocalVolume, "&Export Reciprocal Space...",
     "&Export reciprocal space as a volume in a stacked MRC file", nullptr, "Ctrl+Shift+R",
     "Puts all frames into one volume of reciprocal space, an .mrc stack."},
    {&WindowActions::m_pSmvImages, "Export S&MV Images...",
     "Export image frames in SMV format for &MOSFLM and XDS", nullptr, "Ctrl+Shift+M",
     "Saves the frames corrected for the drift, for programs that integrate frames themselves: one .img "
     "file for each in the folder of the project. In a 3D view the key makes a movie instead."},
    {&WindowActions::m_pOtherPrograms,
     "Export for Other &Programs...",
     "Export for XDS, DIALS, PETS and dynamical refinement",
     nullptr,
     {},
     "Writes input for other programs: instructions for XDS, geometry and indexed peaks for DIALS, a "
     "list of frames for PETS, intensities by frames for dynamical refinement, with the frames that they "
     "read."},
    {&WindowActions::m_pSections,
     "Sec&tions...",
     "Show planes of reciprocal space such as hk0, from the frames",
     nullptr,
     {},
     "Opens the window of planes of reciprocal space, hk0 and any other layer, as pictures made from all "
     "frames: they show absences, diffuse streaks and twins. Needs a cell and shifts."},
    {&WindowActions::m_pMergeCrystals,
     "Merge Cr&ystals...",
     "Merge the results of many series",
     nullptr,
     {},
     "Opens the window that merges the results of many crystals: distinguishes compounds by their lattices, "
     "transforms the crystals of each to one setting and one scale, leaves out crystals that make them "
     "worse, and writes the files for structure solution. The open project is not changed."},
    {&WindowActions::m_pReport,
     "Repor&t...",
     "Write what was done and found as a page for a browser",
     nullptr,
     {},
     "Writes a page for a browser, one file that needs no other: the judgements of the last \"Solve\", or "
     "else the results in the window, with tables, curves, three frames and the command that makes it "
     "again."},
    {&WindowActions::m_pExit, "E&xit", "Quit", "exit", "Ctrl+Q",
     "Closes the program. Results are on disk already; settings are kept."},
    {&WindowActions::m_pUndo, "&Undo", "Take the last step back", nullptr, "Ctrl+Z",
     "Takes the last step back, with all that followed from it; \"Steps\" lists them. Files on disk are "
     "not undone. A text that is being typed has its own undo until Return."},
    {&WindowActions::m_pRedo, "&Redo", "Repeat the step that was undone last", nullptr, "Ctrl+Shift+Z",
     "Repeats the step that was undone last."},
    {&WindowActions::m_pCopyWindow, "Copy Window", "Copy window to clipboard", nullptr, QKeySequence::Copy,
     nullptr},
    {&WindowActions::m_pZoomIn, "Zoom &In", "Zoom in", "zoomin", QKeySequence::ZoomIn,
     "Shows the frame larger by one step of the list of factors beside it. For the eye: nothing is "
     "measured on the enlarged picture."},
    {&WindowActions::m_pZoomOut, "Zoom &Out", "Zoom out", "zoomout", QKeySequence::ZoomOut,
     "Shows the frame smaller by one step of the list of factors beside it."},
    {&WindowActions::m_pGuide, "&Guide", "Show the guide, at the page of the tool box that is open", nullptr,
     QKeySequence::HelpContents, nullptr},
    {&WindowActions::m_pAbout, "A&bout %1...", nullptr, "tessera", "Ctrl+P",
     "Version of the program and the libraries that it uses."},
    {&WindowActions::m_pAboutQt, "About Qt...", nullptr, "qtlogo-64", {}, "Version of the Qt library."},
    {&WindowActions::m_pShowPeakLabels, "Show Peak Labels", nullptr, nullptr, QKeySequence::Refresh,
     "Writes the indices of the indexed peaks on the frame: red where the reflection is strongest, green "
     "elsewhere."},
    {&WindowActions::m_pGroupReset, "Reset", nullptr, nullptr, QKeySequence::Delete,
     "Removes the selected groups; their points return to \"Unlabeled\"."},
    {&WindowActions::m_pGroupMerge, "Merge Selections", nullptr, nullptr, {}, "Joins the selected groups."},
    {&WindowActions::m_pGroupResetAll,
     "Reset All",
     nullptr,
     nullptr,
     {},
     "Removes all groups but the first."},
    {&WindowActions::m_pGroupExport,
     "Export...",
     nullptr,
     nullptr,
     {},
     "Writes the points of the selected groups to a text file."},
    {&WindowActions::m_pCurveCopyData, "Copy Data", nullptr, nullptr, "Ctrl+D",
     "Copies the points of the curve as text."},
    {&WindowActions::m_pCurveCopyWindow, "Copy Window", nullptr, nullptr, QKeySequence::Cut,
     "Copies a picture of the curve."},
    {&WindowActions::m_pTableCopySelected,
     "Copy Selected",
     nullptr,
     nullptr,
     {},
     "Copies the selected rows as text."},
    {&WindowActions::m_pTableCopyAll, "Copy All", nullptr, nullptr, {}, "Copies all rows as text."},
    {&WindowActions::m_pExtractionWindow,
     "&Intensity Extraction...",
     "Show the window of the intensity extraction",
     nullptr,
     {},
     "Opens the window that draws circles on the frame where the cell in force predicts reflections, and "
     "that sets disc and ring, pixels, of \"Extract Intensities\". With a good cell, beam and axis the "
     "circles lie on the peaks."},
    {&WindowActions::m_pExtractIntensity,
     "&Extract Intensities",
     "Measure the intensities of the indexed peaks again on the frames",
     nullptr,
     {},
     "Sums the pixels of each indexed peak again, counts, in the disc and ring of \"Intensity "
     "Extraction\". The merged list and the peak table become these peaks, one for each peak of a frame; "
     "merge again for the reflections. The cell stays."},
    {&WindowActions::m_pFitDirectBeam,
     "&Fit Direct Beam",
     "Fit the direct beam on each frame and compare it with its expected position",
     nullptr,
     {},
     "Fits the direct beam within 50 pixels of its expected place on each frame, without pixels of 3000 "
     "counts and more. The log lists expected and fitted place and their difference, pixels. Good: some "
     "tenths of a pixel. A difference that grows along the series: measure the shifts again, with another "
     "region. Nothing is changed."},
    {&WindowActions::m_pRefineDirectBeam,
     "Refine &Direct Beam Position",
     "Fit the differences of indexed peaks frame by frame",
     nullptr,
     {},
     "Fits, frame by frame, how the distances of two indexed peaks, pixels, follow from the differences of "
     "their indices; the direct beam does not enter. Pairs by the \"d* Range\" of \"Unit Cell "
     "Refinement\". Good: small errors, and maps that change evenly from frame to frame. To the log alone: "
     "beam and cell stay."},
    {&WindowActions::m_pTestRotationAxis,
     "Test Rotation &Axis",
     "Estimate the rotation axis from where the shown peaks appear",
     nullptr,
     {},
     "Looks where reflections begin to show, which is rarely near the axis. Of the numbers in the log take "
     "\"Max Angle un-weighted\" or \"Max Angle Weighted\": the azimuth of the axis, degrees, right to a "
     "few with many peaks; the axis may also be this number less 180. What is called \"Tilt Axis\" there "
     "holds only for an axis near 50 degrees and may be a right angle off. \"Rotation Axis At\" stays: "
     "type it in."},
    {&WindowActions::m_pFindRotationAxis,
     "Find &Rotation Axis",
     "Find azimuth and sense of the rotation axis from the peaks of all frames",
     nullptr,
     {},
     "Maps the peaks with every azimuth of the axis and finds the sharpest lattice; needs peaks and shifts "
     "of all frames, but neither axis nor cell. \"Intensity\" shows sharpness against azimuth: good "
     "is one narrow maximum, with a lower one 180 degrees away, which is the other sense of rotation. The "
     "axis is set if you take it. \"Stop\" ends the run."},
    {&WindowActions::m_pLattices,
     "&Lattices...",
     "Look at the symmetry of the unit cell, and for further lattices",
     nullptr,
     {},
     "Analyses the cell in force: the Bravais types that fit it, with the matrix to each conventional cell, "
     "the conditions that its reflections fulfil, longer cells, and the lattices of twins and other crystals "
     "in the remaining peaks. Nothing is changed before you choose it."},
    {&WindowActions::m_pRefineGeometry,
     "&Geometry Refinement...",
     "Refine axis, distortion and beam together with the cell against the indexed peaks",
     nullptr,
     {},
     "Fits the cell together with the rotation axis, the direct beam, the distortion of the lens and the "
     "tilts to the indexed peaks, and shows the residuals. Nothing is changed before \"Apply\" "
     "there."},
    {&WindowActions::m_pRefineBasis,
     "Refine &Basis Vectors",
     "Refine the unit cell against the tilts of the indexed reflections",
     nullptr,
     {},
     "Fits a*, b*, c* so that reflections of 500 counts and more, 100 pixels and more from the axis, come "
     "at the tilts of their frames. Good: the first number of \"Sum of Err^2 of tilt before and after\", "
     "degrees squared, is at most a few times the second. If, with the axis right to a degree, it is ten "
     "times as large or more and all signs of a*, b*, c* turn round, the sense of rotation is wrong: add "
     "180 degrees to the axis. To the log alone: the cell in force stays."},
    {&WindowActions::m_pRefineFrameNo,
     "Refine Cell by Frame &Numbers",
     "Refine the unit cell against the fitted frame numbers and list the expected frames",
     nullptr,
     {},
     "Fits a*, b*, c* to the tilts at the tops of the curves through the frames, reflections of 100 counts "
     "and more, and lists expected tilts. Good: an \"Averaged error\" well below the tilt step, degrees. "
     "Tilts hardly tell the common scale of the cell: it is wrong by the factor by which \"Wavelength\" "
     "is. To the log alone: the cell in force stays."},
    {&WindowActions::m_pExportPeaks,
     "Export &Peaks...",
     "Export the ungrouped points of the 3D view to a file",
     nullptr,
     {},
     "Writes the points of the 3D view in front that are in no group of their own (\"Unlabeled\") to a "
     "text file."},
    {&WindowActions::m_pTestFindCubic,
     "Find &Cubic Cell",
     "Fit the orientation of a cubic cell to the indexed reflections",
     nullptr,
     {},
     "Fits the orientation of a cubic cell of 12 Å (garnet) to the points of the indexed reflections. To "
     "the log alone: the cell in force stays."},
    {&WindowActions::m_pTestRefineCubic,
     "&Refine Cubic Cell",
     "Fit the orientation of a cubic cell to the tilts of the reflections",
     nullptr,
     {},
     "Fits the orientation of a cubic cell of 12 Å (garnet) to the tilts at the tops of the curves. To the "
     "log alone: the cell in force stays."},
    {&WindowActions::m_pTestStretching,
     "Test &Stretching",
     "List distances and azimuths of the indexed peaks of the frame in view",
     nullptr,
     {},
     "Writes distances, pixels, and azimuths, degrees, of the indexed peaks of the frame in view to the "
     "log and to NAME_pos.txt beside the project. Where the net is square and the frame undistorted, equal "
     "orders have equal distances in all directions."},
    {&WindowActions::m_pTestPlane,
     "Test &2D Indexing",
     "Compare difference vectors of the frame in view with a cubic cell",
     nullptr,
     {},
     "Groups the difference vectors of the shown peaks of the frame in view, and compares their lengths "
     "with the d* of a cubic cell of 20.734 Å. To the log alone."},
    {&WindowActions::m_pTestIndexing,
     "Show Calculated &Lattice",
     "Show all reflections of the unit cell in 3D",
     nullptr,
     {},
     "Shows the reflections up to 1 Å⁻¹ that the cell in force could have as points in the merged view, in "
     "the place of the merged reflections."},
    {&WindowActions::m_pStopRun,
     "&Stop",
     "Stop the run under way",
     "stop",
     {},
     "Ends the current run after the present frame or step; the log says so. Results that a run replaces "
     "only at its end keep their former values. The shift evaluation cannot be stopped."},
};

constexpr ActionRow g_aPalette[] = {
    {nullptr, "Grey", "Show images in grey scale", "grey", "Ctrl+G",
     "Weak is black, strong is white, between \"Min.\" and \"Max.\" of the contrast. Colours are for the "
     "eye: no measurement looks at them."},
    {nullptr, "Inversed Grey", "Show images in inversed grey scale", "inversedgrey", "Ctrl+I",
     "Weak is white, strong is black, as on a film. Often the best for weak spots."},
    {nullptr, "Blue-red", "Show images in blue-red scale", "bluered", "Ctrl+B",
     "Weak is blue, over cyan, green and yellow to red for strong. Shows steps of the background that grey "
     "hides."},
    {nullptr, "Red-blue", "Show images in red-blue scale", "redblue", "Ctrl+R",
     "Weak is red, over yellow, green and cyan to blue for strong: blue-red turned round."},
};

// The explanation of a region of that edge in pixels.
#define EXPLAIN_REGION(EDGE)                                                                             \
    "Puts a square of " EDGE " × " EDGE                                                                  \
    " pixels on the frame, whose pixels are compared from frame to frame to find the drift. Drag it "    \
    "until the direct beam is near its red cross. Good: the beam with room for its drift on all sides, " \
    "and few strong reflections. Too small and the beam leaves it; too large and the shifts follow "     \
    "reflections that come and go."

constexpr ActionRow g_aSelection[] = {
    {nullptr, "Select None", "Select none for processing", "selection_noneb", "Ctrl+0",
     "Takes the yellow square off the frame. The shift evaluation needs one."},
    {nullptr, "Select 64×64", "Select a 64×64 area for processing", "selection64b", "Ctrl+1",
     EXPLAIN_REGION("64")},
    {nullptr, "Select 128×128", "Select a 128×128 area for processing", "selection128b", "Ctrl+2",
     EXPLAIN_REGION("128")},
    {nullptr, "Select 256×256", "Select a 256×256 area for processing", "selection256b", "Ctrl+3",
     EXPLAIN_REGION("256")},
    {nullptr, "Select 512×512", "Select a 512×512 area for processing", "selection512b", "Ctrl+4",
     EXPLAIN_REGION("512")},
    {nullptr, "Select 1024×1024", "Select a 1024×1024 area for processing", "selection1024b", "Ctrl+5",
     EXPLAIN_REGION("1024")},
};

#undef EXPLAIN_REGION

}  // namespace

ActionRows singleActions()
{
    return rowsOf(g_aSingle);
}

ActionRows paletteActions()
{
    return rowsOf(g_aPalette);
}

ActionRows selectionActions()
{
    return rowsOf(g_aSelection);
}

}  // namespace tessera
