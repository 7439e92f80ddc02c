#include "road/seriesopening.h"

#include "dataset/calibration.h"
#include "dataset/hotpixelfile.h"
#include "dataset/maskfile.h"
#include "dataset/opening.h"
#include "dataset/pagerounding.h"
#include "dataset/serieschoicefile.h"
#include "dataset/seriesreading.h"
#include "road/earlierfiles.h"
#include "road/framesinput.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace tessera {

namespace {

const int g_nLeastRegion = 16;  // pixels, as for the option

bool openInput(RoadState& state)
{
    const RoadOptions& options = state.options;
    CRoadReport& report = state.report;
    QStringList& listReason = state.listSideReason;
    bool bOpened = false;
    if (options.isProject()) {
        bOpened = openProject(state.dataSet, state.mapping, options.listInput.first(), report, &listReason,
                              AxisLine::MayLack, options.choice ? &*options.choice : nullptr);
    } else {
        QStringList listFile;
        for (const QString& strFile : options.listInput) {
            listFile.append(QFileInfo(strFile).absoluteFilePath());
        }
        bOpened = openImageFiles(state.dataSet, listFile, report, &listReason);
        takeFacts(state);
    }
    if (options.bIgnoreHotPixelList) {
        state.dataSet.m_listHotPixel.clear();
    }
    for (const QString& strReason : listReason) {
        report.addMessage(strReason, bOpened ? Severity::Info : Severity::Error);
    }
    if (!bOpened && !report.reason().isEmpty()) {  // the log has the reason, but not the name of the file
        report.addMessage(report.reason(), Severity::Error);
    }
    listReason += report.redLines();
    return bOpened;
}

void takeGeometry(RoadState& state)
{
    const RoadOptions& options = state.options;
    DataSet& dataSet = state.dataSet;
    takeOver(options.dfWavelength, dataSet.m_dfWavelength);
    const int nBin = dataSet.m_reading.choice.nBin;  // 1 for images, which are binned later
    if (options.dfPixelSize) {
        dataSet.m_dfPixelSize = *options.dfPixelSize * nBin;
    }
    if (options.dfRotationAxis) {
        dataSet.m_dfRotationAxis = wrappedAxis(*options.dfRotationAxis);
        dataSet.m_bRotationAxisKnown = true;
    } else if (!options.isProject()) {
        dataSet.m_bRotationAxisKnown = false;
    }
    takeOver(options.dfTiltRelaxation, dataSet.m_dfTiltRelaxation);
    takeOver(options.dfStretchAmplitude, dataSet.m_dfStretchAmplitude);
    takeOver(options.dfStretchAzimuth, dataSet.m_dfStretchAzimuth);
    for (const auto& [pMember, dfValue] : options.listDistortion) {
        dataSet.m_distortion.*pMember = pMember == &SeriesDistortion::dfRadius ? dfValue / nBin : dfValue;
    }
    if (options.bApplyStretching) {
        state.mapping.m_bApplyStretching = *options.bApplyStretching;
    } else if (options.dfStretchAmplitude) {
        state.mapping.m_bApplyStretching = true;
    }
    const QList<double> listTold = options.facts ? options.facts->tilts.list : QList<double>();
    if (options.dfTiltStep || (options.dfTiltStart && listTold.isEmpty())) {
        const double dfStart = options.dfTiltStart.value_or(listTold.value(0, 0));
        const double dfStep = options.dfTiltStep.value_or(0.1);
        for (int i = 0; i < dataSet.m_listOverallTilt.size(); ++i) {
            dataSet.m_listStageTilt[i] = dataSet.m_listOverallTilt[i] = dfStart + i * dfStep;
        }
    }
}

/// Takes quantities from the calibration that frames without a project lack. Its own pixel size is valid only
/// for its camera length, so a different pixel size in the frames takes precedence.
void takeWhatFramesLack(RoadState& state, Calibration& calibration)
{
    const RoadOptions& options = state.options;
    DataSet& dataSet = state.dataSet;
    const auto tell = [&](const QString& strText, double df, Severity severity) {
        state.report.addMessage(strText.arg(QString::number(df, 'g', 6)), severity);
    };
    if (options.dfWavelength) {
        dataSet.m_dfWavelength = *options.dfWavelength;
    } else if (!options.facts || !options.facts->wavelength.isTold()) {
        dataSet.m_dfWavelength = calibration.dfWavelength;
        tell(QStringLiteral("Wavelength %1 Å, by the calibration."), calibration.dfWavelength,
             Severity::Info);
    }
    const bool bTold = options.facts && options.facts->pixelSize.isTold();
    if (options.dfPixelSize) {
        dataSet.m_dfPixelSize = *options.dfPixelSize;
        return;  // takes precedence over all others
    }
    if (!bTold) {
        dataSet.m_dfPixelSize = calibration.dfSeriesPixelSize;
    }
    if (!calibration.dfPixelSize) {
        if (!bTold) {
            tell(QStringLiteral("Warning: pixel size %1 Å⁻¹, from the series of the calibration, which did "
                                "not determine it."),
                 dataSet.m_dfPixelSize, Severity::Warning);
        }
    } else if (bTold && isOtherCameraLength(calibration, dataSet.m_dfPixelSize)) {
        calibration.dfPixelSize.reset();
        tell(QStringLiteral("Warning: the pixel size of the frames, %1 Å⁻¹, is used, as the calibration has "
                            "another one."),
             dataSet.m_dfPixelSize, Severity::Warning);
    } else {
        tell(QStringLiteral("Pixel size %1 Å⁻¹, as the calibration determined it."), *calibration.dfPixelSize,
             Severity::Info);
    }
}

/// Applies the calibration of the microscope; options are applied after it.
/// @return false, with the reason, if the file cannot be used
bool takeCalibrationFile(RoadState& state)
{
    const QString& strFile = state.options.strCalibrationFile;
    if (strFile.isEmpty()) {
        return true;
    }
    QString strReason;
    std::optional<Calibration> calibration = readCalibration(strFile, &strReason);
    if (!calibration) {
        state.report.fail(strReason);
        return false;
    }
    if (!state.options.isProject()) {
        takeWhatFramesLack(state, *calibration);
    }
    for (const QString& strWarning : takeCalibration(state.dataSet, state.mapping, *calibration)) {
        state.report.addMessage(strWarning, Severity::Warning);
    }
    state.report.addMessage(QStringLiteral("Axis and distortion by the calibration %1 of the series %2 (%3).")
                                .arg(strFile, calibration->strSeries, calibration->strDate));
    return true;
}

/// Applies the choice of frames, binning and summing once the geometry is known, and converts quantities
/// given in pixels of the files to those of the frames.
/// @return false, with the reason
bool takeChoice(RoadState& state)
{
    RoadOptions& options = state.options;
    DataSet& dataSet = state.dataSet;
    QString strReason;
    if (!options.isProject() && options.choice) {
        if (!takeSeriesChoice(dataSet, *options.choice, state.report, &strReason)) {
            state.report.fail(strReason);
            return false;
        }
        if (options.choice->nBin > 1) {
            dataSet.m_listHotPixel.clear();
            static_cast<void>(loadHotPixels(dataSet, state.report));
        }
        if (options.bIgnoreHotPixelList) {
            dataSet.m_listHotPixel.clear();
        }
    }
    const int nBin = dataSet.m_reading.choice.nBin;
    for (std::optional<double>* pdfPlace : {&options.dfCenterX, &options.dfCenterY}) {
        if (*pdfPlace && nBin > 1) {  // without binning, nothing may change by rounding
            *pdfPlace = placeInBins(**pdfPlace, nBin);
        }
    }
    if (options.rcRegion && nBin > 1) {
        const QRect& rc = *options.rcRegion;
        const int nSide = rc.width() / nBin / 2 * 2;  // the side has to be even
        if (nSide < g_nLeastRegion) {
            state.report.fail(
                QStringLiteral("A region of %1 pixels is one of %2 once they are binned; %3 are the least.")
                    .arg(rc.width())
                    .arg(nSide)
                    .arg(g_nLeastRegion));
            return false;
        }
        options.rcRegion = QRect(rc.x() / nBin, rc.y() / nBin, nSide, nSide);
    }
    return true;
}

/// Saves the choice of frames with the results, before any result is written.
bool keepChoice(RoadState& state)
{
    const QString strBase = fileOfProject(state.dataSet, QString());
    QString strReason;
    if (state.options.exports.bOnly ||
        keepSeriesChoice(strBase, state.dataSet.m_reading.choice, &strReason)) {
        return true;
    }
    state.report.fail(strReason);
    return false;
}

StageResult prepareResultFolder(RoadState& state)
{
    QString& strFolder = state.dataSet.m_strProjectDir;
    if (!state.options.strOutDir.isEmpty()) {
        strFolder = QFileInfo(state.options.strOutDir).absoluteFilePath();
        if (!QDir().mkpath(strFolder)) {
            return state.report.failed(QStringLiteral("%1: the folder cannot be made.").arg(strFolder));
        }
    }
    const QFileInfo folder(strFolder);
    if (!folder.isDir() || !folder.isWritable()) {
        return state.report.failed(QStringLiteral("%1: the folder cannot be written.").arg(strFolder));
    }
    state.bResultFolder = true;
    return {};
}

StageResult readMask(RoadState& state)
{
    const QString& strFile = state.options.strMaskFile;
    QString strReason;
    MaskData& mask = state.dataSet.m_maskPeakHunting;
    if (strFile.isEmpty() || readMaskFile(mask, strFile, &strReason) != 0) {
        mask = strFile.isEmpty() ? mask : maskInBins(mask, state.dataSet.m_reading.choice.nBin);
        return {};
    }
    state.report.addMessage(QStringLiteral("Error occured when loading %1 as mask file.").arg(strFile),
                            Severity::Error);
    return state.report.failed(strReason);
}

bool needsFrames(const RoadOptions& options)
{
    return options.stageFrom <= RoadStage::Peaks || options.stageTo >= RoadStage::Refine ||
           !options.exports.listKind.isEmpty();
}

/// The frames in the files from which the frames of the series are made.
QStringList readFrames(const SeriesData& series)
{
    const SeriesReading& reading = series.m_reading;
    if (reading.isPlain()) {
        return series.m_listFrameFile;
    }
    QStringList listFrame;
    for (const int nFirst : reading.listFirst) {
        listFrame += reading.listFile.mid(nFirst, reading.choice.nSum);
    }
    return listFrame;
}

StageResult checkFrameFiles(RoadState& state)
{
    const QStringList listFrame = readFrames(state.dataSet);
    const QStringList listMissing = missingFrames(listFrame);
    if (listMissing.isEmpty()) {
        return {};
    }
    return state.report.refused(QStringLiteral("%1 of %2 frames cannot be read, first %3")
                                    .arg(listMissing.size())
                                    .arg(listFrame.size())
                                    .arg(listMissing.first()));
}

/// If the series cannot be opened, still creates the folder of the results, if one was given, for the log.
void prepareFolderOfLog(RoadState& state)
{
    const QString& strGiven = state.options.strSeriesName;
    state.dataSet.m_strProjectName = strGiven.isEmpty()
                                         ? QFileInfo(state.options.listInput.first()).completeBaseName()
                                         : strGiven;
    if (!state.options.strOutDir.isEmpty()) {
        static_cast<void>(prepareResultFolder(state));  // the reason to report is that of the opening
    }
}

double turnOf(const QList<double>& listTilt)
{
    const auto range = std::minmax_element(listTilt.begin(), listTilt.end());
    return listTilt.isEmpty() ? 0 : *range.second - *range.first;
}

}  // namespace

StageResult openSeries(RoadState& state)
{
    state.report.beginPart(QStringLiteral("open"));
    if (!openInput(state)) {
        prepareFolderOfLog(state);
        return state.report.failed();
    }
    if (!takeCalibrationFile(state)) {
        prepareFolderOfLog(state);
        return state.report.failed();
    }
    takeGeometry(state);
    if (!takeChoice(state)) {
        prepareFolderOfLog(state);
        return state.report.failed();
    }
    const DataSet& dataSet = state.dataSet;
    state.strInputDir = dataSet.m_strProjectDir;
    state.results.open = OpenResult{dataSet.m_strProjectName, dataSet.m_listFrameFile.size(),
                                    turnOf(dataSet.m_listOverallTilt), choiceText(dataSet.m_reading.choice)};
    StageResult result;
    if (dataSet.m_listFrameFile.isEmpty()) {
        result = state.report.refused(
            QStringLiteral("%1: no frames in the file list.").arg(state.options.listInput.first()));
    }
    const StageResult folder = prepareResultFolder(state);
    if (result.finished()) {
        result = folder;
    }
    if (result.finished()) {
        result = readMask(state);
    }
    if (state.options.hotPixels) {
        state.dataSet.m_listHotPixel = *state.options.hotPixels;
    }
    if (result.finished() && needsFrames(state.options)) {
        result = checkFrameFiles(state);
    }
    if (result.finished() && (!keepChoice(state) || !writeMadeProject(state))) {
        result = state.report.failed();
    }
    return result.finished() ? loadEarlierStages(state) : result;
}

}  // namespace tessera
