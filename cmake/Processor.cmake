# What the processor decides: TAVRIX_X86, and where the kernels' vector code comes from.
if(CMAKE_CXX_BYTE_ORDER STREQUAL "BIG_ENDIAN")
  message(FATAL_ERROR "Tavrix reads packed images in their own byte order, lowest byte first: "
    "it cannot be built for a big-endian processor")
endif()

include(CheckCXXSourceCompiles)
check_cxx_source_compiles("
#if !defined(__x86_64__) && !defined(__i386__)
#error
#endif
int main() {}" TAVRIX_X86)

option(TAVRIX_PLAIN_KERNELS "Kernels of plain loops, without vector code" OFF)
if(NOT TAVRIX_X86 AND NOT TAVRIX_PLAIN_KERNELS)
  find_path(TAVRIX_SIMDE_INCLUDE simde/x86/sse2.h PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH)
  if(NOT TAVRIX_SIMDE_INCLUDE)
    message(STATUS "Without SIMDe (Debian: libsimde-dev) the kernels are plain loops, which are slower")
    set(TAVRIX_PLAIN_KERNELS ON)
  else()
    # By itself: a cross compiler must not meet this system's other headers beside it.
    file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/simde)
    file(CREATE_LINK ${TAVRIX_SIMDE_INCLUDE}/simde ${PROJECT_BINARY_DIR}/simde/simde SYMBOLIC)
  endif()
endif()
if(NOT TAVRIX_X86 OR TAVRIX_PLAIN_KERNELS)
  set(TAVRIX_AVX2 OFF)
endif()
