#include "imaging/fftwplanner.h"

#include <cstddef>
#include <new>

namespace tessera {

std::mutex& fftwPlannerMutex()
{
    static std::mutex mutex;
    return mutex;
}

void requireRoomToPlan()
{
    ::operator delete(::operator new(std::size_t(1) << 20));
}

}  // namespace tessera
