# tavrix_add_kernels(target source...)
# Compiles each source for every processor level that the library carries: `baseline` (SSE2) and, with
# TAVRIX_AVX2, `avx2`. Each copy defines one table of functions of the level's name, TAVRIX_KERNEL_LEVEL;
# platform::KernelsOf (platform/CpuFeatures.h) is the table for the machine. The table is all that a kernel
# source may define for others: it keeps to plain loops, intrinsics and functions of internal linkage, since
# an inline function of a header that the avx2 copy emitted could be linked into the baseline.
function(tavrix_add_kernels target)
  foreach(source IN LISTS ARGN)
    get_filename_component(name ${source} NAME_WE)
    tavrix_add_kernel_level(${target} ${source} tavrix_${name}_baseline baseline "")
    if(TAVRIX_AVX2)
      tavrix_add_kernel_level(${target} ${source} tavrix_${name}_avx2 avx2 "-mavx2")
      set_property(GLOBAL APPEND PROPERTY TAVRIX_AVX2_OBJECTS $<TARGET_OBJECTS:tavrix_${name}_avx2>)
    endif()
  endforeach()
endfunction()

function(tavrix_add_kernel_level target source object level flags)
  add_library(${object} OBJECT ${source})
  target_include_directories(${object} PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/include)
  target_link_libraries(${object} PRIVATE tavrix_options)
  target_compile_definitions(${object} PRIVATE TAVRIX_BUILDING TAVRIX_KERNEL_LEVEL=${level})
  target_compile_options(${object} PRIVATE $<$<CONFIG:Release>:-O3> ${flags})
  target_sources(${target} PRIVATE $<TARGET_OBJECTS:${object}>)
endfunction()
