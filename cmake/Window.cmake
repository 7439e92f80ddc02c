# The window: scenes and views, the pages and MainWindow, and the program `tessera`.
# All slots of MainWindow belong to one class, so their sources, which lie in the folders of their
# subsystems, make one library.
find_package(Qt5 5.15 REQUIRED COMPONENTS Widgets OpenGL)
set(OpenGL_GL_PREFERENCE GLVND)
find_package(OpenGL REQUIRED)
pkg_check_modules(QWT REQUIRED IMPORTED_TARGET Qt5Qwt6)

file(GLOB frameview_sources CONFIGURE_DEPENDS src/frameview/*.cpp src/frameview/*.h)
list(FILTER frameview_sources EXCLUDE REGEX "/mainwindow_[^/]*$")
if(NOT frameview_sources)
  return()
endif()
add_library(tessera_frameview STATIC ${frameview_sources})
set_target_properties(tessera_frameview PROPERTIES AUTOMOC ON)
target_include_directories(tessera_frameview PUBLIC ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(tessera_frameview PUBLIC tessera_imaging Qt5::Widgets)

file(GLOB view3d_sources CONFIGURE_DEPENDS src/view3d/*.cpp src/view3d/*.h)
list(FILTER view3d_sources EXCLUDE REGEX "/mainwindow_[^/]*$")
add_library(tessera_view3d STATIC ${view3d_sources})
set_target_properties(tessera_view3d PROPERTIES AUTOMOC ON)
target_include_directories(tessera_view3d PUBLIC ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(tessera_view3d PUBLIC tessera_cloud Qt5::OpenGL Qt5::Widgets OpenGL::GL)

if(NOT EXISTS ${PROJECT_SOURCE_DIR}/src/app/main.cpp)
  return()
endif()
file(GLOB window_sources CONFIGURE_DEPENDS src/app/*.cpp src/app/*.h src/*/mainwindow_*.cpp src/*/pages/*.cpp
  src/*/pages/*.h)
list(FILTER window_sources EXCLUDE REGEX "/main\\.cpp$")
if(EXISTS ${PROJECT_SOURCE_DIR}/resources/tessera.qrc)
  list(APPEND window_sources resources/tessera.qrc)
endif()
add_library(tessera_window STATIC ${window_sources})
set_target_properties(tessera_window PROPERTIES AUTOMOC ON AUTORCC ON)
target_include_directories(tessera_window PUBLIC ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(tessera_window PUBLIC tessera_frameview tessera_view3d tessera_reciprocal Qt5::Widgets PkgConfig::QWT)

add_executable(tessera src/app/main.cpp)
target_link_libraries(tessera PRIVATE tessera_window)

# The program looks for its guide in ../share, as it is installed.
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/share/tessera)
file(CREATE_LINK ${PROJECT_SOURCE_DIR}/docs ${CMAKE_BINARY_DIR}/share/tessera/doc SYMBOLIC)
