#include "reciprocal/rotationaxistest.h"

#include "app/records/timestamp.h"
#include "reciprocal/nearestpeak.h"

#include <QString>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

constexpr double g_dfPi = 3.141592653589793;
constexpr int g_nChainGap = 4;  // frames
constexpr int g_nAngles = 1800;
constexpr double g_dfAngleStep = 0.1;  // degrees
constexpr double g_dfTableScale = 1e6;
constexpr double g_dfSideLow = 49.5, g_dfSideHigh = 229.5;  // degrees

// A chain, as far as the test looks at it.
struct Chain {
    Peak3D peakHead;
    double dfLastX, dfLastY;
    int nLastFrame;
    float fMaxIntensity;
    int nPeaks;
};

double azimuth(double dfX, double dfY)
{
    return std::atan2(-dfY, dfX) * 180 / g_dfPi;
}

// Closed chains in the order of closing, then those still open; false when the run was stopped.
bool linkChains(const QList<QList<Peak3D>>& listPeakFrame, double dfMax2DDistance,
                std::vector<Chain>& vecChain, CRunReport& report)
{
    const int nFrames = listPeakFrame.size();
    std::vector<Chain> vecOpen;
    CNearestPeak nearest(dfMax2DDistance);
    report.startProgress(QStringLiteral("%p%"), 0, (nFrames - 1) / 10);
    bool bStopped = false;
    for (int n = 0; n < nFrames; ++n) {
        if (n % 10 == 0 || n == nFrames - 1) {
            report.setProgress(n / 10);
            if (!report.goOn()) {
                bStopped = true;
                break;
            }
        }
        const auto isOpen = [n](const Chain& chain) { return n - chain.nLastFrame < g_nChainGap; };
        std::remove_copy_if(vecOpen.begin(), vecOpen.end(), std::back_inserter(vecChain), isOpen);
        vecOpen.erase(std::stable_partition(vecOpen.begin(), vecOpen.end(), isOpen), vecOpen.end());

        // Last peaks as they are before this frame: what joins or begins a chain now is no target yet.
        nearest.clear();
        for (std::size_t i = 0; i < vecOpen.size(); ++i)
            nearest.add(vecOpen[i].dfLastX, vecOpen[i].dfLastY, int(i));
        nearest.prepare();
        for (const Peak3D& peak : listPeakFrame[n]) {
            const int nChain = nearest.find(peak.dfX2D, peak.dfY2D);
            const float fIntensity = float(peak.dfIPoint);
            if (nChain < 0) {
                vecOpen.push_back({peak, peak.dfX2D, peak.dfY2D, peak.nFrame, fIntensity, 1});
                continue;
            }
            Chain& chain = vecOpen[std::size_t(nChain)];
            chain.dfLastX = peak.dfX2D;
            chain.dfLastY = peak.dfY2D;
            chain.nLastFrame = peak.nFrame;
            chain.fMaxIntensity = std::max(chain.fMaxIntensity, fIntensity);
            ++chain.nPeaks;
        }
    }
    report.endProgress();
    bStopped = !report.goOn() || bStopped;
    vecChain.insert(vecChain.end(), vecOpen.begin(), vecOpen.end());
    return !bStopped;
}

void addChainTable(const std::vector<Chain>& vecChain, const BeamCentres& centres, CRunReport& report)
{
    report.addMessage(QString::asprintf("%5s %6s %5s %5s %8s %8s %8s %7s %5s", "No.", "Frame", "x", "y", "x.",
                                        "y.", "MaxInt", "Angle", "Occ."));
    report.addMessage(QString(70, QLatin1Char('-')));
    QString strTable;
    int nNumber = 0;
    for (const Chain& chain : vecChain) {
        const Peak3D& peak = chain.peakHead;
        const QPointF ptCentre = frameCentre(centres, peak.nFrame);
        strTable += QString::asprintf("%5d %6d %5.0f %5.0f %8.1f %8.1f %8.1f %7.1f %5d\n", ++nNumber,
                                      peak.nFrame + 1, peak.dfX2D + ptCentre.x(), peak.dfY2D + ptCentre.y(),
                                      peak.dfX2D, peak.dfY2D, double(chain.fMaxIntensity),
                                      double(float(azimuth(peak.dfX2D, peak.dfY2D))), chain.nPeaks);
    }
    report.addMessage(strTable);
}

double angleOfMaximum(const std::vector<double>& vecSum)
{
    return double(std::max_element(vecSum.begin(), vecSum.end()) - vecSum.begin()) * g_dfAngleStep;
}

void scanAngles(const std::vector<Chain>& vecChain, RotationAxisTest& test, CRunReport& report)
{
    report.addMessage(QString::asprintf("%5s %10s %10s", "Angle", "Sum1", "Sum2"));
    report.addMessage(QString(18, QLatin1Char('-')));
    std::vector<double> vecSum1(g_nAngles), vecSum2(g_nAngles);
    QString strTable;
    for (std::size_t k = 0; k < g_nAngles; ++k) {
        const double dfAngle = double(k) * g_dfAngleStep;
        const double dfSin = std::sin(dfAngle * g_dfPi / 180), dfCos = std::cos(dfAngle * g_dfPi / 180);
        for (const Chain& chain : vecChain) {
            const double t = std::fabs(dfCos * chain.peakHead.dfY2D + dfSin * chain.peakHead.dfX2D);
            vecSum1[k] += t * t;
            vecSum2[k] += t * t / chain.nPeaks;
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

void findNormals(const std::vector<Chain>& vecChain, RotationAxisTest& test, CRunReport& report)
{
    double aX[2] = {0, 0}, aY[2] = {0, 0};
    for (const Chain& chain : vecChain) {
        double dfAzimuth = azimuth(chain.peakHead.dfX2D, chain.peakHead.dfY2D);
        if (dfAzimuth < 0)
            dfAzimuth += 360;
        const int nSide = g_dfSideLow < dfAzimuth && dfAzimuth < g_dfSideHigh ? 0 : 1;
        aX[nSide] += chain.peakHead.dfX2D / chain.nPeaks;
        aY[nSide] += chain.peakHead.dfY2D / chain.nPeaks;
    }
    for (int n = 0; n < 2; ++n) {
        // Without any heads the azimuth is 0, not that of a negative zero.
        test.dfNormal[n] = aX[n] == 0 && aY[n] == 0 ? 0 : std::atan2(-aY[n], aX[n]) * 180 / g_dfPi;
        test.dfAxis[n] = test.dfNormal[n] < 0 ? test.dfNormal[n] + 90 : test.dfNormal[n] - 90;
        report.addMessage(QStringLiteral("Azimuth of Normal Vector %1/Tilt Axis: %2/%3")
                              .arg(n + 1)
                              .arg(test.dfNormal[n])
                              .arg(test.dfAxis[n]));
    }
}

}  // namespace

QList<QList<Peak3D>> peaksAroundBeam(const QList<QList<Peak3D>>& listPeakFrame, const BeamCentres& centres)
{
    QList<QList<Peak3D>> listAround = listPeakFrame;
    for (int nFrame = 0; nFrame < listAround.size(); ++nFrame) {
        const QPointF ptCentre = frameCentre(centres, nFrame);
        for (Peak3D& peak : listAround[nFrame]) {
            peak.dfX2D -= ptCentre.x();
            peak.dfY2D -= ptCentre.y();
        }
    }
    return listAround;
}

RotationAxisTest testRotationAxis(const QList<QList<Peak3D>>& listPeakShiftCorrected,
                                  const BeamCentres& centres, double dfMax2DDistance, CRunReport& report)
{
    RotationAxisTest test;
    std::vector<Chain> vecChain;
    if (!linkChains(listPeakShiftCorrected, dfMax2DDistance, vecChain, report)) {
        report.addMessage(QStringLiteral("%1>Rotation axis test did not finish.").arg(currentTimeStamp()),
                          Qt::red);
        return test;
    }
    for (const QList<Peak3D>& listPeak : listPeakShiftCorrected)
        test.nPeaks += listPeak.size();
    test.nChains = int(vecChain.size());
    report.addMessage(QStringLiteral("TestRotationAxis: %L1 peaks in %L2 chains found. ")
                          .arg(test.nPeaks)
                          .arg(test.nChains));
    report.goOn();
    addChainTable(vecChain, centres, report);
    scanAngles(vecChain, test, report);
    findNormals(vecChain, test, report);
    test.bFinished = true;
    return test;
}
