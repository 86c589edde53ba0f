# The installed program: `cmake --install` and the Debian package (`cpack -G DEB`).
#
# Everything the build puts in build/program/ goes, with the same layout, to
# <prefix>/lib/tessaly/, so the executables still find the engine library through their
# $ORIGIN run path and the engine beside them. <prefix>/bin holds links to the two programs.
# The prefix may be read-only: the program then keeps its working files (rules, the engine's
# request and reports, OUTPUT, logs, a copy of the sample projects) in a per-user working
# folder, $XDG_DATA_HOME/tessaly or ~/.local/share/tessaly (platform/working_folder.h).
include(GNUInstallDirs)

# Installing and packaging take what is built; they do not build every test and benchmark
# first (build the program's targets, then install or package).
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)

set(TESSALY_INSTALL_DIR ${CMAKE_INSTALL_LIBDIR}/tessaly)
# Debian puts private program folders under lib/, not under the multiarch lib/<triplet>/.
if(CMAKE_INSTALL_LIBDIR MATCHES "^lib/")
  set(TESSALY_INSTALL_DIR lib/tessaly)
endif()

set(tessaly_installed_programs qvxengine)
foreach(program tessaly tsly)
  if(TARGET ${program})
    list(APPEND tessaly_installed_programs ${program})
  endif()
endforeach()
install(TARGETS ${tessaly_installed_programs} quorvane
        RUNTIME DESTINATION ${TESSALY_INSTALL_DIR}
        LIBRARY DESTINATION ${TESSALY_INSTALL_DIR})

# The shipped files, the present rules (a copy of the shipped ones, as in the build's folder)
# and the sample projects.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/resources/program/ DESTINATION ${TESSALY_INSTALL_DIR})
install(FILES ${PROJECT_SOURCE_DIR}/resources/program/ENGINE.CND
        DESTINATION ${TESSALY_INSTALL_DIR} RENAME ENGINE.USR)
file(GLOB tessaly_example_files CONFIGURE_DEPENDS
     ${PROJECT_SOURCE_DIR}/examples/*.ASC ${PROJECT_SOURCE_DIR}/examples/*.xml
     ${PROJECT_SOURCE_DIR}/examples/README.md)
install(FILES ${tessaly_example_files} DESTINATION ${TESSALY_INSTALL_DIR}/examples)

# The commands on the path are links into the program's folder; the program finds its folder
# through /proc/self/exe, which names the link's target.
foreach(program ${tessaly_installed_programs})
  if(NOT program STREQUAL "qvxengine")
    install(CODE "
      set(bin \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\")
      file(MAKE_DIRECTORY \"\${bin}\")
      file(CREATE_LINK \"../${TESSALY_INSTALL_DIR}/${program}\" \"\${bin}/${program}\" SYMBOLIC)
      message(STATUS \"Installing: \${bin}/${program} -> ../${TESSALY_INSTALL_DIR}/${program}\")")
  endif()
endforeach()

# The desktop's menu entry and icon.
install(FILES ${PROJECT_SOURCE_DIR}/resources/desktop/tessaly.desktop
        DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${PROJECT_SOURCE_DIR}/resources/desktop/tessaly.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tessaly)
# The version `tessaly --version` prints.
set(CPACK_PACKAGE_VERSION 1.0)
set(CPACK_PACKAGE_CONTACT "Tessaly developers <tessaly@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Batch forecasting of many time series, with reports and graphs")
set(CPACK_PACKAGE_DESCRIPTION
    "Tessaly sends each dataset of a project through its forecasting engine and writes reports, graphs and a browsable site; a desktop and the headless tsly.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# The build keeps its debugging symbols; the package does not need them.
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
# The shared libraries the executables link (Qt, libxml2, ...) become the package's
# dependencies when dpkg-shlibdeps is at hand; without it the package names them itself.
find_program(TESSALY_DPKG_SHLIBDEPS dpkg-shlibdeps)
if(TESSALY_DPKG_SHLIBDEPS)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_INSTALL_PREFIX}/${TESSALY_INSTALL_DIR})
else()
  set(CPACK_DEBIAN_PACKAGE_DEPENDS
      "libqt6widgets6, libqt6gui6, libqt6core6, libqt6charts6, libxml2, libsqlite3-0, libxlsxwriter1 | libxlsxwriter3, libfreexl1, libminizip1")
endif()
include(CPack)
