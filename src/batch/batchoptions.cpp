#include "batch/batchoptions.h"

#include "dataset/pagerounding.h"

#include <QCommandLineParser>
#include <QFileInfo>

#include <algorithm>
#include <cmath>
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

const double LARGE = 1e300;

/// The page parameters by name, with the ranges of the pages.
QList<NumberOption> numberOptions(BatchOptions& o)
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

/// A two-valued or stage option: the position of the text in the list, -1 with a message otherwise.
int choice(const QCommandLineParser& parser, const QString& strName, const QStringList& listValue,
           int nDefault, QString& strError)
{
    if (!parser.isSet(strName)) {
        return nDefault;
    }
    const int nIndex = listValue.indexOf(parser.value(strName));
    if (nIndex < 0 && strError.isEmpty()) {
        strError = QStringLiteral("--%1 %2: not one of %3")
                       .arg(strName, parser.value(strName), listValue.join(QStringLiteral(", ")));
    }
    return nIndex;
}

int wholeNumber(const QCommandLineParser& parser, const QString& strName, int nMinimum, int nMaximum,
                int nDefault, QString& strError)
{
    if (!parser.isSet(strName)) {
        return nDefault;
    }
    bool bOk = false;
    const int nValue = parser.value(strName).toInt(&bOk);
    if ((!bOk || nValue < nMinimum || nValue > nMaximum) && strError.isEmpty()) {
        strError = QStringLiteral("--%1 %2: a whole number from %3 to %4 is wanted")
                       .arg(strName, parser.value(strName))
                       .arg(nMinimum)
                       .arg(nMaximum);
    }
    return nValue;
}

/// "X,Y,SIZE" in whole pixels.
bool parseRegion(const QString& strText, std::optional<QRect>& rcRegion)
{
    if (strText == QLatin1String("auto")) {
        rcRegion.reset();
        return true;
    }
    const QStringList listPart = strText.split(QLatin1Char(','));
    int an[3] = {0, 0, 0};
    for (int i = 0; i < 3; ++i) {
        bool bOk = listPart.size() == 3;
        an[i] = bOk ? listPart[i].trimmed().toInt(&bOk) : 0;
        if (!bOk) {
            return false;
        }
    }
    if (an[2] < 16 || an[2] > 16384 || an[2] % 2 != 0 || an[0] < 0 || an[1] < 0) {
        return false;
    }
    rcRegion = QRect(an[0], an[1], an[2], an[2]);
    return true;
}

void addOptions(QCommandLineParser& parser, const QList<NumberOption>& listNumber)
{
    const QString strStages = batchStageNames().join(QStringLiteral(", "));
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

bool takeNumbers(const QCommandLineParser& parser, const QList<NumberOption>& listNumber, QString& strError)
{
    for (const NumberOption& option : listNumber) {
        if (!parser.isSet(option.strName)) {
            continue;
        }
        const QString strValue = parser.value(option.strName);
        if (option.bAuto && strValue == QLatin1String("auto")) {
            continue;
        }
        bool bOk = false;
        const double dfValue = strValue.toDouble(&bOk);
        if (!bOk || !(dfValue >= option.dfMinimum && dfValue <= option.dfMaximum)) {
            strError =
                QStringLiteral("--%1 %2: a number%3%4 is wanted")
                    .arg(option.strName, strValue,
                         option.dfMaximum < LARGE
                             ? QStringLiteral(" from %1 to %2").arg(option.dfMinimum).arg(option.dfMaximum)
                             : QString(),
                         option.bAuto ? QStringLiteral(" or auto") : QString());
            return false;
        }
        option.fnTake(dfValue);
    }
    return true;
}

void takeExports(const QCommandLineParser& parser, BatchExports& exports, QString& strError)
{
    for (const QString& strList : parser.values(QStringLiteral("export"))) {
        for (const QString& strKind : strList.split(QLatin1Char(','))) {
            if (!batchExportNames().contains(strKind) && strError.isEmpty()) {
                strError = QStringLiteral("--export %1: not one of %2")
                               .arg(strKind, batchExportNames().join(QStringLiteral(", ")));
            }
            if (!exports.listKind.contains(strKind)) {
                exports.listKind.append(strKind);
            }
        }
    }
    exports.bOnly = parser.isSet(QStringLiteral("export-only"));
    if (exports.bOnly && (parser.isSet(QStringLiteral("from")) || parser.isSet(QStringLiteral("to"))) &&
        strError.isEmpty()) {
        strError = QStringLiteral("--export-only runs no stage: --from and --to do not go with it");
    }
    exports.strPictureFolder = parser.value(QStringLiteral("export-folder"));
    const QStringList listFormat = {QStringLiteral("bmp"), QStringLiteral("png"), QStringLiteral("jpg"),
                                    QStringLiteral("tif")};
    exports.strPictureFormat = listFormat.value(
        choice(parser, QStringLiteral("export-format"), listFormat, 1, strError));
    exports.nVolumeEdge = wholeNumber(parser, QStringLiteral("volume-edge"), 10, 2000, 500, strError);
    exports.bVolumeScaled = choice(parser, QStringLiteral("volume-type"), {"raw", "scaled"}, 0, strError) ==
                            1;
    exports.dfScale = spinBoxValue(exports.dfScale, 2, 0.05, 20);
}

/// Rules that concern more than one option.
QString contradiction(const BatchOptions& o)
{
    if (o.listInput.isEmpty()) {
        return QStringLiteral("no project and no images given");
    }
    if (o.isProject() && o.listInput.size() > 1) {
        return QStringLiteral("one project at a time: %1 files given").arg(o.listInput.size());
    }
    if (o.isProject() && (o.dfTiltStart || o.dfTiltStep)) {
        return QStringLiteral("--tilt-start and --tilt-step go with images; the project has its own tilts");
    }
    if (!o.isProject() && !(o.dfWavelength && o.dfPixelSize && o.dfRotationAxis)) {
        return QStringLiteral("images need --wavelength, --pixel-size and --axis");
    }
    if (o.stageTo < o.stageFrom) {
        return QStringLiteral("--to %1 lies before --from %2")
            .arg(batchStageName(o.stageTo), batchStageName(o.stageFrom));
    }
    if (spinBoxValue(o.cell.m_dfCellRangeMin, 1, 1, 1000) >=
        spinBoxValue(o.cell.m_dfCellRangeMax, 1, 1, 1000)) {
        return QStringLiteral("--cell-min has to be below --cell-max");
    }
    // Limits that are left alone are those of the pages, or none.
    const MappingParameters page;
    const auto low = [&](const std::optional<double>& dfGiven, double dfPage) {
        return dfGiven.value_or(o.bWindowDefaults ? dfPage : -LARGE);
    };
    const auto high = [&](const std::optional<double>& dfGiven, double dfPage) {
        return dfGiven.value_or(o.bWindowDefaults ? dfPage : LARGE);
    };
    const struct {
        const char* pszName;
        double dfLow, dfHigh;
    } aLimit[] = {{"resolution", low(o.dfResolutionMin, page.m_dfResolutionMin),
                   high(o.dfResolutionMax, page.m_dfResolutionMax)},
                  {"intensity", low(o.dfIntensityMin, page.m_dfIntensityMin),
                   high(o.dfIntensityMax, page.m_dfIntensityMax)}};
    for (const auto& limit : aLimit) {
        if (limit.dfLow > limit.dfHigh) {
            return QStringLiteral("--%1-min %2 lies above --%1-max %3: no peak would be left")
                .arg(QLatin1String(limit.pszName))
                .arg(limit.dfLow)
                .arg(limit.dfHigh);
        }
    }
    const BatchExports& exports = o.exports;
    if (exports.bOnly && exports.listKind.isEmpty()) {
        return QStringLiteral("--export-only needs --export");
    }
    if (exports.listKind.contains(QStringLiteral("ipf")) &&
        (exports.bOnly || o.stageTo < BatchStage::Index)) {
        return QStringLiteral("--export ipf needs the stage index");
    }
    if (o.nGroup >= 0 && o.stageFrom < BatchStage::Merge) {
        return QStringLiteral("--group chooses from a peak list: it goes with --from merge or later");
    }
    return {};
}

}  // namespace

bool BatchOptions::isProject() const
{
    return !listInput.isEmpty() && QFileInfo(listInput.first()).suffix().toLower() == QLatin1String("ed3d");
}

std::optional<BatchOptions> parseBatchOptions(const QStringList& listArgument, QString& strError,
                                              QString& strHelp)
{
    BatchOptions options;
    const QList<NumberOption> listNumber = numberOptions(options);
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
        strError = parser.errorText();
        return {};
    }
    if (parser.isSet(helpOption)) {
        strHelp = parser.helpText();
        return options;
    }
    if (parser.isSet(versionOption)) {
        strHelp = QStringLiteral("tessera-batch " TESSERA_VERSION "\n");
        return options;
    }
    if (!takeNumbers(parser, listNumber, strError)) {
        return {};
    }
    options.listInput = parser.positionalArguments();
    options.bSummary = parser.isSet(QStringLiteral("summary"));
    if (options.bSummary) {
        if (parser.optionNames().size() > 1) {
            strError = QStringLiteral("--summary goes with no other option");
        } else if (options.listInput.isEmpty()) {
            strError = QStringLiteral("--summary: no files of --json given");
        }
        return strError.isEmpty() ? std::optional<BatchOptions>(options) : std::nullopt;
    }
    options.strOutDir = parser.value(QStringLiteral("out"));
    options.strMaskFile = parser.value(QStringLiteral("mask"));
    options.strCellFile = parser.value(QStringLiteral("cell"));
    options.strJsonFile = parser.value(QStringLiteral("json"));
    for (const char* pszName : {"out", "mask", "cell", "json", "export-folder"}) {
        if (parser.isSet(QLatin1String(pszName)) && parser.value(QLatin1String(pszName)).isEmpty()) {
            strError = QStringLiteral("--%1: no name given").arg(QLatin1String(pszName));
        }
    }
    options.bWindowDefaults = parser.isSet(QStringLiteral("window-defaults"));
    options.stageFrom = BatchStage(choice(parser, QStringLiteral("from"), batchStageNames(), 0, strError));
    options.stageTo = BatchStage(choice(parser, QStringLiteral("to"), batchStageNames(),
                                        int(std::max(BatchStage::Index, options.stageFrom)), strError));
    const QStringList listOnOff = {QStringLiteral("off"), QStringLiteral("on")};
    const int nStretch = choice(parser, QStringLiteral("apply-stretching"), listOnOff, -1, strError);
    if (nStretch >= 0) {
        options.bApplyStretching = nStretch == 1;
    }
    options.merging.m_bIntegrate2D = choice(parser, QStringLiteral("intensity-in-frames"), {"2d", "point"}, 0,
                                            strError) == 0;
    options.merging.m_bIntegrateThroughFrames = choice(parser, QStringLiteral("intensity-through-frames"),
                                                       {"maximum", "3d"}, 0, strError) == 1;
    options.indexing.m_nSpaceGroup = wholeNumber(parser, QStringLiteral("space-group"), 1, 230, 1, strError);
    options.indexing.m_bOutputStatistics = parser.isSet(QStringLiteral("statistics"));
    options.indexing.m_bOutputIndexing = true;
    options.bConstantBackground = parser.isSet(QStringLiteral("constant-background"));
    options.refinement.m_bOutputPeakList = parser.isSet(QStringLiteral("pair-list"));
    takeExports(parser, options.exports, strError);
    options.nGroup = wholeNumber(parser, QStringLiteral("group"), 0, 63, -1, strError);
    options.nJobs = wholeNumber(parser, QStringLiteral("jobs"), 1, 256, 0, strError);
    if (parser.isSet(QStringLiteral("region")) &&
        !parseRegion(parser.value(QStringLiteral("region")), options.rcRegion) && strError.isEmpty()) {
        strError = QStringLiteral(
                       "--region %1: X,Y,SIZE in whole pixels is wanted, SIZE even and at least 16")
                       .arg(parser.value(QStringLiteral("region")));
    }
    if (strError.isEmpty()) {
        strError = contradiction(options);
    }
    if (!strError.isEmpty()) {
        return {};
    }
    return options;
}

}  // namespace tessera
