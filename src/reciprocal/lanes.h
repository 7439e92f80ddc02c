// Lanes: loops over eight numbers side by side, which compilers make vector instructions of.
#pragma once

namespace tessera {

/// How many numbers go side by side: single-precision ones fill a register of AVX2.
constexpr int g_nLanes = 8;

}  // namespace tessera

/// Before a function: it is compiled for processors with AVX2 and once more for all others, and the program
/// takes the right one where it runs. The numbers are the same, as neither fuses a product and a sum. What is
/// inlined into the function is compiled with it; what it calls is not. Sanitized programs have the plain one
/// alone: they choose before the sanitizer is ready.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(__SANITIZE_ADDRESS__) && \
    !defined(__SANITIZE_THREAD__)
#define TESSERA_WIDE_LANES __attribute__((target_clones("avx2", "default")))
#else
#define TESSERA_WIDE_LANES
#endif
