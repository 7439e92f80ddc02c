# Several sources as one translation unit: three quarters of the time of a build from nothing goes into headers, which
# the sources of a folder share. Which go together scripts/sourceunits.py finds out. What the compiler makes of a source
# is the same, to the bit of its results; but an include that is missing shows in a build without alone.
option(TESSERA_UNITS "Compile several sources as one; for builds from nothing" OFF)

# Targets of a folder and of those below.
function(_tessera_targets folder result)
  get_property(all DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
  get_property(below DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
  foreach(one IN LISTS below)
    _tessera_targets(${one} targets)
    list(APPEND all ${targets})
  endforeach()
  set(${result} ${all} PARENT_SCOPE)
endfunction()

# tessera_join_sources(FOLDER...): those of each target in and below the folders, when all targets have their sources.
function(tessera_join_sources)
  list(TRANSFORM ARGN PREPEND "${PROJECT_SOURCE_DIR}/" OUTPUT_VARIABLE folders)
  list(JOIN folders "|" folders)
  _tessera_targets(${PROJECT_SOURCE_DIR} targets)
  set(lines)
  foreach(target IN LISTS targets)
    get_target_property(base ${target} SOURCE_DIR)
    get_target_property(sources ${target} SOURCES)
    list(FILTER sources INCLUDE REGEX "\\.cpp$")
    if(NOT sources OR NOT base MATCHES "^(${folders})")
      continue()
    endif()
    foreach(source IN LISTS sources)
      file(REAL_PATH ${source} source BASE_DIRECTORY ${base})
      string(APPEND lines "${target} ${source}\n")
    endforeach()
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
    # Fixtures of tests in unnamed namespaces are used by one source alone, also when another includes it.
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
  endforeach()
  file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/sources.txt CONTENT "${lines}" @ONLY)
  find_package(Python3 REQUIRED COMPONENTS Interpreter)
  execute_process(COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/scripts/sourceunits.py
    ${CMAKE_BINARY_DIR}/sources.txt ${CMAKE_BINARY_DIR}/sourceunits.cmake COMMAND_ERROR_IS_FATAL ANY)
  include(${CMAKE_BINARY_DIR}/sourceunits.cmake)
endfunction()
