// FFTW's planner: what all that plan transforms share.
#pragma once

#include <mutex>

namespace tessera {

/// Held while a plan is made or destroyed: the planner keeps global tables, only execution is thread safe.
std::mutex& fftwPlannerMutex();

/// Throws std::bad_alloc where memory has run out. FFTW ends the program when its planner gets no memory. It
/// takes some kilobytes: where so much more is to be had, these are, and where it is not, the lack can still
/// be told or made good.
void requireRoomToPlan();

}  // namespace tessera
