#include "simulate/frameimage.h"

#include "simulate/randomsource.h"
#include "simulate/spotprofile.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {
constexpr double g_dfHotCounts = 3000;  // what a hot pixel adds to every frame

void drawSpot(const SimulationParameters& p, double dfX, double dfY, double dfCounts,
              std::vector<double>& listPixel)
{
    const double dfRadius = spotDrawRadius(p);
    const int nLeft = std::max(0, int(std::ceil(dfX - dfRadius)));
    const int nRight = std::min(p.nSize - 1, int(std::floor(dfX + dfRadius)));
    const int nTop = std::max(0, int(std::ceil(dfY - dfRadius)));
    const int nBottom = std::min(p.nSize - 1, int(std::floor(dfY + dfRadius)));
    for (int y = nTop; y <= nBottom; ++y) {
        for (int x = nLeft; x <= nRight; ++x) {
            listPixel[size_t(y) * p.nSize + x] += dfCounts * spotProfile(p, (x - dfX) * (x - dfX) +
                                                                                (y - dfY) * (y - dfY));
        }
    }
}
}  // namespace

std::vector<double> expectedFrame(const SimulatedSeries& series, int nFrame)
{
    const SimulationParameters& p = series.parameters;
    const double dfBeamX = p.dfCenterX + series.listShift[nFrame][0];
    const double dfBeamY = p.dfCenterY + series.listShift[nFrame][1];
    std::vector<double> listPixel(size_t(p.nSize) * p.nSize);
    if (nFrame + 1 == p.nBlankFrame) {
        return listPixel;
    }
    for (int y = 0; y < p.nSize; ++y) {
        for (int x = 0; x < p.nSize; ++x) {
            listPixel[size_t(y) * p.nSize + x] = diffuseBackground(p, std::hypot(x - dfBeamX, y - dfBeamY));
        }
    }
    for (const TruthSpot& spot : series.listDrawn[nFrame]) {
        drawSpot(p, spot.dfX, spot.dfY, spot.dfCounts / spotShareWithin(p, spotDiscRadius(p)), listPixel);
    }
    SimulationParameters beam = p;
    beam.dfSpotSigma = p.dfBeamSigma;
    beam.spotShape = SpotShape::Gaussian;
    drawSpot(beam, dfBeamX, dfBeamY, p.dfBeamCounts, listPixel);
    return listPixel;
}

std::vector<float> renderFrame(const SimulatedSeries& series, int nFrame)
{
    const SimulationParameters& p = series.parameters;
    CRandomSource random(p.nSeed, std::uint64_t(nFrame));
    const std::vector<double> listExpected = expectedFrame(series, nFrame);
    std::vector<float> listPixel(listExpected.size());
    for (size_t i = 0; i < listExpected.size(); ++i) {
        double df = p.dfGain * random.poisson(listExpected[i] / p.dfGain);
        if (p.dfReadNoise > 0) {
            df += p.dfReadNoise * random.normal();
        }
        listPixel[i] = float(df);
    }
    for (const QPoint& pt : series.listHotPixel) {
        listPixel[size_t(pt.y()) * p.nSize + pt.x()] += float(g_dfHotCounts * (1 + 0.1 * random.normal()));
    }
    if (p.dfSaturation > 0) {
        for (float& f : listPixel) {
            f = std::min(f, float(p.dfSaturation));
        }
    }
    return listPixel;
}

}  // namespace tessera
