# Cross build for 64-bit Windows with Visual C++'s ABI on Linux: clang in Visual C++ mode, Wine's headers and import
# libraries, the Universal C Runtime. What Visual C++ would link statically comes from tests/visualcpp/runtime; see
# docs/runtimes.md for what such a build proves.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)

set(QEL_LLVM_DIR /usr/lib/llvm-19 CACHE PATH "Folder with clang, lld and the headers of libc++")
set(CMAKE_CXX_COMPILER ${QEL_LLVM_DIR}/bin/clang-cl)
set(CMAKE_CXX_COMPILER_TARGET x86_64-pc-windows-msvc)
# A launcher from the environment may take this driver for clang's other one and put the objects elsewhere.
set(CMAKE_CXX_COMPILER_LAUNCHER "")
set(CMAKE_LINKER ${QEL_LLVM_DIR}/bin/lld-link)
set(CMAKE_AR ${QEL_LLVM_DIR}/bin/llvm-lib)
set(CMAKE_MT ${QEL_LLVM_DIR}/bin/llvm-mt)
set(CMAKE_RC_COMPILER ${QEL_LLVM_DIR}/bin/llvm-rc)

set(QEL_WINE_INCLUDE /usr/include/wine/wine CACHE PATH "Folder with Wine's folders msvcrt and windows of headers")
set(QEL_WINE_LIBRARIES /usr/lib/x86_64-linux-gnu/wine/x86_64-windows CACHE PATH
  "Folder with Wine's import libraries for 64-bit programs")
set(QEL_VISUALCPP_DIR ${CMAKE_CURRENT_LIST_DIR}/../tests/visualcpp)
# For sources that need a C++ library.
set(QEL_LIBCXX_INCLUDES ${QEL_VISUALCPP_DIR}/libcxx ${QEL_LLVM_DIR}/include/c++/v1)
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QEL_LLVM_DIR QEL_WINE_INCLUDE QEL_WINE_LIBRARIES)

# Nothing can be linked before the runtime of tests/visualcpp is built.
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

# Clang's own headers stand before all of these.
set(includes ${QEL_VISUALCPP_DIR}/include ${QEL_WINE_INCLUDE}/msvcrt ${QEL_WINE_INCLUDE}/windows)
list(TRANSFORM includes PREPEND "/imsvc")
list(JOIN includes " " includes)
# Wine's headers: characters of 16 bits for wide ones, and no declaration of what clang knows by itself.
set(CMAKE_CXX_FLAGS_INIT "/X ${includes} -fms-compatibility-version=19.29 -DWINE_UNICODE_NATIVE \
-D_InterlockedCompareExchange128=wine_icx128")
set(CMAKE_RC_FLAGS_INIT "-I ${QEL_WINE_INCLUDE}/windows")

# Wine's import libraries by the names that Visual C++ gives them.
set(folder ${CMAKE_BINARY_DIR}/windows-libraries)
if(NOT CMAKE_PROJECT_NAME STREQUAL "CMAKE_TRY_COMPILE")
  file(MAKE_DIRECTORY ${folder})
  foreach(library advapi32 comctl32 gdi32 kernel32 odbc32 ole32 oleaut32 shell32 ucrtbase user32 vcruntime140 version)
    file(CREATE_LINK ${QEL_WINE_LIBRARIES}/lib${library}.a ${folder}/${library}.lib SYMBOLIC)
  endforeach()
endif()
set(CMAKE_CXX_STANDARD_LIBRARIES "kernel32.lib user32.lib gdi32.lib advapi32.lib vcruntime140.lib ucrtbase.lib")
# With debug information nothing is left out unless it is asked for. Functions with equal code stay apart, so that a
# name in the debugger, or in a list of exports, is the one of the source.
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "/nodefaultlib /libpath:\"${folder}\" /manifest:no /debug /opt:ref")
endforeach()

# Types and lines for the PDB beside each DLL and program.
set(CMAKE_MSVC_DEBUG_INFORMATION_FORMAT Embedded)

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../tools/run-wine.sh)
