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

constexpr int g_nDirectionsOfPiece = 64;  // directions that a thread does before it asks for more
constexpr int g_nMostBins = 1 << 20;      // bins of a histogram; only bad data would need more

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

/// A plan for the buffers of any worker; its own buffers only show FFTW their alignment.
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

/// The layout of the histogram into which the points are projected, and of its transform: element n of the
/// transform is the Fourier sum for the length n · dfStep along the direction. The direct beam is in the
/// middle of the histogram.
struct Histogram {
    /// Without elements to look at where options and points leave no length, or need too many bins.
    /// @param dfReach  length of the longest point, Å⁻¹
    Histogram(double dfReach, const DirectionSearchOptions& options)
    {
        // The projections of a lattice row are a comb with the period 1 / length: that of the longest length
        // has four bins, so that the bins hardly weaken its Fourier sum.
        dfBin = 1 / (4 * options.dfLongest);
        // Points lie on both sides of the beam, and up to one bin beyond the reach; a bin more on each side
        // is for the rounding to bins.
        const double dfNeeded = 2 * dfReach / dfBin + 4;
        if (!(dfNeeded <= g_nMostBins)) {
            return;
        }
        nBins = 256;  // also for points near the beam, so that a step is at most 1/64 of the longest length
        while (nBins < dfNeeded) {
            nBins *= 2;
        }
        dfStep = 1 / (nBins * dfBin);
        const double dfShortest = shortestLength(options, dfReach);
        if (dfShortest <= options.dfLongest) {
            nFirst = int(std::ceil(dfShortest / dfStep));
            nLast = std::min(int(options.dfLongest / dfStep), nBins / 2);
        }
    }
    double dfBin = 0;   ///< Å⁻¹, width of a bin
    double dfStep = 0;  ///< Å, step from one element of the transform to the next
    int nBins = 0;      ///< a power of two
    int nFirst = 1;     ///< first element of the transform that is looked at; none if it is after the last
    int nLast = 0;      ///< last element that is looked at
};

/// The length of a direction with the strongest Fourier sum.
struct StrongVector {
    float fPower = 0;                             ///< square of the absolute value of the Fourier sum
    Eigen::Vector3d v = Eigen::Vector3d::Zero();  ///< Å, in the frame of the points
};

/// Projects the points onto one direction after another, and transforms the histograms. Each thread has its
/// own object, as the buffers are used again for each direction.
class CDirectionWorker {
public:
    CDirectionWorker(const Eigen::MatrixX3f& points, const Histogram& histogram, fftwf_plan plan)
        : m_points(points), m_histogram(histogram), m_plan(plan), m_buffers(histogram.nBins)
    {}

    /// @param direction  unit vector
    StrongVector strongest(const Eigen::Vector3d& direction)
    {
        const int nBins = m_histogram.nBins;
        float* pReal = m_buffers.pReal.get();
        std::fill_n(pReal, nBins, 0.f);
        const Eigen::Vector3f scaled = (direction / m_histogram.dfBin).cast<float>();
        m_projection = m_points * scaled;
        // The nearest bin: the half makes a rounding of the truncation to int, as the sum is never negative.
        const float fOffset = float(nBins) / 2 + 0.5f;
        for (Eigen::Index n = 0; n < m_projection.size(); ++n) {
            pReal[int(m_projection[n] + fOffset)] += 1;
        }
        fftwf_complex* pHalf = m_buffers.pHalf.get();
        fftwf_execute_dft_r2c(m_plan, pReal, pHalf);
        StrongVector best;
        int nBest = m_histogram.nFirst;
        for (int n = m_histogram.nFirst; n <= m_histogram.nLast; ++n) {
            const float fPower = pHalf[n][0] * pHalf[n][0] + pHalf[n][1] * pHalf[n][1];
            if (fPower > best.fPower) {
                best.fPower = fPower;
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
    Eigen::VectorXf m_projection;  ///< of each point on the direction, bins from the beam
};

/// The finite points no longer than `dfReach`, Å⁻¹, one in each row.
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
    // Equal steps of z have equal areas. The azimuth goes on by the golden ratio of a turn, 2π·(1 + √5) / 2.
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
    const PlanHandle plan = makePlan(histogram.nBins);
    // The longest point itself may be longer than the reach by rounding, so a bin more is allowed.
    const Eigen::MatrixX3f points = pointsWithin(listPoint, dfReach + histogram.dfBin);
    std::vector<StrongVector> vecFound(options.nDirections);
    const auto makeWorker = [&]() -> FnPiece {
        const auto pWorker = std::make_shared<CDirectionWorker>(points, histogram, plan.get());
        return [&, pWorker](int nPiece) {
            const int nEnd = std::min((nPiece + 1) * g_nDirectionsOfPiece, options.nDirections);
            for (int n = nPiece * g_nDirectionsOfPiece; n < nEnd; ++n) {
                vecFound[n] = pWorker->strongest(hemisphereDirection(n, options.nDirections));
            }
        };
    };
    const int nPieces = (options.nDirections + g_nDirectionsOfPiece - 1) / g_nDirectionsOfPiece;
    if (!sideBySide(nPieces, options.nJobs, makeWorker, fnGoOn)) {
        return {};
    }
    std::stable_sort(vecFound.begin(), vecFound.end(),
                     [](const StrongVector& a, const StrongVector& b) { return a.fPower > b.fPower; });
    std::vector<Eigen::Vector3d> vecVector;
    vecVector.reserve(vecFound.size());
    for (const StrongVector& found : vecFound) {
        vecVector.push_back(found.v);
    }
    return vecVector;
}

}  // namespace tessera
