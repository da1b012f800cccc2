// Compiled with one public header in front of it, given on the command line.

#if defined(MAX_PATH)
#error "a public header includes windows.h"
#endif

// QEL_STANDARD_LIBRARY_H: the one header that is there for hosts with a C++ library.
#if !defined(QEL_STANDARD_LIBRARY_H) &&                                                                                \
    (defined(_GLIBCXX_STRING) || defined(_GLIBCXX_VECTOR) || defined(_GLIBCXX_MAP) || defined(_GLIBCXX_MEMORY) ||      \
     defined(_GLIBCXX_FUNCTIONAL) || defined(_GLIBCXX_THREAD) || defined(_GLIBCXX_MUTEX))
#error "a public header includes the C++ library"
#endif
