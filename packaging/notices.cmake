# Writes THIRD-PARTY-NOTICES.md into BUILD_DIR, from what the DLL there was built of. Run before a ZIP is made.
#
# Needs BUILD_DIR and SOURCE_DIR. The map of the link is there in builds by GCC.
if(CMAKE_HOST_WIN32)
  message(STATUS "THIRD-PARTY-NOTICES.md is only made on Debian: the licence texts are those of its packages.")
  return()
endif()

find_program(ninja ninja REQUIRED)
set(object CMakeFiles/VarnelQELRoots.dir/src/strings/PatternSearch.cpp.obj)
execute_process(COMMAND ${ninja} -C ${BUILD_DIR} -t deps ${object}
  OUTPUT_FILE ${BUILD_DIR}/third-party-headers.txt COMMAND_ERROR_IS_FATAL ANY)
set(map)
if(EXISTS ${BUILD_DIR}/VarnelQELRoots.map)
  set(map --map ${BUILD_DIR}/VarnelQELRoots.map)
endif()
execute_process(
  COMMAND python3 ${SOURCE_DIR}/packaging/notices.py --headers ${BUILD_DIR}/third-party-headers.txt ${map}
    ${BUILD_DIR}/THIRD-PARTY-NOTICES.md
  COMMAND_ERROR_IS_FATAL ANY)
