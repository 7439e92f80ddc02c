#include "batch/optiontable.h"

#include "dataset/parametertable.h"
#include "road/roadstage.h"

#include <QCommandLineParser>
#include <QList>

namespace tessera {

namespace {

using Options = QList<QCommandLineOption>;

/// Which stages are run, and with which files.
Options optionsOfStages()
{
    return {
        {"from",
         "First stage to run: " + roadStageNames().join(QStringLiteral(", ")) +
             ". The results of earlier stages are read from their files, but merging and, for geometry, "
             "integrate and refine, indexing are run again, with the options given for them.",
         "stage", "shifts"},
        {"to", "Last stage to run; default integrate, or refine with --from refine.", "stage", "integrate"},
        {"out", "Folder of the result files; default: beside the project.", "folder"},
    };
}

/// Shifts and peaks.
Options optionsOfFrames()
{
    return {
        {"region",
         "Reference region over the direct beam, X,Y,SIZE in pixels, SIZE even and at least 16; default "
         "auto, 256 or larger round the beam found on the frames. --window-defaults leaves this auto, as "
         "the window has no default region.",
         "X,Y,SIZE"},
        {"mask", "Mask file: areas that peak hunting leaves out.", "file"},
        {"defects",
         "Look on some frames for rows, columns, edges and shadows that are no measurement, leave them out "
         "of peak hunting, and repair hot pixels. Hot pixels are listed in hotpixels.txt beside the project "
         "if there is no such file yet and the results go there. auto or off; default auto, off with --mask "
         "and with --window-defaults.",
         "auto|off"},
        {"ignore-hot-pixels",
         "Do not read the list of hot pixels beside the project, to repeat a run that found the hot pixels "
         "itself."},
    };
}

/// Cell, calibration and space group.
Options optionsOfCell()
{
    const Parameter& spaceGroup = parameterOf(&IndexingParameters::m_nSpaceGroup);
    return {
        {"cell", "Unit-cell file to use instead of a cell search.", "file"},
        {"known-cell",
         "Look for the orientation of a known cell instead of searching for a cell: "
         "a,b,c,alpha,beta,gamma in Å and degrees, or a CIF file NAME.cif. Its lengths may be off by up to "
         "5 per cent.",
         "cell"},
        {"cell-method",
         "How the cell is searched: vectors (differences of reflections), directions (Fourier sums of all "
         "peaks over directions), or best, the one of both that explains more of the peaks; default best, "
         "with --window-defaults vectors.",
         "vectors|directions|best"},
        {"calibration",
         "Calibration of the microscope: axis, distortion and, if it was determined, pixel size, instead of "
         "those of the project. Other options take precedence over it.",
         "file"},
        {"save-calibration",
         "Write the calibration that the stage geometry finds, for other crystals of the same microscope.",
         "file"},
        {"space-group",
         QStringLiteral("Number of the space group for the reflection groups, %1 to %2; default %3. If it "
                        "is given, it is also the space group of the intensities and their files; otherwise "
                        "that is the best one by its absences.")
             .arg(spaceGroup.box.dfMinimum)
             .arg(spaceGroup.box.dfMaximum)
             .arg(spaceGroup.start()),
         "number"},
        {"fix-geometry",
         "Numbers that the stage geometry does not refine, separated by commas: axis, axisOutOfPlane, "
         "centre, stretching, ellipse, thirdOrder, parabolic, tiltScale; default: none.",
         "numbers"},
    };
}

/// Integration and what follows from it.
Options optionsOfIntensities()
{
    return {
        {"rotation",
         "How the crystal moved during the exposure of a frame: continuous, stepped (it stood still) or "
         "precession,ANGLE (it stood still while the beam moved on a cone of this half angle, in degrees); "
         "default: as in the project, else continuous.",
         "mode"},
        {"formula",
         "Chemical formula of the crystal, such as \"Mg3 Al2 Si3 O12\" or Ca(OH)2, for the scattering "
         "factors and the cell content in NAME.ins and NAME.cif.",
         "formula"},
        {"formula-units", "Formula units in a cell; default: estimated from its volume.", "number"},
        {"laue",
         "Laue class in which intensities are scaled and merged, such as 4/mmm or -3m1; default: the one "
         "with which they agree.",
         "class"},
        {"no-profile", "Integrate weak reflections by summation alone, without profile fitting."},
        {"no-scale", "Merge intensities as they are, without scale and decay along the series."},
    };
}

/// Merging of peaks, refinement from pairs of peaks, and the run as a whole.
Options optionsOfRun()
{
    return {
        {"group", "From a peak list merge only the peaks of this group, 0 to 63; default: all.", "number"},
        {"apply-stretching", "Correct the elliptical distortion: on or off; default: as in the project.",
         "on|off"},
        {"intensity-in-frames", "Intensity of a peak: 2d (disc minus ring) or point; default 2d.",
         "2d|point"},
        {"intensity-through-frames", "Intensity of a chain: maximum or 3d (integrated); default maximum.",
         "maximum|3d"},
        {"statistics", "Print the tables of reflection conditions."},
        {"constant-background",
         "Refine also with positions that were fitted together with a constant background."},
        {"pair-list", "Print the tables of difference vectors and of peak pairs."},
        {"window-defaults", "Start from the defaults of the window's pages instead of auto."},
        {"setting",
         "Axes of the cell and the indices: as-found, or conventional, those of the Bravais type that is "
         "proposed; default as-found.",
         "as-found|conventional"},
        {"accept",
         "Even if a result is judged bad, replace the files of the stages cell and index by it, and end "
         "with status 0."},
        {"jobs",
         "Number of frames processed in parallel; the files are the same for every number; default: one "
         "per core.",
         "number"},
    };
}

/// Exports.
Options optionsOfExports()
{
    return {
        {"export",
         "Write other forms of the data after the last stage: a list, or the option given several times. "
         "smv (images with the drift taken out, NAME.img), scaled (resized copies beside the frames, "
         "NAME_s.mrc), volume (reciprocal space as a stack, PROJECT.mrc), pictures (grey, 8 bit), ipf "
         "(indexed peaks by frame, which the stage index writes anyway); for other programs xds (XDS.INP "
         "with frames as SMV), dials (NAME.expt and NAME.refl with the same frames), pets (NAME.pts with "
         "frames as TIFF), cif (NAME_dyn.cif_pets, intensities by frames for dynamical refinement). All "
         "but scaled, pictures and ipf need shifts.",
         "kind,..."},
        {"export-only", "Run no stage: read the shifts from their file and export."},
        {"export-folder", "Folder of the pictures; default: that of the result files.", "folder"},
        {"export-format", "Format of the pictures: bmp, png, jpg or tif; default png.", "format"},
        {"virtual-frames",
         "export cif: number of frames that are combined into a virtual one; default 0: twice the number of "
         "frames over which nine of ten reflections pass.",
         "number"},
        {"virtual-step",
         "export cif: number of frames from one virtual frame to the next; default 0: half of "
         "--virtual-frames.",
         "number"},
        {"volume-edge",
         "Voxels along each side of the volume, 10 to 2000; default 500. It takes 4 bytes of memory per "
         "voxel.",
         "number"},
        {"volume-type", "Values of the volume: raw or scaled to 0 to 255; default raw.", "raw|scaled"},
    };
}

/// Output of the driver itself.
Options optionsOfOutput()
{
    return {
        {"json",
         "Write a summary of what was found; - writes it to the standard output, and the log to the "
         "standard error.",
         "file"},
        {"report",
         "Write a report of the run for a browser, with tables, plots and some frames, in one file.", "file"},
        {"summary",
         "Run nothing: print a table of many series, the worst first, from the files that --json wrote. Bad "
         "files come first, then failed series, then the others by the share of reflections that were "
         "indexed. The exit status is 1 if there is a bad file or a failed series."},
    };
}

}  // namespace

void addNamedOptions(QCommandLineParser& parser)
{
    for (const auto fnOptions : {optionsOfStages, optionsOfFrames, optionsOfCell, optionsOfIntensities,
                                 optionsOfRun, optionsOfExports, optionsOfOutput}) {
        parser.addOptions(fnOptions());
    }
}

}  // namespace tessera
