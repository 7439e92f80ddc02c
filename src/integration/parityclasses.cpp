#include "integration/parityclasses.h"

#include <algorithm>

namespace tessera {

namespace {

size_t classOf(const std::array<int, 3>& anIndex)
{
    const auto parity = [&](size_t n) { return size_t(anIndex[n] & 1); };
    return 4 * parity(0) + 2 * parity(1) + parity(2);
}

}  // namespace

CParityClasses::CParityClasses(const gemmi::GroupOps& laue) : m_listOperation(laue.sym_ops) {}

void CParityClasses::add(const std::array<int, 3>& anIndex, double dfSquare)
{
    const double dfPart = 1.0 / double(std::max<size_t>(1, m_listOperation.size()));
    for (const gemmi::Op& op : m_listOperation) {
        Class& own = m_aClass[classOf(op.apply_to_hkl(anIndex))];
        own.dfCount += dfPart;
        own.dfSum += dfPart * dfSquare;
    }
    m_all.dfCount += 1;
    m_all.dfSum += dfSquare;
}

double CParityClasses::strength(const std::array<int, 3>& anIndex) const
{
    const Class& own = m_aClass[classOf(anIndex)];
    const double dfFewest = 20;
    if (own.dfCount < dfFewest || !(m_all.dfSum > 0)) {
        return 1;
    }
    return std::clamp(own.dfSum / own.dfCount / (m_all.dfSum / m_all.dfCount), 0.02, 1.0);
}

}  // namespace tessera
