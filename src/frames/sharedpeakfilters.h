// CSharedPeakFilters: filters that several threads use.
#pragma once

#include "frames/peakfilters.h"

#include <mutex>
#include <shared_mutex>

namespace tessera {

/// Lets threads read the same filters, and remakes them while nobody reads: for the first frame, or for one
/// of another size.
class CSharedPeakFilters {
public:
    explicit CSharedPeakFilters(CPeakFilters& filters) : m_filters(filters) {}

    /// The result of fnUse(filters), which may call updatePeakFilters() with just these parameters and size.
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
