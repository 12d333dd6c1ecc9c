# cpack: a .deb, or for Windows a .zip, in the build folder.
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR})
set(CPACK_PACKAGE_NAME tavrix)
set(CPACK_PACKAGE_VENDOR "The Tavrix authors")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Clean black and white, text lines and logos from scans of business cards")
set(CPACK_STRIP_FILES ON)
if(WIN32)
  # Two archives, the debug file in one of its own, with their SHA-256 sums beside them.
  set(CPACK_GENERATOR ZIP)
  math(EXPR bits "8 * ${CMAKE_SIZEOF_VOID_P}")
  set(CPACK_PACKAGE_FILE_NAME tavrix-${PROJECT_VERSION}-win${bits})
  set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
  set(CPACK_COMPONENT_INCLUDE_TOPLEVEL_DIRECTORY ON)
  set(CPACK_ARCHIVE_UNSPECIFIED_FILE_NAME ${CPACK_PACKAGE_FILE_NAME})
  set(CPACK_ARCHIVE_DEBUG_FILE_NAME ${CPACK_PACKAGE_FILE_NAME}-debug)
  set(CPACK_PACKAGE_CHECKSUM SHA256)
  set(CPACK_STRIP_FILES OFF)  # stripped when it was linked
else()
  # Whoever builds the package answers for it; .invalid says that nobody does.
  if(DEFINED ENV{DEBFULLNAME} AND DEFINED ENV{DEBEMAIL})
    set(CPACK_PACKAGE_CONTACT "$ENV{DEBFULLNAME} <$ENV{DEBEMAIL}>")
  else()
    set(CPACK_PACKAGE_CONTACT "The Tavrix authors <nobody@tavrix.invalid>")
  endif()
  set(CPACK_GENERATOR DEB)
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
  set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Turns scans and photographs of business cards and similar small documents
into clean black and white, finds their components, text lines and logo, and
turns, crops and filters them: the command tavrix, the library with its
headers, and a module for Python.")
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
  set(CPACK_DEBIAN_PACKAGE_DEPENDS python3:any)
  if(TAVRIX_HEIF_INCLUDE)
    string(APPEND CPACK_DEBIAN_PACKAGE_DEPENDS ", libheif1")  # loaded when it is needed: no tool sees it
  endif()
  set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "python3-numpy, python3-pil")  # the module's; the command needs neither
  file(WRITE ${PROJECT_BINARY_DIR}/triggers "activate-noawait ldconfig\n")
  set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/triggers)

  set(doc_dir ${CMAKE_INSTALL_DATADIR}/doc/tavrix)
  install(FILES LICENSE DESTINATION ${doc_dir} RENAME copyright)
  string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)
  file(WRITE ${PROJECT_BINARY_DIR}/changelog "tavrix (${PROJECT_VERSION}) unstable; urgency=medium\n
  * See CHANGELOG.md.\n\n -- ${CPACK_PACKAGE_CONTACT}  ${now}\n")
  execute_process(COMMAND gzip -9nfk changelog WORKING_DIRECTORY ${PROJECT_BINARY_DIR})
  install(FILES CHANGELOG.md ${PROJECT_BINARY_DIR}/changelog.gz DESTINATION ${doc_dir})
endif()
include(CPack)
