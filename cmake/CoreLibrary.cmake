# tessera_core_library(NAME SOURCES pattern... LINKS target...)
#
# A static library of the computing core, made of the sources beside the calling CMakeLists.txt
# that match the given patterns. The core knows no widget: a library that reaches Qt Widgets,
# directly or through another one, stops the configuration.
function(tessera_core_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${ARG_SOURCES})
  list(FILTER sources EXCLUDE REGEX "/mainwindow_[^/]*$")  # slots beside the core they call
  add_library(${name} STATIC ${sources})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${name} PUBLIC ${ARG_LINKS})
  set_property(GLOBAL APPEND PROPERTY TESSERA_CORE_LIBRARIES ${name})
endfunction()

function(_tessera_collect_links target result)
  set(seen ${${result}})
  if(target IN_LIST seen OR NOT TARGET ${target})
    return()
  endif()
  list(APPEND seen ${target})
  foreach(property LINK_LIBRARIES INTERFACE_LINK_LIBRARIES)
    get_target_property(links ${target} ${property})
    if(links)
      foreach(link ${links})
        _tessera_collect_links("${link}" seen)
      endforeach()
    endif()
  endforeach()
  set(${result} ${seen} PARENT_SCOPE)
endfunction()

# Fails the configuration when `target` can reach Qt Widgets.
function(tessera_assert_no_widgets target)
  set(all)
  _tessera_collect_links(${target} all)
  foreach(link ${all})
    if(link MATCHES "Widgets|OpenGL|Qwt")
      message(FATAL_ERROR "${target} reaches ${link}: the core knows no widget")
    endif()
  endforeach()
endfunction()
