# Warnings and the arithmetic that every build shares: no contraction of multiply and add, and SSE2 on x86,
# so that the same source gives the same bytes everywhere.
add_library(tavrix_options INTERFACE)
target_compile_options(tavrix_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion
  -ffp-contract=off -fno-fast-math
  $<$<CXX_COMPILER_ID:Clang>:-Wno-unknown-pragmas>)  # GCC ivdep
if(TAVRIX_PLAIN_KERNELS)
  target_compile_definitions(tavrix_options INTERFACE TAVRIX_PLAIN_KERNELS)
elseif(NOT TAVRIX_X86)
  target_include_directories(tavrix_options SYSTEM INTERFACE ${PROJECT_BINARY_DIR}/simde)
endif()
if(TAVRIX_X86)
  target_compile_options(tavrix_options INTERFACE -msse2 -mfpmath=sse)
endif()
if(TAVRIX_X86 AND CMAKE_SIZEOF_VOID_P EQUAL 4)
  # 32-bit hosts align their stacks to 4 bytes only.
  target_compile_options(tavrix_options INTERFACE -mstackrealign)
endif()
if(WIN32)
  target_compile_options(tavrix_options INTERFACE -g)  # goes into a file of its own
endif()
if(WIN32 AND CMAKE_SIZEOF_VOID_P EQUAL 4)
  # The system's heap aligns to 8 bytes, whatever the compiler takes for granted of operator new.
  target_compile_options(tavrix_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-faligned-new=8>)
endif()
if(TAVRIX_WERROR)
  target_compile_options(tavrix_options INTERFACE -Werror)
endif()
