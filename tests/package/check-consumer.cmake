# Unpacks the ZIP into FOLDER, copies the customer's project there, configures and builds it against what the ZIP holds,
# runs the program, and compares what it says.
#
# Needs ZIP, CONSUMER (the project), FOLDER (made anew), OPTIONS (what configuring for this compiler takes), VERSION;
# may have EMULATOR.
cmake_minimum_required(VERSION 3.25)

function(run what)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors)
  if(NOT result EQUAL 0)
    message("${output}${errors}")
    message(FATAL_ERROR "${what} in \"${FOLDER}\" failed (${result}); the output is above.")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE "${FOLDER}")
file(ARCHIVE_EXTRACT INPUT "${ZIP}" DESTINATION "${FOLDER}")
file(COPY "${CONSUMER}" DESTINATION "${FOLDER}")
cmake_path(GET ZIP STEM LAST_ONLY package)

run("configuring the consumer" ${CMAKE_COMMAND} -S "${FOLDER}/consumer" -B "${FOLDER}/consumer/build" ${OPTIONS}
  "-DCMAKE_PREFIX_PATH=${FOLDER}/${package}")
run("building the consumer" ${CMAKE_COMMAND} --build "${FOLDER}/consumer/build")
run("running the consumer" ${EMULATOR} "${FOLDER}/consumer/build/bin/consumer.exe")

string(REPLACE "\r" "" output "${output}")
set(expected "VarnelQELRoots ${VERSION}
HEA 200 is a HEA of 200
200 is there, 250 is missing
2.346 is about 2.35, pi is about 3.14159
the task has run
there is no such catalogue
")
if(NOT output STREQUAL expected)
  message("The consumer says\n${output}where it should say\n${expected}")
  message(FATAL_ERROR "The consumer does not say what it should.")
endif()

# Against the DLL of the package, not one that lies elsewhere.
file(SHA256 "${FOLDER}/${package}/bin/VarnelQELRoots.dll" shipped)
file(SHA256 "${FOLDER}/consumer/build/bin/VarnelQELRoots.dll" used)
if(NOT shipped STREQUAL used)
  message(FATAL_ERROR "The consumer did not get the package's DLL beside it.")
endif()
