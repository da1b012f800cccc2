# Link settings of what is shipped: runtime inside, hardened image, and the same bytes from every build folder. The
# image prefers to lie at the address BASE.
function(qel_reproducible_image target base)
  if(MSVC)
    # The compiler's own runtime inside, the C runtime from the system: streams and buffers that cross the border of the
    # DLL belong to the same C runtime as the host's.
    set_target_properties(${target} PROPERTIES MSVC_RUNTIME_LIBRARY "MultiThreaded$<$<CONFIG:Debug>:Debug>")
    target_link_options(${target} PRIVATE
      /NODEFAULTLIB:libucrt$<$<CONFIG:Debug>:d>.lib /DEFAULTLIB:ucrt$<$<CONFIG:Debug>:d>.lib)
    target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:/Brepro>)
    target_link_options(${target} PRIVATE /Brepro /DYNAMICBASE /HIGHENTROPYVA /NXCOMPAT)
    # Calls through pointers reach functions only, where Windows enforces it.
    target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:/guard:cf>)
    target_link_options(${target} PRIVATE /guard:cf)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
      # As for GCC below.
      target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:
        /clang:-ffile-prefix-map=${CMAKE_SOURCE_DIR}=. /clang:-ffile-prefix-map=${CMAKE_BINARY_DIR}=build>)
    endif()
  else()
    # The compiler would write source and build paths into assertions and debug information.
    target_compile_options(${target} PRIVATE
      -ffile-prefix-map=${CMAKE_SOURCE_DIR}=. -ffile-prefix-map=${CMAKE_BINARY_DIR}=build)
    # The linker derives the image base from the output path unless it is given one.
    target_link_options(${target} PRIVATE -static
      -Wl,--dynamicbase,--high-entropy-va,--nxcompat
      -Wl,--no-insert-timestamp,--image-base=${base}
      # Tells which archives went in, for the notices of their makers.
      -Wl,-Map=${CMAKE_BINARY_DIR}/${target}.map)
  endif()
endfunction()
