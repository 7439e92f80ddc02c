#include "batch/batchoptions.h"

#include "batch/optionreader.h"
#include "batch/optionrules.h"
#include "dataset/pagerounding.h"

#include <QCommandLineParser>

#include <algorithm>
#include <functional>

namespace tessera {

namespace {

/// One numeric parameter: name, unit and default as the help shows them, range, and where it goes.
struct NumberOption {
    QString strName;
    QString strUnit;
    QString strHelp;
    double dfMinimum;
    double dfMaximum;
    bool bAuto;  ///< "auto" is a value too
    std::function<void(double)> fnTake;
};

QString defaultText(double dfValue)
{
    return QStringLiteral("default %1").arg(dfValue);
}

std::function<void(double)> into(double& dfTarget)
{
    return [&dfTarget](double dfValue) { dfTarget = dfValue; };
}

std::function<void(double)> into(std::optional<double>& dfTarget)
{
    return [&dfTarget](double dfValue) { dfTarget = dfValue; };
}

/// The page parameters by name, with the ranges of the pages.
QList<NumberOption> numberOptions(RoadOptions& o)
{
    const PeakHuntingParameters& hunt = o.hunting;
    const PeakMergingParameters& merge = o.merging;
    const RefinementParameters& refine = o.refinement;
    const QString strProject = QStringLiteral("from the project");
    const QString strLimit = QStringLiteral("default auto, no limit; with --window-defaults %1");
    return {
        {"wavelength", "Å", "electron wavelength; " + strProject, 1e-6, 10000, false, into(o.dfWavelength)},
        {"pixel-size", "Å⁻¹", "size of a pixel in reciprocal space; " + strProject, 1e-6, 10000, false,
         into(o.dfPixelSize)},
        {"axis", "degrees", "azimuth of the rotation axis, counter-clockwise from 3 o'clock; " + strProject,
         -LARGE, LARGE, false, into(o.dfRotationAxis)},
        {"tilt-start", "degrees", "images only: tilt of the first frame; default 0", -360, 360, false,
         into(o.dfTiltStart)},
        {"tilt-step", "degrees", "images only: tilt from frame to frame; default 0.1", -360, 360, false,
         into(o.dfTiltStep)},
        {"tilt-relaxation", "degrees", "extra tilt spread over the series; default 0", -180, 180, false,
         into(o.dfTiltRelaxation)},
        {"stretch-amplitude", "%", "elliptical distortion; " + strProject, -1000, 1000, false,
         into(o.dfStretchAmplitude)},
        {"stretch-azimuth", "degrees", "its azimuth as the page shows it; " + strProject, 0, 180, false,
         into(o.dfStretchAzimuth)},
        {"center-x", "pixels", "direct beam on the first frame; from the shift evaluation", 0, 100000, false,
         into(o.dfCenterX)},
        {"center-y", "pixels", "likewise", 0, 100000, false, into(o.dfCenterY)},
        {"peak-radius", "pixels", "sigma of the narrow Gaussian; " + defaultText(hunt.m_dfPeakRadius), 0,
         1000, false, into(o.hunting.m_dfPeakRadius)},
        {"background-radius", "pixels",
         "sigma of the wide Gaussian; " + defaultText(hunt.m_dfBackgroundRadius), 0, 1000, false,
         into(o.hunting.m_dfBackgroundRadius)},
        {"peak-threshold", "counts",
         "least band-passed value of a peak; default auto, 8 robust standard deviations of the noise; with "
         "--window-defaults " +
             QString::number(hunt.m_dfPeakThreshold),
         -100000, 1000000, true, into(o.dfPeakThreshold)},
        {"integration-radius", "pixels",
         "disc of the 2D integration; " + defaultText(hunt.m_dfIntegrationRadius), 0, 1000, false,
         into(o.hunting.m_dfIntegrationRadius)},
        {"integration-background", "pixels",
         "ring around the disc; " + defaultText(hunt.m_dfIntegrationBackground), 0, 1000, false,
         into(o.hunting.m_dfIntegrationBackground)},
        {"resolution-min", "Å⁻¹", "least d* of a peak to merge; " + strLimit.arg(0), 0, 100, true,
         into(o.dfResolutionMin)},
        {"resolution-max", "Å⁻¹", "greatest d* of a peak to merge; " + strLimit.arg(1), 0, 100, true,
         into(o.dfResolutionMax)},
        {"intensity-min", "counts", "least point intensity of a peak to merge; " + strLimit.arg(0), -100000,
         1000000, true, into(o.dfIntensityMin)},
        {"intensity-max", "counts", "greatest point intensity of a peak to merge; " + strLimit.arg(32768),
         -100000, 1000000, true, into(o.dfIntensityMax)},
        {"min-3d-distance", "pixels",
         "distance from the frame's plane that closes a chain; " + defaultText(merge.m_dfMin3DDistance), 0,
         1000, false, into(o.merging.m_dfMin3DDistance)},
        {"max-2d-distance", "pixels",
         "distance on the frames within a chain; " + defaultText(merge.m_dfMax2DDistance), 0, 1000, false,
         into(o.merging.m_dfMax2DDistance)},
        {"max-3d-length", "pixels", "longest chain that is no streak; " + defaultText(merge.m_dfMax3DLength),
         0, 1000, false, into(o.merging.m_dfMax3DLength)},
        {"cell-min", "Å", "shortest cell edge searched; " + defaultText(o.cell.m_dfCellRangeMin), 1, 1000,
         false, into(o.cell.m_dfCellRangeMin)},
        {"cell-max", "Å", "longest cell edge searched; " + defaultText(o.cell.m_dfCellRangeMax), 1, 1000,
         false, into(o.cell.m_dfCellRangeMax)},
        {"index-threshold", "",
         "how far an index may lie from a whole number; " + defaultText(o.indexing.m_dfIndexThreshold), 0.01,
         0.5, false, into(o.indexing.m_dfIndexThreshold)},
        {"refine-intensity-low", "counts",
         "least point intensity of a peak in a pair; default auto, the median of the indexed peaks, as fits "
         "of "
         "weak ones go astray; with --window-defaults " +
             QString::number(refine.m_dfRefineIntensityLow),
         -1e7, 1e7, true, into(o.dfRefineIntensityLow)},
        {"refine-intensity-high", "counts",
         "greatest point intensity of a peak in a pair; " + strLimit.arg(refine.m_dfRefineIntensityHigh),
         -1e7, 1e7, true, into(o.dfRefineIntensityHigh)},
        {"refine-dstar-low", "Å⁻¹",
         "least distance of the two peaks of a pair; default auto, 0.3 or less where the patterns are small; "
         "with --window-defaults " +
             QString::number(refine.m_dfRefineDStarLow),
         0, 1000, true, into(o.dfRefineDStarLow)},
        {"refine-dstar-high", "Å⁻¹",
         "greatest distance of the two peaks of a pair; default auto, what the frames reach; with "
         "--window-defaults " +
             QString::number(refine.m_dfRefineDStarHigh),
         0, 1000, true, into(o.dfRefineDStarHigh)},
        {"scale", "", "export scaled: size of the copies; " + defaultText(o.exports.dfScale), 0.05, 20, false,
         into(o.exports.dfScale)},
        {"contrast-min", "counts",
         "export pictures, and volume scaled: pixel value that becomes 0; default auto, from the first frame",
         -1000000, 1000000, true, into(o.exports.dfContrastMin)},
        {"contrast-max", "counts", "likewise: pixel value that becomes 255", -1000000, 1000000, true,
         into(o.exports.dfContrastMax)},
    };
}

void addOptions(QCommandLineParser& parser, const QList<NumberOption>& listNumber)
{
    const QString strStages = roadStageNames().join(QStringLiteral(", "));
    parser.addOptions({
        {"from",
         "First stage to run: " + strStages +
             "; what lies before it is read from its files, but merging "
             "and, for refine, indexing are done anew, with the options given for them.",
         "stage", "shifts"},
        {"to", "Last stage to run; default index, or refine with --from refine.", "stage", "index"},
        {"out", "Folder of the result files; default: beside the project.", "folder"},
        {"region",
         "Reference region over the direct beam, X,Y,SIZE in pixels, SIZE even and at least 16; "
         "default auto, 256 or larger round the beam found on the frames; the window has none of "
         "its own, so --window-defaults leaves this auto.",
         "X,Y,SIZE"},
        {"mask", "Mask file: areas that peak hunting leaves out.", "file"},
        {"cell", "Unit-cell file to take instead of a cell search.", "file"},
        {"space-group", "Number of the space group for the reflection groups, 1 to 230; default 1.",
         "number"},
        {"group", "From a peak list merge only the peaks of this group, 0 to 63; default: all.", "number"},
        {"apply-stretching", "Undo the elliptical distortion: on or off; default: as the project says.",
         "on|off"},
        {"intensity-in-frames", "Weight of a peak: 2d (disc minus ring) or point; default 2d.", "2d|point"},
        {"intensity-through-frames", "Intensity of a chain: maximum or 3d (integrated); default maximum.",
         "maximum|3d"},
        {"statistics", "Print the tables of reflection conditions."},
        {"constant-background", "Refine also with positions that are fitted beside a constant background."},
        {"pair-list", "Print the tables of difference vectors and of peak pairs."},
        {"window-defaults", "Start values of the window's pages instead of auto."},
        {"jobs",
         "Frames worked on side by side; the files are the same for every number; default: one per core.",
         "number"},
        {"export",
         "Write other forms of the data after the last stage; a list, or given several times: smv "
         "(images with the drift taken out, NAME.img), scaled (resized copies beside the frames, "
         "NAME_s.mrc), volume (reciprocal space as a stack, PROJECT.mrc), pictures (grey, 8 bit), ipf "
         "(indexed peaks by frame, which the stage index writes anyhow). smv and volume need shifts.",
         "kind,..."},
        {"export-only", "Run no stage: read the shifts from their file and export."},
        {"export-folder", "Folder of the pictures; default: that of the result files.", "folder"},
        {"export-format", "Format of the pictures: bmp, png, jpg or tif; default png.", "format"},
        {"volume-edge",
         "Voxels along each side of the volume, 10 to 2000; default 500. It takes 4 bytes of "
         "memory per voxel.",
         "number"},
        {"volume-type", "Values of the volume: raw or scaled to 0 to 255; default raw.", "raw|scaled"},
        {"json",
         "Write a summary of what was found; - writes it to the standard output, and the log to the "
         "standard error.",
         "file"},
        {"summary",
         "Run nothing: print a table of many series, the worst first, from the files that --json wrote. Bad "
         "files come first, then failed series, then the others by the share of reflections that were "
         "indexed. Exit status 1 when there is a bad file or a failed series."},
    });
    for (const NumberOption& option : listNumber) {
        const QString strUnit = option.strUnit.isEmpty() ? QString()
                                                         : QStringLiteral(" [%1]").arg(option.strUnit);
        parser.addOption(
            {option.strName, option.strHelp + strUnit + QLatin1Char('.'), QStringLiteral("number")});
    }
}

void takeNumbers(COptionReader& reader, const QList<NumberOption>& listNumber)
{
    for (const NumberOption& option : listNumber) {
        const std::optional<double> dfValue = reader.number(
            option.strName, option.dfMinimum, option.dfMaximum,
            option.bAuto ? AutoValue::Allowed : AutoValue::NotAllowed);
        if (dfValue) {
            option.fnTake(*dfValue);
        }
    }
}

void takeNames(COptionReader& reader, BatchOptions& options)
{
    options.road.exports.strPictureFolder = reader.name(QStringLiteral("export-folder"));
    options.strJsonFile = reader.name(QStringLiteral("json"));
    options.road.strCellFile = reader.name(QStringLiteral("cell"));
    options.road.strMaskFile = reader.name(QStringLiteral("mask"));
    options.road.strOutDir = reader.name(QStringLiteral("out"));
}

void takeStages(COptionReader& reader, RoadOptions& options)
{
    const QStringList& listName = roadStageNames();
    options.stageFrom = RoadStage(reader.choice(QStringLiteral("from"), listName, 0));
    options.stageTo = RoadStage(
        reader.choice(QStringLiteral("to"), listName, int(std::max(RoadStage::Index, options.stageFrom))));
}

void takeParameters(COptionReader& reader, RoadOptions& options)
{
    options.bWindowDefaults = reader.isSet(QStringLiteral("window-defaults"));
    takeStages(reader, options);
    const int nStretch = reader.choice(QStringLiteral("apply-stretching"), {"off", "on"}, -1);
    if (nStretch >= 0) {
        options.bApplyStretching = nStretch == 1;
    }
    PeakMergingParameters& merging = options.merging;
    merging.m_bIntegrate2D = reader.choice(QStringLiteral("intensity-in-frames"), {"2d", "point"}, 0) == 0;
    merging.m_bIntegrateThroughFrames = reader.choice(QStringLiteral("intensity-through-frames"),
                                                      {"maximum", "3d"}, 0) == 1;
    options.indexing.m_nSpaceGroup = reader.wholeNumber(QStringLiteral("space-group"), 1, 230, 1);
    options.indexing.m_bOutputStatistics = reader.isSet(QStringLiteral("statistics"));
    options.indexing.m_bOutputIndexing = true;
    options.bConstantBackground = reader.isSet(QStringLiteral("constant-background"));
    options.refinement.m_bOutputPeakList = reader.isSet(QStringLiteral("pair-list"));
}

void takeExports(COptionReader& reader, ExportOptions& exports)
{
    for (const QString& strList : reader.values(QStringLiteral("export"))) {
        for (const QString& strKind : strList.split(QLatin1Char(','))) {
            if (!exportNames().contains(strKind)) {
                reader.refuse(QStringLiteral("--export %1: not one of %2")
                                  .arg(strKind, exportNames().join(QStringLiteral(", "))));
            }
            if (!exports.listKind.contains(strKind)) {
                exports.listKind.append(strKind);
            }
        }
    }
    exports.bOnly = reader.isSet(QStringLiteral("export-only"));
    if (exports.bOnly && (reader.isSet(QStringLiteral("from")) || reader.isSet(QStringLiteral("to")))) {
        reader.refuse(QStringLiteral("--export-only runs no stage: --from and --to do not go with it"));
    }
    const QStringList listFormat = {QStringLiteral("bmp"), QStringLiteral("png"), QStringLiteral("jpg"),
                                    QStringLiteral("tif")};
    exports.strPictureFormat = listFormat.value(
        reader.choice(QStringLiteral("export-format"), listFormat, 1));
    exports.nVolumeEdge = reader.wholeNumber(QStringLiteral("volume-edge"), 10, 2000, 500);
    exports.bVolumeScaled = reader.choice(QStringLiteral("volume-type"), {"raw", "scaled"}, 0) == 1;
    exports.dfScale = spinBoxValue(exports.dfScale, 2, 0.05, 20);
}

/// With --summary the files are summaries, and nothing else is asked for.
void checkSummary(const QCommandLineParser& parser, COptionReader& reader)
{
    if (parser.optionNames().size() > 1) {
        reader.refuse(QStringLiteral("--summary goes with no other option"));
    }
    if (parser.positionalArguments().isEmpty()) {
        reader.refuse(QStringLiteral("--summary: no files of --json given"));
    }
}

}  // namespace

ParsedOptions parseBatchOptions(const QStringList& listArgument)
{
    ParsedOptions parsed;
    BatchOptions& options = parsed.options;
    RoadOptions& road = options.road;
    const QList<NumberOption> listNumber = numberOptions(road);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("From a rotation series of electron diffraction frames to cell, indexed reflections, "
                       "the files of structure solution and the cell refined from peak pairs.\nExit status: "
                       "0 the last stage was reached, 1 bad data, "
                       "2 bad usage."));
    const QCommandLineOption helpOption = parser.addHelpOption();
    const QCommandLineOption versionOption = parser.addVersionOption();
    parser.addPositionalArgument(
        QStringLiteral("input"),
        QStringLiteral("PROJECT.ed3d, or the images in series order; with --summary files of --json."));
    addOptions(parser, listNumber);

    if (!parser.parse(listArgument)) {
        parsed.strError = parser.errorText();
        return parsed;
    }
    if (parser.isSet(helpOption)) {
        parsed.strHelp = parser.helpText();
        return parsed;
    }
    if (parser.isSet(versionOption)) {
        parsed.strHelp = QStringLiteral("tessera-batch " TESSERA_VERSION "\n");
        return parsed;
    }
    COptionReader reader(parser);
    takeNumbers(reader, listNumber);
    road.listInput = parser.positionalArguments();
    options.bSummary = reader.isSet(QStringLiteral("summary"));
    if (options.bSummary) {
        checkSummary(parser, reader);
    } else {
        takeNames(reader, options);
        takeParameters(reader, road);
        takeExports(reader, road.exports);
        road.nGroup = reader.wholeNumber(QStringLiteral("group"), 0, 63, -1);
        road.nJobs = reader.wholeNumber(QStringLiteral("jobs"), 1, 256, 0);
        road.rcRegion = reader.region(QStringLiteral("region"));
        if (reader.error().isEmpty()) {
            reader.refuse(contradiction(road));
        }
    }
    parsed.strError = reader.error();
    return parsed;
}

}  // namespace tessera
