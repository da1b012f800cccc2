# Fails when a subsystem includes a header that it may not know, or a source of the library the C++ standard library.
#
# Needs SOURCE_DIR.

cmake_minimum_required(VERSION 3.25)

# Folders whose public headers each subsystem may use beside its own.
set(strings_uses)
set(files_uses strings)
set(config_uses files strings)
set(numbering_uses strings)
set(progress_uses strings)
set(numeric_uses strings)
set(tasks_uses)
set(subsystems strings files config numbering progress numeric tasks)

# Private headers that are offered on purpose to those who may use the folder. The module's handle is for all: whoever
# loads a resource needs it.
set(offered strings/CodePage.h strings/StringAccess.h strings/Text.h strings/TextSearch.h module/Module.h)

# The one source that is built on a library of C++.
set(usesCppLibrary src/strings/PatternSearch.cpp)

set(errors)

# The subsystem of a public header is the folder of the source of its name; one without a source is open to all.
function(find_home header result)
  get_filename_component(name ${header} NAME_WE)
  foreach(folder IN LISTS subsystems)
    if(EXISTS ${SOURCE_DIR}/src/${folder}/${name}.cpp)
      set(${result} ${folder} PARENT_SCOPE)
      return()
    endif()
  endforeach()
  set(${result} "" PARENT_SCOPE)
endfunction()

function(check_include file folder header)
  set(allowed ${folder} ${${folder}_uses} module)
  if(header MATCHES "^([a-z]+)/")
    set(home ${CMAKE_MATCH_1})
    # No private header in a public one, not even an own one.
    if(NOT file MATCHES "^include/"
       AND (home STREQUAL folder OR (header IN_LIST offered AND home IN_LIST allowed)))
      return()
    endif()
  else()
    find_home(${header} home)
    if(home STREQUAL "" OR home IN_LIST allowed)
      return()
    endif()
  endif()
  set(errors ${errors} "${file} includes ${header}" PARENT_SCOPE)
endfunction()

function(check_file file folder)
  file(STRINGS ${SOURCE_DIR}/${file} lines REGEX "^[ \t]*#[ \t]*include")
  foreach(line IN LISTS lines)
    if(line MATCHES "\"([^\"]+)\"")
      check_include(${file} ${folder} ${CMAKE_MATCH_1})
    elseif(line MATCHES "<([^>.]+)>" AND NOT file IN_LIST usesCppLibrary)
      list(APPEND errors "${file} includes <${CMAKE_MATCH_1}> of the C++ library")
    endif()
  endforeach()
  set(errors ${errors} PARENT_SCOPE)
endfunction()

set(count 0)
foreach(folder IN LISTS subsystems)
  file(GLOB files RELATIVE ${SOURCE_DIR} ${SOURCE_DIR}/src/${folder}/*.cpp ${SOURCE_DIR}/src/${folder}/*.h)
  foreach(file IN LISTS files)
    check_file(${file} ${folder})
    math(EXPR count "${count} + 1")
  endforeach()
endforeach()

file(GLOB headers RELATIVE ${SOURCE_DIR} ${SOURCE_DIR}/include/*.h)
foreach(header IN LISTS headers)
  find_home(${header} home)
  if(NOT home STREQUAL "")
    check_file(${header} ${home})
  endif()
  math(EXPR count "${count} + 1")
endforeach()

if(count EQUAL 0)
  message(FATAL_ERROR "no sources in ${SOURCE_DIR}")
endif()
if(errors)
  list(JOIN errors "\n  " text)
  message(FATAL_ERROR "these includes go against the direction of dependencies (docs/architecture.md):\n  ${text}")
endif()
