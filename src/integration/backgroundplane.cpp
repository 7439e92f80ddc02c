#include "integration/backgroundplane.h"

#include <Eigen/Cholesky>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const int g_nLeastPixels = 20;

double medianOfDoubles(std::vector<double>& list)
{
    const auto middle = list.begin() + std::ptrdiff_t(list.size() / 2);
    std::nth_element(list.begin(), middle, list.end());
    return *middle;
}

}  // namespace

BackgroundPlane fitBackground(const std::vector<BackgroundPixel>& listPixel, double dfGain)
{
    BackgroundPlane plane;
    if (int(listPixel.size()) < g_nLeastPixels) {
        return plane;
    }
    std::vector<double> list;
    list.reserve(listPixel.size());
    for (const BackgroundPixel& pixel : listPixel) {
        list.push_back(pixel.dfCounts);
    }
    plane.vecCoefficient[0] = medianOfDoubles(list);
    double dfSquares = 0;
    for (double& df : list) {
        df = std::abs(df - plane.vecCoefficient[0]);
        dfSquares += df * df;
    }
    double dfDeviation = 1.4826 * medianOfDoubles(list);
    if (!(dfDeviation > 0)) {  // more than half of the pixels count the same
        dfDeviation = std::sqrt(dfSquares / double(list.size()));
    }
    for (int nRound = 0; nRound < 3; ++nRound) {
        const double dfLimit = 4 * dfDeviation + 2 * dfGain;
        Eigen::Matrix3d mat = Eigen::Matrix3d::Zero();
        Eigen::Vector3d vec = Eigen::Vector3d::Zero();
        double dfTotal = 0;
        int nKept = 0;
        for (const BackgroundPixel& pixel : listPixel) {
            if (std::abs(pixel.dfCounts - plane.at(pixel.dfX, pixel.dfY)) > dfLimit) {
                continue;
            }
            const Eigen::Vector3d term(1, pixel.dfX, pixel.dfY);
            mat += term * term.transpose();
            vec += term * pixel.dfCounts;
            dfTotal += pixel.dfCounts * pixel.dfCounts;
            ++nKept;
        }
        const Eigen::LDLT<Eigen::Matrix3d> solver(mat);
        if (nKept < g_nLeastPixels || !(solver.rcond() > 1e-9)) {
            return {};
        }
        plane.vecCoefficient = solver.solve(vec);
        plane.matCovariance = solver.solve(Eigen::Matrix3d::Identity());
        plane.nPixels = nKept;
        double dfRest = 0;
        for (const BackgroundPixel& pixel : listPixel) {
            const double df = pixel.dfCounts - plane.at(pixel.dfX, pixel.dfY);
            // of what was kept, and so by the plane of this round: the next one has its own
            dfRest += std::abs(df) <= dfLimit ? df * df : 0;
        }
        plane.dfVariance = dfRest / std::max(nKept - 3, 1);
        dfDeviation = std::sqrt(plane.dfVariance);
    }
    return plane;
}

}  // namespace tessera
