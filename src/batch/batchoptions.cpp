#include "batch/batchoptions.h"

#include "batch/optionreader.h"
#include "batch/optionrules.h"
#include "batch/optiontable.h"
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

/// An option whose value is a number.
struct NumberOption {
    QString strName;  ///< without the dashes
    QString strUnit;  ///< as in the help; empty: none
    QString strHelp;  ///< without unit and full stop
    double dfMinimum;
    double dfMaximum;
    AutoValue autoValue;                 ///< which words are accepted instead of a number
    std::function<void(double)> fnTake;  ///< stores a number that was given
};

QString defaultText(double dfValue)
{
    return QStringLiteral("default %1").arg(dfValue);
}

/// A function that stores a number in a member, which must outlive it.
std::function<void(double)> into(double& dfTarget)
{
    return [&dfTarget](double dfValue) { dfTarget = dfValue; };
}

std::function<void(double)> into(std::optional<double>& dfTarget)
{
    return [&dfTarget](double dfValue) { dfTarget = dfValue; };
}

/// The option of a row of the parameter table. Its value goes into the optional of `o` that belongs to the
/// row's member, see givenNumber(). If there is none, a term of the distortion is noted in o.listDistortion,
/// and any other number goes into its parameter record in `o`.
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
    if (row.option.values == OptionValues::AboveZero) {  // from the smallest number that the page can show
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
        // The records that RoadOptions has; the numbers of the others need an optional or have no option.
        const ParameterRecords records = {nullptr,     &o.hunting, nullptr,       &o.merging, &o.cell,
                                          &o.indexing, nullptr,    &o.refinement, nullptr};
        if (!row.isIn(records)) {
            throw std::logic_error("an option without a place for its number");
        }
        option.fnTake = [&row, records](double dfValue) { row.setValue(records, dfValue); };
    }
    return option;
}

/// All numeric options: the parameters of the pages, from their table, and those that have no page.
QList<NumberOption> numberOptions(RoadOptions& o)
{
    const QList<NumberOption> listTilt = {
        {"tilt-start", "degrees",
         "images only: tilt of the first frame; default: from the headers of the frames, else 0", -360, 360,
         AutoValue::NotAllowed, into(o.dfTiltStart)},
        {"tilt-step", "degrees",
         "images only: tilt step from frame to frame; default: from the headers of the frames, else 0.1",
         -360, 360, AutoValue::NotAllowed, into(o.dfTiltStep)}};
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
        // In the help the tilts of images stand before the relaxation of the tilts.
        if (row.member == ParameterMember(&DataSet::m_dfTiltRelaxation)) {
            listOption += listTilt;
        }
        if (row.option.pszName) {
            listOption.append(optionOf(row, o));
        }
    }
    return listOption + listIntegrate + listExport;
}

/// Adds the options with numbers to the parser, with their help.
void addNumbers(QCommandLineParser& parser, const QList<NumberOption>& listNumber)
{
    for (const NumberOption& option : listNumber) {
        const QString strUnit = option.strUnit.isEmpty() ? QString()
                                                         : QStringLiteral(" [%1]").arg(option.strUnit);
        parser.addOption(
            {option.strName, option.strHelp + strUnit + QLatin1Char('.'), QStringLiteral("number")});
    }
}

/// Reads and stores the numbers that were given.
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

/// Reads the names of files and folders.
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

/// Reads the known cell: numbers, or the name of a CIF, which is read here.
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

/// Reads how the crystal was rotated: "continuous", "stepped", or "precession,0.8" with the angle of the
/// precession in degrees.
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

/// Reads what integration, scaling and the files of structure solution need.
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
    options.strLaueClass = listClass.value(nClass);  // empty for −1: the intensities tell the class
    options.bProfileFit = !reader.isSet(QStringLiteral("no-profile"));
    options.bScale = !reader.isSet(QStringLiteral("no-scale"));
    options.bDecay = options.bScale;  // --no-scale leaves out both, while the window has a box for each
}

/// Reads the first and the last stage. Without --to a run ends with the integration: the refinement of the
/// cell from peak pairs behind it is made only where it was asked for, also by --from.
void takeStages(COptionReader& reader, RoadOptions& options)
{
    const QStringList& listName = roadStageNames();
    options.stageFrom = RoadStage(reader.choice(QStringLiteral("from"), listName, 0));
    options.stageTo = RoadStage(reader.choice(QStringLiteral("to"), listName,
                                              int(std::max(RoadStage::Integrate, options.stageFrom))));
}

/// Reads stages, switches and choices.
void takeParameters(COptionReader& reader, RoadOptions& options)
{
    options.bConventional = reader.choice(QStringLiteral("setting"), {"as-found", "conventional"}, 0) == 1;
    options.bAccept = reader.isSet(QStringLiteral("accept"));
    options.bWindowDefaults = reader.isSet(QStringLiteral("window-defaults"));
    takeStages(reader, options);
    const QStringList listAxis = reader.values(QStringLiteral("axis"));
    options.bFindAxis = !listAxis.isEmpty() && listAxis.last() == QLatin1String("auto");  // as of all options
    options.bIgnoreHotPixelList = reader.isSet(QStringLiteral("ignore-hot-pixels"));
    options.bFindDefects = reader.choice(QStringLiteral("defects"), {"off", "auto"}, 1) == 1;
    // Of the next two −1 means that the option was not given, so that the project or the road decides.
    const int nStretch = reader.choice(QStringLiteral("apply-stretching"), {"off", "on"}, -1);
    if (nStretch >= 0) {
        options.bApplyStretching = nStretch == 1;
    }
    const int nMethod = reader.choice(QStringLiteral("cell-method"), {"vectors", "directions", "best"}, -1);
    if (nMethod >= 0) {
        options.cellMethod = CellSearchMethod(nMethod);  // the words are in the order of the enumeration
    }
    PeakMergingParameters& merging = options.merging;
    merging.m_bIntegrate2D = reader.choice(QStringLiteral("intensity-in-frames"), {"2d", "point"}, 0) == 0;
    merging.m_bIntegrateThroughFrames = reader.choice(QStringLiteral("intensity-through-frames"),
                                                      {"maximum", "3d"}, 0) == 1;
    const Parameter& spaceGroup = parameterOf(&IndexingParameters::m_nSpaceGroup);
    options.indexing.m_nSpaceGroup = reader.wholeNumber(
        QStringLiteral("space-group"), int(spaceGroup.box.dfMinimum), int(spaceGroup.box.dfMaximum),
        int(spaceGroup.start()));
    // Indexing needs some group, and has P1 by default. For the files of structure solution the group is
    // found by its absences unless it was given.
    if (reader.isSet(QStringLiteral("space-group"))) {
        options.intensities.nSpaceGroup = options.indexing.m_nSpaceGroup;
    }
    options.indexing.m_bOutputStatistics = reader.isSet(QStringLiteral("statistics"));
    options.indexing.m_bOutputIndexing = true;
    options.bConstantBackground = reader.isSet(QStringLiteral("constant-background"));
    options.refinement.m_bOutputPeakList = reader.isSet(QStringLiteral("pair-list"));
}

/// Reads the numbers of the geometry that are not to be refined: lists with commas, in one or several
/// options.
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

/// Reads which exports are made, and their options.
/// @param exports  has the numbers of takeNumbers() already
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
        reader.refuse(
            QStringLiteral("--export-only runs no stage: it cannot be combined with --from or --to"));
    }
    const QStringList listFormat = {QStringLiteral("bmp"), QStringLiteral("png"), QStringLiteral("jpg"),
                                    QStringLiteral("tif")};
    exports.strPictureFormat = listFormat.value(
        reader.choice(QStringLiteral("export-format"), listFormat, 1));
    exports.nVolumeEdge = reader.wholeNumber(QStringLiteral("volume-edge"), 10, 2000, 500);
    exports.virtualFrames.nMerged = reader.wholeNumber(QStringLiteral("virtual-frames"), 0, 100000, 0);
    exports.virtualFrames.nStep = reader.wholeNumber(QStringLiteral("virtual-step"), 0, 100000, 0);
    exports.bVolumeScaled = reader.choice(QStringLiteral("volume-type"), {"raw", "scaled"}, 0) == 1;
    // Two decimals, as the box of the window has it. The range is that of the option.
    exports.dfScale = spinBoxValue(exports.dfScale, 2, 0.05, 20);
}

/// With --summary the arguments are summary files, and no option besides --summary itself is allowed.
void checkSummary(const QCommandLineParser& parser, COptionReader& reader)
{
    if (parser.optionNames().size() > 1) {
        reader.refuse(QStringLiteral("--summary cannot be combined with other options"));
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
        QStringLiteral("PROJECT.ed3d; or the images in the order of the series, or their folder: values that "
                       "no option gives are read from their headers; with --summary files of --json."));
    addNamedOptions(parser);
    addNumbers(parser, listNumber);
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
