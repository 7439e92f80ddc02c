#include "lattice/directionlengths.h"

#include "geometry/angles.h"
#include "imaging/fftwplanner.h"
#include "imaging/sidebyside.h"

#include <fftw3.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>
#include <type_traits>

namespace tessera {

namespace {

constexpr int g_nChunk = 64;             // directions in one piece of work
constexpr int g_nLargestSize = 1 << 20;  // bins of a histogram; only bad data would need more

struct FftwFree {
    void operator()(void* p) const { fftwf_free(p); }
};
struct PlanDestroy {
    void operator()(fftwf_plan plan) const
    {
        const std::lock_guard<std::mutex> lock(fftwPlannerMutex());
        fftwf_destroy_plan(plan);
    }
};
using PlanHandle = std::unique_ptr<std::remove_pointer_t<fftwf_plan>, PlanDestroy>;

/// The arrays of a transform. FFTW allocates them, so that all are aligned like those that the plan was
/// made for.
struct Buffers {
    explicit Buffers(int nSize)
        : pReal(fftwf_alloc_real(std::size_t(nSize))), pHalf(fftwf_alloc_complex(std::size_t(nSize) / 2 + 1))
    {
        if (!pReal || !pHalf) {
            throw std::bad_alloc();
        }
    }
    std::unique_ptr<float, FftwFree> pReal;
    std::unique_ptr<fftwf_complex, FftwFree> pHalf;
};

PlanHandle makePlan(int nSize)
{
    const Buffers buffers(nSize);
    const std::lock_guard<std::mutex> lock(fftwPlannerMutex());
    requireRoomToPlan();
    PlanHandle plan(fftwf_plan_dft_r2c_1d(nSize, buffers.pReal.get(), buffers.pHalf.get(),
                                          FFTW_ESTIMATE | FFTW_DESTROY_INPUT));
    if (!plan) {
        throw std::bad_alloc();
    }
    return plan;
}

/// The bins of a histogram of projections, and the lengths that the elements of its transform mean.
struct Histogram {
    Histogram(double dfReach, const DirectionSearchOptions& options)
    {
        dfBin = 1 / (4 * options.dfLongest);
        const double dfNeeded = 2 * dfReach / dfBin + 4;
        if (!(dfNeeded <= g_nLargestSize)) {
            return;
        }
        nSize = 256;
        while (nSize < dfNeeded) {
            nSize *= 2;
        }
        dfStep = 1 / (nSize * dfBin);
        // At shorter lengths the transform shows the outline of the cloud of points instead of its lattice.
        const double dfShortest = std::max(options.dfShortest, 1.2 / dfReach);
        if (dfShortest <= options.dfLongest) {
            nFirst = int(std::ceil(dfShortest / dfStep));
            nLast = std::min(int(options.dfLongest / dfStep), nSize / 2);
        }
    }
    double dfBin = 0;   ///< Å⁻¹
    double dfStep = 0;  ///< Å, step from one element of the transform to the next
    int nSize = 0;
    int nFirst = 1;  ///< first element of the transform that is looked at; none if it is after the last
    int nLast = 0;
};

struct StrongVector {
    float fStrength = 0;
    Eigen::Vector3d v = Eigen::Vector3d::Zero();
};

/// Transforms the projections on one direction after another.
class CDirectionWorker {
public:
    CDirectionWorker(const Eigen::MatrixX3f& points, const Histogram& histogram, fftwf_plan plan)
        : m_points(points), m_histogram(histogram), m_plan(plan), m_buffers(histogram.nSize)
    {}

    StrongVector strongest(const Eigen::Vector3d& direction)
    {
        const int nSize = m_histogram.nSize;
        float* pReal = m_buffers.pReal.get();
        std::fill_n(pReal, nSize, 0.f);
        const Eigen::Vector3f scaled = (direction / m_histogram.dfBin).cast<float>();
        m_place = m_points * scaled;
        const float fOffset = float(nSize) / 2 + 0.5f;
        for (Eigen::Index n = 0; n < m_place.size(); ++n) {
            pReal[int(m_place[n] + fOffset)] += 1;
        }
        fftwf_complex* pHalf = m_buffers.pHalf.get();
        fftwf_execute_dft_r2c(m_plan, pReal, pHalf);
        StrongVector best;
        int nBest = m_histogram.nFirst;
        for (int n = m_histogram.nFirst; n <= m_histogram.nLast; ++n) {
            const float fPower = pHalf[n][0] * pHalf[n][0] + pHalf[n][1] * pHalf[n][1];
            if (fPower > best.fStrength) {
                best.fStrength = fPower;
                nBest = n;
            }
        }
        best.v = direction * (nBest * m_histogram.dfStep);
        return best;
    }

private:
    const Eigen::MatrixX3f& m_points;
    const Histogram& m_histogram;
    fftwf_plan m_plan;
    Buffers m_buffers;
    Eigen::VectorXf m_place;
};

/// The finite points within the range of the histogram, one in each row.
Eigen::MatrixX3f pointsWithin(const LatticePoints& listPoint, double dfReach)
{
    Eigen::MatrixX3f points(Eigen::Index(listPoint.size()), 3);
    Eigen::Index nRows = 0;
    for (const Eigen::Vector3d& point : listPoint) {
        if (point.norm() <= dfReach) {  // false for NaN
            points.row(nRows++) = point.cast<float>().transpose();
        }
    }
    points.conservativeResize(nRows, 3);
    return points;
}

}  // namespace

Eigen::Vector3d hemisphereDirection(int nIndex, int nDirections)
{
    const double dfZ = (nIndex + 0.5) / nDirections;
    const double dfPhi = g_dfPi * (1 + std::sqrt(5.0)) * (nIndex + 0.5);
    const double dfRadius = std::sqrt(1 - dfZ * dfZ);
    return {dfRadius * std::cos(dfPhi), dfRadius * std::sin(dfPhi), dfZ};
}

std::vector<Eigen::Vector3d> strongestLengths(const LatticePoints& listPoint, double dfReach,
                                              const DirectionSearchOptions& options,
                                              const std::function<bool()>& fnGoOn)
{
    const Histogram histogram(dfReach, options);
    if (histogram.nLast < histogram.nFirst || options.nDirections < 1) {
        return {};
    }
    const PlanHandle plan = makePlan(histogram.nSize);
    const Eigen::MatrixX3f points = pointsWithin(listPoint, dfReach + histogram.dfBin);
    std::vector<StrongVector> vecFound(options.nDirections);
    const auto makeWorker = [&]() -> FnPiece {
        const auto pWorker = std::make_shared<CDirectionWorker>(points, histogram, plan.get());
        return [&, pWorker](int nPiece) {
            const int nEnd = std::min((nPiece + 1) * g_nChunk, options.nDirections);
            for (int n = nPiece * g_nChunk; n < nEnd; ++n) {
                vecFound[n] = pWorker->strongest(hemisphereDirection(n, options.nDirections));
            }
        };
    };
    const int nPieces = (options.nDirections + g_nChunk - 1) / g_nChunk;
    if (!sideBySide(nPieces, options.nJobs, makeWorker, fnGoOn)) {
        return {};
    }
    std::stable_sort(vecFound.begin(), vecFound.end(),
                     [](const StrongVector& a, const StrongVector& b) { return a.fStrength > b.fStrength; });
    std::vector<Eigen::Vector3d> vecVector;
    vecVector.reserve(vecFound.size());
    for (const StrongVector& found : vecFound) {
        vecVector.push_back(found.v);
    }
    return vecVector;
}

}  // namespace tessera
