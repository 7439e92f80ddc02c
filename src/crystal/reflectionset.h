// CReflectionSet: a set of whole indices that is searched in constant time.
#pragma once

#include "records/hklref.h"

#include <QList>

#include <cstddef>
#include <vector>

namespace tessera {

/// Open addressing with linear steps. Answers what reflectionExistInList() answers, for long lists.
class CReflectionSet {
public:
    CReflectionSet() = default;
    explicit CReflectionSet(const QList<HKLRef>& listHKL);

    /// @return false if the reflection was there already
    bool insert(int h, int k, int l);
    bool contains(int h, int k, int l) const;
    bool contains(const HKLRef& hkl) const { return contains(hkl.nH, hkl.nK, hkl.nL); }
    int size() const { return int(m_nCount); }

private:
    struct Slot {
        int nH = 0;
        int nK = 0;
        int nL = 0;
        bool bUsed = false;
    };
    std::size_t slotOf(int h, int k, int l) const;
    void grow(std::size_t nSlots);

    std::vector<Slot> m_vecSlot;  ///< a power of two, at most half full
    std::size_t m_nCount = 0;
};

}  // namespace tessera
