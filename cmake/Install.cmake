# What is installed, in five components: runtime, tools, development, symbols and documentation. Every path is relative
# to the place of installation, and no installed file knows where it was built or where it lies.
include(CMakePackageConfigHelpers)
include(CheckCXXSourceCompiles)

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

set(qel_pages
  docs/architecture.md
  docs/binary-compatibility.md
  docs/building.md
  docs/configuration.md
  docs/data-sources.md
  docs/debugging.md
  docs/demo.md
  docs/diagnose.md
  docs/diagnostics.md
  docs/embedding.md
  docs/files-and-registry.md
  docs/how-to.md
  docs/numbering.md
  docs/numerics.md
  docs/package.md
  docs/patterns.md
  docs/performance.md
  docs/progress-dialog.png
  docs/progress.md
  docs/runtimes.md
  docs/surprises.md
  docs/test-kit.md
  docs/testing.md
  docs/worker-pool.md)
file(GLOB qel_charts RELATIVE ${PROJECT_SOURCE_DIR} CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/performance-*.svg)
list(APPEND qel_pages ${qel_charts})

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

install(FILES README.md CHANGELOG.md CONTRIBUTING.md DESTINATION ${qel_documentation_folder} COMPONENT documentation)
install(FILES ${qel_pages} DESTINATION ${qel_documentation_folder}/docs COMPONENT documentation)
# The pages for a browser, where the target docs has made them.
install(DIRECTORY ${PROJECT_BINARY_DIR}/docs/html DESTINATION ${qel_documentation_folder}/docs
  COMPONENT documentation OPTIONAL)
