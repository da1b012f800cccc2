# Debug information of the DLL: made in every configuration, kept in a file beside the DLL and found by its name, which
# the target's property QEL_SYMBOLS tells.
#
# With MinGW it is split off right behind the link, so that what the tests run is what is shipped: bin/NAME.dll holds
# none of it, bin/NAME.dll.debug holds nothing else, and the DLL names that file and its checksum for debuggers. The
# linkers of the Visual C++ ABI write bin/NAME.pdb by themselves.
function(qel_split_symbols target)
  # Compilers leave out the classes that they expect another module to describe, such as those whose virtual table is
  # not made here. No other module does.
  target_compile_options(${target} PRIVATE
    $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-femit-class-debug-always>
    $<$<COMPILE_LANG_AND_ID:CXX,Clang>:-fstandalone-debug>)
  if(MINGW)
    target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:-g>)
    set(symbols ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${target}.dll.debug)
    # It would write the time of day into both files.
    set(objcopy ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=0 ${CMAKE_OBJCOPY})
    add_custom_command(TARGET ${target} POST_BUILD
      COMMAND ${objcopy} --only-keep-debug $<TARGET_FILE:${target}> ${symbols}
      # The link is the name of the file alone: debuggers look for it beside the DLL.
      COMMAND ${objcopy} --strip-all --add-gnu-debuglink=${symbols} $<TARGET_FILE:${target}>
      BYPRODUCTS ${symbols}
      VERBATIM)
  else()
    set(symbols $<TARGET_PDB_FILE:${target}>)
    target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:/Zi>)
    # With only the name of the PDB in the image, for debuggers to look beside it. What nobody calls is left out all the
    # same; functions with equal code stay apart, so that names in the debugger are those of the source.
    target_link_options(${target} PRIVATE /DEBUG /PDBALTPATH:%_PDB% $<$<NOT:$<CONFIG:Debug>>:/OPT:REF,NOICF>)
  endif()
  set_target_properties(${target} PROPERTIES QEL_SYMBOLS ${symbols})
endfunction()
