// Compiled with one public header in front of it, given on the command line.

#if defined(_WINDOWS_)
#error "a public header includes windows.h"
#endif

#if defined(_GLIBCXX_STRING) || defined(_GLIBCXX_VECTOR) || defined(_GLIBCXX_MAP) || defined(_GLIBCXX_MEMORY) ||       \
    defined(_GLIBCXX_FUNCTIONAL) || defined(_GLIBCXX_THREAD) || defined(_GLIBCXX_MUTEX)
#error "a public header includes the C++ library"
#endif
