# The one place for warning flags. Tests use the same set.
function(qel_enable_warnings target)
  if(MSVC)
    target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:/W4 /permissive- /utf-8
      $<$<BOOL:${QEL_WARNINGS_AS_ERRORS}>:/WX>>)
  else()
    target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:-Wall -Wextra -Wpedantic -Wshadow -Wconversion
      -Wsign-conversion -Wold-style-cast -Wcast-qual -Wcast-align -Wnon-virtual-dtor -Woverloaded-virtual
      -Wformat=2 -Wno-format-nonliteral -Wundef -Wvla -Wnull-dereference -Wdouble-promotion
      $<$<BOOL:${QEL_WARNINGS_AS_ERRORS}>:-Werror>>)
  endif()
endfunction()
