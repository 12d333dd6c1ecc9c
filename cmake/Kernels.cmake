# tavrix_add_kernels(target source...)
# Compiles each source for every processor level that the library carries, into a namespace of the
# level's name: `baseline` (SSE2) and, with TAVRIX_AVX2, `avx2`. Callers choose with TAVRIX_KERNEL
# (platform/CpuFeatures.h). Kernel sources keep to plain loops, intrinsics and their own static helpers:
# an inline function of a header that the avx2 copy emitted could otherwise be linked into the baseline.
function(tavrix_add_kernels target)
  foreach(source IN LISTS ARGN)
    get_filename_component(name ${source} NAME_WE)
    tavrix_add_kernel_level(${target} ${source} tavrix_${name}_baseline baseline "")
    if(TAVRIX_AVX2)
      tavrix_add_kernel_level(${target} ${source} tavrix_${name}_avx2 avx2 "-mavx2")
    endif()
  endforeach()
endfunction()

function(tavrix_add_kernel_level target source object level flags)
  add_library(${object} OBJECT ${source})
  target_include_directories(${object} PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/include)
  target_link_libraries(${object} PRIVATE tavrix_options)
  target_compile_definitions(${object} PRIVATE TAVRIX_BUILDING TAVRIX_KERNEL_TARGET=${level})
  target_compile_options(${object} PRIVATE $<$<CONFIG:Release>:-O3> ${flags})
  target_sources(${target} PRIVATE $<TARGET_OBJECTS:${object}>)
endfunction()
