#include "workstate/worksteps.h"

namespace tessera {

CWorkSteps::CWorkSteps(std::uint64_t nMostBytes) : m_nMostBytes(nMostBytes) {}

void CWorkSteps::append(const WorkState& state, const QString& strName)
{
    m_listStep.push_back(std::make_unique<Step>(Step{state, strName}));
    m_blocks.add(m_listStep.back()->state);
}

void CWorkSteps::replace(int nStep, const WorkState& state)
{
    Step& step = *m_listStep[nStep];
    m_blocks.remove(step.state);
    step.state = state;
    m_blocks.add(step.state);
}

void CWorkSteps::removeBehind(int nCount)
{
    while (count() > nCount) {
        m_blocks.remove(m_listStep.back()->state);
        m_listStep.pop_back();
    }
}

void CWorkSteps::begin(const WorkState& state, const QString& strName)
{
    removeBehind(0);
    append(state, strName);
    m_nCurrent = 0;
    m_nDropped = 0;
}

void CWorkSteps::note(const WorkState& state, const QString& strName)
{
    removeBehind(m_nCurrent + 1);
    append(state, strName);
    ++m_nCurrent;
    keepWithinBound();
}

void CWorkSteps::goOn(const WorkState& state, const QString& strName)
{
    removeBehind(m_nCurrent + 1);
    replace(m_nCurrent, state);
    m_listStep[m_nCurrent]->strName = strName;
    keepWithinBound();
}

void CWorkSteps::dropLast(const WorkState& state)
{
    if (m_nCurrent > 0) {
        removeBehind(m_nCurrent);
        --m_nCurrent;
        replace(m_nCurrent, state);
    }
}

void CWorkSteps::refresh(const WorkState& state)
{
    replace(m_nCurrent, state);
}

bool CWorkSteps::goTo(int nStep)
{
    if (nStep < 0 || nStep >= count()) {
        return false;
    }
    m_nCurrent = nStep;
    return true;
}

std::uint64_t CWorkSteps::bytes() const
{
    return m_nCurrent < 0 ? 0 : m_blocks.bytesBeside(state());
}

void CWorkSteps::keepWithinBound()
{
    while (m_nCurrent > 1 && bytes() > m_nMostBytes) {
        m_blocks.remove(m_listStep.front()->state);
        m_listStep.pop_front();
        --m_nCurrent;
        ++m_nDropped;
    }
}

}  // namespace tessera
