# cmake --install: the library, its headers, the CMake package Tavrix::tavrix, tavrix.pc, the command with
# its manual page and completion.
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
  if(TAVRIX_LLVM_DLLTOOL)
    install(FILES ${PROJECT_BINARY_DIR}/Tavrix.lib DESTINATION ${CMAKE_INSTALL_LIBDIR})
  endif()
  install(FILES ${PROJECT_BINARY_DIR}/bin/Tavrix.debug DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT debug)
  # The documents with what they show and link to.
  install(FILES CHANGELOG.md CONTRIBUTING.md LICENSE README.md SECURITY.md DESTINATION .)
  install(FILES samples/binarize.c samples/card-colour.jpg DESTINATION samples)
  install(FILES web/README.md DESTINATION web)
  install(DIRECTORY docs DESTINATION . FILES_MATCHING PATTERN "*.md" PATTERN "*.png" PATTERN "*.svg")
else()
  file(RELATIVE_PATH TAVRIX_PC_UP /${CMAKE_INSTALL_LIBDIR} /)
  configure_file(cmake/tavrix.pc.in tavrix.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/tavrix.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endif()
if(TARGET tavrix_automatic)
  set_target_properties(tavrix_automatic PROPERTIES INSTALL_RPATH "$ORIGIN")
  install(TARGETS tavrix_automatic LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(FILES include/tavrix/automatic.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tavrix)
endif()
if(TARGET tavrix_command)
  file(RELATIVE_PATH libdir_from_bin /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
  set_target_properties(tavrix_command PROPERTIES
    INSTALL_RPATH "$ORIGIN/${libdir_from_bin};$ORIGIN/${libdir_from_bin}/tavrix")
  set_target_properties(tavrix_straighten PROPERTIES INSTALL_RPATH "$ORIGIN/..")
  install(TARGETS tavrix_straighten LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/tavrix)
  install(TARGETS tavrix_command RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  add_custom_command(OUTPUT ${PROJECT_BINARY_DIR}/tavrix.1.gz DEPENDS docs/tavrix.1
    COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/docs/tavrix.1 >${PROJECT_BINARY_DIR}/tavrix.1.gz)
  add_custom_target(tavrix_manual ALL DEPENDS ${PROJECT_BINARY_DIR}/tavrix.1.gz)
  install(FILES ${PROJECT_BINARY_DIR}/tavrix.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES host/completion/tavrix.bash RENAME tavrix
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
endif()
