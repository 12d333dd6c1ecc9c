# What the AVX2 copies of the kernels define for other objects: their tables only. Anything else, an inline
# function of a header above all, could be linked into code that runs on machines without AVX2.
execute_process(COMMAND ${NM} --defined-only --extern-only ${OBJECTS} OUTPUT_VARIABLE symbols RESULT_VARIABLE code)
if(NOT code EQUAL 0)
  message(FATAL_ERROR "nm failed")
endif()
string(REGEX MATCHALL "[^\n]+ [A-Za-z] [^\n]+" lines "${symbols}")
set(tables 0)
foreach(line IN LISTS lines)
  if(line MATCHES " [RD] _ZN6tavrix[0-9]+[A-Za-z]+Kernels4avx2E$")
    math(EXPR tables "${tables} + 1")
  elseif(NOT line MATCHES " T __x86\\.get_pc_thunk\\.[a-z]+$")  # of 32-bit code: no vector instructions
    message(SEND_ERROR "defined at AVX2 level: ${line}")
  endif()
endforeach()
if(tables EQUAL 0)
  message(FATAL_ERROR "no table found")
endif()
