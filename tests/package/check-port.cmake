# Reads the vcpkg port the way vcpkg would, with functions that only write down what they are told, and compares that
# with the tree. vcpkg itself is not run, so this finds a port that fell behind the tree, not one that vcpkg would not
# take.
#
# Needs SOURCE_DIR, CONFIG_FOLDER (where the CMake package is installed) and FOLDER (made anew, for what the port
# makes).
cmake_minimum_required(VERSION 3.25)

set(port ${SOURCE_DIR}/packaging/vcpkg/ports/varnelqelroots)

function(expect what found expected)
  if(NOT found STREQUAL expected)
    message(SEND_ERROR "${port}: ${what} is \"${found}\" and should be \"${expected}\"")
  endif()
endfunction()

file(READ ${port}/vcpkg.json manifest)
string(JSON name GET "${manifest}" name)
set(dependencies)
string(JSON count LENGTH "${manifest}" dependencies)
math(EXPR last "${count} - 1")
foreach(i RANGE ${last})
  string(JSON type TYPE "${manifest}" dependencies ${i})
  if(type STREQUAL "OBJECT")
    string(JSON dependency GET "${manifest}" dependencies ${i} name)
  else()
    string(JSON dependency GET "${manifest}" dependencies ${i})
  endif()
  list(APPEND dependencies ${dependency})
endforeach()
cmake_path(GET port FILENAME folder)
expect("the name" "${name}" "${folder}")
# The functions below come from the last two.
expect("the list of dependencies" "${dependencies}" "boost-xpressive;vcpkg-cmake;vcpkg-cmake-config")

set(calls)
macro(record name)
  list(APPEND calls ${name})
  set(calls "${calls}" PARENT_SCOPE)
endmacro()

function(vcpkg_check_linkage)
  record(vcpkg_check_linkage)
endfunction()

function(vcpkg_cmake_configure)
  record(vcpkg_cmake_configure)
  cmake_parse_arguments(arg "" "SOURCE_PATH" "OPTIONS;MAYBE_UNUSED_VARIABLES" ${ARGN})
  cmake_path(SET source NORMALIZE "${SOURCE_DIR}")
  expect("the folder of the sources" "${arg_SOURCE_PATH}" "${source}")
  expect("what vcpkg_cmake_configure() does not know" "${arg_UNPARSED_ARGUMENTS}" "")

  set(text)
  foreach(file CMakeLists.txt cmake/Boost.cmake cmake/Install.cmake)
    file(READ ${SOURCE_DIR}/${file} content)
    string(APPEND text "${content}")
  endforeach()
  foreach(option IN LISTS arg_OPTIONS)
    string(REGEX REPLACE "^-D([A-Z_]+)=.*$" "\\1" variable "${option}")
    if(NOT text MATCHES "(option|set)[(]${variable} |[(]${variable}[)]")
      message(SEND_ERROR "${port}: ${option}: the build has no option ${variable}")
    endif()
  endforeach()
endfunction()

function(vcpkg_cmake_install)
  record(vcpkg_cmake_install)
endfunction()

function(vcpkg_cmake_config_fixup)
  record(vcpkg_cmake_config_fixup)
  cmake_parse_arguments(arg "" "PACKAGE_NAME;CONFIG_PATH" "" ${ARGN})
  expect("the folder of the CMake package" "${arg_CONFIG_PATH}" "${CONFIG_FOLDER}")
  expect("the name of the CMake package" "${arg_PACKAGE_NAME}" "VarnelQELRoots")
endfunction()

function(vcpkg_copy_pdbs)
  record(vcpkg_copy_pdbs)
endfunction()

set(PORT varnelqelroots)
set(CURRENT_PACKAGES_DIR ${FOLDER}/packages)
set(CURRENT_INSTALLED_DIR ${FOLDER}/installed)
file(REMOVE_RECURSE ${FOLDER})
include(${port}/portfile.cmake)
expect("the order of its steps" "${calls}"
  "vcpkg_check_linkage;vcpkg_cmake_configure;vcpkg_cmake_install;vcpkg_cmake_config_fixup;vcpkg_copy_pdbs")
if(NOT EXISTS ${CURRENT_PACKAGES_DIR}/share/varnelqelroots/usage)
  message(SEND_ERROR "${port} does not install the text that tells how to use it")
endif()
