#include "reciprocal/rotationaxistest.h"

#include "geometry/angles.h"
#include "reciprocal/chainlinking.h"
#include "records/timestamp.h"

#include <QString>

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

namespace tessera {

namespace {

constexpr int g_nChainGap = 4;  // frames
constexpr int g_nAngles = 1800;
constexpr double g_dfAngleStep = 0.1;  // degrees
constexpr double g_dfTableScale = 1e6;
constexpr double g_dfSideLow = 49.5, g_dfSideHigh = 229.5;  // degrees

void addChainTable(const QList<QList<Peak3D>>& listChain, const BeamCentres& centres, CRunReport& report)
{
    report.addMessage(QString::asprintf("%5s %6s %5s %5s %8s %8s %8s %7s %5s", "No.", "Frame", "x", "y", "x.",
                                        "y.", "MaxInt", "Angle", "Occ."));
    report.addMessage(QString(70, QLatin1Char('-')));
    QString strTable;
    int nNumber = 0;
    for (const QList<Peak3D>& chain : listChain) {
        const Peak3D& peak = chain.constFirst();
        float fMaxIntensity = float(peak.dfIPoint);
        for (const Peak3D& other : chain) {
            fMaxIntensity = std::max(fMaxIntensity, float(other.dfIPoint));
        }
        const QPointF ptCentre = frameCentre(centres, peak.nFrame);
        strTable += QString::asprintf("%5d %6d %5.0f %5.0f %8.1f %8.1f %8.1f %7.1f %5d\n", ++nNumber,
                                      peak.nFrame + 1, peak.dfX2D + ptCentre.x(), peak.dfY2D + ptCentre.y(),
                                      peak.dfX2D, peak.dfY2D, double(fMaxIntensity),
                                      double(float(screenAzimuth(peak.dfX2D, peak.dfY2D))), chain.size());
    }
    report.addMessage(strTable);
}

double angleOfMaximum(const std::vector<double>& vecSum)
{
    return double(std::max_element(vecSum.begin(), vecSum.end()) - vecSum.begin()) * g_dfAngleStep;
}

void scanAngles(const QList<QList<Peak3D>>& listChain, RotationAxisTest& test, CRunReport& report)
{
    report.addMessage(QString::asprintf("%5s %10s %10s", "Angle", "Sum1", "Sum2"));
    report.addMessage(QString(18, QLatin1Char('-')));
    std::vector<double> vecSum1(g_nAngles), vecSum2(g_nAngles);
    QString strTable;
    for (std::size_t k = 0; k < g_nAngles; ++k) {
        const double dfAngle = double(k) * g_dfAngleStep;
        const double dfSin = std::sin(radians(dfAngle)), dfCos = std::cos(radians(dfAngle));
        for (const QList<Peak3D>& chain : listChain) {
            const double t = std::fabs(dfCos * chain.constFirst().dfY2D + dfSin * chain.constFirst().dfX2D);
            vecSum1[k] += t * t;
            vecSum2[k] += t * t / chain.size();
        }
        strTable += QString::asprintf("%5.1f %10.3f %10.3f\n", dfAngle, vecSum1[k] / g_dfTableScale,
                                      vecSum2[k] / g_dfTableScale);
    }
    report.addMessage(strTable);
    test.dfMaxAngle = angleOfMaximum(vecSum1);
    test.dfMaxAngleWeighted = angleOfMaximum(vecSum2);
    report.addMessage(QStringLiteral("Max Angle un-weighted: %1").arg(test.dfMaxAngle));
    report.addMessage(QStringLiteral("Max Angle Weighted: %1").arg(test.dfMaxAngleWeighted));
}

void findNormals(const QList<QList<Peak3D>>& listChain, RotationAxisTest& test, CRunReport& report)
{
    double aX[2] = {0, 0}, aY[2] = {0, 0};
    for (const QList<Peak3D>& chain : listChain) {
        const Peak3D& peakHead = chain.constFirst();
        const double dfAzimuth = screenAzimuth360(peakHead.dfX2D, peakHead.dfY2D);
        const int nSide = g_dfSideLow < dfAzimuth && dfAzimuth < g_dfSideHigh ? 0 : 1;
        aX[nSide] += peakHead.dfX2D / chain.size();
        aY[nSide] += peakHead.dfY2D / chain.size();
    }
    for (int n = 0; n < 2; ++n) {
        // Without any heads the azimuth is 0, not that of a negative zero.
        test.dfNormal[n] = aX[n] == 0 && aY[n] == 0 ? 0 : screenAzimuth(aX[n], aY[n]);
        test.dfAxis[n] = test.dfNormal[n] < 0 ? test.dfNormal[n] + 90 : test.dfNormal[n] - 90;
        report.addMessage(QStringLiteral("Azimuth of Normal Vector %1/Tilt Axis: %2/%3")
                              .arg(n + 1)
                              .arg(test.dfNormal[n])
                              .arg(test.dfAxis[n]));
    }
}

}  // namespace

RotationAxisTest testRotationAxis(const QList<QList<Peak3D>>& listPeakShiftCorrected,
                                  const BeamCentres& centres, double dfMax2DDistance, CRunReport& report)
{
    RotationAxisTest test;
    const auto isOver = [](int nFrame, const Peak3D& peakLast) {
        return nFrame - peakLast.nFrame >= g_nChainGap;
    };
    const std::optional<QList<QList<Peak3D>>> listChain = linkChains(listPeakShiftCorrected, dfMax2DDistance,
                                                                     isOver, report);
    if (!listChain) {
        report.addMessage(QStringLiteral("%1>Rotation axis test did not finish.").arg(currentTimeStamp()),
                          Severity::Error);
        return test;
    }
    for (const QList<Peak3D>& listPeak : listPeakShiftCorrected) {
        test.nPeaks += listPeak.size();
    }
    test.nChains = listChain->size();
    report.addMessage(QStringLiteral("TestRotationAxis: %L1 peaks in %L2 chains found. ")
                          .arg(test.nPeaks)
                          .arg(test.nChains));
    report.goOn();
    addChainTable(*listChain, centres, report);
    scanAngles(*listChain, test, report);
    findNormals(*listChain, test, report);
    test.bFinished = true;
    return test;
}

}  // namespace tessera
