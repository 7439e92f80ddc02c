#include "reciprocal/rotationaxissearch.h"

#include "reciprocal/mapping.h"

#include <QElapsedTimer>
#include <QStringList>

namespace tessera {

namespace {

/// The sharpness (0 to 1) against the azimuth (degrees), in one line of the log.
void reportCurve(const std::vector<AxisSharpness>& vecCurve, CRunReport& report)
{
    QStringList listPoint;
    for (const AxisSharpness& point : vecCurve) {
        listPoint.append(
            QStringLiteral("%1: %2").arg(point.dfAzimuth, 0, 'f', 1).arg(point.dfSharpness, 0, 'f', 3));
    }
    if (!listPoint.isEmpty()) {
        report.addMessage(QStringLiteral("Sharpness of the lattice by azimuth of the axis, degrees: %1")
                              .arg(listPoint.join(QStringLiteral(", "))));
    }
}

/// The axis, and how sure its sense is: the opposite axis fits the peaks nearly as well, as only the
/// curvature of the Ewald sphere tells the two apart.
void reportAxis(const AxisFound& found, double dfSeconds, CRunReport& report)
{
    report.addMessage(
        QStringLiteral("Rotation axis: %1° ± %2°, sharpness of the lattice %3; the second maximum "
                       "is %4° with %5; %6 % of the peaks fit a lattice; %7 s.")
            .arg(found.best.dfAzimuth, 0, 'f', 1)
            .arg(found.dfAzimuthError, 0, 'f', 2)
            .arg(found.best.dfSharpness, 0, 'f', 3)
            .arg(found.second.dfAzimuth, 0, 'f', 1)
            .arg(found.second.dfSharpness, 0, 'f', 3)
            .arg(100 * found.dfShareFitting, 0, 'f', 0)
            .arg(dfSeconds, 0, 'f', 1));
    if (found.bSure) {
        report.addMessage(QStringLiteral("Sense of the rotation: sure; %1.").arg(found.strSense));
    } else {
        report.addMessage(
            QStringLiteral("Warning: the sense of the rotation is doubtful; %1. The axis may be "
                           "180° off, which gives the other hand.")
                .arg(found.strSense),
            Severity::Warning);
    }
}

}  // namespace

std::vector<FlatPeak> flatPeaksOf(const DataSet& dataSet, const MappingParameters& parameters)
{
    std::vector<FlatPeak> vecPeak;
    if (!canMapPeaks(dataSet)) {
        return vecPeak;
    }
    const BeamCentres centres = beamCentres(dataSet);
    const CPlaceCorrection correction = placeCorrection(dataSet, parameters.m_bApplyStretching);
    const int nFrames = dataSet.m_listPeakFrame.size();
    for (int nFrame = 0; nFrame < nFrames; ++nFrame) {
        const QPointF ptCentre = frameCentre(centres, nFrame);  // pixels, as the peaks
        const double dfTilt = relaxedTilt(dataSet, nFrame, nFrames);
        for (const Peak3D& peak : dataSet.m_listPeakFrame[nFrame]) {
            const QPointF pt = correction.undone({peak.dfX2D - ptCentre.x(), peak.dfY2D - ptCentre.y()});
            vecPeak.push_back({pt.x(), pt.y(), dfTilt});
        }
    }
    return vecPeak;
}

std::optional<AxisSearch> findRotationAxis(const DataSet& dataSet, const MappingParameters& parameters,
                                           CRunReport& report, int nJobs)
{
    QElapsedTimer timer;
    timer.start();
    const FlatGeometry geometry = {dataSet.m_dfPixelSize, dataSet.m_dfWavelength};
    std::optional<AxisSearch> search = searchAxis(flatPeaksOf(dataSet, parameters), geometry, nJobs,
                                                  [&report] { return report.goOn(); });
    if (search) {
        if (search->found) {
            reportAxis(*search->found, double(timer.elapsed()) / 1000, report);
        }
        reportCurve(search->vecCurve, report);
    }
    return search;
}

}  // namespace tessera
