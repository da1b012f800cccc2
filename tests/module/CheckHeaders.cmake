# Compiles the public headers with warnings as errors: each one alone, all of them after windows.h with every
# combination of the macros that hosts set for it, and all of them before it.
#
# Needs COMPILER (GCC or Clang for Windows) and INCLUDE_DIR.

cmake_minimum_required(VERSION 3.25)

set(flags -std=c++17 -fsyntax-only -Wall -Wextra -Wpedantic -Werror -DQEL_USE_DLL -I${INCLUDE_DIR})
set(failures 0)

function(compile what)
  execute_process(COMMAND ${COMPILER} ${flags} ${ARGN} RESULT_VARIABLE result ERROR_VARIABLE errors)
  if(NOT result EQUAL 0)
    message("FAILED: ${what}\n${errors}")
    math(EXPR count "${failures} + 1")
    set(failures ${count} PARENT_SCOPE)
  endif()
endfunction()

file(GLOB headers RELATIVE ${INCLUDE_DIR} ${INCLUDE_DIR}/*.h)
if(NOT "qelString.h" IN_LIST headers)
  message(FATAL_ERROR "No headers in ${INCLUDE_DIR}")
endif()

foreach(header IN LISTS headers)
  foreach(unicode "" "-DUNICODE;-D_UNICODE")
    compile("${header} alone ${unicode}" ${unicode} -include ${header} ${CMAKE_CURRENT_LIST_DIR}/HeaderAlone.cpp)
  endforeach()
endforeach()

set(all)
foreach(header IN LISTS headers)
  list(APPEND all -include ${header})
endforeach()
foreach(unicode "" "-DUNICODE;-D_UNICODE")
  foreach(lean "" -DWIN32_LEAN_AND_MEAN)
    foreach(nominmax "" -DNOMINMAX)
      set(macros ${unicode} ${lean} ${nominmax})
      set(source ${CMAKE_CURRENT_LIST_DIR}/HeadersWithWindows.cpp)
      compile("after windows.h: ${macros}" ${macros} -include windows.h ${all} ${source})
    endforeach()
  endforeach()
endforeach()

# The headers in front include nothing of Windows, so that only a name of theirs could disturb windows.h.
foreach(macros "" "-DUNICODE;-D_UNICODE;-DWIN32_LEAN_AND_MEAN;-DNOMINMAX")
  compile("before windows.h: ${macros}" ${macros} ${all} -include windows.h
    ${CMAKE_CURRENT_LIST_DIR}/HeadersWithWindows.cpp)
endforeach()

if(failures GREATER 0)
  message(FATAL_ERROR "${failures} compilations failed")
endif()
