# cmake --install: the library, its headers, the CMake package Tavrix::tavrix, tavrix.pc, the command with
# its manual page and completion; CPack: a .deb, or for Windows a .zip.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

target_include_directories(tavrix INTERFACE
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)

install(TARGETS tavrix EXPORT TavrixTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
set(headers include/tavrix/tavrix.h include/tavrix/component_store.hpp)
if(NOT WIN32)
  list(APPEND headers include/tavrix/global_memory.h include/tavrix/message_handler.h)
endif()
install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tavrix)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Tavrix)
file(WRITE ${PROJECT_BINARY_DIR}/TavrixConfig.cmake "include(\${CMAKE_CURRENT_LIST_DIR}/TavrixTargets.cmake)\n")
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TavrixConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/TavrixConfig.cmake ${PROJECT_BINARY_DIR}/TavrixConfigVersion.cmake
  DESTINATION ${package_dir})
install(EXPORT TavrixTargets NAMESPACE Tavrix:: DESTINATION ${package_dir})

if(WIN32)
  install(FILES samples/binarize.c LICENSE README.md DESTINATION .)
else()
  file(RELATIVE_PATH TAVRIX_PC_UP /${CMAKE_INSTALL_LIBDIR} /)
  configure_file(cmake/tavrix.pc.in tavrix.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/tavrix.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
  install(FILES python/tavrix.py DESTINATION lib/python3/dist-packages)
  install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} RENAME copyright)
endif()
if(TARGET tavrix_command)
  file(RELATIVE_PATH libdir_from_bin /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
  set_target_properties(tavrix_command PROPERTIES
    INSTALL_RPATH "$ORIGIN/${libdir_from_bin}")
  install(TARGETS tavrix_command RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES docs/tavrix.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES host/completion/tavrix.bash RENAME tavrix
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
endif()

set(CPACK_PACKAGE_NAME tavrix)
set(CPACK_PACKAGE_VENDOR "The Tavrix authors")
set(CPACK_PACKAGE_CONTACT "The Tavrix authors <tavrix@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Clean black and white, text lines and logos from scans of business cards")
set(CPACK_STRIP_FILES ON)
if(WIN32)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_PACKAGE_FILE_NAME tavrix-${PROJECT_VERSION}-win32)
else()
  set(CPACK_GENERATOR DEB)
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
endif()
include(CPack)
