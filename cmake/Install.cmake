# What `cmake --install` puts where: the programs, the desktop entry, the type of .ed3d files, the icon, the guide.
# The caches of the desktop (update-desktop-database and its like) are left to who packages the program.
foreach(program tessera tessera-batch tessera-merge tessera-simulate tessera-compare)
  if(TARGET ${program})
    install(TARGETS ${program} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  endif()
endforeach()

if(TARGET tessera)
  install(PROGRAMS ${PROJECT_SOURCE_DIR}/scripts/tessera-demo DESTINATION ${CMAKE_INSTALL_BINDIR})
  set(resources ${PROJECT_SOURCE_DIR}/resources)
  install(FILES ${resources}/tessera.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
  install(FILES ${resources}/tessera-mime.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages
    RENAME tessera.xml)
  set(icons ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
  foreach(size 16 24 32 48 64 128 256)
    install(FILES ${resources}/images/hicolor/tessera-${size}.png
      DESTINATION ${icons}/${size}x${size}/apps RENAME tessera.png)
  endforeach()
  install(FILES ${resources}/svg/tessera.svg DESTINATION ${icons}/scalable/apps)

  # The guide, which the program shows: not in share/doc, which an installation may leave out.
  set(guide ${CMAKE_INSTALL_DATADIR}/tessera/doc)
  install(FILES ${PROJECT_SOURCE_DIR}/docs/guide.md ${PROJECT_SOURCE_DIR}/docs/many-series.md DESTINATION ${guide})
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/pictures DESTINATION ${guide}
    FILES_MATCHING PATTERN "*.png" PATTERN "*_1920x1080.png" EXCLUDE)
endif()

install(DIRECTORY ${PROJECT_SOURCE_DIR}/workflow DESTINATION ${CMAKE_INSTALL_DATADIR}/tessera
  USE_SOURCE_PERMISSIONS PATTERN __pycache__ EXCLUDE)

include(cmake/Package.cmake)
