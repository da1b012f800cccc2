# The ZIP for customers, made by "cpack" in the build folder: the five components together, below a folder of the ZIP's
# name. "cpack -D CPACK_COMPONENTS_GROUPING=IGNORE" makes a ZIP of each instead.
set(qel_package_name VarnelQELRoots-${PROJECT_VERSION}-${qel_abi}-x64)
# A host for release cannot use a Visual C++ DLL for debugging, nor the other way round.
if(CMAKE_BUILD_TYPE STREQUAL "Debug")
  string(APPEND qel_package_name -debug)
endif()

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME VarnelQELRoots)
set(CPACK_PACKAGE_VENDOR VarnelQELRoots)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_PACKAGE_FILE_NAME ${qel_package_name})
set(qel_package_folder ${PROJECT_BINARY_DIR}/package)
set(CPACK_PACKAGE_DIRECTORY ${qel_package_folder})
set(CPACK_COMPONENTS_ALL runtime tools development symbols documentation)
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ALL_COMPONENTS_IN_ONE)
set(CPACK_COMPONENT_INCLUDE_TOPLEVEL_DIRECTORY ON)
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
