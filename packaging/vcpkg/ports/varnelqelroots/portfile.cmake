# Builds the tree that this port lies in. A port that was copied elsewhere is told the tree by the triplet:
# set(VARNELQELROOTS_SOURCE_DIR "D:/src/VarnelQELRoots").
if(DEFINED VARNELQELROOTS_SOURCE_DIR)
  set(SOURCE_PATH "${VARNELQELROOTS_SOURCE_DIR}")
else()
  get_filename_component(SOURCE_PATH "${CMAKE_CURRENT_LIST_DIR}/../../../.." ABSOLUTE)
endif()
if(NOT EXISTS "${SOURCE_PATH}/include/qelVersion.h")
  message(FATAL_ERROR "There are no sources of VarnelQELRoots in ${SOURCE_PATH}: set VARNELQELROOTS_SOURCE_DIR in the "
    "triplet to the folder of its README.md.")
endif()

vcpkg_check_linkage(ONLY_DYNAMIC_LIBRARY ONLY_DYNAMIC_CRT)

vcpkg_cmake_configure(
  SOURCE_PATH "${SOURCE_PATH}"
  OPTIONS
    -DQEL_BUILD_TESTS=OFF
    -DQEL_BUILD_EXAMPLES=OFF
    -DQEL_BUILD_DIAGNOSE=OFF
    -DQEL_WARNINGS_AS_ERRORS=OFF
    -DCMAKE_INSTALL_DOCDIR=share/${PORT}/doc
    # Where a cross build looks for Boost; a build on Windows finds it by its package.
    "-DQEL_BOOST_DIR=${CURRENT_INSTALLED_DIR}/include"
  MAYBE_UNUSED_VARIABLES
    QEL_BOOST_DIR)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME VarnelQELRoots CONFIG_PATH lib/cmake/VarnelQELRoots)
vcpkg_copy_pdbs()

file(REMOVE_RECURSE
  "${CURRENT_PACKAGES_DIR}/debug/include"
  "${CURRENT_PACKAGES_DIR}/debug/share")
file(INSTALL "${CMAKE_CURRENT_LIST_DIR}/usage" DESTINATION "${CURRENT_PACKAGES_DIR}/share/${PORT}")

# The sources are the customer's own copy and come without a file of licence terms.
set(VCPKG_POLICY_SKIP_COPYRIGHT_CHECK enabled)
