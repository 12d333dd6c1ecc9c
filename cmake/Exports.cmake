# The exported functions, from src/api/exports.txt: TAVRIX_EXPORTS (names) and, in the same order,
# TAVRIX_EXPORT_DECORATIONS (bytes in the decorated name) and TAVRIX_EXPORT_BYTES (bytes removed).
set(TAVRIX_EXPORT_LIST ${PROJECT_SOURCE_DIR}/src/api/exports.txt)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${TAVRIX_EXPORT_LIST})
file(STRINGS ${TAVRIX_EXPORT_LIST} lines REGEX "^[A-Za-z]")
set(TAVRIX_EXPORTS "")
set(TAVRIX_EXPORT_DECORATIONS "")
set(TAVRIX_EXPORT_BYTES "")
foreach(line IN LISTS lines)
  if(NOT line MATCHES "^([A-Za-z0-9_]+) ([0-9]+)(\\+4)?$")
    message(FATAL_ERROR "${TAVRIX_EXPORT_LIST}: cannot read \"${line}\"")
  endif()
  list(APPEND TAVRIX_EXPORTS ${CMAKE_MATCH_1})
  list(APPEND TAVRIX_EXPORT_DECORATIONS ${CMAKE_MATCH_2})
  math(EXPR bytes "${CMAKE_MATCH_2}${CMAKE_MATCH_3}")
  list(APPEND TAVRIX_EXPORT_BYTES ${bytes})
endforeach()

# What the Linux library exports beside them.
set(TAVRIX_PLATFORM_EXPORTS
  GlobalAlloc GlobalFlags GlobalFree GlobalHandle GlobalLock GlobalSize GlobalUnlock TavrixSetMessageHandler)

# Linux: only the listed names leave the library.
function(tavrix_export_with_version_script target)
  set(script ${CMAKE_CURRENT_BINARY_DIR}/tavrix.map)
  list(JOIN TAVRIX_EXPORTS ";\n    " names)
  list(JOIN TAVRIX_PLATFORM_EXPORTS ";\n    " platformNames)
  file(CONFIGURE OUTPUT ${script} @ONLY CONTENT
    "{\n  global:\n    @names@;\n    @platformNames@;\n  local:\n    *;\n};\n")
  target_link_options(${target} PRIVATE -Wl,--version-script=${script} -Wl,-z,defs)
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${script})
endfunction()

# Windows: exports plain names. On 32-bit Windows they stand for the decorated ones that the code is compiled
# to, so that a list that disagrees with the code does not link; the linker's import library would miss the
# decorated names, which callers are compiled to as well, and one that maps them to the plain names takes its
# place. Beside MinGW's import library comes Tavrix.lib, a short one for Microsoft's linker.
function(tavrix_export_with_definition_file target)
  set(machine i386)
  if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    set(machine i386:x86-64)
  endif()
  set(plain "")
  set(imported "")
  foreach(name bytes IN ZIP_LISTS TAVRIX_EXPORTS TAVRIX_EXPORT_DECORATIONS)
    if(CMAKE_SIZEOF_VOID_P EQUAL 8)
      string(APPEND plain "    ${name}\n")
      string(APPEND imported "    ${name}\n")
    else()
      string(APPEND plain "    ${name} = ${name}@${bytes}\n")
      string(APPEND imported "    ${name}@${bytes}\n")
    endif()
  endforeach()
  set(definition ${CMAKE_CURRENT_BINARY_DIR}/Tavrix.def)
  set(importDefinition ${CMAKE_CURRENT_BINARY_DIR}/TavrixImport.def)
  file(CONFIGURE OUTPUT ${definition} @ONLY CONTENT "LIBRARY Tavrix.dll\nEXPORTS\n@plain@")
  file(CONFIGURE OUTPUT ${importDefinition} @ONLY CONTENT "LIBRARY Tavrix.dll\nEXPORTS\n@imported@")
  target_sources(${target} PRIVATE ${definition})
  add_custom_command(TARGET ${target} POST_BUILD COMMAND ${CMAKE_DLLTOOL} --kill-at
    --input-def ${importDefinition} --output-lib $<TARGET_LINKER_FILE:${target}> VERBATIM)
  find_program(TAVRIX_LLVM_DLLTOOL NAMES llvm-dlltool llvm-dlltool-14)
  if(TAVRIX_LLVM_DLLTOOL)
    add_custom_command(TARGET ${target} POST_BUILD COMMAND ${TAVRIX_LLVM_DLLTOOL} -k
      -m ${machine} -d ${importDefinition} -l ${PROJECT_BINARY_DIR}/Tavrix.lib VERBATIM)
  else()
    message(STATUS "Without llvm-dlltool (Debian: llvm) there is no Tavrix.lib")
  endif()
endfunction()

# Windows: the library without symbols, and beside it a debug file that it names; the folder symbols holds
# it as it was linked.
function(tavrix_split_symbols target)
  set(dll $<TARGET_FILE:${target}>)
  set(whole ${PROJECT_BINARY_DIR}/symbols/Tavrix.dll)
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/symbols
    COMMAND ${CMAKE_COMMAND} -E copy ${dll} ${whole}
    COMMAND ${CMAKE_OBJCOPY} --only-keep-debug ${whole} $<TARGET_FILE_DIR:${target}>/Tavrix.debug
    COMMAND ${CMAKE_OBJCOPY} --strip-all --add-gnu-debuglink=$<TARGET_FILE_DIR:${target}>/Tavrix.debug ${dll} VERBATIM)
endfunction()
