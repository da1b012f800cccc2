# Configures and installs the project that takes the library in, and looks at what that installs.
#
# Needs EMBEDDING (the project), SOURCE_DIR (the library), FOLDER (made anew) and OPTIONS (what configuring takes).
cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE ${FOLDER})
foreach(step "-S;${EMBEDDING};-B;${FOLDER}/build;-D;SOURCE_DIR=${SOURCE_DIR};${OPTIONS}"
    "--install;${FOLDER}/build;--prefix;${FOLDER}/installed")
  execute_process(COMMAND ${CMAKE_COMMAND} ${step} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message("${output}")
    message(FATAL_ERROR "the embedding project cannot be configured and installed")
  endif()
endforeach()
file(GLOB_RECURSE files RELATIVE ${FOLDER}/installed ${FOLDER}/installed/*)
if(NOT files STREQUAL "CMakeLists.txt")
  message(FATAL_ERROR "a project that embeds the library installs ${files}; QEL_INSTALL should keep that out")
endif()
