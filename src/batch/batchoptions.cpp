#include "batch/batchoptions.h"

#include "batch/optionreader.h"
#include "batch/optionrules.h"
#include "batch/sectionoptions.h"
#include "batch/seriesoptions.h"
#include "dataset/pagerounding.h"
#include "dataset/parametertable.h"
#include "road/fixedgeometry.h"
#include "road/knowncellsearch.h"
#include "road/roadnumbers.h"

#include <QCommandLineParser>

#include <algorithm>
#include <cmath>
#include <functional>
#include <stdexcept>
#include <utility>

namespace tessera {

namespace {

/// One numeric parameter: name, unit and default as the help shows them, range, and where it goes.
struct NumberOption {
    QString strName;
    QString strUnit;
    QString strHelp;
    double dfMinimum;
    double dfMaximum;
    AutoValue autoValue;
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

/// The option of a row: it sets the optional of its member, or else the member in the record itself.
NumberOption optionOf(const Parameter& row, RoadOptions& o)
{
    NumberOption option = {
        row.option.pszName,
        row.option.pszUnit,
        QString(row.option.pszHelp).replace(QLatin1String("%1"), QString::number(row.start())),
        row.box.dfMinimum,
        row.box.dfMaximum,
        row.option.values == OptionValues::OfPageOrAuto ? AutoValue::Allowed : AutoValue::NotAllowed,
        {}};
    if (row.option.values == OptionValues::AboveZero) {
        option.dfMinimum = std::pow(10, -row.box.nDecimals);
    }
    if (row.option.values == OptionValues::AnyNumber || row.option.values == OptionValues::AnyNumberOrAuto) {
        option.dfMinimum = -g_dfLarge;
        option.dfMaximum = g_dfLarge;
    }
    if (row.option.values == OptionValues::AnyNumberOrAuto) {
        option.autoValue = AutoValue::OrAsGiven;
    }
    if (std::optional<double>* pTarget = givenNumber(o, row.member)) {
        option.fnTake = into(*pTarget);
    } else if (const auto* pMember = std::get_if<double SeriesDistortion::*>(&row.member)) {
        option.fnTake = [&o, p = *pMember](double dfValue) { o.listDistortion.emplace_back(p, dfValue); };
    } else {
        const ParameterRecords records = {nullptr,     &o.hunting, nullptr,       &o.merging, &o.cell,
                                          &o.indexing, nullptr,    &o.refinement, nullptr};
        if (!row.isIn(records)) {
            throw std::logic_error("an option without a place for its number");
        }
        option.fnTake = [&row, records](double dfValue) { row.setValue(records, dfValue); };
    }
    return option;
}

/// The page parameters by name, from their table, and what has no page.
QList<NumberOption> numberOptions(RoadOptions& o)
{
    const QList<NumberOption> listTilt = {
        {"tilt-start", "degrees", "images only: tilt of the first frame; default: as the frames tell, else 0",
         -360, 360, AutoValue::NotAllowed, into(o.dfTiltStart)},
        {"tilt-step", "degrees",
         "images only: tilt from frame to frame; default: as the frames tell, else 0.1", -360, 360,
         AutoValue::NotAllowed, into(o.dfTiltStep)}};
    const QList<NumberOption> listIntegrate = {
        {"d-min", "Å", "integrate to this resolution; default auto, as far as reflections are seen", 0.1, 100,
         AutoValue::Allowed, into(o.intensities.dfDMin)}};
    const QList<NumberOption> listExport = {
        {"scale", "", "export scaled: size of the copies; " + defaultText(o.exports.dfScale), 0.05, 20,
         AutoValue::NotAllowed, into(o.exports.dfScale)},
        {"contrast-min", "counts",
         "export pictures, and volume scaled: pixel value that becomes 0; default auto, from the first frame",
         -1000000, 1000000, AutoValue::Allowed, into(o.exports.dfContrastMin)},
        {"contrast-max", "counts", "likewise: pixel value that becomes 255", -1000000, 1000000,
         AutoValue::Allowed, into(o.exports.dfContrastMax)}};
    QList<NumberOption> listOption;
    for (const Parameter& row : parameterTable()) {
        if (row.member == ParameterMember(&DataSet::m_dfTiltRelaxation)) {
            listOption += listTilt;
        }
        if (row.option.pszName) {
            listOption.append(optionOf(row, o));
        }
    }
    return listOption + listIntegrate + listExport;
}

void addOptions(QCommandLineParser& parser, const QList<NumberOption>& listNumber)
{
    const QString strStages = roadStageNames().join(QStringLiteral(", "));
    const Parameter& spaceGroup = parameterOf(&IndexingParameters::m_nSpaceGroup);
    parser.addOptions({
        {"from",
         "First stage to run: " + strStages +
             "; what lies before it is read from its files, but merging "
             "and, for geometry, integrate and refine, indexing are done anew, with the options given for "
             "them.",
         "stage", "shifts"},
        {"to", "Last stage to run; default integrate, or refine with --from refine.", "stage", "integrate"},
        {"out", "Folder of the result files; default: beside the project.", "folder"},
        {"region",
         "Reference region over the direct beam, X,Y,SIZE in pixels, SIZE even and at least 16; "
         "default auto, 256 or larger round the beam found on the frames; the window has none of "
         "its own, so --window-defaults leaves this auto.",
         "X,Y,SIZE"},
        {"mask", "Mask file: areas that peak hunting leaves out.", "file"},
        {"defects",
         "Look on some frames for rows, columns, edges and shadows that are no measurement, leave them out "
         "of peak hunting, and repair hot pixels, which are listed in hotpixels.txt beside the project if "
         "there is none and the results go there: auto or off; default auto, off with --mask and with "
         "--window-defaults.",
         "auto|off"},
        {"ignore-hot-pixels",
         "Leave a list of hot pixels beside the project unread, as a run that found them itself began "
         "without it."},
        {"cell", "Unit-cell file to take instead of a cell search.", "file"},
        {"known-cell",
         "Look for the orientation of a cell that is known instead of searching one: a,b,c,alpha,beta,gamma "
         "in Å and degrees, or a CIF file NAME.cif. Its lengths may be 5 per cent off.",
         "cell"},
        {"cell-method",
         "How the cell is searched: vectors (differences of reflections), directions (Fourier sums of all "
         "peaks over directions), or best, the one of both that explains more of the peaks; default best, "
         "with --window-defaults vectors.",
         "vectors|directions|best"},
        {"calibration",
         "Calibration of the microscope: axis, distortion and, where it was determined, pixel size in place "
         "of "
         "those of the project; what other options tell counts before it.",
         "file"},
        {"save-calibration",
         "Write the calibration that the stage geometry finds, for other crystals of the same microscope.",
         "file"},
        {"space-group",
         QStringLiteral("Number of the space group for the reflection groups, %1 to %2; default %3. Given, "
                        "it is that of the "
                        "intensities and their files, too, whose own default is the best by its absences.")
             .arg(spaceGroup.box.dfMinimum)
             .arg(spaceGroup.box.dfMaximum)
             .arg(spaceGroup.start()),
         "number"},
        {"fix-geometry",
         "Numbers that the stage geometry leaves as they are, with commas between: axis, axisOutOfPlane, "
         "centre, stretching, ellipse, thirdOrder, parabolic, tiltScale; default: none.",
         "numbers"},
        {"rotation",
         "How the crystal turned while a frame was exposed: continuous, stepped (it stood still) or "
         "precession,ANGLE (it stood still, and the beam went round a cone of this half angle, degrees); "
         "default: "
         "as the project says, else continuous.",
         "mode"},
        {"formula",
         "What the crystal is made of, as \"Mg3 Al2 Si3 O12\" or Ca(OH)2: scattering factors and content of "
         "the "
         "cell in NAME.ins and NAME.cif.",
         "formula"},
        {"formula-units", "Formulae in a cell; default: estimated from its volume.", "number"},
        {"laue",
         "Laue class in which intensities are scaled and merged, as 4/mmm or -3m1; default: the one that "
         "they "
         "agree with.",
         "class"},
        {"no-profile", "Integrate weak reflections by sums alone, without a fit of the profile."},
        {"no-scale", "Merge intensities as they are, without scale and decay along the series."},
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
        {"setting",
         "Axes of the cell and the indices: as-found, or conventional, those of the Bravais type that is "
         "proposed; default as-found.",
         "as-found|conventional"},
        {"accept",
         "Write the files of the stages cell and index over former ones, and end with status 0, also where "
         "a result is judged bad."},
        {"jobs",
         "Frames worked on side by side; the files are the same for every number; default: one per core.",
         "number"},
        {"export",
         "Write other forms of the data after the last stage; a list, or given several times: smv "
         "(images with the drift taken out, NAME.img), scaled (resized copies beside the frames, "
         "NAME_s.mrc), volume (reciprocal space as a stack, PROJECT.mrc), pictures (grey, 8 bit), ipf "
         "(indexed peaks by frame, which the stage index writes anyhow); for other programs xds (XDS.INP "
         "with "
         "frames as SMV), dials (NAME.expt and NAME.refl with the same frames), pets (NAME.pts with frames "
         "as "
         "TIFF), cif (NAME_dyn.cif_pets, intensities by frames for dynamical refinement). All but scaled, "
         "pictures and ipf need shifts.",
         "kind,..."},
        {"export-only", "Run no stage: read the shifts from their file and export."},
        {"export-folder", "Folder of the pictures; default: that of the result files.", "folder"},
        {"export-format", "Format of the pictures: bmp, png, jpg or tif; default png.", "format"},
        {"virtual-frames",
         "export cif: frames that are put together; default 0, twice as many as nine of ten passages take.",
         "number"},
        {"virtual-step", "export cif: frames from one such group to the next; default 0, half of them.",
         "number"},
        {"volume-edge",
         "Voxels along each side of the volume, 10 to 2000; default 500. It takes 4 bytes of "
         "memory per voxel.",
         "number"},
        {"volume-type", "Values of the volume: raw or scaled to 0 to 255; default raw.", "raw|scaled"},
        {"json",
         "Write a summary of what was found; - writes it to the standard output, and the log to the "
         "standard error.",
         "file"},
        {"report",
         "Write what was done and found as a page for a browser, with tables, plots and some frames, in one "
         "file.",
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
        const std::optional<double> dfValue = reader.number(option.strName, option.dfMinimum,
                                                            option.dfMaximum, option.autoValue);
        if (dfValue) {
            option.fnTake(*dfValue);
        }
    }
}

void takeNames(COptionReader& reader, BatchOptions& options)
{
    options.road.exports.strPictureFolder = reader.name(QStringLiteral("export-folder"));
    options.strJsonFile = reader.name(QStringLiteral("json"));
    options.strReportFile = reader.name(QStringLiteral("report"));
    options.road.strCellFile = reader.name(QStringLiteral("cell"));
    options.road.strCalibrationFile = reader.name(QStringLiteral("calibration"));
    options.road.strSaveCalibrationFile = reader.name(QStringLiteral("save-calibration"));
    options.road.strMaskFile = reader.name(QStringLiteral("mask"));
    options.road.strOutDir = reader.name(QStringLiteral("out"));
}

void takeKnownCell(COptionReader& reader, RoadOptions& options)
{
    const QString strName = QStringLiteral("known-cell");
    if (!reader.isSet(strName)) {
        return;
    }
    const QString strText = reader.name(strName);
    QString strReason;
    options.knownCell = knownCellOf(strText, &strReason);
    if (!options.knownCell) {
        reader.refuse(QStringLiteral("--known-cell %1: %2").arg(strText, strReason));
    } else if (isCifName(strText)) {
        options.strKnownCellFile = strText;
    }
}

/// "continuous", "stepped" or "precession,0.8".
void takeRotation(COptionReader& reader, std::optional<RotationMode>& rotation)
{
    const QString strName = QStringLiteral("rotation");
    if (!reader.isSet(strName)) {
        return;
    }
    const QString strText = reader.name(strName);
    rotation = rotationModeOf(strText);
    if (!rotation) {
        reader.refuse(
            QStringLiteral("--rotation %1: not one of continuous, stepped, precession,ANGLE").arg(strText));
    }
}

void takeIntensities(COptionReader& reader, IntensityOptions& options)
{
    takeRotation(reader, options.rotation);
    const QString strFormula = QStringLiteral("formula");
    if (reader.isSet(strFormula)) {
        QString strReason;
        const QString strText = reader.name(strFormula);
        const std::optional<ChemicalFormula> formula = chemicalFormula(strText, &strReason);
        if (formula) {
            options.formula = *formula;
        } else {
            reader.refuse(QStringLiteral("--formula %1: %2").arg(strText, strReason));
        }
    }
    options.nUnits = reader.wholeNumber(QStringLiteral("formula-units"), 1, 10000, 0);
    const QStringList& listClass = laueClassNames();
    const int nClass = reader.choice(QStringLiteral("laue"), listClass, -1);
    options.strLaueClass = listClass.value(nClass);
    options.bProfileFit = !reader.isSet(QStringLiteral("no-profile"));
    options.bScale = !reader.isSet(QStringLiteral("no-scale"));
    options.bDecay = options.bScale;
}

void takeStages(COptionReader& reader, RoadOptions& options)
{
    const QStringList& listName = roadStageNames();
    options.stageFrom = RoadStage(reader.choice(QStringLiteral("from"), listName, 0));
    options.stageTo = RoadStage(reader.choice(QStringLiteral("to"), listName,
                                              int(std::max(RoadStage::Integrate, options.stageFrom))));
}

void takeParameters(COptionReader& reader, RoadOptions& options)
{
    options.bConventional = reader.choice(QStringLiteral("setting"), {"as-found", "conventional"}, 0) == 1;
    options.bAccept = reader.isSet(QStringLiteral("accept"));
    options.bWindowDefaults = reader.isSet(QStringLiteral("window-defaults"));
    takeStages(reader, options);
    options.bFindAxis = reader.values(QStringLiteral("axis")).value(0) == QLatin1String("auto");
    options.bIgnoreHotPixelList = reader.isSet(QStringLiteral("ignore-hot-pixels"));
    options.bFindDefects = reader.choice(QStringLiteral("defects"), {"off", "auto"}, 1) == 1;
    const int nStretch = reader.choice(QStringLiteral("apply-stretching"), {"off", "on"}, -1);
    if (nStretch >= 0) {
        options.bApplyStretching = nStretch == 1;
    }
    const int nMethod = reader.choice(QStringLiteral("cell-method"), {"vectors", "directions", "best"}, -1);
    if (nMethod >= 0) {
        options.cellMethod = CellSearchMethod(nMethod);
    }
    PeakMergingParameters& merging = options.merging;
    merging.m_bIntegrate2D = reader.choice(QStringLiteral("intensity-in-frames"), {"2d", "point"}, 0) == 0;
    merging.m_bIntegrateThroughFrames = reader.choice(QStringLiteral("intensity-through-frames"),
                                                      {"maximum", "3d"}, 0) == 1;
    const Parameter& spaceGroup = parameterOf(&IndexingParameters::m_nSpaceGroup);
    options.indexing.m_nSpaceGroup = reader.wholeNumber(
        QStringLiteral("space-group"), int(spaceGroup.box.dfMinimum), int(spaceGroup.box.dfMaximum),
        int(spaceGroup.start()));
    if (reader.isSet(QStringLiteral("space-group"))) {
        options.intensities.nSpaceGroup = options.indexing.m_nSpaceGroup;
    }
    options.indexing.m_bOutputStatistics = reader.isSet(QStringLiteral("statistics"));
    options.indexing.m_bOutputIndexing = true;
    options.bConstantBackground = reader.isSet(QStringLiteral("constant-background"));
    options.refinement.m_bOutputPeakList = reader.isSet(QStringLiteral("pair-list"));
}

void takeFixedGeometry(COptionReader& reader, RoadOptions& options)
{
    const QString strOption = QStringLiteral("fix-geometry");
    for (const QString& strList : reader.values(strOption)) {
        for (const QString& strName : strList.split(QLatin1Char(','))) {
            const std::vector<int> listNumber = geometryNumbersOf(strName);
            if (listNumber.empty()) {
                reader.refuse(QStringLiteral("--%1 %2: no such number").arg(strOption, strName));
            }
            options.listFixedGeometry.insert(options.listFixedGeometry.end(), listNumber.begin(),
                                             listNumber.end());
        }
    }
}

void takeExports(COptionReader& reader, ExportOptions& exports)
{
    for (const QString& strList : reader.values(QStringLiteral("export"))) {
        for (const QString& strKind : strList.split(QLatin1Char(','))) {
            const int nKind = exportNames().indexOf(strKind);
            if (nKind < 0) {
                reader.refuse(QStringLiteral("--export %1: not one of %2")
                                  .arg(strKind, exportNames().join(QStringLiteral(", "))));
            } else if (!exports.listKind.contains(ExportKind(nKind))) {
                exports.listKind.append(ExportKind(nKind));
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
    exports.virtualFrames.nMerged = reader.wholeNumber(QStringLiteral("virtual-frames"), 0, 100000, 0);
    exports.virtualFrames.nStep = reader.wholeNumber(QStringLiteral("virtual-step"), 0, 100000, 0);
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
    parser.setApplicationDescription(QStringLiteral(
        "From a rotation series of electron diffraction frames to cell, indexed reflections, "
        "integrated intensities and the files of structure solution; with --to refine also the "
        "cell refined from peak pairs. The last lines of a run are a summary.\nExit status: 0 "
        "the last stage was reached, 1 bad data, 2 bad usage."));
    const QCommandLineOption helpOption = parser.addHelpOption();
    const QCommandLineOption versionOption = parser.addVersionOption();
    parser.addPositionalArgument(
        QStringLiteral("input"),
        QStringLiteral("PROJECT.ed3d; or the images in series order, or a folder of them, whose headers tell "
                       "what no option does; with --summary files of --json."));
    addOptions(parser, listNumber);
    addSectionOptions(parser);
    addSeriesOptions(parser);

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
        takeKnownCell(reader, road);
        takeFixedGeometry(reader, road);
        takeIntensities(reader, road.intensities);
        takeExports(reader, road.exports);
        takeSections(reader, road.exports);
        takeSeriesOptions(reader, road);
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
