#include "crystal/reflectionset.h"

#include <cstdint>

namespace tessera {

namespace {

// Mixes the three indices so that neighbours of the lattice spread over the table (finalizer of splitmix64).
std::uint64_t hashOf(int h, int k, int l)
{
    std::uint64_t n = std::uint64_t(std::uint32_t(h)) * 0x9E3779B97F4A7C15u +
                      std::uint64_t(std::uint32_t(k)) * 0xC2B2AE3D27D4EB4Fu + std::uint64_t(std::uint32_t(l));
    n = (n ^ (n >> 30)) * 0xBF58476D1CE4E5B9u;
    n = (n ^ (n >> 27)) * 0x94D049BB133111EBu;
    return n ^ (n >> 31);
}

}  // namespace

CReflectionSet::CReflectionSet(const QList<HKLRef>& listHKL)
{
    std::size_t nSlots = 16;
    while (nSlots < 2 * std::size_t(listHKL.size())) {
        nSlots *= 2;
    }
    grow(nSlots);
    for (const HKLRef& hkl : listHKL) {
        insert(hkl.nH, hkl.nK, hkl.nL);
    }
}

// The slot that holds the reflection, or the free one where it belongs. The table must not be empty.
std::size_t CReflectionSet::slotOf(int h, int k, int l) const
{
    const std::size_t nMask = m_vecSlot.size() - 1;
    for (std::size_t n = std::size_t(hashOf(h, k, l)) & nMask;; n = (n + 1) & nMask) {
        const Slot& slot = m_vecSlot[n];
        if (!slot.bUsed || (slot.nH == h && slot.nK == k && slot.nL == l)) {
            return n;
        }
    }
}

void CReflectionSet::grow(std::size_t nSlots)
{
    std::vector<Slot> vecOld(nSlots);
    vecOld.swap(m_vecSlot);
    for (const Slot& slot : vecOld) {
        if (slot.bUsed) {
            m_vecSlot[slotOf(slot.nH, slot.nK, slot.nL)] = slot;
        }
    }
}

bool CReflectionSet::insert(int h, int k, int l)
{
    if (2 * (m_nCount + 1) > m_vecSlot.size()) {
        grow(m_vecSlot.empty() ? 16 : 2 * m_vecSlot.size());
    }
    Slot& slot = m_vecSlot[slotOf(h, k, l)];
    if (slot.bUsed) {
        return false;
    }
    slot = {h, k, l, true};
    ++m_nCount;
    return true;
}

bool CReflectionSet::contains(int h, int k, int l) const
{
    return !m_vecSlot.empty() && m_vecSlot[slotOf(h, k, l)].bUsed;
}

}  // namespace tessera
