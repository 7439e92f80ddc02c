# `cpack -G DEB` in the build folder makes the Debian package; `scripts/package` does it all.
# The files are those of Install.cmake, with the papers that a package needs in share/doc.
set(TESSERA_MAINTAINER "Tessera maintainers <maintainers@tessera.invalid>" CACHE STRING
  "Name and address in the package, for who gives it to others")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tessera)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "workbench for three-dimensional electron crystallography")
set(CPACK_PACKAGE_DESCRIPTION "\
From a series of electron diffraction frames, taken while a crystal turns
about a known axis, Tessera makes a unit cell, an indexed list of reflections
with intensities, and the files that structure-solution programs read.

The package has the workbench (tessera), the driver for many series
(tessera-batch), the merging of many crystals (tessera-merge), the simulator
of rotation series (tessera-simulate), the comparison of results with its
truth (tessera-compare), a demo series (tessera-demo) and the guide.")
set(CPACK_PACKAGE_CONTACT "${TESSERA_MAINTAINER}")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
# Libraries are found by dpkg-shlibdeps. What is loaded at run time: TIFF frames and pictures, OpenGL in software,
# a font with Å and Greek letters.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt5-image-formats-plugins, libgl1-mesa-dri, fonts-dejavu-core")

# What every package of Debian has in share/doc: licence and changes, these compressed and with one date for all.
find_program(GZIP gzip)
set(doc ${CMAKE_INSTALL_DATADIR}/doc/tessera)
set(papers ${CMAKE_BINARY_DIR}/package)
string(TIMESTAMP package_date "%a, %d %b %Y %H:%M:%S +0000" UTC)  # SOURCE_DATE_EPOCH counts
string(TIMESTAMP package_year "%Y" UTC)
configure_file(cmake/package/copyright.in ${papers}/copyright @ONLY)
configure_file(cmake/package/changelog.Debian.in ${papers}/changelog.Debian @ONLY)
configure_file(CHANGELOG.md ${papers}/changelog COPYONLY)
install(FILES ${papers}/copyright DESTINATION ${doc})
if(GZIP)
  foreach(paper changelog changelog.Debian)
    execute_process(COMMAND ${GZIP} -9nf --keep ${papers}/${paper} COMMAND_ERROR_IS_FATAL ANY)
    install(FILES ${papers}/${paper}.gz DESTINATION ${doc})
  endforeach()
endif()

# `ninja manpages` makes the pages of the manual out of what --help says.
find_program(HELP2MAN help2man)
if(GZIP AND HELP2MAN AND TARGET tessera)
  set(pages)
  set(names_tessera "${CPACK_PACKAGE_DESCRIPTION_SUMMARY}")
  set(names_tessera-batch "electron diffraction series from frames to result files")
  set(names_tessera-merge "electron diffraction intensities of many crystals merged")
  set(names_tessera-simulate "electron diffraction series of a known crystal")
  set(names_tessera-compare "results of a simulated series against its truth")
  set(names_tessera-demo "demo series for the workbench")
  foreach(program tessera tessera-batch tessera-merge tessera-simulate tessera-compare tessera-demo)
    if(TARGET ${program})
      set(executable $<TARGET_FILE:${program}>)
    else()
      set(executable ${PROJECT_SOURCE_DIR}/scripts/${program})
    endif()
    set(page ${papers}/${program}.1)
    add_custom_command(OUTPUT ${page}.gz
      COMMAND ${CMAKE_COMMAND} -E env LC_ALL=C.UTF-8 QT_QPA_PLATFORM=offscreen ${HELP2MAN} --no-info --locale=C.UTF-8
        --version-string=${PROJECT_VERSION} --name=${names_${program}} --output=${page} ${executable}
      COMMAND ${GZIP} -9nf ${page}
      DEPENDS ${executable} VERBATIM)
    list(APPEND pages ${page}.gz)
  endforeach()
  add_custom_target(manpages DEPENDS ${pages})
  install(FILES ${pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 OPTIONAL)
endif()

include(CPack)
