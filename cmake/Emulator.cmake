# How programs of a cross build run: CMAKE_CROSSCOMPILING_EMULATOR, and for Windows TAVRIX_RUN_WINDOWS.
if(CMAKE_CROSSCOMPILING AND CMAKE_SYSTEM_NAME STREQUAL "Linux")
  string(REPLACE "i686" "i386" processor ${CMAKE_SYSTEM_PROCESSOR})
  find_program(TAVRIX_QEMU qemu-${processor})  # runs programs as on processors of several levels
  set(probe ${CMAKE_BINARY_DIR}/CMakeFiles/emulator_probe)
  file(WRITE ${probe}.cpp "#include <mutex>\nint main() { std::mutex().lock(); }\n")
  try_compile(built ${probe} SOURCES ${probe}.cpp COPY_FILE ${probe})
  execute_process(COMMAND ${probe} RESULT_VARIABLE result OUTPUT_QUIET ERROR_QUIET)
  if(NOT result EQUAL 0 AND NOT CMAKE_CROSSCOMPILING_EMULATOR)
    # The kernel cannot run its programs, or their libraries are not where they look.
    if(NOT TAVRIX_QEMU)
      message(FATAL_ERROR "Programs for ${processor} need qemu-${processor} here (Debian: qemu-user)")
    endif()
    set(CMAKE_CROSSCOMPILING_EMULATOR ${TAVRIX_QEMU} -cpu max ${TAVRIX_QEMU_OPTIONS})
  endif()
endif()

if(WIN32 AND CMAKE_CROSSCOMPILING)
  # A command that is followed by [-t SECONDS] [-d DIR] FOLDER PROGRAM.exe ARGUMENTS and runs the program in
  # FOLDER, with DIR as drive d: and message boxes written to standard error. Where there is none for 32 bits,
  # plain wine runs what needs neither.
  set(TAVRIX_RUN_WINDOWS "")
  if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    find_program(TAVRIX_WINE64 wine64 PATHS /usr/lib/wine)
    if(TAVRIX_WINE64)
      set(TAVRIX_RUN_WINDOWS ${PROJECT_SOURCE_DIR}/tests/windows/run64.sh ${PROJECT_BINARY_DIR}/tests/windows/user32.dll)
    endif()
  else()
    find_file(TAVRIX_RUN32 run32.sh HINTS $ENV{TAVRIX_RUN32_DIR} ${PROJECT_SOURCE_DIR}/../shared/windows
      NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH DOC "Script that runs 32-bit Windows programs")
    if(TAVRIX_RUN32)
      set(TAVRIX_RUN_WINDOWS ${TAVRIX_RUN32})
    elseif(NOT CMAKE_CROSSCOMPILING_EMULATOR)
      find_program(TAVRIX_WINE wine)
      if(TAVRIX_WINE)
        set(CMAKE_CROSSCOMPILING_EMULATOR ${TAVRIX_WINE})
      endif()
    endif()
  endif()
endif()
