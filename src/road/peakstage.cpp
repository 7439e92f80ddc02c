#include "road/stages.h"

#include "dataset/hotpixelfile.h"
#include "dataset/pagerounding.h"
#include "frames/autothreshold.h"
#include "frames/peakhunting.h"
#include "frames/serieslook.h"
#include "frames/suggestpeaksearch.h"
#include "road/takesuggestion.h"

#include <QDir>
#include <QFileInfo>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace tessera {

namespace {

int countPeaks(const QList<QList<Peak3D>>& listPeakFrame)
{
    int nCount = 0;
    for (const QList<Peak3D>& listPeak : listPeakFrame) {
        nCount += listPeak.size();
    }
    return nCount;
}

using Hunt = PeakHuntingParameters;

GivenValues givenRadii(RoadOptions& options)
{
    return {{&Hunt::m_dfPeakRadius, &options.dfPeakRadius},
            {&Hunt::m_dfBackgroundRadius, &options.dfBackgroundRadius},
            {&Hunt::m_dfIntegrationRadius, &options.dfIntegrationRadius},
            {&Hunt::m_dfIntegrationBackground, &options.dfIntegrationBackground}};
}

/// Adds the defects found on the frames to the mask of peak hunting.
void leaveDefectsOut(RoadState& state, const FrameDefects& defects)
{
    for (const QString& strLine : tellDefects(defects)) {
        state.report.addMessage(strLine, Severity::Info);
    }
    state.dataSet.m_maskPeakHunting.listPolygon += maskOfDefects(defects).listPolygon;
    state.dataSet.m_listHotPixel += defects.listHotPixel;
}

/// Writes the list of hot pixels for later runs and for the window, which read the list beside the project.
/// An existing list is the user's and is kept; in another folder nobody would read the list.
void keepHotPixels(RoadState& state, const QList<QPoint>& listFound)
{
    const QString strFile = fileOfHotPixels(state.dataSet);
    const QFileInfo file(strFile);
    if (listFound.isEmpty() || file.exists() || file.isSymLink() ||
        QDir(state.strInputDir).canonicalPath() != QDir(state.dataSet.m_strProjectDir).canonicalPath()) {
        return;
    }
    QString strReason;
    if (addToHotPixelFile(strFile, listFound, &strReason)) {
        state.bHotPixelsListed = true;
        state.report.addMessage(
            QStringLiteral("The hot pixels are listed in %1, for later runs and the window.").arg(strFile),
            Severity::Info);
    } else {
        state.report.addMessage(QStringLiteral("The list of hot pixels was not written: %1").arg(strReason),
                                Severity::Warning);
    }
}

/// Radii that were not given follow from the size of the spots; without spots they are those of the page.
void takeRadii(RoadState& state, const std::optional<SpotSize>& size, const GivenValues& listGiven,
               ParameterRecords& records)
{
    if (!size) {
        state.report.addMessage(
            QStringLiteral("The size of the spots cannot be determined from the frames looked at: the radii "
                           "of the peak search are those of the page."),
            Severity::Info);
    }
    takeSuggestion(suggestPeakSearch(size, state.options.dfPeakRadius), listGiven, records, state.report);
}

/// Determines defects and radii from the frames, as far as requested.
/// @param listHotPixel  gets the hot pixels that were found
/// @return false if the run was stopped or memory is short
bool learnFromFrames(RoadState& state, QList<QPoint>& listHotPixel)
{
    RoadOptions& options = state.options;
    const GivenValues listGiven = givenRadii(options);
    ParameterRecords records{};
    std::get<Hunt*>(records) = &options.hunting;
    SeriesLookWanted wanted;
    wanted.bDefects = options.bFindDefects && !options.bWindowDefaults && options.strMaskFile.isEmpty();
    wanted.bSpotSize = !options.bWindowDefaults && anyIsOpen(listGiven);
    if (wanted.bDefects || wanted.bSpotSize) {
        const std::optional<SeriesLook> look = lookAtSeries(state.dataSet, wanted, state.report,
                                                            options.jobs());
        if (!look) {
            return false;
        }
        leaveDefectsOut(state, look->defects);
        listHotPixel = look->defects.listHotPixel;
        if (wanted.bSpotSize) {
            takeRadii(state, look->size, listGiven, records);
        }
    }
    takeGiven(listGiven, records);
    return true;
}

/// Where no spot can be measured the radii are those of the page, which suit frames that are not binned.
void hintAtBins(RoadState& state, const Hunt& parameters)
{
    const int nBin = state.dataSet.m_reading.choice.nBin;
    if (nBin > 1) {
        state.report.addMessage(
            QStringLiteral(
                "Hint: the frames are binned %1 × %1, and radii count binned pixels, in which spots "
                "are smaller. Try --peak-radius below %2 and --background-radius below %3, or "
                "smaller bins.")
                .arg(nBin)
                .arg(parameters.m_dfPeakRadius)
                .arg(parameters.m_dfBackgroundRadius),
            Severity::Warning);
    }
}

}  // namespace

StageResult runPeakStage(RoadState& state)
{
    beginStage(state, RoadStage::Peaks);
    const int nJobs = state.options.jobs();
    DataSet& dataSet = state.dataSet;
    CPeakFilters filters;
    PeakHuntingParameters& parameters = state.options.hunting;
    QList<QPoint> listHotPixel;
    if (!learnFromFrames(state, listHotPixel)) {
        return state.report.failed();
    }
    takeOver(state.options.dfPeakThreshold, parameters.m_dfPeakThreshold);
    roundToPages(parameters);
    if (!state.options.dfPeakThreshold && !state.options.bWindowDefaults) {
        const std::optional<PeakThreshold> found = estimatePeakThreshold(
            dataSet, parameters, filters, state.report, nJobs, SmallValues::Scaled);
        if (!found) {
            return state.report.failed();
        }
        parameters.m_dfPeakThreshold = found->dfThreshold;
        parameters.m_dfFrameScale = found->dfScale;
    }
    PeakHuntingOptions options;
    options.bSaveEmpty = false;
    options.bKeepImages = false;
    options.nJobs = nJobs;
    const RunOutcome outcome = runPeakHunting(dataSet, parameters, filters, state.report, options);
    if (!outcome.finished()) {
        return state.report.ended(outcome);
    }
#ifdef __GLIBC__
    malloc_trim(0);  // returns the work images of the threads to the system
#endif
    PeakResult& peaks = state.results.peaks.emplace();
    peaks.dfThreshold = parameters.m_dfPeakThreshold;
    peaks.dfPeakRadius = parameters.m_dfPeakRadius;
    peaks.dfBackgroundRadius = parameters.m_dfBackgroundRadius;
    peaks.dfFrameScale = parameters.m_dfFrameScale;
    peaks.nPeaks = countPeaks(dataSet.m_listPeakFrame);
    if (peaks.nPeaks == 0) {
        hintAtBins(state, parameters);
        return state.report.failed(QStringLiteral("No peaks were found on any frame."));
    }
    keepHotPixels(state, listHotPixel);
    const QString strFile = fileOfProject(dataSet, ResultFile::Peaks);
    if (!outcome.strReason.isEmpty()) {
        return state.report.notWritten(strFile, outcome.strReason);
    }
    state.results.listFile.append(strFile);
    return {};
}

}  // namespace tessera
