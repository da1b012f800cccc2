// MinGW only: lets std::bad_alloc be thrown when there is no memory at all. Parts of GCC's exception runtime, which is
// linked in, allocate on their first use, that is while they throw, and end the process when they cannot. Here they get
// what they need when the library is loaded. Visual C++'s runtime needs nothing.
#if defined(__GNUC__) && !defined(__clang__)

#include "module/Module.h"

#include <pthread.h>
#include <stddef.h>
#include <windows.h>

// NOLINTBEGIN(bugprone-reserved-identifier): names of the runtime, of the linker and of the C++ ABI

extern "C" char _tls_start;
extern "C" ULONG _tls_index;

namespace
{
/// What the C++ ABI keeps for each thread.
struct ThreadExceptions
{
    void* caught;
    unsigned uncaught;
};

/// In the part of the image that Windows copies for each thread. GCC's own thread-local objects are allocated at their
/// first use.
__attribute__((section(".tls$"))) ThreadExceptions threadExceptions = {nullptr, 0};
} // namespace

// Both replace GCC's, which are used in archives of the linker only where nothing else has these names.

extern "C" ThreadExceptions* __cxa_get_globals()
{
    // Of the thread's block, which holds the copies of all images at this place on x64.
    char* const* images = nullptr;
    __asm__("movq %%gs:0x58, %0" : "=r"(images));
    const ptrdiff_t offset = reinterpret_cast<char*>(&threadExceptions) - &_tls_start;
    return reinterpret_cast<ThreadExceptions*>(images[_tls_index] + offset);
}

extern "C" ThreadExceptions* __cxa_get_globals_fast()
{
    return __cxa_get_globals();
}

// The linker lets everything in the library call the following two instead of those of the thread library.

/// Makes a mutex whole, also that of the reserve for exceptions: it would allocate when it is first locked.
extern "C" int __real_pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes);

extern "C" int __wrap_pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes)
{
    int result = __real_pthread_mutex_init(mutex, attributes);
    if (result == 0)
    {
        result = pthread_mutex_lock(mutex);
    }
    return result == 0 ? pthread_mutex_unlock(mutex) : result;
}

/// Allocates nothing; theirs writes to the null pointer when it cannot. `once` is 0 at first, 1 afterwards. The
/// functions, of the C++ library's locales, throw nothing.
extern "C" int __wrap_pthread_once(pthread_once_t* once, void (*function)())
{
    const LONG kUnderWay = 2;
    LONG state = kUnderWay;
    while ((state = InterlockedCompareExchange(once, kUnderWay, PTHREAD_ONCE_INIT)) == kUnderWay)
    {
        SwitchToThread();
    }
    if (state == PTHREAD_ONCE_INIT)
    {
        function();
        InterlockedExchange(once, 1);
    }
    return 0;
}

extern "C" int __cxa_guard_acquire(long long* guard);
extern "C" void __cxa_guard_abort(long long* guard);

namespace __gnu_cxx
{
void __freeres();
}

void qelModule::makeExceptionReserve()
{
    // The lock for objects in functions is made when the first of them is.
    long long guard = 0;
    if (__cxa_guard_acquire(&guard) != 0)
    {
        __cxa_guard_abort(&guard);
    }
}

void qelModule::freeExceptionReserve()
{
    __gnu_cxx::__freeres();
}

// NOLINTEND(bugprone-reserved-identifier)
#endif
