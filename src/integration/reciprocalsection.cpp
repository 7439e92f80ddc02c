#include "integration/reciprocalsection.h"

#include "frames/framewalk.h"
#include "frames/spotsize.h"
#include "integration/pixelmask.h"
#include "integration/ringmedian.h"
#include "integration/sectionsum.h"
#include "integration/seriesframes.h"
#include "records/availablememory.h"
#include "records/runends.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tessera {

namespace {

const int g_nMostSide = 4001;       // pixels, more than any detector has
const double g_dfUsualSigma = 1.5;  // pixels, used if there are no clear spots
const double g_dfWidths = 2.355;    // FWHM of a Gaussian in sigmas
// Fraction of the layer distance, so that neighbouring layers stay outside.
const double g_dfMostOfLayer = 0.5;
const double g_dfMargin = 1.05;  // factor beyond the outermost peaks, so that their spots are complete
// Relative deviation of a length, tolerated because of a rough geometry.
const double g_dfMostOffSymmetry = 0.03;

/// The 99th percentile of d* of the indexed peaks, since a few of them are always noise; 0 without peaks.
double reachOfPeaks(const DataSet& dataSet)
{
    std::vector<double> listDStar;
    for (const QList<Peak3D>& listPeak : dataSet.m_vecPeakIndexedOnFrame) {
        for (const Peak3D& peak : listPeak) {
            if (std::isfinite(peak.dfDStar)) {
                listDStar.push_back(peak.dfDStar);
            }
        }
    }
    if (listDStar.empty()) {
        return 0;
    }
    const auto it = listDStar.begin() + std::ptrdiff_t(0.99 * double(listDStar.size() - 1));
    std::nth_element(listDStar.begin(), it, listDStar.end());
    return g_dfMargin * *it;
}

/// The greatest d* of the given places on the middle frame.
double reachOfPlaces(const SeriesGeometry& series, const std::vector<FramePlace>& listPlace)
{
    const FramePlace& beam = series.listBeam[series.listBeam.size() / 2];
    double dfReach = 0;
    for (const FramePlace& place : listPlace) {
        const DoubleVector point = spherePoint(series.geometry.plane, series.geometry,
                                               {place.dfX - beam.dfX, place.dfY - beam.dfY});
        dfReach = std::max(dfReach, std::sqrt(dot(point, point)));
    }
    return dfReach;
}

double reachOf(const DataSet& dataSet, const SeriesGeometry& series)
{
    const double dfRight = series.sizeFrame.width() - 1, dfBottom = series.sizeFrame.height() - 1;
    const double dfCorner = reachOfPlaces(series, {{0, 0}, {dfRight, 0}, {0, dfBottom}, {dfRight, dfBottom}});
    const double dfEdge = reachOfPlaces(
        series, {{0, dfBottom / 2}, {dfRight, dfBottom / 2}, {dfRight / 2, 0}, {dfRight / 2, dfBottom}});
    const double dfPeaks = reachOfPeaks(dataSet);
    return dfPeaks > 0 ? std::min(dfPeaks, dfCorner) : dfEdge;
}

/// The median step of the tilt, degrees, so that gaps of the series remain gaps.
double turnOfFrame(const SeriesGeometry& series)
{
    std::vector<double> listStep;
    for (size_t n = 1; n < series.listTilt.size(); ++n) {
        listStep.push_back(std::fabs(series.listTilt[n] - series.listTilt[n - 1]));
    }
    if (listStep.empty()) {
        return 0;
    }
    const auto it = listStep.begin() + std::ptrdiff_t(listStep.size() / 2);
    std::nth_element(listStep.begin(), it, listStep.end());
    return *it * std::fabs(series.geometry.turn.scale);
}

/// Whether the operations preserve the lengths of the cell.
bool fitsBasis(const std::vector<IndexOperation>& listOperation, const SectionBasis& basis)
{
    for (const IndexOperation& operation : listOperation) {
        for (size_t n = 0; n < 3; ++n) {
            for (size_t m = 0; m < 3; ++m) {
                DoubleVector one = {}, other = {};
                for (size_t i = 0; i < 3; ++i) {
                    for (size_t j = 0; j < 3; ++j) {
                        one[i] += operation[3 * j + n] * basis[j][i];
                        other[i] += operation[3 * j + m] * basis[j][i];
                    }
                }
                const double dfScale = std::sqrt(dot(basis[n], basis[n]) * dot(basis[m], basis[m]));
                if (!(std::fabs(dot(one, other) - dot(basis[n], basis[m])) <
                      2 * g_dfMostOffSymmetry * dfScale)) {
                    return false;
                }
            }
        }
    }
    return true;
}

QString whatIsMissing(const DataSet& dataSet, const SeriesGeometry& series)
{
    if (dataSet.m_listFrameFile.isEmpty() || series.frameCount() != dataSet.m_listFrameFile.size() ||
        series.listBeam.size() != series.listTilt.size()) {
        return QStringLiteral("For a section, frames with tilts and shifts are needed.");
    }
    if (series.sizeFrame.isEmpty()) {
        return QStringLiteral("None of the frames can be read.");
    }
    if (!(series.geometry.dfWavelength > 0) || !(series.geometry.dfPixelSize > 0)) {
        return QStringLiteral("Wavelength and pixel size must be known for a section.");
    }
    return {};
}

/// Sections without values for the requested planes; none with the reason if they cannot be made.
std::optional<std::vector<ReciprocalSection>> emptySections(const DataSet& dataSet,
                                                            const SeriesGeometry& series,
                                                            const std::vector<SectionPlane>& listPlane,
                                                            const SectionOptions& options, double dfSigma,
                                                            QString& strReason)
{
    std::vector<ReciprocalSection> listSection;
    for (const SectionPlane& plane : listPlane) {
        ReciprocalSection section;
        section.plane = plane;
        section.basis = series.geometry.aBasis;
        const std::optional<SectionFrame> frame = sectionFrame(plane, section.basis);
        if (!frame) {
            strReason = QStringLiteral("The vectors of the cell are co-planar.");
            return {};
        }
        section.frame = *frame;
        section.dfStep = series.geometry.dfPixelSize;
        section.dfMaxDStar = options.dfMaxDStar > 0 ? options.dfMaxDStar : reachOf(dataSet, series);
        section.dfThickness = options.dfThickness > 0 ? options.dfThickness
                                                      : std::min(g_dfWidths * dfSigma * section.dfStep,
                                                                 g_dfMostOfLayer * section.frame.dfSpacing);
        const double dfHalf = std::ceil(section.dfMaxDStar / section.dfStep);
        if (!(2 * dfHalf + 1 <= g_nMostSide)) {
            strReason = QStringLiteral("A section up to d* = %1 Å⁻¹ would have more than %2 pixels a side.")
                            .arg(section.dfMaxDStar, 0, 'f', 3)
                            .arg(g_nMostSide);
            return {};
        }
        section.nSide = 2 * int(dfHalf) + 1;
        if (!(std::fabs(section.frame.dfHeight) < section.dfMaxDStar)) {
            strReason = QStringLiteral("%1 lies beyond d* = %2 Å⁻¹, as far as the section reaches.")
                            .arg(plane.strName)
                            .arg(section.dfMaxDStar, 0, 'f', 3);
            return {};
        }
        section.bWithoutRings = options.bWithoutRings;
        section.strLaueClass = options.strLaueClass;
        listSection.push_back(section);
    }
    return listSection;
}

/// The contribution of a frame to all sections, or why it could not be read.
struct FrameParts {
    QString strFault;
    std::vector<SectionPart> listPart;
};

/// Adds up the contributions of all frames in their order.
class CSectionRun {
public:
    CSectionRun(const DataSet& dataSet, const SeriesGeometry& series,
                const std::vector<IndexOperation>& listOperation, std::vector<ReciprocalSection>& listSection)
        : m_series(series),
          m_frames(dataSet, series.sizeFrame),
          m_listMasked(pixelMask(series.sizeFrame, dataSet.m_maskPeakHunting, dataSet.m_listHotPixel)),
          m_listSection(listSection)
    {
        for (const ReciprocalSection& section : listSection) {
            const size_t nPixels = size_t(section.nSide) * size_t(section.nSide);
            m_listLay.emplace_back(series, section, listOperation, turnOfFrame(series));
            m_listSum.emplace_back(nPixels);
            m_listWeight.emplace_back(nPixels);
        }
    }

    RunOutcome run(int nJobs, CRunReport& report)
    {
        CFrameWalk walk(m_series.frameCount(), StopAsked::AfterEachFrame, report);
        walk.showProgress(ProgressPlace::TaskBarToo);
        const RunOutcome outcome = walk.runAhead<FrameParts>(
            nJobs, [this] { return [this](int nFrame) { return layFrame(nFrame); }; },
            [this](int, const FrameParts& parts) {
                take(parts);
                return true;
            });
        if (!outcome.finished()) {
            return outcome;
        }
        if (m_nRead == 0) {
            return failRun(report, m_strFault);
        }
        if (!m_strFault.isEmpty()) {
            report.addMessage(QStringLiteral("%L1 frames are left out of the sections; the first: %2")
                                  .arg(m_series.frameCount() - m_nRead)
                                  .arg(m_strFault),
                              Severity::Error);
        }
        for (size_t n = 0; n < m_listSection.size(); ++n) {
            finish(n);
        }
        return outcome;
    }

private:
    FrameParts layFrame(int nFrame) const
    {
        FrameParts parts;
        const SeriesFrame frame = m_frames.read(nFrame);
        if (!frame.pImage) {
            parts.strFault = frame.strFault;
            return parts;
        }
        if (m_listSection.front().bWithoutRings) {
            takeOffRings(*frame.pImage, m_series.listBeam[nFrame], m_listMasked);
        }
        for (const CSectionSum& lay : m_listLay) {
            parts.listPart.push_back(lay.layFrame(*frame.pImage, nFrame, m_listMasked));
        }
        return parts;
    }

    void take(const FrameParts& parts)
    {
        if (!parts.strFault.isEmpty()) {
            if (m_strFault.isEmpty()) {
                m_strFault = parts.strFault;
            }
            return;
        }
        ++m_nRead;
        for (size_t n = 0; n < parts.listPart.size(); ++n) {
            const SectionPart& part = parts.listPart[n];
            for (size_t i = 0; i < part.listSum.size(); ++i) {
                m_listSum[n][i] += double(part.listSum[i]);
                m_listWeight[n][i] += double(part.listWeight[i]);
            }
        }
    }

    void finish(size_t n)
    {
        ReciprocalSection& section = m_listSection[n];
        section.nFrames = m_nRead;
        section.listValue.reserve(m_listSum[n].size());
        for (size_t i = 0; i < m_listSum[n].size(); ++i) {
            section.listValue.push_back(m_listWeight[n][i] > 0 ? float(m_listSum[n][i] / m_listWeight[n][i])
                                                               : std::numeric_limits<float>::quiet_NaN());
        }
    }

    const SeriesGeometry& m_series;
    const CSeriesFrames m_frames;
    const std::vector<char> m_listMasked;
    std::vector<ReciprocalSection>& m_listSection;
    std::vector<CSectionSum> m_listLay;
    std::vector<std::vector<double>> m_listSum, m_listWeight;
    int m_nRead = 0;
    QString m_strFault;  ///< the first fault
};

/// Memory of the sums, and of each thread.
bool hasMemory(const std::vector<ReciprocalSection>& listSection, int nJobs)
{
    std::uint64_t nPixels = 0;
    for (const ReciprocalSection& section : listSection) {
        nPixels += std::uint64_t(section.nSide) * std::uint64_t(section.nSide);
    }
    return hasMemoryFor(
        nPixels * (2 * sizeof(double) + sizeof(float) + 2 * sizeof(float) * std::uint64_t(2 * nJobs + 1)));
}

}  // namespace

RunResult<std::vector<ReciprocalSection>> makeSections(const DataSet& dataSet, const SeriesGeometry& series,
                                                       const std::vector<SectionPlane>& listPlane,
                                                       const SectionOptions& options, int nJobs,
                                                       CRunReport& report)
{
    QString strReason = whatIsMissing(dataSet, series);
    const std::vector<IndexOperation> listOperation = laueOperations(options.strLaueClass);
    if (strReason.isEmpty() && listPlane.empty()) {
        strReason = QStringLiteral("No plane was requested.");
    } else if (strReason.isEmpty() && !options.strLaueClass.isEmpty() &&
               (listOperation.empty() || !fitsBasis(listOperation, series.geometry.aBasis))) {
        strReason = QStringLiteral("The cell in force does not have the symmetry %1 in its standard setting.")
                        .arg(options.strLaueClass);
    }
    if (!strReason.isEmpty()) {
        return refuseRun(report, strReason);
    }
    MeasuredSpotSize measured;
    if (!(options.dfThickness > 0)) {
        measured = measureSpotSize(dataSet, report, nJobs);
    }
    if (!measured.outcome.finished()) {
        return measured.outcome;
    }
    auto listMade = emptySections(dataSet, series, listPlane, options,
                                  measured.size ? measured.size->dfSigma : g_dfUsualSigma, strReason);
    if (!listMade) {
        return refuseRun(report, strReason);
    }
    if (!hasMemory(*listMade, nJobs)) {
        return refuseRun(report, QStringLiteral("The sections need more memory than is available."));
    }
    CSectionRun run(dataSet, series, listOperation, *listMade);
    const RunOutcome outcome = run.run(nJobs, report);
    if (!outcome.finished()) {
        return outcome;
    }
    return std::move(*listMade);
}

}  // namespace tessera
