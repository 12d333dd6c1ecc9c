# Runs the conformance host (RUN, a command in which @WORK@ stands for the folder WORK) in a folder that takes the
# diagnostic file, and compares the messages that it shows with the list MESSAGES.
string(CONFIGURE "${RUN}" RUN @ONLY)
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK}/outputImg)
execute_process(COMMAND ${RUN} WORKING_DIRECTORY ${WORK}
  RESULT_VARIABLE result OUTPUT_VARIABLE printed ERROR_VARIABLE shown)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "The host ended with ${result}\n${printed}${shown}")
endif()
# A message box of a Windows run is written as MessageBoxW type=0x0 "caption": text.
string(REPLACE "\r" "" shown "${shown}")
string(REGEX REPLACE "(\\[run32\\] )?MessageBoxW type=0x0 \"Tavrix\": " "" shown "${shown}")
file(READ ${MESSAGES} expected)
if(NOT shown STREQUAL expected)
  message(FATAL_ERROR "The messages are\n${shown}instead of\n${expected}")
endif()
