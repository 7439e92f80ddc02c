#include "frames/positionrefinement.h"

#include "crystal/reflectionindices.h"
#include "frames/framerun.h"
#include "geometry/angles.h"
#include "geometry/rotationgeometry.h"
#include "imaging/peakfit2d.h"
#include "records/runends.h"

#include <QStringList>

#include <cmath>
#include <cstddef>

namespace tessera {

namespace {

const int g_nFitHalfSize = 20;
const double g_dfSaturation = 3500.0;
const int g_nNamedFits = 20;  // rejected fits that are named in the log; the others are only counted
const char* const g_pName = "Peak position refinement";

// Errors and info of a fit; −1 where the peak keeps its former position.
struct FitQuality {
    double dfErrorX = -1, dfErrorY = -1, dfInfo = -1;
};

// The fits of one frame, in the order of its peaks.
struct FittedFrame {
    std::vector<double> vecX, vecY;  // fitted positions
    std::vector<std::vector<double>> vecFit;
    QList<QPointF> listPosition;  // positions to be used: fitted, or former ones where the fit was rejected
    QList<FitQuality> listQuality;
    std::vector<int> vecLost;  // numbers of the peaks whose fits were rejected
};

// Whether a position is on a pixel of the frame, which later measurements need.
bool liesInside(const CImgObj<float>& img, const QPointF& pt)
{
    const double dfX = std::round(pt.x()), dfY = std::round(pt.y());
    return dfX >= 0 && dfX < img.Width() && dfY >= 0 && dfY < img.Height();
}

FittedFrame fitFrame(const CImgObj<float>& img, const QList<Peak3D>& listPeak,
                     const PositionRefinementOptions& options)
{
    FittedFrame fitted;
    for (const Peak3D& peak : listPeak) {
        fitted.vecX.push_back(peak.dfX2D);
        fitted.vecY.push_back(peak.dfY2D);
    }
    fitted.vecFit = FitPeakList(img, fitted.vecX, fitted.vecY, g_nFitHalfSize, g_dfSaturation,
                                options.bConstantBackground, options.nJobs);
    for (int j = 0; j < listPeak.size(); ++j) {
        const Peak3D& peak = listPeak[j];
        const QPointF ptFit(fitted.vecX[j], fitted.vecY[j]);
        const bool bBelieved = std::fabs(ptFit.x() - peak.dfX2D) <= g_nFitHalfSize &&
                               std::fabs(ptFit.y() - peak.dfY2D) <= g_nFitHalfSize && liesInside(img, ptFit);
        fitted.listPosition.append(bBelieved ? ptFit : QPointF(peak.dfX2D, peak.dfY2D));
        const std::vector<double>& vecFit = fitted.vecFit[j];
        fitted.listQuality.append(bBelieved ? FitQuality{vecFit[6], vecFit[8], vecFit[10]} : FitQuality{});
        if (!bBelieved) {
            fitted.vecLost.push_back(j);
        }
    }
    return fitted;
}

// The run over the frames of both refinements. fnStore takes the fits of a frame before they are shown.
class CRefinementRun {
public:
    CRefinementRun(DataSet& dataSet, const QVector<QList<Peak3D>>& peaksSorted, CRunReport& report,
                   const PositionRefinementOptions& options)
        : m_run(dataSet, report, QLatin1String(g_pName)),
          m_peaksSorted(peaksSorted),
          m_report(report),
          m_options(options)
    {
        if (peaksSorted.size() != m_run.frameCount()) {
            m_refusal = refuseRun(report, QStringLiteral("Frame counts do not match."));
        } else {
            m_run.begin();
        }
    }

    using FnStore = std::function<void(int nFrame, const QList<Peak3D>& listPeak, const FittedFrame& fitted)>;

    bool begun() const { return m_refusal.finished(); }
    /// The outcome of a run that did not begin.
    const RunOutcome& refusal() const { return m_refusal; }

    RunOutcome walk(const FnStore& fnStore)
    {
        int nLost = 0;
        QStringList listLost;
        const RunOutcome outcome = m_run.walk([&](int nFrame) {
            if (m_peaksSorted.size() != m_run.frameCount()) {
                return false;  // the list was changed while events were handled
            }
            const QList<Peak3D> listPeak = m_peaksSorted[nFrame];
            if (listPeak.isEmpty()) {
                fnStore(nFrame, listPeak, {});
                return true;
            }
            const CImgObj<float>* pImage = m_run.load(nFrame);
            if (!pImage) {
                return false;
            }
            CImgObj<float> img;  // a copy, as the view may show another frame while events are handled
            img.Copy(pImage);
            if (m_options.fnBeforeFit) {
                m_options.fnBeforeFit(nFrame, peakPositions(listPeak));
            }
            const FittedFrame fitted = fitFrame(img, listPeak, m_options);
            if (m_peaksSorted.size() != m_run.frameCount()) {
                return false;
            }
            for (int j : fitted.vecLost) {
                if (++nLost <= g_nNamedFits) {
                    listLost.append(QStringLiteral("frame %1 (%2, %3, %4)")
                                        .arg(nFrame + 1)
                                        .arg(roundIndex(listPeak[j].dfH))
                                        .arg(roundIndex(listPeak[j].dfK))
                                        .arg(roundIndex(listPeak[j].dfL)));
                }
            }
            fnStore(nFrame, listPeak, fitted);
            if (m_options.fnAfterFit) {
                m_options.fnAfterFit(nFrame, fitted.listPosition);
            }
            return true;
        });
        if (nLost > 0) {
            m_report.addMessage(
                QStringLiteral(
                    "%L1 fits left their boxes or the frame; these peaks keep their positions: %2%3.")
                    .arg(nLost)
                    .arg(listLost.join(QStringLiteral(", ")),
                         nLost > g_nNamedFits ? QStringLiteral(", ...") : QString()),
                Severity::Error);
        }
        return outcome;
    }

    CFrameRun& run() { return m_run; }

private:
    CFrameRun m_run;
    const QVector<QList<Peak3D>>& m_peaksSorted;
    CRunReport& m_report;
    const PositionRefinementOptions& m_options;
    RunOutcome m_refusal;  // Finished if the run was not refused
};

// The geometry that the long table needs.
struct TableGeometry {
    BeamCentres centres;
    double dfPixelSize;
    double dfRotationAxis;
    bool bMovesPlaces;  // by more than the stretching, which is a single factor
};

QString longTableRow(const Peak3D& peak, int nFrame, const QPointF& ptFit, const std::vector<double>& vecFit,
                     const TableGeometry& geometry)
{
    const QPointF ptCentre = frameCentre(geometry.centres, nFrame);
    const QPointF ptOld(peak.dfX2D, peak.dfY2D);
    const QPointF ptFromBeam = ptFit - ptCentre;
    const double dfStretching = peak.dfX2DCorrected / (ptOld.x() - ptCentre.x());
    double dfRX = dfStretching * ptFromBeam.x();  // may be infinite
    double dfRY = dfStretching * ptFromBeam.y();
    if (geometry.bMovesPlaces) {  // with the distortion at the former position
        dfRX = ptFit.x() - ptOld.x() + peak.dfX2DCorrected;
        dfRY = ptFit.y() - ptOld.y() + peak.dfY2DCorrected;
    }
    const double dfR = std::sqrt(dfRX * dfRX + dfRY * dfRY);
    const double dfAzimuth = screenAzimuth360(dfRX, dfRY);
    const int nH = roundIndex(peak.dfH), nK = roundIndex(peak.dfK), nL = roundIndex(peak.dfL);
    const double dfIndex = std::sqrt(double(nH) * nH + double(nK) * nK + double(nL) * nL);
    return QStringLiteral(
               "%1 %2 %3 %4 %5 %6 %7 %8 %9 %10 %11 %12 %13 %14 %15 %16 %17 %18 %19 %20 %21 %22 %23 "
               "%24 %25\n")
        .arg(double(peak.nFrame + 1), 4, 'g')
        .arg(double(nH), 3, 'g')
        .arg(double(nK), 3, 'g')
        .arg(double(nL), 3, 'g')
        .arg(peak.dfIPoint, 8, 'f', 1)
        .arg(dfR * geometry.dfPixelSize, 6, 'f', 4)
        .arg(double(calDistanceToRotationAxis(geometry.centres, geometry.dfRotationAxis, nFrame, ptOld)), 8,
             'f', 1)
        .arg(ptCentre.x(), 8, 'f', 2)
        .arg(ptCentre.y(), 8, 'f', 2)
        .arg(ptOld.x(), 8, 'f', 1)
        .arg(ptOld.y(), 8, 'f', 1)
        .arg(ptFit.x(), 8, 'f', 2)
        .arg(ptFit.y(), 8, 'f', 2)
        .arg(dfRX, 8, 'f', 2)
        .arg(dfRY, 8, 'f', 2)
        .arg(dfAzimuth, 6, 'f', 1)
        .arg(double(calAngleToRotationAxis(geometry.centres, geometry.dfRotationAxis, nFrame, peak)), 8, 'f',
             1)
        .arg(std::hypot(ptFromBeam.x(), ptFromBeam.y()) / dfIndex, 8, 'f', 3)
        .arg(dfR / dfIndex, 8, 'f', 3)
        .arg(ptFit.x() - ptOld.x(), 8, 'f', 2)
        .arg(ptFit.y() - ptOld.y(), 8, 'f', 2)
        .arg(vecFit[6], 8, 'f', 4)
        .arg(vecFit[8], 8, 'f', 4)
        .arg(vecFit[10], 0, 'g')
        .arg(double(peak.nRGroup), 0, 'g');
}

QString shortTableRow(int nNumber, const Peak3D& peak, int nFrame, const QPointF& ptNew,
                      const FitQuality& quality)
{
    return QStringLiteral("%1 %2 %3 %4 %5 %6 %7 %8 %9 %10 %11 %12\n")
        .arg(nNumber, 4)
        .arg(nFrame + 1, 4)
        .arg(roundIndex(peak.dfH), 4)
        .arg(roundIndex(peak.dfK), 4)
        .arg(roundIndex(peak.dfL), 4)
        .arg(peak.dfIPoint, 8, 'f', 1)
        .arg(peak.dfX2D, 8, 'f', 1)
        .arg(peak.dfY2D, 8, 'f', 1)
        .arg(ptNew.x(), 8, 'f', 1)
        .arg(ptNew.y(), 8, 'f', 1)
        .arg(quality.dfErrorX, 10, 'f', 4)
        .arg(quality.dfErrorY, 10, 'f', 4);
}

}  // namespace

RefinedPositions refinePeakPosition(DataSet& dataSet, const QVector<QList<Peak3D>>& peaksSorted,
                                    CRunReport& report, const PositionRefinementOptions& options)
{
    // a copy that shares the peaks, for the data set may change under the run;
    // NOLINTNEXTLINE(*-copy-initialization)
    const QVector<QList<Peak3D>> peaksKept = peaksSorted;
    CRefinementRun refinement(dataSet, peaksKept, report, options);
    if (!refinement.begun()) {
        return {{}, refinement.refusal()};
    }
    RefinedPositions refined;
    const TableGeometry geometry{refinement.run().series().centres, dataSet.m_dfPixelSize,
                                 dataSet.m_dfRotationAxis, dataSet.m_distortion.movesPlaces()};
    QString strTable;
    refined.outcome = refinement.walk(
        [&](int nFrame, const QList<Peak3D>& listPeak, const FittedFrame& fitted) {
            QList<Peak3D> listRefined;
            for (int j = 0; j < listPeak.size(); ++j) {
                const std::vector<double>& vecFit = fitted.vecFit[j];
                strTable += longTableRow(listPeak[j], nFrame, QPointF(fitted.vecX[j], fitted.vecY[j]), vecFit,
                                         geometry);
                Peak3D peak = listPeak[j];
                peak.dfX2DCorrected = peak.dfX2D;
                peak.dfY2DCorrected = peak.dfY2D;
                peak.dfX2D = fitted.listPosition[j].x();
                peak.dfY2D = fitted.listPosition[j].y();
                const FitQuality& quality = fitted.listQuality[j];
                peak.fX3D = float(quality.dfErrorX);
                peak.fY3D = float(quality.dfErrorY);
                peak.fZ3D = float(quality.dfInfo);
                listRefined.append(peak);
            }
            refined.vecPeak.append(listRefined);
        });
    if (!strTable.isEmpty()) {
        report.addMessage(strTable, Severity::Info);
    }
    refinement.run().sayEnd(refined.outcome);
    return refined;
}

QVector<std::vector<std::vector<double>>> refinePeakPositionOnFrame(DataSet& dataSet,
                                                                    QVector<QList<Peak3D>>& peaksSorted,
                                                                    CRunReport& report,
                                                                    const PositionRefinementOptions& options)
{
    CRefinementRun refinement(dataSet, peaksSorted, report, options);
    if (!refinement.begun()) {
        return {};
    }
    QVector<std::vector<std::vector<double>>> vecResult(refinement.run().frameCount());
    QString strTable;
    int nNumber = 0;
    const RunOutcome outcome = refinement.walk(
        [&](int nFrame, const QList<Peak3D>& listPeak, const FittedFrame& fitted) {
            for (int j = 0; j < listPeak.size(); ++j) {
                strTable += shortTableRow(++nNumber, listPeak[j], nFrame, fitted.listPosition[j],
                                          fitted.listQuality[j]);
            }
            QList<Peak3D> listNew = listPeak;
            for (int j = 0; j < listNew.size(); ++j) {
                listNew[j].dfX2D = fitted.listPosition[j].x();
                listNew[j].dfY2D = fitted.listPosition[j].y();
            }
            peaksSorted[nFrame] = listNew;
            vecResult[nFrame] = fitted.vecFit;
        });
    refinement.run().sayEnd(outcome);
    if (!strTable.isEmpty()) {
        report.addMessage(strTable, Severity::Info);
    }
    return vecResult;
}

}  // namespace tessera
