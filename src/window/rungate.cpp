#include "window/rungate.h"

#include <QCoreApplication>

#include <utility>

namespace tessera {

int CRunGate::enter()
{
    ++m_nRunDepth;
    return std::exchange(m_nPumpDepth, 0);
}

bool CRunGate::leave(int nOuterPump)
{
    m_nPumpDepth = nOuterPump;
    return --m_nRunDepth == 0;
}

void CRunGate::pumpEvents()
{
    ++m_nPumpDepth;
    QCoreApplication::processEvents();
    --m_nPumpDepth;
}

RunWishes CRunGate::takeWishes()
{
    return std::exchange(m_wishes, {});
}

}  // namespace tessera
