# Headers of other libraries, read once for each of our libraries and test programs in the place of once for each file:
# three quarters of the time of a build from nothing goes into reading them. A file that lacks an include is not found
# out by such a build, so the released one does without in src; and ccache wants
# CCACHE_SLOPPINESS=pch_defines,time_macros with it. The window and the tests with widgets do without.
set(TESSERA_PCH OFF CACHE STRING "Precompiled headers: OFF, TESTS (of the test programs alone) or ALL")
set_property(CACHE TESSERA_PCH PROPERTY STRINGS OFF TESTS ALL)

set(TESSERA_COMMON_HEADERS <QtCore> <algorithm> <array> <cmath> <functional> <map> <memory> <numeric> <optional> <set>
  <string> <thread> <unordered_map> <vector>)

# tessera_precompile(TARGET [TEST] HEADER...): the common headers and these.
function(tessera_precompile target)
  cmake_parse_arguments(ARG "TEST" "" "" ${ARGN})
  if(TESSERA_PCH STREQUAL "ALL" OR (ARG_TEST AND TESSERA_PCH STREQUAL "TESTS"))
    target_precompile_headers(${target} PRIVATE ${TESSERA_COMMON_HEADERS} ${ARG_UNPARSED_ARGUMENTS})
  endif()
endfunction()
