// A simulated series on disk with its true geometry, and the observations of a run held against its truth.
#pragma once

#include "integration/reflectionflags.h"
#include "integration/seriesintegration.h"
#include "simulate/structurefactor.h"
#include "simulate/truthfile.h"
#include "tests/recordingreport.h"

#include <gtest/gtest.h>
#include <QTemporaryDir>

#include <cmath>
#include <map>

namespace tessera {

/// Frames in a folder of their own, gone with the object. The truth can be changed before write().
class CSimulatedFrames {
public:
    explicit CSimulatedFrames(SimulationParameters p)
    {
        p.strDirectory = m_dir.path();
        QString strError;
        auto series = simulateSeries(p, strError);
        EXPECT_TRUE(series) << strError.toStdString();
        m_series = std::move(series).value_or(SimulatedSeries());
        m_geometry.geometry.dfWavelength = p.dfWavelength;
        m_geometry.geometry.dfPixelSize = p.dfPixelSize;
        m_geometry.geometry.plane.axis = p.dfAxis;
        m_geometry.geometry.aBasis = {m_series.matBasis[0], m_series.matBasis[1], m_series.matBasis[2]};
        m_geometry.listTilt = m_series.listOverall;
        for (const auto& shift : m_series.listShift) {
            m_geometry.listBeam.push_back({p.dfCenterX + shift[0], p.dfCenterY + shift[1]});
        }
        m_geometry.sizeFrame = {p.nSize, p.nSize};
        for (int n = 0; n < p.nFrames; ++n) {
            m_data.m_listFrameFile.append(m_dir.filePath(frameFileName(m_series, n)));
        }
        for (const QPoint& pt : m_series.listHotPixel) {
            m_data.m_listHotPixel.append(pt);
        }
    }
    void write()
    {
        QString strError;
        ASSERT_TRUE(writeSeries(m_series, strError)) << strError.toStdString();
    }

    SimulatedSeries m_series;
    SeriesGeometry m_geometry;
    DataSet m_data;

private:
    QTemporaryDir m_dir;
};

/// Anatase on small frames: some 150 passages within a second.
inline SimulationParameters smallCrystal()
{
    SimulationParameters p;
    p.strCrystal = QStringLiteral("anatase");
    p.nFrames = 80;
    p.nSize = 256;
    p.dfPixelSize = 0.008;
    p.dfCenterX = 129.4;
    p.dfCenterY = 126.3;
    p.dfDrift = 3;
    p.dfTiltStart = -34;
    p.nHotPixels = 3;
    return p;
}

/// How intensities agree with the truth. That of the simulator is the height of the rocking curve: what is
/// measured, its area, goes with the width as well, which the mosaic spread makes grow with d*.
struct Agreement {
    int nCrossed = 0;          ///< passages that are whole and on the frame
    int nMeasured = 0;         ///< of them, without any flag
    double dfCorrelation = 0;  ///< with the true intensity, above two sigmas
    double dfR = 0;            ///< on F, of the same
    double dfChi = 0;          ///< mean of ((I - true)/sigma)²
};
inline Agreement agreementWithTruth(const IntegratedSeries& integrated, const SimulatedSeries& series)
{
    const SimulationParameters& p = series.parameters;
    const CStructureFactor crystal(*findCrystalStructure(p.strCrystal));
    Agreement agreement;
    std::vector<std::array<double, 3>> list;  // intensity, truth, sigma
    double dfSum = 0, dfTrue = 0;
    for (const Observation& o : integrated.listObservation) {
        const bool bCrossed = !(o.nFlags & (FlagSlow | FlagBeginsBefore | FlagEndsAfter | FlagOffFrame));
        const bool bMeasured = !(o.nFlags & g_nExcludingFlags) && o.isMeasured();
        agreement.nCrossed += bCrossed ? 1 : 0;
        agreement.nMeasured += bMeasured ? 1 : 0;
        if (bMeasured) {
            const double dfWidth = std::hypot(p.dfRocking, radians(p.dfMosaicity) * o.dfDStar) / p.dfRocking;
            list.push_back({o.dfIntensity * o.dfSpeed,
                            std::norm(crystal.value(o.anIndex[0], o.anIndex[1], o.anIndex[2])) * dfWidth,
                            o.dfSigma * o.dfSpeed});
            dfSum += list.back()[0];
            dfTrue += list.back()[1];
        }
    }
    double n = 0, x = 0, y = 0, xx = 0, yy = 0, xy = 0, dfOff = 0, dfAll = 0;
    for (auto [dfIntensity, dfTruth, dfSigma] : list) {
        dfTruth *= dfSum / dfTrue;
        agreement.dfChi += std::pow((dfIntensity - dfTruth) / dfSigma, 2) / double(list.size());
        if (dfIntensity > 2 * dfSigma) {
            n += 1;
            x += dfIntensity;
            y += dfTruth;
            xx += dfIntensity * dfIntensity;
            yy += dfTruth * dfTruth;
            xy += dfIntensity * dfTruth;
            dfOff += std::abs(std::sqrt(dfIntensity) - std::sqrt(dfTruth));
            dfAll += std::sqrt(dfIntensity);
        }
    }
    agreement.dfCorrelation = (xy - x * y / n) / std::sqrt((xx - x * x / n) * (yy - y * y / n));
    agreement.dfR = dfOff / dfAll;
    return agreement;
}

/// Integrates the frames into a result, with a report of the test and options.
inline RunOutcome integrated(const CSimulatedFrames& frames, IntegratedSeries& result, CRunReport& report,
                             const IntegrationOptions& options = {}, int nJobs = 2)
{
    RunResult<IntegratedSeries> made = integrateSeries(frames.m_data, frames.m_geometry, options, nJobs,
                                                       report);
    if (made.finished()) {
        result = std::move(*made.made);
    }
    return made.outcome;
}

inline RunOutcome integrated(const CSimulatedFrames& frames, IntegratedSeries& result, int nJobs = 2)
{
    CRunReport report;
    return integrated(frames, result, report, {}, nJobs);
}

}  // namespace tessera
