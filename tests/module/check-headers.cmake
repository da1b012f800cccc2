# Compiles the public headers with warnings as errors: each one alone, all of them after windows.h with combinations of
# the macros that hosts set for it, and all of them before it.
#
# Needs COMPILER (GCC or Clang for Windows) and INCLUDE_DIR. FLAGS are more flags for the compiler, in one string.
# LIBRARY_FLAGS stand in front of them where the one header is included that uses the C++ library: all others are
# compiled without them.
# EVERY_COMBINATION tries all combinations of the macros, not only none and all of them.

cmake_minimum_required(VERSION 3.25)

separate_arguments(FLAGS UNIX_COMMAND "${FLAGS}")
separate_arguments(LIBRARY_FLAGS UNIX_COMMAND "${LIBRARY_FLAGS}")
set(flags -std=c++17 -fsyntax-only -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
  -Wold-style-cast -Wcast-qual -Wcast-align -Wnon-virtual-dtor -Woverloaded-virtual -Wundef -Werror
  -DQEL_USE_DLL -I${INCLUDE_DIR})
set(failures 0)
set(waiting_what)
set(waiting)

# Compilations run two at a time: one waits here for the next one.
function(compile what)
  set(command ${COMPILER} ${ARGN} ${FLAGS} ${flags})
  if(NOT waiting_what)
    set(waiting_what "${what}" PARENT_SCOPE)
    set(waiting "${command}" PARENT_SCOPE)
    return()
  endif()
  run("${waiting_what}, or ${what}" COMMAND ${waiting} COMMAND ${command})
  set(waiting_what "" PARENT_SCOPE)
  set(failures ${failures} PARENT_SCOPE)
endfunction()

# Runs what still waits.
macro(finish)
  if(waiting_what)
    run("${waiting_what}" COMMAND ${waiting})
    set(waiting_what)
  endif()
endmacro()

function(run what)
  execute_process(${ARGN} RESULTS_VARIABLE results ERROR_VARIABLE errors)
  foreach(result IN LISTS results)
    if(NOT result EQUAL 0)
      message("FAILED: ${what}\n${errors}")
      math(EXPR count "${failures} + 1")
      set(failures ${count} PARENT_SCOPE)
      return()
    endif()
  endforeach()
endfunction()

file(GLOB headers RELATIVE ${INCLUDE_DIR} ${INCLUDE_DIR}/*.h)
if(NOT "qelString.h" IN_LIST headers)
  message(FATAL_ERROR "No headers in ${INCLUDE_DIR}")
endif()

foreach(header IN LISTS headers)
  foreach(unicode "" "-DUNICODE;-D_UNICODE")
    set(library)
    if(header STREQUAL "qelStandardLibrary.h")
      set(library ${LIBRARY_FLAGS})
    endif()
    compile("${header} alone ${unicode}" ${library} ${unicode}
      -include ${header} ${CMAKE_CURRENT_LIST_DIR}/HeaderAlone.cpp)
  endforeach()
endforeach()

set(all)
foreach(header IN LISTS headers)
  list(APPEND all -include ${header})
endforeach()
set(source ${CMAKE_CURRENT_LIST_DIR}/HeadersWithWindows.cpp)
foreach(unicode "" "-DUNICODE;-D_UNICODE")
  foreach(lean "" -DWIN32_LEAN_AND_MEAN)
    foreach(nominmax "" -DNOMINMAX)
      set(macros ${unicode} ${lean} ${nominmax})
      list(LENGTH macros count)
      if(EVERY_COMBINATION OR count EQUAL 0 OR count EQUAL 4)
        compile("after windows.h: ${macros}" ${LIBRARY_FLAGS} ${macros} -include windows.h ${all} ${source})
      endif()
    endforeach()
  endforeach()
endforeach()

# The headers in front include nothing of Windows, so that only a name of theirs could disturb windows.h.
foreach(macros "" "-DUNICODE;-D_UNICODE;-DWIN32_LEAN_AND_MEAN;-DNOMINMAX")
  compile("before windows.h: ${macros}" ${LIBRARY_FLAGS} ${macros} ${all} -include windows.h ${source})
endforeach()
finish()

if(failures GREATER 0)
  message(FATAL_ERROR "${failures} compilations failed")
endif()
