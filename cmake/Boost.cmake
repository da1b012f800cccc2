# The headers of Boost, as the target qelBoost.
if(CMAKE_HOST_WIN32)
  find_package(Boost 1.70 REQUIRED)
  set(qel_boost_include ${Boost_INCLUDE_DIRS})
else()
  # Cross build: the host's headers, reached through a folder that holds nothing else. The host's own include folder
  # would bring its C library along.
  set(QEL_BOOST_DIR /usr/include CACHE PATH "Folder that holds the folder boost")
  if(NOT EXISTS ${QEL_BOOST_DIR}/boost/xpressive/xpressive_dynamic.hpp)
    message(FATAL_ERROR
      "Boost.Xpressive was not found below ${QEL_BOOST_DIR}: install the headers of Boost or set QEL_BOOST_DIR.")
  endif()
  set(qel_boost_include ${CMAKE_BINARY_DIR}/third-party)
  file(MAKE_DIRECTORY ${qel_boost_include})
  file(CREATE_LINK ${QEL_BOOST_DIR}/boost ${qel_boost_include}/boost SYMBOLIC)
endif()

add_library(qelBoost INTERFACE)
target_include_directories(qelBoost SYSTEM INTERFACE ${qel_boost_include})
