# Makes the ZIP of the test kit from what has been built.
#
# Needs BUILD_DIR, SOURCE_DIR, TESTS (the names of the test programs of the build, with commas), NAME (of the ZIP and of
# the folder in it), FOLDER (for the ZIP) and, where there is one, STRIP (the tool).
cmake_minimum_required(VERSION 3.25)

set(kit ${BUILD_DIR}/testkit/${NAME})
file(REMOVE_RECURSE ${BUILD_DIR}/testkit)

# Line ends of Windows, for whoever opens them there.
foreach(name README.txt known-differences.txt programs.txt)
  file(READ ${CMAKE_CURRENT_LIST_DIR}/${name} text)
  string(REPLACE "\n" "\r\n" text "${text}")
  file(WRITE ${kit}/${name} "${text}")
endforeach()
file(COPY ${CMAKE_CURRENT_LIST_DIR}/run-tests.cmd DESTINATION ${kit})

include(${CMAKE_CURRENT_LIST_DIR}/../notices.cmake)
if(EXISTS ${BUILD_DIR}/THIRD-PARTY-NOTICES.md)
  file(COPY ${BUILD_DIR}/THIRD-PARTY-NOTICES.md DESTINATION ${kit})
endif()

# The library, what runs the tests, and what some tests start or load beside themselves.
foreach(file VarnelQELRoots.dll testkit.exe qelTasksBusyExit.exe qelTasksBusyModule.dll
    qelEndingProcess.exe qelEndingModule.dll)
  file(COPY ${BUILD_DIR}/bin/${file} DESTINATION ${kit}/bin)
endforeach()
file(COPY ${BUILD_DIR}/debug-output/VarnelQELRoots.dll DESTINATION ${kit}/debug-output)

# The programs of the list, which must be all that there are.
string(REPLACE "," ";" TESTS "${TESTS}")
file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/programs.txt lines REGEX "^[^#]")
foreach(line IN LISTS lines)
  string(REGEX MATCH "^[^ |]+" path "${line}")
  string(REPLACE "\\" "/" path "${path}")
  cmake_path(GET path FILENAME name)
  if(NOT name IN_LIST TESTS)
    message(FATAL_ERROR "packaging/testkit/programs.txt names ${name}, which is no test program.")
  endif()
  list(REMOVE_ITEM TESTS ${name})
  if(NOT line MATCHES "[|] *left out *[|]")
    cmake_path(GET path PARENT_PATH folder)
    file(COPY ${BUILD_DIR}/${path}.exe DESTINATION ${kit}/${folder})
  endif()
endforeach()
if(TESTS)
  message(FATAL_ERROR "These test programs are not in packaging/testkit/programs.txt: ${TESTS}")
endif()

# Without their symbols, which are nine tenths of them.
if(STRIP)
  file(GLOB programs ${kit}/*/*.exe ${kit}/debug-output/*.dll ${kit}/bin/qel*.dll)
  execute_process(COMMAND ${STRIP} ${programs} COMMAND_ERROR_IS_FATAL ANY)
endif()

file(MAKE_DIRECTORY ${FOLDER})
file(REMOVE ${FOLDER}/${NAME}.zip)
execute_process(COMMAND ${CMAKE_COMMAND} -E tar cf ${FOLDER}/${NAME}.zip --format=zip ${NAME}
  WORKING_DIRECTORY ${BUILD_DIR}/testkit COMMAND_ERROR_IS_FATAL ANY)
file(REMOVE_RECURSE ${BUILD_DIR}/testkit)
message(STATUS "${FOLDER}/${NAME}.zip")
