# What is installed, in five components: runtime, tools, development, symbols and documentation. Every path is relative
# to the place of installation, and no installed file knows where it was built or where it lies.
include(CMakePackageConfigHelpers)
include(CheckCXXSourceCompiles)
include(${CMAKE_CURRENT_LIST_DIR}/Pages.cmake)

# As package names and the CMake package spell it.
if(MINGW)
  set(qel_abi mingw)
else()
  set(qel_abi visualcpp)
endif()

# MinGW-w64 comes for either C runtime; hosts must use that of the DLL.
set(CMAKE_REQUIRED_QUIET ON)
check_cxx_source_compiles("#include <stdlib.h>\n#ifndef _UCRT\n#error\n#endif\nint main() {}" QEL_USES_UCRT)
unset(CMAKE_REQUIRED_QUIET)
if(QEL_USES_UCRT OR NOT MINGW)
  set(qel_c_runtime ucrtbase.dll)
else()
  set(qel_c_runtime msvcrt.dll)
endif()

set(qel_cmake_folder lib/cmake/VarnelQELRoots)
# At the top, where who unpacks the ZIP looks first and the links between pages and headers hold. Where many packages
# share a place, CMAKE_INSTALL_DOCDIR names another folder.
set(qel_documentation_folder .)
if(CMAKE_INSTALL_DOCDIR)
  set(qel_documentation_folder ${CMAKE_INSTALL_DOCDIR})
endif()

set(qel_headers
  include/qelArray.h
  include/qelBalancedTree.h
  include/qelDataSourcesUtilities.h
  include/qelDebugInterfaces.h
  include/qelDouble.h
  include/qelExport.h
  include/qelFileAccess.h
  include/qelGlobalStorage.h
  include/qelIncrementalCounter.h
  include/qelLogfile.h
  include/qelMathUtilities.h
  include/qelNumberCreator.h
  include/qelPerfMonitor.h
  include/qelProcessEvolutionManager.h
  include/qelProductDefines.h
  include/qelProfTypeDSTVValues.h
  include/qelProgressCtrl.h
  include/qelRegExWrapper.h
  include/qelRegistry.h
  include/qelRuntime.h
  include/qelStandardLibrary.h
  include/qelString.h
  include/qelStringClassArray.h
  include/qelThreadsPool.h
  include/qelTimeUtilities.h
  include/qelVersion.h
  include/qelZClipping.h)

install(TARGETS VarnelQELRoots EXPORT VarnelQELRootsTargets
  RUNTIME DESTINATION bin COMPONENT runtime
  ARCHIVE DESTINATION lib COMPONENT development)

# Wherever the DLL goes, so do the terms of what is inside it.
install(CODE "set(BUILD_DIR \"${PROJECT_BINARY_DIR}\")
set(SOURCE_DIR \"${PROJECT_SOURCE_DIR}\")
include(\"${PROJECT_SOURCE_DIR}/packaging/notices.cmake\")" COMPONENT runtime)
install(FILES ${PROJECT_BINARY_DIR}/THIRD-PARTY-NOTICES.md
  DESTINATION ${qel_documentation_folder} COMPONENT runtime OPTIONAL)

if(TARGET qelDiagnose)
  install(TARGETS qelDiagnose RUNTIME DESTINATION bin COMPONENT tools)
endif()

install(FILES ${qel_headers} DESTINATION include COMPONENT development)

install(EXPORT VarnelQELRootsTargets NAMESPACE VarnelQELRoots::
  DESTINATION ${qel_cmake_folder} COMPONENT development)
configure_package_config_file(cmake/VarnelQELRootsConfig.cmake.in
  ${PROJECT_BINARY_DIR}/cmake/VarnelQELRootsConfig.cmake
  INSTALL_DESTINATION ${qel_cmake_folder}
  NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
# Declarations that hosts compile against stay as they are within a major version. Whether the compiler fits is for the
# configuration file to say: a version file could refuse too, but not tell why.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/cmake/VarnelQELRootsConfigVersion.cmake
  COMPATIBILITY SameMajorVersion ARCH_INDEPENDENT)
install(FILES
  ${PROJECT_BINARY_DIR}/cmake/VarnelQELRootsConfig.cmake
  ${PROJECT_BINARY_DIR}/cmake/VarnelQELRootsConfigVersion.cmake
  DESTINATION ${qel_cmake_folder} COMPONENT development)

# Beside the DLL, where debuggers look for them.
get_target_property(qel_symbols VarnelQELRoots QEL_SYMBOLS)
install(FILES ${qel_symbols} DESTINATION bin COMPONENT symbols)

# Of the first page, what stands before the part for those who have the repository.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS README.md)
file(READ README.md qel_first_page)
string(FIND "${qel_first_page}" "<!-- For those who have the repository" qel_end)
if(qel_end EQUAL -1)
  message(FATAL_ERROR "README.md has lost the comment that begins the part for those who have the repository.")
endif()
string(SUBSTRING "${qel_first_page}" 0 ${qel_end} qel_first_page)
string(APPEND qel_first_page
  "All pages and the reference of all classes, for a browser: [docs/html/index.html](docs/html/index.html).\n"
  "The terms of what is inside the DLL: [THIRD-PARTY-NOTICES.md](THIRD-PARTY-NOTICES.md).\n")
file(WRITE ${PROJECT_BINARY_DIR}/README.md "${qel_first_page}")
install(FILES ${PROJECT_BINARY_DIR}/README.md DESTINATION ${qel_documentation_folder} COMPONENT documentation)

foreach(page IN LISTS qel_pages qel_pictures)
  cmake_path(GET page PARENT_PATH folder)
  install(FILES ${page} DESTINATION ${qel_documentation_folder}/${folder} COMPONENT documentation)
endforeach()
# The pages for a browser, where the target docs has made them.
install(DIRECTORY ${PROJECT_BINARY_DIR}/docs/html DESTINATION ${qel_documentation_folder}/docs
  COMPONENT documentation OPTIONAL)
