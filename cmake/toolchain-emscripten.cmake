# WebAssembly with vectors and exceptions of its own, which browsers have had since 2023.
find_path(TAVRIX_EMSCRIPTEN cmake/Modules/Platform/Emscripten.cmake HINTS $ENV{EMSDK}/upstream/emscripten
  PATHS /usr/share/emscripten REQUIRED NO_CMAKE_FIND_ROOT_PATH)
include(${TAVRIX_EMSCRIPTEN}/cmake/Modules/Platform/Emscripten.cmake)
set(CMAKE_C_FLAGS_INIT "-msimd128 -fwasm-exceptions")
set(CMAKE_CXX_FLAGS_INIT "-msimd128 -fwasm-exceptions")
# The linker runs a script that wants acorn, which Debian keeps where Node.js does not look.
set(CMAKE_CXX_LINKER_LAUNCHER ${CMAKE_COMMAND} -E env NODE_PATH=/usr/share/nodejs:$ENV{NODE_PATH})
