# Configures the customer's project for a compiler that the package does not fit, and looks for the sentence that says
# so.
#
# Needs PREFIX (where the package lies; else ZIP, which is unpacked), CONSUMER (the project), FOLDER (made anew),
# OPTIONS (what configuring takes) and SENTENCE (a regular expression).
cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE "${FOLDER}")
if(PREFIX STREQUAL "")
  file(ARCHIVE_EXTRACT INPUT "${ZIP}" DESTINATION "${FOLDER}")
  cmake_path(GET ZIP STEM LAST_ONLY package)
  set(PREFIX "${FOLDER}/${package}")
endif()

execute_process(
  COMMAND ${CMAKE_COMMAND} -S "${CONSUMER}" -B "${FOLDER}/build" ${OPTIONS} "-DCMAKE_PREFIX_PATH=${PREFIX}"
  RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
# CMake breaks its lines where it likes.
string(REGEX REPLACE "[ \n\r]+" " " text "${output}")
if(result EQUAL 0 OR NOT text MATCHES "Reason given by package: VarnelQELRoots [0-9.]+ of .* ${SENTENCE}")
  message("${output}")
  message(FATAL_ERROR "The package should refuse this project with: ${SENTENCE}")
endif()
