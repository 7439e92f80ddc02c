// CSharedPeakFilters: filters of the peak search for several threads.
#pragma once

#include "frames/peakfilters.h"

#include <mutex>
#include <shared_mutex>

namespace tessera {

/// Lets threads read the same filters. The filters are made anew while no thread reads: for the first
/// frame, or for one of another size.
class CSharedPeakFilters {
public:
    /// @param filters  must outlive the object
    explicit CSharedPeakFilters(CPeakFilters& filters) : m_filters(filters) {}

    /// Returns the result of fnUse(filters), which may call updatePeakFilters() with these parameters and
    /// size only.
    template <class FnUse>
    auto use(const PeakHuntingParameters& parameters, int nWidth, int nHeight, const FnUse& fnUse)
    {
        {
            std::shared_lock<std::shared_mutex> lock(m_mutex);
            if (m_filters.fits(parameters, nWidth, nHeight)) {
                return fnUse(m_filters);
            }
        }
        std::unique_lock<std::shared_mutex> lock(m_mutex);
        return fnUse(m_filters);
    }

private:
    CPeakFilters& m_filters;
    std::shared_mutex m_mutex;
};

}  // namespace tessera
