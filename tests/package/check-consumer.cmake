# Unpacks the ZIP into FOLDER, copies a customer's project there, configures and builds it against what the ZIP holds,
# runs the program, and compares what it says.
#
# Needs ZIP, PROJECT, PROGRAM (its path in the build folder), FOLDER (made anew), OPTIONS (what configuring for this
# compiler takes), EXIT_CODE and OUTPUT of the program; may have EMULATOR.
cmake_minimum_required(VERSION 3.25)

function(run what exit_code)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors)
  if(NOT result EQUAL exit_code)
    message("${output}${errors}")
    message(FATAL_ERROR "${what} in \"${FOLDER}\" failed (${result}); the output is above.")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE "${FOLDER}")
file(ARCHIVE_EXTRACT INPUT "${ZIP}" DESTINATION "${FOLDER}")
file(COPY "${PROJECT}/" DESTINATION "${FOLDER}/project")
cmake_path(GET ZIP STEM LAST_ONLY package)
set(build "${FOLDER}/project/build")

run("configuring the project" 0 ${CMAKE_COMMAND} -S "${FOLDER}/project" -B "${build}" ${OPTIONS}
  "-DCMAKE_PREFIX_PATH=${FOLDER}/${package}")
run("building the project" 0 ${CMAKE_COMMAND} --build "${build}")
run("running the program" ${EXIT_CODE} ${EMULATOR} "${build}/${PROGRAM}")

string(REPLACE "\r" "" output "${output}")
if(NOT output STREQUAL OUTPUT)
  message("The program says\n${output}where it should say\n${OUTPUT}")
  message(FATAL_ERROR "The program does not say what it should.")
endif()

# Against the DLL of the package, not one that lies elsewhere.
cmake_path(GET PROGRAM PARENT_PATH folder)
file(SHA256 "${FOLDER}/${package}/bin/VarnelQELRoots.dll" shipped)
file(SHA256 "${build}/${folder}/VarnelQELRoots.dll" used)
if(NOT shipped STREQUAL used)
  message(FATAL_ERROR "The program did not get the package's DLL beside it.")
endif()
