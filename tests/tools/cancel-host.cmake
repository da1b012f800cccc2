# Whether "host progress" ends when it reads the letter C from a pipe, and leaves no list.
set(list ${FOLDER}/cancelled.txt)
file(REMOVE ${list})
# Far longer than the letter needs to arrive, far shorter than the limit of the test.
execute_process(
  COMMAND ${CMAKE_COMMAND} -E echo "a c"
  COMMAND ${EMULATOR} ${HOST} progress --parts 100 --pause 300 --output ${list}
  RESULT_VARIABLE result OUTPUT_VARIABLE output)
set(expected "Press C, Escape or Ctrl[+]C to cancel[.].*Cancelled; no list was written[.]")
if(NOT result EQUAL 3 OR NOT output MATCHES "${expected}")
  message(FATAL_ERROR "exit status ${result}, output:\n${output}")
endif()
if(EXISTS ${list})
  message(FATAL_ERROR "a list was left")
endif()
